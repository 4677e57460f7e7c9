#pragma once

#include "platform/GridModel.h"

#include <QVariant>

class Database;

/// The records of one table for a grid, in the order of a sort expression.
class GridRecords final : public GridModel {
    Q_OBJECT

public:
    /// @param database must outlive the records. @param key column that the store gives to each new record.
    /// @param order sort expression, such as "q_Number".
    GridRecords(Database& database, const QString& table, const QString& key, const QString& order,
                std::vector<GridColumn> columns, QObject* parent = nullptr);

    /// Reads all records anew; none, and no row for a new one, while the database is closed.
    /// @return what the store said if they cannot be read.
    Error Requery();

    const std::vector<GridColumn>& Columns() const override { return m_columns; }
    bool IsNewRow(int row) const override { return m_isOpen && row == static_cast<int>(m_rows.size()); }
    QString CellText(int row, int column) const override;
    Error Write(int row, int column, const QString& text) override;
    Error Remove(int row) override;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    struct Row {
        QVariant key;
        std::vector<QVariant> values;
    };

    QString SelectStatement() const;
    Error Insert(int column, const QVariant& value);
    Error Update(int row, int column, const QVariant& value);
    /// Shows what the store holds for a row; drops the row if it is gone there.
    void ReadAgain(int row);
    QString ShownText(int row, int column) const;

    Database& m_database;
    QString m_table;
    QString m_key;
    QString m_order;
    std::vector<GridColumn> m_columns;
    std::vector<Row> m_rows;
    bool m_isOpen = false;
};
