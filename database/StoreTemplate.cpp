#include "database/StoreTemplate.h"

#include "database/Schema.h"
#include "database/Sqlite.h"
#include "database/StoreCheck.h"
#include "database/StoreKind.h"
#include "platform/WholeFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace {

constexpr int HighestAddress = 207;
constexpr int BroadcastAddress = 127;
constexpr int HighestNumber = 255;

QString tr(const char* text) {
    return QCoreApplication::translate("StoreTemplate", text);
}

struct Row {
    qint64 key = 0;
    StoreTemplate::Object object;
};

std::optional<int> NumberOf(const QVariant& value) {
    return value.isNull() ? std::nullopt : std::optional(value.toInt());
}

Result<std::vector<Row>> RowsOf(const Sqlite& file, StoreTemplate::Shift shift) {
    auto query = file.Select({QStringLiteral("SELECT [d_Id],[d_Name],[d_Number],[d_Address] FROM [Display] ORDER BY "
                                             "[d_Id]")});
    if (!query)
        return Failure{query.Error()};
    std::vector<Row> rows;
    while (query->next()) {
        Row& row = rows.emplace_back();
        StoreTemplate::Object& object = row.object;
        row.key = query->value(0).toLongLong();
        object.name = object.newName = query->value(1).toString();
        object.number = object.newNumber = NumberOf(query->value(2));
        object.address = object.newAddress = NumberOf(query->value(3));
        if (object.number)
            *object.newNumber += shift.number;
        if (object.address)
            *object.newAddress += shift.address;
        const QString before = object.number ? QString::number(*object.number) : QString();
        if (shift.number != 0 && object.number && object.name.endsWith(u' ' + before))
            object.newName = object.name.chopped(before.size()) + QString::number(*object.newNumber);
        if (object.newNumber && shift.number != 0 && (*object.newNumber < 0 || *object.newNumber > HighestNumber))
            object.fault = tr("number %1 is not from 0 to %2").arg(*object.newNumber).arg(HighestNumber);
        else if (object.newAddress && shift.address != 0 &&
                 (*object.newAddress < 0 || *object.newAddress > HighestAddress ||
                  *object.newAddress == BroadcastAddress))
            object.fault = tr("no device can have address %1").arg(*object.newAddress);
    }
    if (query->lastError().isValid())
        return Failure{Sqlite::TextOf(query->lastError())};
    return rows;
}

/// Takes everything out of a copy that is not the description, and shifts what is.
Result<> Reduce(const Sqlite& file, const std::vector<Row>& rows) {
    std::vector<Statement> statements;
    auto names = file.Select({QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' AND name NOT LIKE "
                                             "'sqlite!_%' ESCAPE '!'")});
    if (!names)
        return Failure{names.Error()};
    while (names->next()) {
        const QString name = names->value(0).toString();
        if (!schema::FindTable(name))
            statements.push_back({QStringLiteral("DROP TABLE \"%1\"").arg(QString(name).replace(u'"', u"\"\""_qs))});
    }
    names->finish();
    for (const char* const tickets : {"rData", "qData"})
        statements.push_back({QStringLiteral("DELETE FROM [%1]").arg(QLatin1String(tickets))});
    statements.push_back({QStringLiteral("UPDATE [Display] SET [LastInfo]=''")});
    statements.push_back({QStringLiteral("DELETE FROM sqlite_sequence WHERE name IN ('rData','qData')")});
    const auto orNull = [](std::optional<int> number) { return number ? QVariant(*number) : QVariant(); };
    for (const Row& row : rows)
        statements.push_back(
            {QStringLiteral("UPDATE [Display] SET [d_Name]=?,[d_Number]=?,[d_Address]=? WHERE [d_Id]=?"),
             {row.object.newName.isNull() ? QVariant() : QVariant(row.object.newName), orNull(row.object.newNumber),
              orNull(row.object.newAddress), row.key}});
    return file.RunTogether(statements);
}

} // namespace

Failure StoreTemplate::Fault(const QString& why) const {
    return Failure{QStringLiteral("%1: %2").arg(m_source, why)};
}

Result<std::vector<StoreTemplate::Object>> StoreTemplate::Preview(Shift shift) const {
    const StoreKind kind = StoreKindOfFile(m_source);
    if (IsJet(kind))
        return Fault(tr("This is an Access file. Open it once, so that it is taken over; then it can be used here."));
    if (kind != StoreKind::Sqlite)
        return Fault(tr("This is no database of this program."));
    Sqlite file;
    if (const Result<> opened = file.Open(m_source); !opened)
        return Fault(opened.Error());
    if (const Result<> checked = CheckTables(file); !checked)
        return Fault(checked.Error());
    Result<std::vector<Row>> rows = RowsOf(file, shift);
    if (!rows)
        return Fault(rows.Error());
    std::vector<Object> objects;
    for (Row& row : *rows)
        objects.push_back(std::move(row.object));
    return objects;
}

Result<> StoreTemplate::Make(const QString& target, Shift shift) const {
    const Result<std::vector<Object>> preview = Preview(shift);
    if (!preview)
        return Failure{preview.Error()};
    for (const Object& object : *preview) {
        if (!object.fault.isEmpty())
            return Fault(object.fault);
    }
    const Failure exists{QStringLiteral("%1: The file exists already.").arg(target)};
    if (QFileInfo::exists(target))
        return exists;
    const QString temporary = QStringLiteral("%1.new-%2").arg(target).arg(QCoreApplication::applicationPid());
    QFile::remove(temporary);
    Sqlite file;
    Result<> made = file.Open(m_source);
    if (made)
        made = file.Run({QStringLiteral("VACUUM INTO ?"), {temporary}});
    file.Close();
    if (made)
        made = file.Open(temporary);
    if (made)
        made = file.Run({QStringLiteral("PRAGMA synchronous = FULL")});
    if (made) {
        const Result<std::vector<Row>> rows = RowsOf(file, shift);
        made = rows ? Reduce(file, *rows) : Result<>(Failure{rows.Error()});
    }
    // What was taken out must not stand in free pages of a file that goes to another customer.
    if (made)
        made = file.Run({QStringLiteral("VACUUM")});
    file.Close();
    if (made && QFile::rename(temporary, target))
        return FlushFolderOf(target);
    QFile::remove(temporary);
    if (made && QFileInfo::exists(target))
        return exists;
    return Failure{
        QStringLiteral("%1: %2").arg(target, made ? QStringLiteral("The file cannot be made.") : made.Error())};
}
