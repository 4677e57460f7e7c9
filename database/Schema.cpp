#include "database/Schema.h"

#include <array>

namespace schema {
namespace {

constexpr Column QueueColumns[] = {
    {"q_Id", Kind::Key},           {"q_Number", Kind::Small},  {"q_Series", Kind::Long},
    {"q_route", Kind::Small},      {"q_On", Kind::YesNo, "0"}, {"q_Name", Kind::Text},
    {"q_Description", Kind::Text}, {"q_Notes", Kind::Text},    {"q_Button", Kind::Byte},
};

constexpr Column DisplayColumns[] = {
    {"d_Id", Kind::Key},          {"d_Number", Kind::Byte},         {"d_Address", Kind::Byte},
    {"d_Name", Kind::Text},       {"d_On", Kind::YesNo, "0"},       {"d_Type", Kind::Byte, "0"},
    {"d_HubId", Kind::Long, "0"}, {"d_direction", Kind::Byte, "0"}, {"d_VoiceLocal", Kind::YesNo, "0"},
    {"d_VoicerId", Kind::Text},   {"d_Description", Kind::Text},    {"LastInfo", Kind::Text},
};

constexpr Column QueueDisplayColumns[] = {{"ID", Kind::Key}, {"q_Id", Kind::Long}, {"d_Id", Kind::Long}};

constexpr Column ScanPlanColumns[] = {
    {"ID", Kind::Key}, {"d_Id", Kind::Long}, {"Order", Kind::Small}, {"Notes", Kind::Text}};

constexpr Column InfoDirectionColumns[] = {
    {"inf_Id", Kind::Small}, {"d_Id", Kind::Small}, {"Dir_Id", Kind::Small}, {"RowKey", Kind::OwnKey}};

constexpr Column HubColumns[] = {{"h_Id", Kind::Key}, {"h_Name", Kind::Text}};

constexpr Column MessageColumns[] = {{"ID", Kind::Key}, {"Text", Kind::Text}};

constexpr Column TicketColumns[] = {
    {"ID", Kind::Key},
    {"TicketNo", Kind::Small},
    {"ServiceId", Kind::Long},
    {"DisplayId", Kind::Long},
    {"DateTime", Kind::Moment},
    {"Flags", Kind::Small},
    {"Announced", Kind::YesNo, "0"},
    {"DateTimeFinish", Kind::Moment},
    {"Action", Kind::Small},
    {"Call", Kind::Small},
    {"TicketFlag", Kind::YesNo},
};

constexpr AddedColumn AllAddedColumns[] = {
    {"DateTimeFinish", "Date", "DateTimeFinish"},
    {"Action", "smallint", "Act"},
    {"Call", "smallint", "Call"},
    {"TicketFlag", "Bit", "TicketFlag"},
};

constexpr Table AllTables[] = {
    {"Queue", QueueColumns},
    {"Display", DisplayColumns},
    {"Queue-Display", QueueDisplayColumns},
    {"ScanPlan", ScanPlanColumns},
    {"Info-Direction", InfoDirectionColumns},
    {"Hub", HubColumns},
    {"Message", MessageColumns},
    {"rData", TicketColumns},
    {"qData", TicketColumns},
};

QString Range(const QString& column, const QString& low, const QString& high) {
    return QStringLiteral(" CONSTRAINT \"%1 takes a whole number from %2 to %3.\""
                          " CHECK ([%1] IS NULL OR (typeof([%1]) = 'integer' AND [%1] BETWEEN %2 AND %3))")
        .arg(column, low, high);
}

QString Definition(const Column& column) {
    const QString name = QString::fromLatin1(column.name);
    QString text = QStringLiteral("[%1] ").arg(name);
    QString check;
    switch (column.kind) {
    case Kind::Key:
    case Kind::OwnKey:
        return text + QStringLiteral("INTEGER PRIMARY KEY AUTOINCREMENT");
    case Kind::Byte:
        text += QStringLiteral("TINYINT");
        check = Range(name, QStringLiteral("0"), QStringLiteral("255"));
        break;
    case Kind::Small:
        text += QStringLiteral("SMALLINT");
        check = Range(name, QStringLiteral("-32768"), QStringLiteral("32767"));
        break;
    case Kind::Long:
        text += QStringLiteral("INTEGER");
        check = Range(name, QStringLiteral("-2147483648"), QStringLiteral("2147483647"));
        break;
    case Kind::YesNo:
        text += QStringLiteral("BIT");
        check = QStringLiteral(" CONSTRAINT \"%1 takes Yes or No.\""
                               " CHECK ([%1] IS NULL OR typeof([%1]) = 'integer')")
                    .arg(name);
        break;
    case Kind::Text:
        text += QStringLiteral("TEXT");
        break;
    case Kind::Moment:
        text += QStringLiteral("DATETIME");
        break;
    }
    if (column.defaultValue)
        text += QStringLiteral(" DEFAULT %1").arg(QString::fromLatin1(column.defaultValue));
    return text + check;
}

} // namespace

std::span<const AddedColumn> AddedColumns() {
    return AllAddedColumns;
}

std::span<const Table> Tables() {
    return AllTables;
}

const Table* FindTable(QStringView name) {
    for (const Table& table : AllTables) {
        if (name.compare(QLatin1String(table.name), Qt::CaseInsensitive) == 0)
            return &table;
    }
    return nullptr;
}

QString KeyOf(QStringView table) {
    const Table* found = FindTable(table);
    if (!found)
        return {};
    for (const Column& column : found->columns) {
        if (column.kind == Kind::Key || column.kind == Kind::OwnKey)
            return QString::fromLatin1(column.name);
    }
    return {};
}

QString CreateStatement(const Table& table) {
    QStringList columns;
    for (const Column& column : table.columns)
        columns += Definition(column);
    return QStringLiteral("CREATE TABLE [%1] (%2)")
        .arg(QString::fromLatin1(table.name), columns.join(QStringLiteral(", ")));
}

QStringList CreateStatements() {
    QStringList statements;
    for (const Table& table : AllTables)
        statements += CreateStatement(table);
    return statements + IndexStatements();
}

QStringList IndexStatements() {
    return {
        // The highest ticket number of one service and of all.
        QStringLiteral("CREATE INDEX IF NOT EXISTS [rData_Service] ON [rData] ([ServiceId], [Flags], [TicketNo])"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS [rData_Number] ON [rData] ([Flags], [TicketNo])"),
        // The waiting tickets, a few of very many.
        QStringLiteral("CREATE INDEX IF NOT EXISTS [rData_Waiting] ON [rData] ([ID]) WHERE NOT [Announced]"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS [qData_Date] ON [qData] ([DateTime])"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS [QueueDisplay_Service] ON [Queue-Display] ([q_Id])"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS [QueueDisplay_Object] ON [Queue-Display] ([d_Id])"),
    };
}

QStringList RecordStatements() {
    return {
        QStringLiteral("CREATE TABLE IF NOT EXISTS [LoadIdentity] ([Identity] TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE IF NOT EXISTS [LoadPayload] ([Hash] TEXT PRIMARY KEY NOT NULL, [Content] BLOB)"),
        QStringLiteral("CREATE TABLE IF NOT EXISTS [LoadRecord] ([ID] INTEGER PRIMARY KEY AUTOINCREMENT, "
                       "[Installation] TEXT, [Event] TEXT, [Type] INTEGER, [Address] INTEGER, [HubAddress] INTEGER, "
                       "[Device] INTEGER, [Name] TEXT, [Kind] TEXT, [Hash] TEXT, [Size] INTEGER, [Source] TEXT, "
                       "[Frames] INTEGER, [Tries] INTEGER, [Own] INTEGER, [Foreign] INTEGER, [Flags] TEXT, "
                       "[Begun] DATETIME, [Ended] DATETIME, [User] TEXT, [Port] TEXT, [Version] TEXT, [Outcome] TEXT, "
                       "[Reason] TEXT)"),
        QStringLiteral(
            "CREATE TABLE IF NOT EXISTS [EditAct] ([ID] INTEGER PRIMARY KEY AUTOINCREMENT, "
            "[Moment] DATETIME, [User] TEXT, [Name] TEXT, [Kind] INTEGER, [Target] INTEGER, [Changes] BLOB)"),
        // The last event of each kind at each device, in all and of each outcome.
        QStringLiteral("CREATE INDEX IF NOT EXISTS [LoadRecord_Place] ON [LoadRecord] ([Installation], [Type], "
                       "[Address], [HubAddress], [Kind], [Event], [Outcome])"),
    };
}

QString ReadableError(const QString& error) {
    // The driver appends its own general words behind the store's.
    QString text = error;
    text.remove(QStringLiteral("Unable to fetch row"));
    for (const QString& prefix :
         {QStringLiteral("CHECK constraint failed: "), QStringLiteral("UNIQUE constraint failed: ")}) {
        if (text.startsWith(prefix))
            text.remove(0, prefix.size());
    }
    return text.trimmed();
}

} // namespace schema
