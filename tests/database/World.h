#pragma once

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "core/Installation.h"
#include "core/Options.h"
#include "database/Database.h"
#include "database/Loaders.h"
#include "database/Reload.h"
#include "database/TicketRecords.h"
#include "tests/support/TestClock.h"

#include <QSqlError>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// A program folder with an empty store, and everything that works on it.
class World {
public:
    explicit World(bool opens = true) {
        ::QObject::connect(&log, &EventLog::Written, &log, [this](const QString& message) { lines += message; });
        EXPECT_TRUE(Database::CreateEmpty(store));
        if (opens)
            database.OpenDatabase(store);
    }

    void Sql(const QString& statement) {
        const Result<> done = database.Run({statement});
        EXPECT_TRUE(done) << qPrintable(statement) << ": " << qPrintable(done.Error());
    }

    /// The first column of all rows, joined by commas; a null is "null".
    QString Values(const QString& statement) {
        auto query = database.Select({statement});
        EXPECT_TRUE(query) << qPrintable(query.Error());
        QStringList values;
        while (query && query->next())
            values += query->value(0).isNull() ? QStringLiteral("null") : query->value(0).toString();
        return values.join(u',');
    }

    /// The log lines since the last call.
    QStringList TakeLines() { return std::exchange(lines, {}); }

    /// Loads services and objects the way a reload does, but nothing more.
    void LoadBoth() {
        const Result<Snapshot> rows = loaders.Read();
        ASSERT_TRUE(rows) << qPrintable(rows.Error());
        installation->NumServices = loaders.LoadServices(*rows);
        installation->NumObjects = loaders.LoadCounters(*rows);
    }

    QTemporaryDir folder;
    QString store = folder.filePath(QStringLiteral("Harbinet.mdb"));
    TestClock clock;
    EventLog log{folder.path(), clock};
    QStringList lines;
    IniUtility ini{folder.filePath(QStringLiteral("Tallora.ini"))};
    Options options;
    std::unique_ptr<model::Installation> installation = std::make_unique<model::Installation>();
    Database database{folder.path(), ini, log, clock};
    TicketRecords tickets{database, *installation, log};
    Loaders loaders{database, *installation, options, log};
    Reload reload{database, loaders, *installation, log};
};
