#include "database/RowKeys.h"

#include "database/Schema.h"
#include "database/Sqlite.h"

#include <algorithm>

namespace {

struct Found {
    QStringList known;
    std::vector<std::pair<QString, QString>> unknown; ///< name and type
    bool hasKey = false;
};

Result<Found> ColumnsOf(const Sqlite& file, const schema::Table& table) {
    auto rows = file.Select(
        {QStringLiteral("SELECT name,type,pk FROM pragma_table_info(?)"), {QString::fromLatin1(table.name)}});
    if (!rows)
        return Failure{rows.Error()};
    Found found;
    while (rows->next()) {
        const QString name = rows->value(0).toString();
        found.hasKey |= rows->value(2).toInt() != 0;
        const bool isKnown =
            std::any_of(table.columns.begin(), table.columns.end(), [&name](const schema::Column& column) {
                return name.compare(QLatin1String(column.name), Qt::CaseInsensitive) == 0;
            });
        if (isKnown)
            found.known += name;
        else
            found.unknown.emplace_back(name, rows->value(1).toString());
    }
    return found;
}

Result<> GiveKey(const Sqlite& file, const schema::Table& table) {
    const Result<Found> found = ColumnsOf(file, table);
    if (!found)
        return Failure{found.Error()};
    if (found->hasKey)
        return {};
    const QString name = QString::fromLatin1(table.name);
    const QString old = name + QStringLiteral(" before its key");
    std::vector<Statement> statements{{QStringLiteral("ALTER TABLE [%1] RENAME TO [%2]").arg(name, old)},
                                      {schema::CreateStatement(table)}};
    const QString key = schema::KeyOf(name);
    QStringList columns;
    std::copy_if(found->known.begin(), found->known.end(), std::back_inserter(columns),
                 [&key](const QString& column) { return column.compare(key, Qt::CaseInsensitive) != 0; });
    for (const auto& [column, type] : found->unknown) {
        statements.push_back({QStringLiteral("ALTER TABLE [%1] ADD COLUMN [%2] %3").arg(name, column, type)});
        columns += column;
    }
    const QString list = u'[' + columns.join(QStringLiteral("],[")) + u']';
    statements.push_back(
        {QStringLiteral("INSERT INTO [%1] (%2) SELECT %2 FROM [%3] ORDER BY rowid").arg(name, list, old)});
    statements.push_back({QStringLiteral("DROP TABLE [%1]").arg(old)});
    return file.RunTogether(statements);
}

} // namespace

Result<> GiveRowKeys(const Sqlite& file) {
    // Values outside their column's range are the loaders' business.
    if (const Result<> set = file.Run({QStringLiteral("PRAGMA ignore_check_constraints = ON")}); !set)
        return set;
    Result<> given;
    for (const schema::Table& table : schema::Tables()) {
        const bool needsKey = std::any_of(table.columns.begin(), table.columns.end(), [](const schema::Column& column) {
            return column.kind == schema::Kind::OwnKey;
        });
        if (needsKey && given)
            given = GiveKey(file, table);
    }
    const Result<> reset = file.Run({QStringLiteral("PRAGMA ignore_check_constraints = OFF")});
    return given ? reset : given;
}
