#include "commissioning/FindingTable.h"

FindingTable::FindingTable(std::vector<Column> columns, ::QObject* parent)
    : QAbstractTableModel(parent)
    , m_columns(std::move(columns)) {}

void FindingTable::SetRows(std::vector<Row> rows) {
    if (rows.size() != m_rows.size()) {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
        return;
    }
    m_rows = std::move(rows);
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

int FindingTable::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int FindingTable::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QVariant FindingTable::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const Row& row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return row.texts[index.column()];
    case Qt::TextAlignmentRole:
        if (m_columns[static_cast<std::size_t>(index.column())].isNumber)
            return QVariant(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case IsMarkedRole:
        return row.isMarked;
    default:
        return {};
    }
}

QVariant FindingTable::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    const Column& column = m_columns[static_cast<std::size_t>(section)];
    if (role == Qt::DisplayRole)
        return column.title;
    if (role == Qt::TextAlignmentRole)
        return QVariant((column.isNumber ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    return {};
}
