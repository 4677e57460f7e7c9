#pragma once

#include <QAbstractTableModel>
#include <QString>

#include <optional>
#include <vector>

/// One column of a data-bound grid.
struct GridColumn {
    QString caption;
    QString field; ///< column of the table
    bool readOnly = false;
    int maxLength = 0; ///< characters that the editor takes, 0 for no limit
    /// What a cell may hold and how each value shows, for a combo box; empty for a text cell.
    std::vector<std::pair<int, QString>> values = {};

    /// A column of yes or no, shown as "Yes" and "No".
    static GridColumn YesNo(const QString& caption, const QString& field);
};

/// The rows of a table as a grid shows and edits them; its last row is a blank one for a new record.
///
/// What the user leaves in a cell is written at once. Only when the store has agreed does the shown row change.
class GridModel : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    /// What the store said to a refused change, in words for a user.
    using Error = std::optional<QString>;

    virtual const std::vector<GridColumn>& Columns() const = 0;

    /// True for the blank last row.
    virtual bool IsNewRow(int row) const = 0;

    /// The text that a cell's editor begins with: the stored value, empty for a null.
    virtual QString CellText(int row, int column) const = 0;

    /// Writes what was left in a cell; an empty text is a null. In the blank row it makes the new record, with the
    /// store's defaults in all other columns. An unchanged value is not written. On an error the row shows what the
    /// store holds.
    virtual Error Write(int row, int column, const QString& text) = 0;

    /// Deletes the record of a row.
    virtual Error Remove(int row) = 0;

Q_SIGNALS:
    /// The store has taken an insert, update or delete.
    void RecordsChanged();
};
