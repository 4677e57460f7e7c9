#include "tests/simulation/Hall.h"

#include "link/Encodings.h"
#include "link/Frames.h"

#include <sqlite3.h>

#include <map>

namespace {

constexpr int MostTickets = 1300; ///< more than two rings hold
constexpr int HighestAddress = 207;

const QString& ServiceName(Dice& dice) {
    static const QString names[] = {QStringLiteral("Göûi tieàn"), QStringLiteral("Ruùt tieàn"), QStringLiteral("Loans"),
                                    QStringLiteral("Khaùch haøng öu tieân vaø doanh nghieäp lôùn"), QStringLiteral("")};
    return names[dice.Roll(5)];
}

} // namespace

Hall::Hall(Dice& dice) {
    std::vector<int> free;
    for (int address = 1; address <= HighestAddress; ++address) {
        if (address != frames::Broadcast)
            free.push_back(address);
    }
    for (std::size_t i = free.size() - 1; i > 0; --i)
        std::swap(free[i], free[static_cast<std::size_t>(dice.Roll(static_cast<int>(i) + 1))]);

    services = dice.OnceIn(8) ? 64 : 1 + dice.Roll(8);
    for (int id = 1; id <= services; ++id) {
        const int route = dice.OnceIn(4) ? 1 + dice.Roll(services) : 0;
        const QString description = dice.OnceIn(3) ? QStringLiteral("Quaày $1") : QStringLiteral("Taàng %1").arg(id);
        statements += QStringLiteral("INSERT INTO Queue (q_Id,q_Number,q_Series,q_route,q_On,q_Name,q_Description,"
                                     "q_Button) VALUES (%1,%1,%2,%3,%4,'%5','%6',%7)")
                          .arg(id)
                          .arg(id * 100)
                          .arg(route)
                          .arg(dice.OnceIn(10) ? 0 : 1)
                          .arg(ServiceName(dice) + QString::number(id), description)
                          .arg(id % 256);
    }

    const int hubs = dice.Roll(4);
    objects = 1 + hubs + (dice.OnceIn(8) ? 63 - hubs : dice.Roll(12));
    std::map<int, int> members;
    std::vector<int> hubAddresses;
    for (int id = 1; id <= objects; ++id) {
        const int address = free[static_cast<std::size_t>(id - 1)];
        const int type = id <= hubs ? 3 : std::max(0, dice.Roll(5) - 2);
        const int wanted = hubs > 0 && id > hubs && dice.OnceIn(2) ? 1 + dice.Roll(hubs) : 0;
        const int hub = wanted > 0 && members[wanted] < 16 ? wanted : 0;
        members[hub] += hub > 0 ? 1 : 0;
        addresses.push_back(address);
        if (type == 3)
            hubAddresses.push_back(address);
        statements += QStringLiteral("INSERT INTO Display (d_Id,d_Number,d_Address,d_Name,d_On,d_Type,d_HubId) VALUES "
                                     "(%1,%1,%2,'Quaày %1',1,%3,%4)")
                          .arg(id)
                          .arg(address)
                          .arg(type)
                          .arg(hub);
        const char* const classes[] = {"counter", "printer", "display", "hub"};
        devices += QStringLiteral("%1 %2 %3%4 Q%3\n")
                       .arg(QLatin1String(classes[type]))
                       .arg(address)
                       .arg(id)
                       .arg(hub == 0 ? QString()
                                     : QStringLiteral(" hub=%1").arg(hubAddresses[static_cast<std::size_t>(hub - 1)]));
        if (type == 0) {
            statements += QStringLiteral("INSERT INTO [Queue-Display] (q_Id,d_Id) VALUES (%1,%2)")
                              .arg(1 + dice.Roll(services))
                              .arg(id);
            statements += QStringLiteral("INSERT INTO ScanPlan (d_Id,[Order]) VALUES (%1,%1)").arg(id);
        }
        if (type == 2) {
            statements += QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (%1,%2,%3)")
                              .arg(id)
                              .arg(1 + dice.Roll(objects))
                              .arg(dice.Roll(5));
        }
    }
    const int tickets = dice.OnceIn(4) ? MostTickets : dice.Roll(20);
    statements +=
        QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i < %1) INSERT "
                       "INTO rData (TicketNo,ServiceId,DisplayId,DateTime,Flags,TicketFlag) SELECT i, i %% %2 "
                       "+ 1, CASE i %% 3 WHEN 0 THEN %3 END, '2026-11-18 08:00:00', 0, i %% 5 = 0 FROM n")
            .replace(QStringLiteral("%%"), QStringLiteral("\x01"))
            .arg(tickets)
            .arg(dice.OnceIn(2) ? 1 : services)
            .arg(1 + dice.Roll(objects))
            .replace(u'\x01', u'%');
}

Reference::Rows Reference::Select(const QString& statement) const {
    Rows rows;
    sqlite3_stmt* query = nullptr;
    sqlite3_prepare_v2(m_store, statement.toUtf8().constData(), -1, &query, nullptr);
    while (sqlite3_step(query) == SQLITE_ROW) {
        std::vector<QString>& row = rows.emplace_back();
        for (int i = 0; i < sqlite3_column_count(query); ++i)
            row.push_back(QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(query, i))));
    }
    sqlite3_finalize(query);
    return rows;
}

QString Reference::PrinterFault(const DeviceBus& bus) const {
    const Rows services = Select(QStringLiteral(
        "SELECT q.q_Button, q.q_Name, q.q_Description, q.q_Number, q.q_route, (SELECT GROUP_CONCAT(n, ', ') FROM "
        "(SELECT d.d_Number n FROM [Queue-Display] a JOIN Display d ON a.d_Id = d.d_Id WHERE a.q_Id = q.q_Id ORDER BY "
        "a.ID)) FROM Queue q WHERE q.q_On <> 0 ORDER BY q.q_Id"));
    std::map<int, int> seriesOfNumber;
    int next = 0;
    for (const auto& service : services) {
        const bool isRouted = m_routedSeries && service[4].toInt() != 0;
        seriesOfNumber[service[3].toInt()] = isRouted ? -1 : next++;
    }
    for (const auto& device : bus.Devices()) {
        const auto* const printer = dynamic_cast<const TicketPrinter*>(device.get());
        if (!printer)
            continue;
        const QString who = printer->Title() + QStringLiteral(": ");
        if (printer->ServiceRows().size() != services.size() || !printer->Buttons())
            return who + QStringLiteral("%1 rows of %2").arg(printer->ServiceRows().size()).arg(services.size());
        for (std::size_t i = 0; i < services.size(); ++i) {
            const auto& service = services[i];
            const TicketPrinter::ServiceRow row = printer->ServiceRows().at(static_cast<int>(i));
            if (printer->Buttons()->at(i) != service[0].toInt())
                return who + QStringLiteral("button of row %1").arg(i);
            if (row.Name != service[1].toLatin1().left(63))
                return who + QStringLiteral("name of row %1").arg(i);
            if (!service[2].contains(u'$') && row.Description != service[2].toLatin1().left(63))
                return who + QStringLiteral("description of row %1").arg(i);
            if (!m_routedSeries && row.Description.contains("Quaày $"))
                return who + QStringLiteral("description of row %1 was not filled in").arg(i);
            if (!m_routedSeries && row.SeriesIndex != seriesOfNumber[service[3].toInt()])
                return who + QStringLiteral("series of row %1").arg(i);
        }
    }
    return {};
}

QString Reference::HubFault(const DeviceBus& bus) const {
    const auto small = [](const QString& number) { return encoding::SmallNumber(number.toInt()); };
    const auto counted = [](const Rows& rows) {
        return QByteArray(1, encoding::SmallNumber(static_cast<int>(rows.size())));
    };
    const Rows services =
        Select(QStringLiteral("SELECT q_Number,q_Series,q_Id FROM Queue WHERE q_On<>0 ORDER BY q_Id"));
    const auto ofType = [this](int type) {
        return Select(
            QStringLiteral("SELECT d_Number,d_Address,d_Id FROM Display WHERE d_On<>0 AND d_Type=%1 ORDER BY d_Id")
                .arg(type));
    };
    QByteArray block = QByteArray("Na_Relt\0", 8) + counted(services);
    for (const auto& service : services) {
        block += small(service[0]);
        block += static_cast<char>(service[1].toInt() & 0xFF);
        block += static_cast<char>(service[1].toInt() >> 8);
    }
    const Rows counters = ofType(0);
    block += counted(counters);
    for (const auto& counter : counters) {
        // The place of its first service among those that are loaded.
        const Rows first = Select(
            QStringLiteral("SELECT q_Id FROM [Queue-Display] WHERE d_Id=%1 ORDER BY ID LIMIT 1").arg(counter[2]));
        int place = -1;
        for (std::size_t i = 0; !first.empty() && i < services.size(); ++i)
            place = services[i][2] == first[0][0] ? static_cast<int>(i) : place;
        block += small(counter[0]) + QByteArray(1, small(counter[1])) + encoding::SmallNumber(place);
    }
    const Rows printers = ofType(1);
    block += counted(printers);
    for (const auto& printer : printers)
        block += small(printer[0]) + QByteArray(1, small(printer[1]));
    const Rows displays = ofType(2);
    block += counted(displays);
    for (const auto& display : displays) {
        block += small(display[1]);
        for (const auto& counter : counters) {
            const Rows direction =
                Select(QStringLiteral("SELECT Dir_Id FROM [Info-Direction] WHERE inf_Id=%1 AND d_Id=%2 LIMIT 1")
                           .arg(display[2], counter[2]));
            block += direction.empty() ? encoding::SmallNumber(0) : small(direction[0][0]);
        }
    }
    for (const auto& device : bus.Devices()) {
        const auto* const hub = dynamic_cast<const DeviceHub*>(device.get());
        if (hub && hub->Configuration().sliced(2) != block)
            return QStringLiteral("%1 holds %2, not %3")
                .arg(hub->Title(), QString::fromLatin1(hub->Configuration().toHex()),
                     QString::fromLatin1(block.toHex()));
    }
    return {};
}

QString Reference::MemberFault(const DeviceBus& bus) const {
    for (const auto& device : bus.Devices()) {
        const auto* const hub = dynamic_cast<const DeviceHub*>(device.get());
        if (!hub)
            continue;
        const Rows members = Select(QStringLiteral("SELECT m.d_Type, m.d_Address FROM Display m JOIN Display h ON "
                                                   "m.d_HubId = h.d_Id WHERE h.d_Address = %1 AND m.d_On<>0 ORDER BY "
                                                   "m.d_Id")
                                        .arg(hub->Identity().Address));
        std::vector<DeviceHub::Member> expected;
        for (const auto& member : members)
            expected.push_back({member[0].toInt(), member[1].toInt()});
        if (!hub->Members() || *hub->Members() != expected)
            return hub->Title() + QStringLiteral(": another member list");
    }
    return {};
}
