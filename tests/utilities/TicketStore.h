#pragma once

#include "station/DataMaintenance.h"
#include "tests/support/OpenStation.h"
#include "tests/support/StoreFile.h"
#include "tests/support/Waiting.h"

/// Tickets of several days, numbered in their order; today is 2026-11-18.
class TicketStore : public StationFolder {
protected:
    TicketStore() {
        MakeStore(m_store, {});
        m_station.database.OpenDatabase(m_store);
        Fill();
    }

    void Fill() {
        const char* moments[] = {"2024-12-31 23:59:59", "2025-01-01T00:00:00",     "2025-12-31 12:00:00",
                                 "2026-01-01 00:00:00", "2026-11-17 23:59:59",     "2026-11-18 00:00:00",
                                 "2026-11-18 08:00:00", "2026-11-19 00:00:00.000", "2026-11-19 00:00:01"};
        QStringList rows;
        for (std::size_t i = 0; i < std::size(moments); ++i)
            rows += QStringLiteral("(%1, '%2')").arg(i + 1).arg(QString::fromLatin1(moments[i]));
        ASSERT_TRUE(m_station.database.RunTogether(
            {{QStringLiteral("DELETE FROM qData")},
             {QStringLiteral("INSERT INTO qData (ID, DateTime) VALUES ") + rows.join(u',')},
             {QStringLiteral("INSERT INTO qData (ID, DateTime) VALUES (10, NULL)")}}));
    }

    /// The numbers of the tickets that are left, as one text.
    QString Left() const {
        auto rows = m_station.database.Select(
            {QStringLiteral("SELECT group_concat(ID, ' ') FROM (SELECT ID FROM qData ORDER BY ID)")});
        return rows && rows->next() ? rows->value(0).toString() : rows.Error();
    }

    DataMaintenance& m_maintenance = m_station.Maintenance();
};
