#include "database/TicketRecords.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "database/RowReader.h"

#include <QSqlError>
#include <QSqlRecord>

#include <limits>

namespace {

/// The store's moment, without the cost of a time zone.
QDateTime MomentOf(const QVariant& value) {
    const QString text = value.toString();
    if (text.size() < 16)
        return {};
    const QStringView view(text);
    return QDateTime(QDate::fromString(view.first(10).toString(), Qt::ISODate),
                     QTime::fromString(view.sliced(11).toString(), Qt::ISODate), Qt::UTC);
}

model::TicketRing& RingOf(auto& owner, bool isFlagged) {
    return isFlagged ? owner.FlaggedRing : owner.WaitRing;
}

} // namespace

struct TicketRecords::Ticket {
    model::TicketEntry entry;
    qint32 displayId;
    bool isFlagged;
};

TicketRecords::TicketRecords(Database& database, model::Installation& installation, EventLog& log)
    : m_database(database)
    , m_installation(installation)
    , m_log(log) {}

std::optional<qint32> TicketRecords::GetMaxTicket() const {
    auto query = m_database.Select({QStringLiteral("SELECT MAX([Ticketno]) AS MaxTicket FROM [rData] WHERE Flags=0")});
    if (!query || !query->next()) {
        m_log.WriteLog(
            QStringLiteral("Load database: rData: %1").arg(query ? query->lastError().text() : query.Error()),
            EventLog::Error);
        return std::nullopt;
    }
    RowReader read(m_log, QStringLiteral("MAX"));
    const auto highest = read.NeededOr<qint32>(query->value(0), "TicketNo", 0);
    // The next number is one more, and must fit too.
    return std::min(highest, std::numeric_limits<qint32>::max() - 1);
}

std::optional<qint16> TicketRecords::RecoverTickets() {
    // All rows are read before any ring is touched, so that a failure on the way leaves the model whole.
    const std::optional<std::vector<Ticket>> tickets = ReadWaiting();
    if (!tickets)
        return std::nullopt;
    const std::optional<qint32> highest = GetMaxTicket();
    if (!highest)
        return std::nullopt;
    for (const Ticket& ticket : *tickets)
        FileTicket(ticket.entry, ticket.displayId, ticket.isFlagged);

    constexpr qint32 Largest = std::numeric_limits<qint16>::max();
    if (*highest < Largest)
        return static_cast<qint16>(std::max<qint32>(*highest + 1, std::numeric_limits<qint16>::min()));
    m_log.WriteLog(QStringLiteral("Load database: the next ticket number %1 is too large.").arg(*highest + 1),
                   EventLog::Error);
    return static_cast<qint16>(Largest);
}

std::optional<std::vector<TicketRecords::Ticket>> TicketRecords::ReadWaiting() const {
    auto rows = m_database.Select({QStringLiteral("SELECT * FROM [rData] WHERE NOT [Announced] ORDER BY [ID]")});
    std::vector<Ticket> tickets;
    // A store that could not be upgraded lacks the later columns.
    const QSqlRecord columns = rows ? rows->record() : QSqlRecord();
    const int id = columns.indexOf(QStringLiteral("ID"));
    const int ticketNo = columns.indexOf(QStringLiteral("TicketNo"));
    const int serviceId = columns.indexOf(QStringLiteral("ServiceId"));
    const int displayId = columns.indexOf(QStringLiteral("DisplayId"));
    const int moment = columns.indexOf(QStringLiteral("DateTime"));
    const int ticketFlag = columns.indexOf(QStringLiteral("TicketFlag"));
    const auto value = [&rows](int index) { return index < 0 ? QVariant() : rows->value(index); };
    while (rows && rows->next()) {
        RowReader read(m_log, value(id));
        Ticket ticket{};
        ticket.entry.TicketNo = read.Needed<qint16>(value(ticketNo), "TicketNo");
        const auto service = read.Needed<qint16>(value(serviceId), "ServiceId");
        ticket.isFlagged = RowReader::YesNo(value(ticketFlag));
        ticket.displayId = read.NeededOr<qint32>(value(displayId), "DisplayId", 0);
        ticket.entry.ServiceIndex = std::max<qint16>(m_installation.FindServiceById(service), 0);
        ticket.entry.RecordId = read.Needed<qint32>(value(id), "ID");
        ticket.entry.Seconds = SecondsOfDay(MomentOf(value(moment)));
        if (read.IsGood())
            tickets.push_back(ticket);
    }
    if (rows && !rows->lastError().isValid())
        return tickets;
    m_log.WriteLog(
        QStringLiteral("Load database: rData: %1").arg(rows ? Sqlite::TextOf(rows->lastError()) : rows.Error()),
        EventLog::Error);
    return std::nullopt;
}

void TicketRecords::FileTicket(const model::TicketEntry& entry, qint32 displayId, bool isFlagged) {
    const QString noRoom = QStringLiteral("Lost Ticket, no buffer!");
    const qint16 object = displayId == 0 ? qint16(-1) : m_installation.FindObjectById(displayId);
    if (object >= 0) {
        if (RingOf(m_installation.Object(object), isFlagged).RingAdd(entry))
            return;
        m_log.WriteLog(noRoom, EventLog::Error);
    }
    // Without services the index 0 that stands for "the first service" is nobody's.
    bool isFiled = false;
    if (m_installation.NumServices > 0) {
        const qint16 service = m_installation.Target(entry.ServiceIndex);
        isFiled = RingOf(m_installation.Service(service), isFlagged).RingAdd(entry);
    }
    if (!isFiled)
        m_log.WriteLog(noRoom, EventLog::Error);
}

model::TicketEntry TicketRecords::GetLastTicket(quint8 number) const {
    model::TicketEntry entry;
    bool isNumber = false;
    const qint32 id = m_database.LastInfo(number).toInt(&isNumber);
    if (!isNumber)
        return entry;
    auto row = m_database.Select({QStringLiteral("SELECT [TicketNo],[ServiceId] FROM [rData] WHERE [ID]=?"), {id}});
    if (!row || !row->next())
        return entry;
    RowReader read(m_log, id);
    const auto ticketNo = read.Needed<qint16>(row->value(0), "TicketNo");
    if (!read.IsGood())
        return entry;
    entry.TicketNo = ticketNo;
    entry.RecordId = id;
    // A service that is not there counts as the first one, and so does a number that names none.
    const auto serviceId = read.Needed<qint32>(row->value(1), "ServiceId");
    if (read.IsGood())
        entry.ServiceIndex = std::max<qint16>(m_installation.FindServiceById(serviceId), 0);
    return entry;
}

Result<> TicketRecords::ClearTicketRecords() {
    return m_database.RunTogether({
        {QStringLiteral("DELETE FROM [rData]")},
        {QStringLiteral("Update [Display] SET LastInfo=''")},
    });
}

float TicketRecords::SecondsOfDay(const QDateTime& moment) {
    if (!moment.isValid())
        return 0;
    const QTime time = moment.time();
    return static_cast<float>(time.hour() * 3600 + time.minute() * 60 + time.second());
}
