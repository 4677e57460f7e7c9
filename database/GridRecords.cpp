#include "database/GridRecords.h"

#include "database/Database.h"
#include "database/Schema.h"

#include <QCollator>
#include <QLocale>
#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>

namespace {

QString Quoted(const QString& name) {
    return u'[' + name + u']';
}

/// A column's name without its table's.
QString FieldName(const GridColumn& column) {
    return column.field.section(u'.', -1);
}

/// What the store said, with the column's caption in place of its name.
Failure Readable(const QString& error, const GridColumn* column = nullptr) {
    QString text = schema::ReadableError(error);
    if (!column)
        return {text};
    const QString name = FieldName(*column);
    if (text.startsWith(name + u' ', Qt::CaseInsensitive))
        text.replace(0, name.size(), column->caption);
    return {text};
}

Failure Closed() {
    return {QStringLiteral("Can't open Queue database!")};
}

Failure Gone() {
    return {QStringLiteral("This record is not in the database any more.")};
}

} // namespace

GridRecords::GridRecords(Database& database, GridSource source, std::vector<GridColumn> columns, QObject* parent)
    : GridModel(parent)
    , m_database(database)
    , m_source(std::move(source))
    , m_columns(std::move(columns)) {
    m_tables.push_back({m_source.table, schema::KeyOf(m_source.table)});
    for (const GridColumn& column : m_columns)
        m_columnTables.push_back(TableOf(column));
}

std::size_t GridRecords::TableOf(const GridColumn& column) {
    const QString name = column.field.section(u'.', 0, -2);
    if (name.isEmpty())
        return 0;
    const auto known = std::find_if(m_tables.begin(), m_tables.end(), [&](const Table& t) { return t.name == name; });
    const auto index = static_cast<std::size_t>(known - m_tables.begin());
    if (known == m_tables.end())
        m_tables.push_back({name, schema::KeyOf(name)});
    return index;
}

QString GridRecords::SelectStatement(const QString& condition) const {
    QStringList fields;
    for (const Table& table : m_tables)
        fields += Quoted(table.name) + u'.' + Quoted(table.key);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const QString name = FieldName(m_columns[i]);
        fields +=
            name.isEmpty() ? QStringLiteral("NULL") : Quoted(m_tables[m_columnTables[i]].name) + u'.' + Quoted(name);
    }
    QString statement =
        QStringLiteral("SELECT %1 FROM %2 %3").arg(fields.join(u','), Quoted(m_source.table), m_source.join);
    if (!condition.isEmpty())
        statement += QStringLiteral(" WHERE ") + condition;
    const QString keyOrder = Quoted(m_source.table) + u'.' + Quoted(m_tables[0].key);
    return statement + QStringLiteral(" ORDER BY ") +
           (m_source.order.isEmpty() ? keyOrder : m_source.order + u',' + keyOrder);
}

GridRecords::Row GridRecords::RowOf(const QSqlQuery& query) const {
    Row row;
    int place = 0;
    for (std::size_t i = 0; i < m_tables.size(); ++i)
        row.keys.push_back(query.value(place++));
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        row.values.push_back(query.value(place++));
    return row;
}

Result<> GridRecords::Requery() {
    Result<> done;
    beginResetModel();
    m_rows.clear();
    m_isOpen = m_database.IsOpen();
    if (m_isOpen) {
        auto query = m_database.Select({SelectStatement(m_source.where), m_values});
        QString problem = query.Error();
        while (query && query->next()) {
            m_rows.push_back(RowOf(*query));
            m_rows.back().place = m_rows.size();
        }
        if (query && query->lastError().isValid())
            problem = Sqlite::TextOf(query->lastError());
        if (!query || !problem.isEmpty()) {
            // Rows that are cut short must not pass for all there are.
            m_rows.clear();
            done = Failure{schema::ReadableError(problem)};
        }
    } else {
        done = Closed();
    }
    Arrange();
    endResetModel();
    return done;
}

void GridRecords::sort(int column, Qt::SortOrder order) {
    beginResetModel();
    m_sortColumn = column < columnCount() ? column : -1;
    m_sortOrder = order;
    Arrange();
    endResetModel();
}

void GridRecords::Arrange() {
    std::sort(m_rows.begin(), m_rows.end(), [](const Row& one, const Row& other) { return one.place < other.place; });
    if (m_sortColumn < 0)
        return;
    const auto index = static_cast<std::size_t>(m_sortColumn);
    const GridColumn& column = m_columns[index];
    QCollator collator{QLocale(QLocale::Vietnamese)};
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    // What each row is sorted by, found out once.
    struct Entry {
        bool isNull;
        bool isNumber;
        double number;
        QString text;
        std::size_t row;
    };
    std::vector<Entry> entries;
    entries.reserve(m_rows.size());
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        const QVariant& value = m_rows[row].values[index];
        const QString note = column.field.isEmpty() ? NoteText(m_rows[row].keys[0]) : QString();
        bool isNumber = false;
        const double number = value.toDouble(&isNumber);
        isNumber = isNumber && column.values.empty();
        const QString text = column.field.isEmpty() ? note : AsRead(column.Shown(value.toString()));
        entries.push_back({text.isEmpty(), isNumber, number, text, row});
    }
    std::stable_sort(entries.begin(), entries.end(), [&](const Entry& first, const Entry& second) {
        // What is empty comes last, whatever the direction is.
        if (first.isNull != second.isNull)
            return second.isNull;
        const bool isDown = m_sortOrder == Qt::DescendingOrder;
        const Entry& one = isDown ? second : first;
        const Entry& other = isDown ? first : second;
        if (one.isNumber != other.isNumber)
            return one.isNumber;
        return one.isNumber ? one.number < other.number : collator.compare(one.text, other.text) < 0;
    });
    std::vector<Row> arranged;
    arranged.reserve(entries.size());
    for (const Entry& entry : entries)
        arranged.push_back(std::move(m_rows[entry.row]));
    m_rows = std::move(arranged);
}

int GridRecords::rowCount(const QModelIndex& parent) const {
    if (parent.isValid() || !m_isOpen)
        return 0;
    return m_source.canAdd ? RecordCount() + 1 : RecordCount();
}

QVariant GridRecords::Key(int row) const {
    return row >= 0 && row < RecordCount() ? m_rows[static_cast<std::size_t>(row)].keys[0] : QVariant();
}

QVariant GridRecords::Value(int row, QStringView field) const {
    if (row < 0 || row >= RecordCount())
        return {};
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (FieldName(m_columns[i]).compare(field, Qt::CaseInsensitive) == 0)
            return m_rows[static_cast<std::size_t>(row)].values[i];
    }
    return {};
}

QString GridRecords::CellText(int row, int column) const {
    if (row < 0 || row >= RecordCount())
        return {};
    return m_rows[static_cast<std::size_t>(row)].values[static_cast<std::size_t>(column)].toString();
}

Result<> GridRecords::Write(int row, int column, const QString& text) {
    if (!m_database.IsOpen())
        return Closed();
    if (row >= rowCount())
        return Gone();
    if (row < 0 || text == CellText(row, column))
        return {};
    const QVariant value = text.isEmpty() ? QVariant() : QVariant(text);
    if (Result<> known = CheckReference(m_columns[static_cast<std::size_t>(column)], value); !known)
        return known;
    Result<> done = IsNewRow(row) ? Insert(column, value) : Update(row, column, value);
    if (done && !m_isTogether)
        Q_EMIT RecordsChanged();
    return done;
}

Result<> GridRecords::Together(const QString& act, const std::function<Result<>()>& change) {
    if (!m_database.IsOpen())
        return Closed();
    m_isTogether = true;
    m_hasRemoved = false;
    const Result<> done = m_database.Edit(act, change);
    m_isTogether = false;
    (void)Requery();
    if (!done)
        return Readable(done.Error());
    Q_EMIT RecordsChanged();
    if (m_hasRemoved)
        Q_EMIT RecordRemoved();
    return done;
}

Result<> GridRecords::CheckReference(const GridColumn& column, const QVariant& value) const {
    if (column.refersTo.isEmpty())
        return {};
    const QString table = column.refersTo.section(u'.', 0, -2);
    const QString field = column.refersTo.section(u'.', -1);
    auto known =
        m_database.Select({QStringLiteral("SELECT 1 FROM %1 WHERE %2=?").arg(Quoted(table), Quoted(field)), {value}});
    if (!known)
        return Failure{known.Error()};
    if (known->next())
        return {};
    return Failure{
        value.isNull()
            ? QStringLiteral("%1 must name %2.").arg(column.caption, column.refersToA)
            : QStringLiteral("%1 %2 is not the number of %3.").arg(column.caption, value.toString(), column.refersToA)};
}

Result<> GridRecords::Insert(int column, const QVariant& value) {
    const GridColumn& written = m_columns[static_cast<std::size_t>(column)];
    QVariant key;
    Result<> done = m_database.Edit({}, [&]() -> Result<> {
        auto query = m_database.Select(
            {QStringLiteral("INSERT INTO %1 (%2) VALUES (?)").arg(Quoted(m_source.table), Quoted(FieldName(written))),
             {value}});
        if (!query)
            return Readable(query.Error(), &written);
        key = query->lastInsertId();
        return {};
    });
    if (!done)
        return done;
    const int row = RecordCount();
    // The blank row becomes the record, and a new blank one comes behind it.
    beginInsertRows({}, row + 1, row + 1);
    Row& added = m_rows.emplace_back();
    added.keys.resize(m_tables.size());
    added.keys[0] = key;
    added.values.resize(m_columns.size());
    for (const Row& one : m_rows)
        added.place = std::max(added.place, one.place + 1);
    endInsertRows();
    ReadAgain(row);
    Q_EMIT headerDataChanged(Qt::Vertical, row, row + 1);
    return {};
}

Result<> GridRecords::Update(int row, int column, const QVariant& value) {
    const GridColumn& written = m_columns[static_cast<std::size_t>(column)];
    const std::size_t tableIndex = m_columnTables[static_cast<std::size_t>(column)];
    const Table& table = m_tables[tableIndex];
    const QVariant key = m_rows[static_cast<std::size_t>(row)].keys[tableIndex];
    const Result<> done = m_database.Edit({}, [&]() -> Result<> {
        auto query = m_database.Select({QStringLiteral("UPDATE %1 SET %2 = ? WHERE %3 = ?")
                                            .arg(Quoted(table.name), Quoted(FieldName(written)), Quoted(table.key)),
                                        {value, key}});
        if (!query)
            return Readable(query.Error(), &written);
        return query->numRowsAffected() == 1 ? Result<>() : Gone();
    });
    if (tableIndex == 0) {
        ReadAgain(row);
        return done;
    }
    // A record of a joined table may show in several rows.
    for (int shown = RecordCount() - 1; shown >= 0; --shown)
        ReadAgain(shown);
    return done;
}

void GridRecords::ReadAgain(int row) {
    Row& shown = m_rows[static_cast<std::size_t>(row)];
    const QString condition = Quoted(m_source.table) + u'.' + Quoted(m_tables[0].key) + QStringLiteral(" = ?");
    auto query = m_database.Select({SelectStatement(condition), {shown.keys[0]}});
    if (!query)
        return;
    if (!query->next()) {
        beginRemoveRows({}, row, row);
        m_rows.erase(m_rows.begin() + row);
        endRemoveRows();
        return;
    }
    const std::size_t place = shown.place;
    shown = RowOf(*query);
    shown.place = place;
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

Result<> GridRecords::Remove(int row) {
    if (!m_database.IsOpen())
        return Closed();
    if (!m_source.canRemove || row < 0 || row >= RecordCount())
        return {};
    const std::vector<Statement> deleting = {
        {QStringLiteral("DELETE FROM %1 WHERE %2 = ?").arg(Quoted(m_source.table), Quoted(m_tables[0].key)),
         {Key(row)}}};
    if (const Result<> done = m_database.Edit({}, deleting); !done)
        return Readable(done.Error());
    beginRemoveRows({}, row, row);
    m_rows.erase(m_rows.begin() + row);
    endRemoveRows();
    if (m_isTogether) {
        m_hasRemoved = true;
        return {};
    }
    Q_EMIT RecordsChanged();
    Q_EMIT RecordRemoved();
    return {};
}
