#pragma once

#include "platform/GridModel.h"

#include <QVariant>

class Database;
class QSqlQuery;

/// Where the records of a grid come from, and what a user may do with them.
struct GridSource {
    QString table;      ///< one row of the grid for each of its rows; takes the new ones
    QString join = {};  ///< what stands behind the table's name in FROM, such as "INNER JOIN Display ON ..."
    QString where = {}; ///< condition, whose question marks `SetValues` fills
    QString order = {}; ///< sort expression; in key order if empty
    bool canAdd = true;
    bool canRemove = true;
};

/// The records of a table, or of a join of tables, for a grid.
///
/// A column of a joined table is written to that table's record.
class GridRecords final : public GridModel {
    Q_OBJECT

public:
    /// @param database must outlive the records. Tables are those of the schema; a joined one needs a column here.
    GridRecords(Database& database, GridSource source, std::vector<GridColumn> columns, QObject* parent = nullptr);

    /// The values for the question marks of the condition, from the next `Requery` on.
    void SetValues(const QVariantList& values) { m_values = values; }

    /// Reads all records anew; none, and no row for a new one, while the database is closed.
    /// @return what the store said if they cannot be read.
    Result<> Requery();

    /// Records, without the blank row.
    int RecordCount() const { return static_cast<int>(m_rows.size()); }

    /// Value of a field of a record, without regard to case; invalid if there is none.
    QVariant Value(int row, QStringView field) const;

    const std::vector<GridColumn>& Columns() const override { return m_columns; }
    bool IsNewRow(int row) const override { return m_isOpen && m_source.canAdd && row == RecordCount(); }
    QVariant Key(int row) const override;
    bool CanRemove() const override { return m_source.canRemove; }
    bool CanSort() const override { return true; }
    /// Numbers by their size, texts as they are read; rows that are equal, and new ones, stay in the store's order.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    QString CellText(int row, int column) const override;
    Result<> Write(int row, int column, const QString& text) override;
    Result<> Remove(int row) override;
    Result<> Together(const QString& act, const std::function<Result<>()>& change) override;
    int rowCount(const QModelIndex& parent = {}) const override;

private:
    /// A table whose columns the grid shows.
    struct Table {
        QString name;
        QString key;
    };

    struct Row {
        std::vector<QVariant> keys; ///< by table
        std::vector<QVariant> values;
        std::size_t place = 0; ///< in the order of the store
    };

    std::size_t TableOf(const GridColumn& column);
    QString SelectStatement(const QString& condition) const;
    Row RowOf(const QSqlQuery& query) const;
    Result<> CheckReference(const GridColumn& column, const QVariant& value) const;
    Result<> Insert(int column, const QVariant& value);
    Result<> Update(int row, int column, const QVariant& value);
    void Arrange();
    /// Shows what the store holds for a row; drops the row if it is gone there.
    void ReadAgain(int row);

    Database& m_database;
    GridSource m_source;
    std::vector<GridColumn> m_columns;
    std::vector<Table> m_tables;             ///< the first one is that of the source
    std::vector<std::size_t> m_columnTables; ///< by column, an index in `m_tables`
    QVariantList m_values;
    std::vector<Row> m_rows;
    int m_sortColumn = -1; ///< -1 for the order of the store
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    bool m_isOpen = false;
    bool m_isTogether = false;
    bool m_hasRemoved = false; ///< since `Together` began
};
