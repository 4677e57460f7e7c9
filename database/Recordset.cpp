#include "database/Recordset.h"

#include <QSqlError>
#include <QSqlRecord>

#include <algorithm>
#include <limits>

namespace {

constexpr qint64 BeforeAll = std::numeric_limits<qint64>::min();

bool IsTable(const QString& source) {
    return source.size() > 2 && source.startsWith(u'[') && source.indexOf(u']') == source.size() - 1;
}

bool IsEqual(const QVariant& left, const QVariant& right) {
    if (left.isNull() || right.isNull())
        return false;
    bool isLeftNumber = false;
    bool isRightNumber = false;
    const double leftNumber = left.toDouble(&isLeftNumber);
    const double rightNumber = right.toDouble(&isRightNumber);
    return isLeftNumber && isRightNumber ? leftNumber == rightNumber : left.toString() == right.toString();
}

} // namespace

bool Recordset::Fail(const QString& error) const {
    m_error = error;
    return false;
}

bool Recordset::Run(QSqlQuery& query, const QString& statement, const QVariantList& values) const {
    query.setForwardOnly(true);
    bool isGood = query.prepare(statement);
    for (const QVariant& value : values)
        query.addBindValue(value);
    isGood = isGood && query.exec();
    return isGood || Fail(query.lastError().databaseText());
}

bool Recordset::Open(const QSqlDatabase& connection, const QString& source, const QVariantList& values, Cursor cursor) {
    Close();
    if (!connection.isOpen())
        return Fail(QStringLiteral("The database is closed."));
    const bool isTable = IsTable(source);
    QSqlQuery query(connection);
    if (isTable) {
        if (!Run(query, QStringLiteral("SELECT rowid, * FROM %1 LIMIT 0").arg(source), {}))
            return false;
        TakeColumns(query, 1);
        m_kind = Kind::Table;
    } else {
        if (!Run(query, source, values))
            return false;
        TakeColumns(query, 0);
        m_kind = cursor == Cursor::ForwardOnly ? Kind::Stream : Kind::Rows;
    }
    if (m_kind == Kind::Rows) {
        while (query.next())
            m_rows.push_back(RowOf(query, 0));
        // The driver ends the rows early where reading one fails.
        if (query.lastError().isValid()) {
            const QString error = query.lastError().databaseText();
            Close();
            return Fail(error);
        }
    }
    m_connection = connection;
    m_source = source;
    m_values = values;
    if (m_kind == Kind::Stream)
        m_stream = std::move(query);
    return MoveFirst();
}

void Recordset::Close() {
    *this = Recordset();
}

void Recordset::TakeColumns(const QSqlQuery& query, int first) {
    const QSqlRecord record = query.record();
    for (int i = first; i < record.count(); ++i)
        m_columns += record.fieldName(i);
}

Recordset::Row Recordset::RowOf(const QSqlQuery& query, int first) const {
    Row row;
    row.reserve(static_cast<std::size_t>(m_columns.size()));
    for (int i = 0; i < m_columns.size(); ++i)
        row.push_back(query.value(first + i));
    return row;
}

qint64 Recordset::RecordCount() const {
    switch (m_kind) {
    case Kind::Closed:
    case Kind::Stream:
        return -1;
    case Kind::Rows:
        return std::count_if(m_rows.begin(), m_rows.end(), [this](const Row& row) { return IsMatch(row, m_filter); });
    case Kind::Table:
        break;
    }
    QString statement = QStringLiteral("SELECT COUNT(*) FROM %1").arg(m_source);
    QVariantList values;
    if (m_filter) {
        statement += QStringLiteral(" WHERE %1 = ?").arg(ColumnName(m_filter->column));
        values += m_filter->value;
    }
    QSqlQuery query(m_connection);
    return Run(query, statement, values) && query.next() ? query.value(0).toLongLong() : -1;
}

bool Recordset::IsMatch(const Row& row, const std::optional<Condition>& condition) const {
    return !condition || IsEqual(row[static_cast<std::size_t>(condition->column)], condition->value);
}

QString Recordset::ColumnName(int column) const {
    return u'[' + m_columns[column] + u']';
}

std::optional<Recordset::Condition> Recordset::ConditionOf(QStringView name, const QVariant& value) const {
    const int column = FieldIndex(name);
    if (column < 0) {
        Fail(QStringLiteral("no such column: %1").arg(name));
        return std::nullopt;
    }
    return Condition{column, value};
}

bool Recordset::Seek(qint64 from, const std::optional<Condition>& wanted) {
    CancelUpdate();
    m_current.reset();
    switch (m_kind) {
    case Kind::Table:
        return SeekInTable(from, wanted);
    case Kind::Rows:
        return SeekInRows(from, wanted);
    case Kind::Stream:
        return SeekInStream(from, wanted);
    case Kind::Closed:
        break;
    }
    return Fail(QStringLiteral("The recordset is closed."));
}

bool Recordset::SeekInTable(qint64 from, const std::optional<Condition>& wanted) {
    QString statement = QStringLiteral("SELECT rowid, * FROM %1 WHERE rowid >= ?").arg(m_source);
    QVariantList values{from};
    for (const auto& condition : {m_filter, wanted}) {
        if (condition) {
            statement += QStringLiteral(" AND %1 = ?").arg(ColumnName(condition->column));
            values += condition->value;
        }
    }
    QSqlQuery query(m_connection);
    if (!Run(query, statement + QStringLiteral(" ORDER BY rowid LIMIT 1"), values)) {
        m_atEnd = true;
        return false;
    }
    m_atEnd = !query.next();
    if (!m_atEnd) {
        m_position = query.value(0).toLongLong();
        m_current = RowOf(query, 1);
    }
    return true;
}

bool Recordset::SeekInRows(qint64 from, const std::optional<Condition>& wanted) {
    const auto count = static_cast<qint64>(m_rows.size());
    m_position = std::max<qint64>(from, 0);
    for (; m_position < count; ++m_position) {
        const Row& row = m_rows[static_cast<std::size_t>(m_position)];
        if (IsMatch(row, m_filter) && IsMatch(row, wanted)) {
            m_current = row;
            break;
        }
    }
    m_atEnd = !m_current;
    return true;
}

bool Recordset::SeekInStream(qint64 from, const std::optional<Condition>& wanted) {
    // The stream's position is the index of the row that it stands on; -1 and below is before the first one.
    const qint64 at = m_stream.at();
    if (from <= 0 && at > 0)
        return Fail(QStringLiteral("A forward-only recordset cannot go back."));
    if (!m_stream.isActive()) {
        m_atEnd = true;
        return true;
    }
    bool isOnRow = at >= 0 && from <= at ? true : m_stream.next();
    while (isOnRow) {
        Row row = RowOf(m_stream, 0);
        if (IsMatch(row, m_filter) && IsMatch(row, wanted)) {
            m_position = m_stream.at();
            m_current = std::move(row);
            m_atEnd = false;
            return true;
        }
        isOnRow = m_stream.next();
    }
    m_atEnd = true;
    const QSqlError error = m_stream.lastError();
    m_stream.finish();
    return !error.isValid() || Fail(error.databaseText());
}

bool Recordset::MoveFirst() {
    const bool isGood = Seek(BeforeAll, std::nullopt);
    m_isEmpty = m_atEnd;
    return isGood;
}

bool Recordset::MoveNext() {
    if (m_atEnd)
        return State() || Fail(QStringLiteral("The recordset is closed."));
    if (m_position == std::numeric_limits<qint64>::max()) {
        CancelUpdate();
        m_current.reset();
        m_atEnd = true;
        return true;
    }
    return Seek(m_position + 1, std::nullopt);
}

int Recordset::FieldIndex(QStringView name) const {
    for (int i = 0; i < m_columns.size(); ++i) {
        if (name.compare(m_columns[i], Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

QVariant Recordset::Field(QStringView name) const {
    return Value(FieldIndex(name));
}

QVariant Recordset::Value(int index) const {
    const auto change = m_changes.find(index);
    if (change != m_changes.end())
        return change->second;
    if (!m_current || m_isAdding || index < 0 || index >= m_columns.size())
        return {};
    return (*m_current)[static_cast<std::size_t>(index)];
}

bool Recordset::Filter(QStringView name, const QVariant& value) {
    const auto condition = ConditionOf(name, value);
    if (!condition)
        return false;
    m_filter = condition;
    return MoveFirst();
}

bool Recordset::ClearFilter() {
    m_filter.reset();
    return MoveFirst();
}

bool Recordset::Find(QStringView name, const QVariant& value) {
    const auto condition = ConditionOf(name, value);
    if (!condition || m_atEnd)
        return false;
    return Seek(m_position, condition) && !m_atEnd;
}

bool Recordset::CanEdit(bool needsRow) const {
    if (m_kind != Kind::Table)
        return Fail(QStringLiteral("The rows cannot be changed."));
    return !needsRow || m_isAdding || m_current || Fail(QStringLiteral("There is no current row."));
}

bool Recordset::AddNew() {
    if (!CanEdit(false))
        return false;
    CancelUpdate();
    m_isAdding = true;
    return true;
}

bool Recordset::SetField(QStringView name, const QVariant& value) {
    const int column = FieldIndex(name);
    if (column < 0)
        return Fail(QStringLiteral("no such column: %1").arg(name));
    if (!CanEdit(true))
        return false;
    m_changes[column] = value;
    return true;
}

bool Recordset::Update() {
    if (!CanEdit(true))
        return false;
    if (m_changes.empty() && !m_isAdding)
        return true;
    QStringList names;
    QStringList marks;
    QVariantList values;
    for (const auto& [column, value] : m_changes) {
        names += m_isAdding ? ColumnName(column) : ColumnName(column) + QStringLiteral(" = ?");
        marks += QStringLiteral("?");
        values += value;
    }
    const QString list = names.join(QStringLiteral(", "));
    QString statement;
    if (!m_isAdding) {
        statement = QStringLiteral("UPDATE %1 SET %2 WHERE rowid = ?").arg(m_source, list);
        values += m_position;
    } else if (m_changes.empty()) {
        statement = QStringLiteral("INSERT INTO %1 DEFAULT VALUES").arg(m_source);
    } else {
        statement = QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(m_source, list, marks.join(u','));
    }
    QSqlQuery query(m_connection);
    if (!Run(query, statement, values))
        return false;
    if (query.numRowsAffected() != 1)
        return Fail(QStringLiteral("The row is not there any more."));
    const bool isNew = m_isAdding;
    const qint64 row = isNew ? query.lastInsertId().toLongLong() : m_position;
    query.finish();

    // What the table made of the values (defaults, conversions) is read back, whatever the filter says.
    const std::optional<Condition> filter = std::exchange(m_filter, std::nullopt);
    const bool isRead = Seek(row, std::nullopt);
    m_filter = filter;
    m_isEmpty = m_isEmpty && m_atEnd;
    return isRead;
}

void Recordset::CancelUpdate() {
    m_changes.clear();
    m_isAdding = false;
}

bool Recordset::Delete() {
    if (!CanEdit(false))
        return false;
    if (!m_current)
        return Fail(QStringLiteral("There is no current row."));
    QSqlQuery query(m_connection);
    if (!Run(query, QStringLiteral("DELETE FROM %1 WHERE rowid = ?").arg(m_source), {m_position}))
        return false;
    CancelUpdate();
    m_current.reset();
    return query.numRowsAffected() == 1 || Fail(QStringLiteral("The row is not there any more."));
}

bool Recordset::Requery() {
    if (!State())
        return Fail(QStringLiteral("The recordset is closed."));
    Recordset again;
    const Cursor cursor = m_kind == Kind::Stream ? Cursor::ForwardOnly : Cursor::Keyset;
    if (!again.Open(m_connection, m_source, m_values, cursor))
        return Fail(again.LastError());
    const std::optional<Condition> filter = m_filter;
    *this = std::move(again);
    if (!filter)
        return true;
    m_filter = filter;
    return MoveFirst();
}

Recordset Recordset::Clone() const {
    Recordset clone;
    if (m_kind == Kind::Rows) {
        clone.m_kind = m_kind;
        clone.m_connection = m_connection;
        clone.m_source = m_source;
        clone.m_values = m_values;
        clone.m_columns = m_columns;
        clone.m_rows = m_rows;
        clone.MoveFirst();
    } else if (State()) {
        clone.Open(m_connection, m_source, m_values, m_kind == Kind::Stream ? Cursor::ForwardOnly : Cursor::Keyset);
    }
    return clone;
}
