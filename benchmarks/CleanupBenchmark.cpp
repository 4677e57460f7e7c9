#include "benchmarks/Benchmarks.h"

#include "benchmarks/Report.h"
#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "database/TicketArchive.h"
#include "platform/Clock.h"

#include <QTemporaryDir>

namespace {

/// Fills `qData` with as many tickets of 2024 as of 2025.
void Fill(Database& database, int ofEachYear) {
    const auto rows = QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                                     "INSERT INTO qData (TicketNo, ServiceId, DateTime) SELECT i % 1000, 1, '%2-' || "
                                     "printf('%02d', i % 12 + 1) || '-15 08:00:00' FROM n");
    if (!database.RunTogether({{rows.arg(ofEachYear).arg(2024)}, {rows.arg(ofEachYear).arg(2025)}}))
        qFatal("the store cannot be filled");
}

} // namespace

void BenchmarkCleanup() {
    constexpr int OfEachYear = 1'000'000;
    const QTemporaryDir folder;
    SystemClock clock;
    EventLog log(folder.path(), clock);
    IniUtility ini(folder.filePath(QStringLiteral("Tallora.ini")));
    Database database(folder.path(), ini, log, clock);
    const QString store = folder.filePath(QStringLiteral("Harbinet.mdb"));
    if (!Database::CreateEmpty(store))
        qFatal("no store");
    database.OpenDatabase(store);
    Fill(database, OfEachYear);
    TicketArchive archive(database, clock);
    double longest = 0;
    QElapsedTimer step;
    const double seconds = BestSeconds(1, [&] {
        step.start();
        const auto deleted = QCoro::waitFor(archive.DeleteYears(
            2024, [&](qint64, qint64) { longest = std::max(longest, static_cast<double>(step.restart())); }));
        if (!deleted)
            qFatal("nothing was deleted");
    });
    Report("Deleting 1,000,000 of 2,000,000 tickets", seconds, "s", "allowed", 10);
    Report("The longest time for which the window stands still", longest, "ms", "allowed", 500);
}
