#include "benchmarks/Benchmarks.h"

#include "benchmarks/FilledStore.h"
#include "benchmarks/Report.h"
#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "core/Installation.h"
#include "core/Options.h"
#include "database/Database.h"
#include "database/Loaders.h"
#include "database/Reload.h"
#include "database/TicketRecords.h"
#include "platform/Clock.h"

#include <QTemporaryDir>

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
    Loaders loaders(database, *installation, options, log);
    Reload reload(database, loaders, *installation, log);
    database.OpenDatabase(path);

    const auto load = [&] {
        (void)reload.ReloadAll();
        tickets.RecoverTickets();
    };
    const double withIndexes = BestSeconds(5, load);
    for (const QString& index :
         {QStringLiteral("rData_Service"), QStringLiteral("rData_Number"), QStringLiteral("rData_Waiting")})
        (void)database.Run({QStringLiteral("DROP INDEX [%1]").arg(index)});
    const double without = BestSeconds(1, load);
    Report("ReloadAll and RecoverTickets, a million tickets", withIndexes * 1000, "ms", "without indexes",
           without * 1000);
}
