#pragma once

#include <QAbstractTableModel>

#include <vector>

/// What was found, as a table of texts.
class FindingTable : public QAbstractTableModel {
    Q_OBJECT

public:
    /// Of a row that somebody has to look at.
    static constexpr int IsMarkedRole = Qt::UserRole;

    struct Column {
        QString title;
        bool isNumber = false; ///< stands at the right
    };

    struct Row {
        QStringList texts; ///< one for each column
        bool isMarked = false;
    };

    explicit FindingTable(std::vector<Column> columns, ::QObject* parent = nullptr);

    /// Takes other rows. What is selected stays so as long as no row comes or goes.
    void SetRows(std::vector<Row> rows);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::vector<Column> m_columns;
    std::vector<Row> m_rows;
};
