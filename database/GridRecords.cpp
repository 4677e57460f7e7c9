#include "database/GridRecords.h"

#include "database/Database.h"
#include "database/Schema.h"

#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>

namespace {

QString Quoted(const QString& name) {
    return u'[' + name + u']';
}

/// What the store said, with the column's caption in place of its name.
GridModel::Error Readable(const QSqlQuery& query, const GridColumn* column = nullptr) {
    QString text = schema::ReadableError(query.lastError().databaseText());
    if (column && text.startsWith(column->field + u' ', Qt::CaseInsensitive))
        text.replace(0, column->field.size(), column->caption);
    return text;
}

QString ClosedText() {
    return QStringLiteral("Can't open Queue database!");
}

QString GoneText() {
    return QStringLiteral("This record is not in the database any more.");
}

} // namespace

GridRecords::GridRecords(Database& database, const QString& table, const QString& key, const QString& order,
                         std::vector<GridColumn> columns, QObject* parent)
    : GridModel(parent)
    , m_database(database)
    , m_table(table)
    , m_key(key)
    , m_order(order)
    , m_columns(std::move(columns)) {}

QString GridRecords::SelectStatement() const {
    QStringList fields{Quoted(m_key)};
    for (const GridColumn& column : m_columns)
        fields += Quoted(column.field);
    return QStringLiteral("SELECT %1 FROM %2").arg(fields.join(u','), Quoted(m_table));
}

GridModel::Error GridRecords::Requery() {
    Error error;
    beginResetModel();
    m_rows.clear();
    m_isOpen = m_database.IsOpen();
    if (m_isOpen) {
        QString problem;
        auto query = m_database.Select({SelectStatement() + QStringLiteral(" ORDER BY ") + m_order}, problem);
        while (query && query->next()) {
            Row& row = m_rows.emplace_back();
            row.key = query->value(0);
            for (int i = 1; i <= static_cast<int>(m_columns.size()); ++i)
                row.values.push_back(query->value(i));
        }
        if (!query)
            error = schema::ReadableError(problem);
    } else {
        error = ClosedText();
    }
    endResetModel();
    return error;
}

int GridRecords::rowCount(const QModelIndex& parent) const {
    return parent.isValid() || !m_isOpen ? 0 : static_cast<int>(m_rows.size()) + 1;
}

int GridRecords::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QString GridRecords::CellText(int row, int column) const {
    if (row < 0 || row >= static_cast<int>(m_rows.size()))
        return {};
    return m_rows[static_cast<std::size_t>(row)].values[static_cast<std::size_t>(column)].toString();
}

QString GridRecords::ShownText(int row, int column) const {
    const auto& values = m_columns[static_cast<std::size_t>(column)].values;
    const QString text = CellText(row, column);
    if (values.empty() || text.isEmpty())
        return text;
    const auto known = std::find_if(values.begin(), values.end(),
                                    [&](const auto& value) { return QString::number(value.first) == text; });
    // Any number but 0 is a yes, as the loaders read it.
    const bool isYesNo = values.size() == 2 && values[0].second == QStringLiteral("Yes");
    if (known == values.end())
        return isYesNo ? values[0].second : text;
    return known->second;
}

QVariant GridRecords::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    if (role == Qt::DisplayRole)
        return ShownText(index.row(), index.column());
    if (role == Qt::EditRole)
        return CellText(index.row(), index.column());
    return {};
}

QVariant GridRecords::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Horizontal)
        return m_columns[static_cast<std::size_t>(section)].caption;
    return IsNewRow(section) ? QStringLiteral("*") : QString::number(section + 1);
}

Qt::ItemFlags GridRecords::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.isValid() && !m_columns[static_cast<std::size_t>(index.column())].readOnly)
        flags |= Qt::ItemIsEditable;
    return flags;
}

GridModel::Error GridRecords::Write(int row, int column, const QString& text) {
    if (!m_database.IsOpen())
        return ClosedText();
    if (row < 0 || row >= rowCount() || text == CellText(row, column))
        return std::nullopt;
    const QVariant value = text.isEmpty() ? QVariant() : QVariant(text);
    const Error error = IsNewRow(row) ? Insert(column, value) : Update(row, column, value);
    if (!error)
        Q_EMIT RecordsChanged();
    return error;
}

GridModel::Error GridRecords::Insert(int column, const QVariant& value) {
    QSqlQuery query(m_database.Connection());
    query.prepare(QStringLiteral("INSERT INTO %1 (%2) VALUES (?)")
                      .arg(Quoted(m_table), Quoted(m_columns[static_cast<std::size_t>(column)].field)));
    query.addBindValue(value);
    if (!query.exec())
        return Readable(query, &m_columns[static_cast<std::size_t>(column)]);
    const int row = static_cast<int>(m_rows.size());
    const QVariant key = query.lastInsertId();
    query.finish();
    beginInsertRows({}, row, row);
    m_rows.push_back({key, std::vector<QVariant>(m_columns.size())});
    endInsertRows();
    ReadAgain(row);
    Q_EMIT headerDataChanged(Qt::Vertical, row, row + 1);
    return std::nullopt;
}

GridModel::Error GridRecords::Update(int row, int column, const QVariant& value) {
    QSqlQuery query(m_database.Connection());
    query.prepare(QStringLiteral("UPDATE %1 SET %2 = ? WHERE %3 = ?")
                      .arg(Quoted(m_table), Quoted(m_columns[static_cast<std::size_t>(column)].field), Quoted(m_key)));
    query.addBindValue(value);
    query.addBindValue(m_rows[static_cast<std::size_t>(row)].key);
    Error error;
    if (!query.exec())
        error = Readable(query, &m_columns[static_cast<std::size_t>(column)]);
    else if (query.numRowsAffected() != 1)
        error = GoneText();
    query.finish();
    ReadAgain(row);
    return error;
}

void GridRecords::ReadAgain(int row) {
    Row& shown = m_rows[static_cast<std::size_t>(row)];
    QString problem;
    auto query = m_database.Select(
        {QStringLiteral("%1 WHERE %2 = ?").arg(SelectStatement(), Quoted(m_key)), {shown.key}}, problem);
    if (!query)
        return;
    if (!query->next()) {
        beginRemoveRows({}, row, row);
        m_rows.erase(m_rows.begin() + row);
        endRemoveRows();
        return;
    }
    for (int i = 0; i < static_cast<int>(m_columns.size()); ++i)
        shown.values[static_cast<std::size_t>(i)] = query->value(i + 1);
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

GridModel::Error GridRecords::Remove(int row) {
    if (!m_database.IsOpen())
        return ClosedText();
    if (row < 0 || row >= static_cast<int>(m_rows.size()))
        return std::nullopt;
    QSqlQuery query(m_database.Connection());
    query.prepare(QStringLiteral("DELETE FROM %1 WHERE %2 = ?").arg(Quoted(m_table), Quoted(m_key)));
    query.addBindValue(m_rows[static_cast<std::size_t>(row)].key);
    if (!query.exec())
        return Readable(query);
    beginRemoveRows({}, row, row);
    m_rows.erase(m_rows.begin() + row);
    endRemoveRows();
    Q_EMIT RecordsChanged();
    return std::nullopt;
}
