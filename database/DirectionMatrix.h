#pragma once

#include "database/Database.h"
#include "platform/GridModel.h"

class GridRecords;

namespace model {
struct Installation;
}

/// The directions that the information displays show for the counters, as a grid: one row a display, one column a
/// counter behind the first one, which holds the names. A last row "--------" stands for no display.
///
/// What is chosen stays in memory until `UpdateDataDir`. A device whose `d_Id` is not from 1 to 32767 has no place in
/// table `Info-Direction` and is left out.
class DirectionMatrix final : public GridModel {
    Q_OBJECT

public:
    using GridModel::GridModel;

    /// Makes rows and columns of the devices of table `Display`, and fills the cells from the directions of the model.
    /// Choices that are not stored yet are lost. With no device at all the grid keeps what it shows.
    void LoadDirectionGrid(const GridRecords& rsDisplay, const model::Installation& installation);

    /// The same, with the choices that are not stored yet made once more where their display and counter are still
    /// there.
    void ReloadUnderChoices(const GridRecords& rsDisplay, const model::Installation& installation);

    /// Shows nothing.
    void Clear();

    /// Stores the whole matrix in place of what table `Info-Direction` holds, all of it or, on an error, nothing.
    Result<> UpdateDataDir(Database& database);

    /// A choice is not stored yet.
    bool IsChanged() const { return m_isChanged; }

    /// Takes the last choice back that is not stored yet (what was chosen together, together), makes the last one again
    /// that was taken back.
    bool CanUndo() const { return m_undone < m_choices.size(); }
    bool CanRedo() const { return m_undone > 0; }
    void Undo();
    void Redo();

    const std::vector<GridColumn>& Columns() const override { return m_columns; }
    bool IsNewRow(int) const override { return false; }
    QVariant Key(int row) const override;
    bool CanRemove() const override { return false; }
    QString CellText(int row, int column) const override;
    Result<> Write(int row, int column, const QString& text) override;
    Result<> Remove(int) override { return {}; }
    Result<> Together(const QString& act, const std::function<Result<>()>& change) override;
    int rowCount(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    struct Row {
        qint16 displayId;
        QString name;
        std::vector<qint16> directions; ///< by counter
    };

    struct Choice {
        int row;
        int column;
        qint16 before;
        qint16 after;
        int act; ///< what was chosen together has the same
    };

    void Set(int row, int column, qint16 direction);
    void ForgetChoices();

    std::vector<GridColumn> m_columns;
    std::vector<qint16> m_counterIds; ///< of the columns behind the first one
    std::vector<Row> m_rows;
    std::vector<Choice> m_choices; ///< since the directions were read or stored
    std::size_t m_undone = 0;      ///< of the last ones
    int m_act = 0;                 ///< of the last choice
    bool m_isTogether = false;
    bool m_isChanged = false;
};
