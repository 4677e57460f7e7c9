#include "benchmarks/Benchmarks.h"

#include "benchmarks/Report.h"
#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "core/Installation.h"
#include "core/Options.h"
#include "database/Reload.h"
#include "database/TicketRecords.h"
#include "platform/Clock.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

namespace {

constexpr int Tickets = 1'000'000;
constexpr int Waiting = 5'000;

/// 64 services, 64 objects, each object serving eight services, a million tickets of which 5,000 wait.
void FillStore(const QString& path) {
    if (const Database::Error error = Database::CreateEmpty(path))
        qFatal("%s", qPrintable(*error));
    {
        QSqlDatabase store = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("fill"));
        store.setDatabaseName(path);
        if (!store.open())
            qFatal("the store does not open");
        QSqlQuery query(store);
        const QStringList statements = {
            QStringLiteral("PRAGMA synchronous=OFF"),
            QStringLiteral("BEGIN"),
            QStringLiteral(
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 64) INSERT INTO Queue "
                "(q_Number, q_Series, q_route, q_On, q_Name, q_Description, q_Button) SELECT i, i * 1000, 0, 1, "
                "'Service ' || i, 'Counters $1', i FROM n"),
            QStringLiteral(
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 64) INSERT INTO Display "
                "(d_Number, d_Address, d_Name, d_On, d_Type) SELECT i, i, 'Object ' || i, 1, CASE WHEN i < 50 THEN "
                "0 ELSE 1 END FROM n"),
            QStringLiteral(
                "INSERT INTO [Queue-Display] (q_Id, d_Id) SELECT q_Id, d_Id FROM Queue, Display WHERE (q_Id + d_Id) "
                "% 8 = 0"),
            QStringLiteral("INSERT INTO ScanPlan (d_Id, [Order]) SELECT d_Id, d_Id FROM Display"),
            QStringLiteral(
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) INSERT INTO rData "
                "(TicketNo, ServiceId, DisplayId, DateTime, Flags, Announced, TicketFlag) SELECT i % 9999, i % 64 "
                "+ 1, 0, '2026-11-18 08:00:00', 0, i % %2 <> 0, 0 FROM n")
                .arg(Tickets)
                .arg(Tickets / Waiting),
            QStringLiteral("COMMIT"),
        };
        for (const QString& statement : statements) {
            if (!query.exec(statement))
                qFatal("%s", qPrintable(statement));
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("fill"));
}

} // namespace

void BenchmarkReload() {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("Harbinet.mdb"));
    FillStore(path);

    const SystemClock clock;
    EventLog log(folder.path(), clock);
    IniUtility ini(folder.filePath(QStringLiteral("Tallora.ini")));
    const Options options;
    const auto installation = std::make_unique<model::Installation>();
    Database database(folder.path(), ini, log, clock);
    TicketRecords tickets(database, *installation, log);
    Loaders loaders(database, tickets, *installation, options, log);
    Reload reload(database, loaders, tickets, *installation, log);
    database.OpenDatabase(path);

    const auto load = [&] {
        reload.ReloadAll();
        tickets.RecoverTickets();
    };
    const double withIndexes = BestSeconds(5, load);
    for (const QString& index :
         {QStringLiteral("rData_Service"), QStringLiteral("rData_Number"), QStringLiteral("rData_Waiting")})
        database.Run({QStringLiteral("DROP INDEX [%1]").arg(index)});
    const double without = BestSeconds(1, load);
    Report("ReloadAll and RecoverTickets, a million tickets", withIndexes * 1000, "ms", "without indexes",
           without * 1000);
}
