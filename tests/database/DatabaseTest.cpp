#include "database/Schema.h"
#include "tests/database/World.h"

#include <QFile>

namespace {

void WriteFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QByteArray ReadFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("no file");
}

TEST(Database, LeavesAFileThatIsNoStoreAsItIsAndStaysClosed) {
    World world(false);
    const QByteArray whole = ReadFile(world.store);
    QByteArray noTable = whole;
    noTable.replace("ScanPlan", "ScamPlan");
    QByteArray damaged = whole;
    damaged.replace(100, 200, QByteArray(200, '\xEE'));
    const struct {
        QByteArray content;
        const char* reason;
    } cases[] = {
        {"no file", "The file does not exist."},
        {"", "It is no database of this program; it lacks the table(s) Queue, Display, Queue-Display, ScanPlan, "
             "Info-Direction, Hub, Message, rData, qData."},
        {QByteArray(5000, 'x'), "file is not a database"},
        {noTable, "It is no database of this program; it lacks the table(s) ScanPlan."},
        {damaged, "database disk image is malformed"},
    };
    const QString path = world.folder.filePath(QStringLiteral("100% #1?.mdb"));
    for (const auto& [content, reason] : cases) {
        if (content != "no file")
            WriteFile(path, content);
        world.database.OpenDatabase(path);
        EXPECT_FALSE(world.database.IsOpen());
        const QString told = QStringLiteral("%1: %2").arg(path, QString::fromLatin1(reason));
        EXPECT_EQ(world.TakeLines(), QStringList({QStringLiteral("Can't open Queue database!"), told}));
        EXPECT_EQ(world.database.OpenError(), told);
        EXPECT_TRUE(ReadFile(path) == content) << reason;
    }
    WriteFile(path, whole);
    world.database.OpenDatabase(path);
    EXPECT_TRUE(world.database.IsOpen() && world.database.OpenError().isEmpty());
    EXPECT_EQ(world.database.Path(), path);
}

TEST(Database, RefusesAStoreWhoseTablesCouldNotHoldWhatIsTyped) {
    const struct {
        const char* change;
        const char* reason;
    } cases[] = {
        {"ALTER TABLE Queue DROP COLUMN q_Button", "Table Queue lacks the column q_Button."},
        {"ALTER TABLE Display DROP COLUMN LastInfo; ALTER TABLE ScanPlan DROP COLUMN Notes",
         "Table Display lacks the column LastInfo.\nTable ScanPlan lacks the column Notes."},
        {"DROP TABLE [Info-Direction]; CREATE VIEW [Info-Direction] AS SELECT 1 AS inf_Id, 2 AS d_Id, 3 AS Dir_Id",
         "It is no database of this program; it lacks the table(s) Info-Direction."},
        {"DROP TABLE Queue; CREATE TABLE Queue (q_Id INTEGER, q_Number TEXT, q_Series, q_route INT, q_On BIT, q_Name "
         "REAL, q_Description VARCHAR(64), q_Notes, q_Button)",
         "Column q_Id of table Queue is of the wrong kind: \"INTEGER\".\nColumn q_Number of table Queue is of the "
         "wrong "
         "kind: \"TEXT\".\nColumn q_Name of table Queue is of the wrong kind: \"REAL\"."},
        {"ALTER TABLE rData DROP COLUMN TicketFlag; ALTER TABLE qData DROP COLUMN Flags; DROP TABLE Hub; CREATE TABLE "
         "Hub (x)",
         ""},
    };
    for (const auto& [change, reason] : cases) {
        World world;
        for (const QString& index : {QStringLiteral("rData_Service"), QStringLiteral("rData_Number")})
            world.Sql(QStringLiteral("DROP INDEX %1").arg(index));
        for (const QString& statement : QString::fromLatin1(change).split(u';'))
            world.Sql(statement);
        world.database.OpenDatabase(world.store);
        EXPECT_EQ(world.database.OpenError().section(QStringLiteral(": "), 1).toStdString(), reason) << change;
        EXPECT_EQ(world.database.IsOpen(), *reason == '\0');
    }
}

TEST(Database, RunsNothingThatAForeignStoreBrings) {
    World world;
    world.Sql(QStringLiteral("CREATE TRIGGER evil AFTER INSERT ON Queue BEGIN DELETE FROM rData; END"));
    world.Sql(QStringLiteral("CREATE VIEW peep AS SELECT 1"));
    world.Sql(QStringLiteral("INSERT INTO rData (ID) VALUES (1)"));
    world.database.OpenDatabase(world.store);
    world.Sql(QStringLiteral("INSERT INTO Queue (q_Id) VALUES (1)"));
    EXPECT_EQ(world.Values(QStringLiteral("SELECT COUNT(*) FROM rData")), QStringLiteral("1"));
    EXPECT_FALSE(world.database.Select({QStringLiteral("SELECT * FROM peep")}));
}

TEST(Database, AddsTheLaterColumnsOfAnOlderStoreOnce) {
    const QStringList added{QStringLiteral("DateTimeFinish"), QStringLiteral("Action"), QStringLiteral("Call"),
                            QStringLiteral("TicketFlag")};
    const QStringList inLog{QStringLiteral("Add [DateTimeFinish] field to rData and qData"),
                            QStringLiteral("Add [Act] field to rData and qData"),
                            QStringLiteral("Add [Call] field to rData and qData"),
                            QStringLiteral("Add [TicketFlag] field to rData and qData")};
    World world;
    for (const bool hasCall : {false, true}) {
        for (const char* table : {"rData", "qData"}) {
            const QString name = QString::fromLatin1(table);
            world.Sql(QStringLiteral("DROP TABLE %1").arg(name));
            world.Sql(
                QStringLiteral("CREATE TABLE %1 (ID INTEGER PRIMARY KEY, TicketNo, ServiceId, DisplayId, DateTime,"
                               " Flags, Announced%2)")
                    .arg(name, hasCall ? QStringLiteral(", [CALL]") : QString()));
        }
        QStringList expected = inLog;
        if (hasCall)
            expected.removeAt(2);
        world.TakeLines();
        world.database.OpenDatabase(world.store);
        EXPECT_EQ(world.TakeLines(), expected);
        for (const char* table : {"rData", "qData"}) {
            for (const QString& column : added) {
                const QString statement = QStringLiteral("SELECT COUNT(*) FROM pragma_table_info('%1')"
                                                         " WHERE lower(name) = lower('%2')")
                                              .arg(QString::fromLatin1(table), column);
                EXPECT_EQ(world.Values(statement), QStringLiteral("1")) << table << qPrintable(column);
            }
        }
        world.database.OpenDatabase(world.store);
        EXPECT_EQ(world.TakeLines(), QStringList());
    }
}

TEST(Database, FindsTicketsByIndexInAnyStoreThatItOpened) {
    World world;
    for (const char* index : {"rData_Service", "rData_Number", "rData_Waiting", "QueueDisplay_Object"})
        world.Sql(QStringLiteral("DROP INDEX [%1]").arg(QString::fromLatin1(index)));
    world.database.OpenDatabase(world.store);
    const std::pair<const char*, const char*> plans[] = {
        {"SELECT MAX([Ticketno]) FROM [rData] WHERE Flags=0 AND ServiceId=3", "COVERING INDEX rData_Service"},
        {"SELECT MAX([Ticketno]) FROM [rData] WHERE Flags=0", "COVERING INDEX rData_Number"},
        {"SELECT * FROM [rData] WHERE NOT [Announced] ORDER BY [ID]", "INDEX rData_Waiting"},
        {"SELECT [q_Id] FROM [Queue-Display] WHERE [d_Id]=1 ORDER BY rowid", "INDEX QueueDisplay_Object"},
    };
    for (const auto& [statement, index] : plans) {
        auto query = world.database.Select({QStringLiteral("EXPLAIN QUERY PLAN ") + QString::fromLatin1(statement)});
        ASSERT_TRUE(query && query->next()) << statement;
        const QString plan = query->value(3).toString();
        EXPECT_TRUE(plan.contains(QString::fromLatin1(index))) << statement << ": " << qPrintable(plan);
        EXPECT_FALSE(query->next()) << "sorts: " << statement;
    }
}

TEST(Database, BacksUpOnceADayOverTheSameWeekdayOfLastWeek) {
    World world(false);
    const auto backup = [&](int weekday) {
        return ReadFile(world.folder.filePath(QStringLiteral("bak%1.mdb").arg(weekday)));
    };
    world.clock.Time = QDateTime(QDate(2026, 11, 15), QTime(23, 0)); // a Sunday
    for (int day = 1; day <= 8; ++day) {
        const int weekday = day == 8 ? 1 : day;
        const QByteArray content = "store of day " + QByteArray::number(day);
        WriteFile(world.store, content);
        world.database.BackupDatabase();
        EXPECT_EQ(backup(weekday), content);
        WriteFile(world.store, "later that day");
        world.database.BackupDatabase();
        EXPECT_EQ(backup(weekday), content);
        if (day == 7) {
            EXPECT_EQ(backup(1), "store of day 1");
        }
        world.clock.Time = world.clock.Time.addDays(1);
    }
    QString date;
    EXPECT_TRUE(world.ini.ReadIni(QStringLiteral("Bakup"), QStringLiteral("item1"), date));
    EXPECT_EQ(date, QStringLiteral("22/11/2026"));

    // A copy that cannot be made keeps the older one and is not tried again that day.
    QFile::remove(world.store);
    world.database.BackupDatabase();
    WriteFile(world.store, "too late");
    world.database.BackupDatabase();
    EXPECT_EQ(backup(2), "store of day 2");
}

TEST(Database, EmptiesAllTablesOrNone) {
    World world;
    for (const char* table :
         {"Queue-Display", "Display", "Queue", "Hub", "Info-Direction", "ScanPlan", "rData", "qData"})
        world.Sql(QStringLiteral("INSERT INTO [%1] DEFAULT VALUES").arg(QString::fromLatin1(table)));
    const QString count = QStringLiteral(
        "SELECT (SELECT COUNT(*) FROM [Queue-Display])+(SELECT COUNT(*) FROM Display)+(SELECT COUNT(*) FROM Queue)"
        "+(SELECT COUNT(*) FROM Hub)+(SELECT COUNT(*) FROM [Info-Direction])+(SELECT COUNT(*) FROM ScanPlan)"
        "+(SELECT COUNT(*) FROM rData)+(SELECT COUNT(*) FROM qData)");
    world.Sql(QStringLiteral("CREATE TEMP TRIGGER keep BEFORE DELETE ON rData BEGIN SELECT RAISE(FAIL, 'kept'); END"));
    EXPECT_EQ(world.database.EmptyDatabase().Error(), QStringLiteral("kept"));
    EXPECT_EQ(world.Values(count), QStringLiteral("8"));
    world.Sql(QStringLiteral("DROP TRIGGER keep"));
    EXPECT_TRUE(world.database.EmptyDatabase());
    EXPECT_EQ(world.Values(count), QStringLiteral("0"));

    world.Sql(QStringLiteral("INSERT INTO Queue DEFAULT VALUES"));
    EXPECT_EQ(world.Values(QStringLiteral("SELECT q_Id FROM Queue")), QStringLiteral("2")) << "a key was given twice";
    world.database.CloseDatabase();
    EXPECT_FALSE(world.database.EmptyDatabase());
}

TEST(Database, MakesAnEmptyStoreWithDefaultsThatRefusesWhatDoesNotFit) {
    World world;
    world.Sql(QStringLiteral("INSERT INTO Display (d_Name) VALUES ('a')"));
    world.Sql(QStringLiteral("INSERT INTO Display (d_direction, d_VoiceLocal, d_HubId) VALUES (NULL, NULL, NULL)"));
    EXPECT_EQ(world.Values(QStringLiteral("SELECT d_direction FROM Display")), QStringLiteral("0,null"));
    EXPECT_EQ(world.Values(QStringLiteral("SELECT d_VoiceLocal FROM Display")), QStringLiteral("0,null"));
    EXPECT_EQ(world.Values(QStringLiteral("SELECT d_HubId FROM Display")), QStringLiteral("0,null"));

    const Result<> refusal = world.database.Run({QStringLiteral("UPDATE Display SET d_Address=256")});
    EXPECT_EQ(schema::ReadableError(refusal.Error()), QStringLiteral("d_Address takes a whole number from 0 to 255."));

    EXPECT_EQ(Database::CreateEmpty(world.store).Error(),
              QStringLiteral("%1: The file exists already.").arg(world.store));
    EXPECT_EQ(world.Values(QStringLiteral("SELECT COUNT(*) FROM Display")), QStringLiteral("2"));
    EXPECT_FALSE(Database::CreateEmpty(world.folder.filePath(QStringLiteral("missing/a.mdb"))));
    world.database.CloseDatabase();
    EXPECT_EQ(QDir(world.folder.path()).entryList(QDir::Files), QStringList({QStringLiteral("Harbinet.mdb")}));
}

} // namespace
