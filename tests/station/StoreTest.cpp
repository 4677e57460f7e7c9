#include "database/Assignments.h"
#include "tests/support/Outcomes.h"
#include "tests/support/StationWorld.h"

#include <sqlite3.h>

namespace {

/// What others do to the store while the station has it open.
class StoreTest : public StationWorld {
protected:
    StoreTest()
        : StationWorld({QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_On, q_Name) VALUES (1, 1, 1, 'A')"),
                        QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type) VALUES "
                                       "(2, 1, 32, 'Main', 1, 1)")}) {}
};

} // namespace

TEST_F(StoreTest, AStoreThatCannotBeReadIsNoSuccess) {
    // The schema is that of the station, but the order needs what this program does not have.
    sqlite3* file = nullptr;
    ASSERT_EQ(sqlite3_open(QFile::encodeName(m_station.database.Path()).constData(), &file), SQLITE_OK);
    ASSERT_EQ(sqlite3_create_collation(file, "foreign_one", SQLITE_UTF8, nullptr,
                                       [](void*, int, const void*, int, const void*) { return 0; }),
              SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(file,
                           "DROP TABLE ScanPlan; CREATE TABLE ScanPlan (ID INTEGER PRIMARY KEY, d_Id INTEGER, "
                           "[Order] SMALLINT COLLATE foreign_one, Notes)",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(file);
    const QString reason = QStringLiteral("The database cannot be read: no such collation sequence: foreign_one");
    const Outcome opened = m_station.OpenStore(m_station.database.Path());
    EXPECT_TRUE(m_station.database.IsOpen());
    EXPECT_EQ(opened.end, Outcome::End::Failed);
    EXPECT_EQ(opened.text, reason);
    EXPECT_EQ(Told(m_station.RefreshModel()), "failed Exclamation: " + reason.toStdString());
    ASSERT_EQ(m_station.FindFaults().size(), 1U);
    EXPECT_EQ(m_station.FindFaults()[0].text, reason);
}

TEST_F(StoreTest, AStoreThatAnotherProgramHoldsIsWaitedForAndCanBeGivenUp) {
    (void)m_station.reload.ReloadAll();
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(QFile::encodeName(m_station.database.Path()).constData(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE; UPDATE Queue SET q_Name = 'new'", nullptr, nullptr, nullptr),
              SQLITE_OK);
    const std::string inUse = "failed Exclamation: The database is in use by another program.";
    EXPECT_EQ(Told(m_station.RefreshModel()), inUse);
    EXPECT_EQ(m_dialogs.ProgressTexts.size(), 101) << "25 seconds";
    m_dialogs.CancelProgress = true;
    EXPECT_EQ(Told(m_station.SetServiceConfig()), inUse);
    EXPECT_EQ(m_dialogs.ProgressTexts.size(), 102);
    EXPECT_EQ(m_station.database.Run({QStringLiteral("DELETE FROM Queue")}).Error(),
              QStringLiteral("The database is in use by another program."));
    ASSERT_EQ(sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);
    EXPECT_EQ(Told(m_station.RefreshModel()), "done Plain: ");
    EXPECT_EQ(m_station.installation->QServices[0].Name, QStringLiteral("new"));
}

TEST_F(StoreTest, AStoreThatWasMovedTakesNoEditAndCanBeOpenedAgain) {
    const QString path = m_station.database.Path();
    const QString moved = path + QStringLiteral(".moved");
    ASSERT_TRUE(QFile::rename(path, moved));
    const QString gone = QStringLiteral("The database %1 was moved, deleted or replaced while it was open.").arg(path);
    Assignments assignments(m_station.database);
    EXPECT_EQ(assignments.ClearPlan().Error(), gone);
    const QString question = gone + QStringLiteral("\n\nOpen it again?");
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, question, false);
    EXPECT_EQ(Told(m_station.RefreshModel()), "cancelled");
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, question, true);
    EXPECT_EQ(Told(m_station.RefreshModel()).substr(0, 19), "failed Exclamation:");
    EXPECT_FALSE(m_station.database.IsOpen());

    EXPECT_TRUE(m_station.OpenStore(moved).IsDone());
    ASSERT_TRUE(QFile::copy(moved, path) && QFile::rename(path, moved + QStringLiteral("2")));
    ASSERT_TRUE(QFile::remove(moved) && QFile::rename(moved + QStringLiteral("2"), moved));
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, QString(), true);
    EXPECT_EQ(Told(m_station.RefreshModel()), "done Plain: ") << "it was replaced, and is opened";
    EXPECT_TRUE(assignments.ClearPlan());
}
