#include "tests/support/Outcomes.h"
#include "tests/utilities/TicketStore.h"

#include <QProcess>

namespace {

class DataMaintenanceTest : public TicketStore {};

} // namespace

TEST_F(DataMaintenanceTest, ARangeGoesOnlyAfterAYesAndExactlyToItsEnd) {
    const QString all = QStringLiteral("1 2 3 4 5 6 7 8 9 10");
    const QString ask = QStringLiteral("Are you sure you want to delete all data from ");
    const QString wrongYear = QStringLiteral("Please enter year as 'yyyy' format.");
    const QString wrongDate = QStringLiteral("Please enter date as 'dd/mm/yyyy' format.");
    const QString error = QStringLiteral("Error in Date/Time format.");
    struct Case {
        QString year;
        QString from;
        QString to;
        QString question; ///< none if it is empty
        bool yes;
        QString told; ///< a box behind it, none if it is empty
        QString left;
    };
    const Case cases[] = {
        {u"2025"_qs, {}, {}, ask + u"year 2025 backwards?"_qs, true, u"Done."_qs, u"4 5 6 7 8 9 10"_qs},
        {u"2025"_qs, {}, {}, ask + u"year 2025 backwards?"_qs, false, {}, all},
        {u"9999"_qs, {}, {}, ask + u"year 9999 backwards?"_qs, true, u"Done."_qs, u"10"_qs},
        {u"0000"_qs, {}, {}, ask + u"year 0000 backwards?"_qs, true, u"Done."_qs, all},
        {u"26"_qs, {}, {}, {}, false, wrongYear, all},
        {u"20x6"_qs, {}, {}, {}, false, wrongYear, all},
        {u"-123"_qs, {}, {}, {}, false, wrongYear, all},
        {u"2.50"_qs, {}, {}, {}, false, wrongYear, all},
        {{}, {}, {}, {}, false, wrongDate, all},
        {{}, {}, u"17/11/2026"_qs, ask + u"17/11/2026 backwards?"_qs, true, u"Done."_qs, u"7 8 9 10"_qs},
        {{}, u"1/1/2026"_qs, {}, ask + u"1/1/2026 to now?"_qs, true, u"Done."_qs, u"1 2 3 7 8 9 10"_qs},
        {{},
         u"17/11/2026"_qs,
         u"18/11/2026"_qs,
         ask + u"17/11/2026 to 18/11/2026 ?"_qs,
         true,
         u"Done."_qs,
         u"1 2 3 4 9 10"_qs},
        {{}, u"tomorrow"_qs, {}, {}, false, wrongDate, all},
        {{}, u"31/02/2026"_qs, {}, {}, false, wrongDate, all},
        {{}, u"17-11-2026"_qs, {}, ask + u"17-11-2026 to now?"_qs, true, error, all},
        {{}, u"17/11/2026"_qs, u"soon"_qs, ask + u"17/11/2026 to soon ?"_qs, false, error, all},
        {{}, u"17/11/26"_qs, u"18/11/2026"_qs, ask + u"17/11/26 to 18/11/2026 ?"_qs, true, error, all},
    };
    for (const Case& one : cases) {
        Fill();
        if (!one.question.isEmpty())
            m_dialogs.ExpectQuestion(BoxKind::Exclamation, one.question, one.yes);
        const Outcome outcome = one.year.isNull() ? Await(m_maintenance.DeleteFromDays(one.from, one.to))
                                                  : Await(m_maintenance.DeleteFromYear(one.year));
        const QString end = one.told.isEmpty()        ? QStringLiteral("cancelled")
                            : one.told == u"Done."_qs ? QStringLiteral("done Information: ") + one.told
                                                      : QStringLiteral("refused Exclamation: ") + one.told;
        EXPECT_EQ(Told(outcome), end.toStdString());
        EXPECT_EQ(Left(), one.left) << qPrintable(one.year + u' ' + one.from + u' ' + one.to);
    }
}

TEST_F(DataMaintenanceTest, ALongDeleteTellsHowFarItIsAndIsAllOrNothing) {
    ASSERT_TRUE(m_station.database.Run(
        {QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 35000) "
                        "INSERT INTO qData (DateTime) SELECT '2020-01-01 00:00:00' FROM n")}));
    QList<qint64> steps;
    const QTemporaryDir killed;
    ::QObject::connect(&m_maintenance, &DataMaintenance::Progress, [&](qint64 done, qint64 total) {
        steps += {done, total};
        EXPECT_EQ(m_maintenance.IsRunning(), total > 0);
        // What a killed program would leave behind. Copied by another process: a file that is closed here loses its
        // locks.
        if (done == 20'000) {
            EXPECT_EQ(
                QProcess::execute(QStringLiteral("cp"), {m_store, m_store + QStringLiteral("-journal"), killed.path()}),
                0);
        }
    });
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, QString(), true);
    EXPECT_EQ(Told(m_maintenance.DeleteFromYear(QStringLiteral("2024"))), "done Information: Done.");
    EXPECT_EQ(steps, (QList<qint64>{10'000, 35'001, 20'000, 35'001, 30'000, 35'001, 35'001, 35'001, 0, 0}));
    EXPECT_EQ(Left(), QStringLiteral("2 3 4 5 6 7 8 9 10"));

    const auto count = [this](const QString& path) {
        m_station.database.OpenDatabase(path);
        auto rows = m_station.database.Select({QStringLiteral("SELECT COUNT(*) FROM qData")});
        return rows && rows->next() ? rows->value(0).toInt() : -1;
    };
    EXPECT_EQ(count(killed.filePath(QStringLiteral("Harbinet.mdb"))), 35'010) << "all are there again";
    EXPECT_EQ(count(m_store), 9);

    // A store that is closed in the middle keeps everything.
    ::QObject::disconnect(&m_maintenance, nullptr, nullptr, nullptr);
    ::QObject::connect(&m_maintenance, &DataMaintenance::Progress, [&](qint64, qint64 total) {
        if (total > 0)
            m_station.database.CloseDatabase();
    });
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, QString(), true);
    EXPECT_EQ(Told(m_maintenance.DeleteFromYear(QStringLiteral("2030"))),
              "failed Exclamation: Nothing was deleted: The database is closed.");
    m_station.database.OpenDatabase(m_store);
    EXPECT_EQ(Left(), QStringLiteral("2 3 4 5 6 7 8 9 10"));
}
