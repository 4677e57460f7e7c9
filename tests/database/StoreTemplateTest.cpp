#include "database/StoreTemplate.h"

#include "tests/database/World.h"
#include "tests/support/Files.h"
#include "tests/support/RandomEditor.h"

namespace {

const QStringList Described = {QStringLiteral("Queue"),          QStringLiteral("Display"),
                               QStringLiteral("Queue-Display"),  QStringLiteral("ScanPlan"),
                               QStringLiteral("Info-Direction"), QStringLiteral("Hub"),
                               QStringLiteral("Message")};

QString Dump(const Database& database, const QString& table, const QString& columns = QStringLiteral("*")) {
    QStringList rows;
    auto query = database.Select({QStringLiteral("SELECT %1 FROM [%2] ORDER BY rowid").arg(columns, table)});
    EXPECT_TRUE(query) << qPrintable(query.Error());
    while (query && query->next()) {
        QStringList values;
        for (int i = 0; i < query->record().count(); ++i)
            values += query->value(i).isNull() ? QStringLiteral("null") : query->value(i).toString();
        rows += values.join(u',');
    }
    return rows.join(u'|');
}

class StoreTemplateTest : public ::testing::Test {
protected:
    QString Path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    World m_from;
    World m_to;
    QTemporaryDir m_folder;
    QString m_target = Path("new.mdb");
};

} // namespace

TEST_F(StoreTemplateTest, ANewStoreHasTheWholeDescriptionAndNothingElse) {
    for (quint32 seed = 0; seed < 10; ++seed) {
        RandomEditor editor(m_from.database, seed);
        for (int i = 0; i < 15; ++i)
            editor.Act();
        m_from.Sql(QStringLiteral("INSERT INTO rData (TicketNo) VALUES (12345)"));
        m_from.Sql(QStringLiteral("CREATE TABLE IF NOT EXISTS Foreigners (Secret TEXT)"));
        m_from.Sql(QStringLiteral("INSERT INTO Foreigners VALUES ('Zaphod was here')"));
        m_from.Sql(QStringLiteral("UPDATE Display SET LastInfo='4711'"));
        const StoreTemplate store(m_from.database.Path());
        ASSERT_TRUE(store.Make(m_target, {}));
        EXPECT_FALSE(store.Make(m_target, {})) << "a file that is there stays";
        const QByteArray bytes = ReadFile(m_target);
        EXPECT_FALSE(bytes.contains("Zaphod")) << "not in a free page either";
        m_to.database.OpenDatabase(m_target);
        ASSERT_TRUE(m_to.database.IsOpen()) << qPrintable(m_to.database.OpenError());
        m_from.Sql(QStringLiteral("UPDATE Display SET LastInfo=''"));
        for (const QString& table : Described)
            EXPECT_EQ(Dump(m_to.database, table), Dump(m_from.database, table)) << seed << ' ' << qPrintable(table);
        for (const char* const table : {"rData", "qData", "LoadRecord", "LoadPayload", "EditAct"})
            EXPECT_EQ(Dump(m_to.database, QString::fromLatin1(table)), QString()) << table;
        EXPECT_FALSE(m_to.database.History().NextUndo());
        m_to.database.CloseDatabase();
        QFile::remove(m_target);
    }
}

TEST_F(StoreTemplateTest, NumbersAddressesAndTheNamesThatEndWithThemAreShifted) {
    m_from.Sql(QStringLiteral("INSERT INTO Display (d_Id,d_Number,d_Address,d_Name,d_Type) VALUES (1,5,5,'Quaày 5',0), "
                              "(2,15,120,'Quaày 5',0), (3,NULL,NULL,'Baûng',2), (4,9,40,'Lầu 19',2)"));
    const StoreTemplate store(m_from.database.Path());
    ASSERT_TRUE(store.Make(m_target, {.number = 20, .address = -3}));
    m_to.database.OpenDatabase(m_target);
    EXPECT_EQ(Dump(m_to.database, QStringLiteral("Display"), QStringLiteral("d_Number,d_Address,d_Name")),
              QStringLiteral("25,2,Quaày 25|35,117,Quaày 5|null,null,Baûng|29,37,Lầu 19"));
    m_to.database.CloseDatabase();
    QFile::remove(m_target);
    const std::tuple<StoreTemplate::Shift, const char*> faults[] = {
        {{.number = 241}, "number 256 is not from 0 to 255"},
        {{.number = -6}, "number -1 is not from 0 to 255"},
        {{.address = 7}, "no device can have address 127"},
        {{.address = 100}, "no device can have address 220"},
    };
    for (const auto& [shift, words] : faults) {
        const Result<> made = store.Make(m_target, shift);
        EXPECT_TRUE(made.Error().endsWith(QString::fromLatin1(words))) << qPrintable(made.Error());
    }
    EXPECT_TRUE(QDir(m_folder.path()).isEmpty()) << "nothing is left of what could not be made";
}

TEST_F(StoreTemplateTest, OnlyAStoreCanBeOne) {
    WriteFile(Path("text.mdb"), "no database");
    WriteFile(Path("access.mdb"), QByteArray("\0\1\0\0Standard Jet DB\0\1\0\0\0\0", 25));
    for (const char* const name : {"text.mdb", "access.mdb", "missing.mdb"}) {
        const Result<> made = StoreTemplate(Path(name)).Make(m_target, {});
        EXPECT_TRUE(made.Error().startsWith(Path(name))) << qPrintable(made.Error());
        EXPECT_FALSE(QFileInfo::exists(m_target));
    }
}
