#include "benchmarks/FilledStore.h"

#include "database/Database.h"

#include <QSqlDatabase>
#include <QSqlQuery>

namespace {

constexpr int Tickets = 1'000'000;
constexpr int Waiting = 5'000;

} // namespace

void FillStore(const QString& path) {
    if (const Result<> made = Database::CreateEmpty(path); !made)
        qFatal("%s", qPrintable(made.Error()));
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
                "0 WHEN i < 56 THEN 1 WHEN i < 61 THEN 2 ELSE 3 END FROM n"),
            QStringLiteral(
                "INSERT INTO [Queue-Display] (q_Id, d_Id) SELECT q_Id, d_Id FROM Queue, Display WHERE (q_Id + d_Id) "
                "% 8 = 0"),
            QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) SELECT d.d_Id, c.d_Id, c.d_Id % 5 FROM "
                           "Display d, Display c WHERE d.d_Type = 2 AND c.d_Type = 0"),
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
