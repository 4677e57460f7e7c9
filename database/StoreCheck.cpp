#include "database/StoreCheck.h"

#include "database/Schema.h"
#include "database/Sqlite.h"

#include <QSqlError>

#include <algorithm>
#include <map>

namespace {

struct FoundColumn {
    QString type;
    bool isKey;
};

using FoundColumns = std::map<QString, FoundColumn>; ///< by name in lower case

/// What SQLite makes of a declared type.
enum class Affinity { Integer, Text, None, Real, Numeric };

Affinity AffinityOf(const QString& type) {
    const QString upper = type.toUpper();
    const auto has = [&upper](const char* word) { return upper.contains(QLatin1String(word)); };
    if (has("INT"))
        return Affinity::Integer;
    if (has("CHAR") || has("CLOB") || has("TEXT"))
        return Affinity::Text;
    if (upper.isEmpty() || has("BLOB"))
        return Affinity::None;
    return has("REAL") || has("FLOA") || has("DOUB") ? Affinity::Real : Affinity::Numeric;
}

/// Whether values of the kind stay what they are in such a column.
bool CanHold(const FoundColumn& found, schema::Kind kind) {
    const Affinity affinity = AffinityOf(found.type);
    switch (kind) {
    case schema::Kind::Key:
    case schema::Kind::OwnKey:
        // Only this makes it the number of the row, which the file itself gives.
        return found.isKey && found.type.compare(QLatin1String("INTEGER"), Qt::CaseInsensitive) == 0;
    case schema::Kind::Text:
        return affinity == Affinity::Text || affinity == Affinity::None;
    case schema::Kind::Moment:
        return affinity != Affinity::Integer && affinity != Affinity::Real;
    default:
        return affinity != Affinity::Text && affinity != Affinity::Real;
    }
}

bool IsAddedLater(const char* column) {
    const auto added = schema::AddedColumns();
    return std::any_of(added.begin(), added.end(),
                       [column](const schema::AddedColumn& one) { return qstrcmp(column, one.name) == 0; });
}

bool IsNeeded(const QString& table, const schema::Column& column) {
    if (column.kind == schema::Kind::OwnKey)
        return false;
    if (table == QStringLiteral("Hub") || table == QStringLiteral("Message"))
        return false;
    if (table == QStringLiteral("qData"))
        return qstrcmp(column.name, "DateTime") == 0;
    return table != QStringLiteral("rData") || !IsAddedLater(column.name);
}

Result<FoundColumns> ColumnsOf(const Sqlite& file, const QString& table) {
    auto rows = file.Select({QStringLiteral("SELECT name,type,pk FROM pragma_table_info(?)"), {table}});
    FoundColumns found;
    while (rows && rows->next())
        found[rows->value(0).toString().toLower()] = {rows->value(1).toString(), rows->value(2).toInt() == 1};
    if (!rows || rows->lastError().isValid())
        return Failure{rows ? Sqlite::TextOf(rows->lastError()) : rows.Error()};
    return found;
}

} // namespace

Result<> CheckTables(const Sqlite& file) {
    const QStringList present = file.Connection().tables();
    QStringList lostTables;
    QStringList problems;
    for (const schema::Table& table : schema::Tables()) {
        const QString name = QString::fromLatin1(table.name);
        if (!present.contains(name, Qt::CaseInsensitive)) {
            lostTables += name;
            continue;
        }
        const Result<FoundColumns> columns = ColumnsOf(file, name);
        if (!columns)
            return Failure{columns.Error()};
        for (const schema::Column& column : table.columns) {
            if (!IsNeeded(name, column))
                continue;
            const auto found = columns->find(QString::fromLatin1(column.name).toLower());
            if (found == columns->end())
                problems += QStringLiteral("Table %1 lacks the column %2.").arg(name, QLatin1String(column.name));
            else if (!CanHold(found->second, column.kind))
                problems += QStringLiteral("Column %2 of table %1 is of the wrong kind: \"%3\".")
                                .arg(name, QLatin1String(column.name), found->second.type);
        }
    }
    if (!lostTables.isEmpty())
        problems.prepend(QStringLiteral("It is no database of this program; it lacks the table(s) %1.")
                             .arg(lostTables.join(QStringLiteral(", "))));
    return problems.isEmpty() ? Result<>() : Failure{problems.join(u'\n')};
}
