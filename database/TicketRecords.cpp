#include "database/TicketRecords.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "database/RowReader.h"

#include <QSqlError>

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

TicketRecords::TicketRecords(Database& database, model::Installation& installation, EventLog& log)
    : m_database(database)
    , m_installation(installation)
    , m_log(log) {}

std::optional<qint32> TicketRecords::GetMaxTicket(qint32 serviceId) const {
    Statement statement{QStringLiteral("SELECT MAX([Ticketno]) AS MaxTicket FROM [rData] WHERE Flags=0")};
    if (serviceId != 0) {
        statement.text += QStringLiteral(" AND ServiceId=?");
        statement.values += serviceId;
    }
    QString error;
    std::optional<QSqlQuery> query = m_database.Select(statement, error);
    if (!query || !query->next()) {
        m_log.WriteLog(QStringLiteral("Load database: rData: %1").arg(query ? query->lastError().text() : error),
                       EventLog::Error);
        return std::nullopt;
    }
    RowReader read(m_log, QStringLiteral("MAX"));
    const auto highest = read.NeededOr<qint32>(query->value(0), "TicketNo", 0);
    // The next number is one more, and must fit too.
    return std::min(highest, std::numeric_limits<qint32>::max() - 1);
}

Recordset TicketRecords::OpenUnannouncedTickets(qint32 displayId) const {
    Statement statement{QStringLiteral("SELECT * FROM [rData] WHERE NOT [Announced] ORDER BY [ID];")};
    if (displayId != -1) {
        statement = {QStringLiteral("SELECT * FROM [rData] WHERE NOT [Announced] AND [DisplayId] = ? ORDER BY [ID];"),
                     {displayId}};
    }
    Recordset tickets;
    if (!tickets.Open(m_database.Connection(), statement.text, statement.values, Recordset::Cursor::ForwardOnly))
        m_log.WriteLog(QStringLiteral("Load database: rData: %1").arg(tickets.LastError()), EventLog::Error);
    return tickets;
}

std::optional<qint16> TicketRecords::RecoverTickets() {
    struct Ticket {
        model::TicketEntry entry;
        qint32 displayId;
        bool isFlagged;
    };
    // All rows are read before any ring is touched, so that a failure on the way leaves the model whole.
    std::vector<Ticket> tickets;
    Recordset rows = OpenUnannouncedTickets(-1);
    if (!rows.State())
        return std::nullopt;
    const int id = rows.FieldIndex(u"Id");
    const int ticketNo = rows.FieldIndex(u"TicketNo");
    const int serviceId = rows.FieldIndex(u"ServiceId");
    const int displayId = rows.FieldIndex(u"DisplayId");
    const int moment = rows.FieldIndex(u"DateTime");
    const int ticketFlag = rows.FieldIndex(u"TicketFlag");
    bool isGood = true;
    for (; isGood && !rows.IsEof(); isGood = rows.MoveNext()) {
        RowReader read(m_log, rows.Value(id));
        Ticket ticket{};
        ticket.entry.TicketNo = read.Needed<qint16>(rows.Value(ticketNo), "TicketNo");
        const auto service = read.Needed<qint16>(rows.Value(serviceId), "ServiceId");
        ticket.isFlagged = RowReader::YesNo(rows.Value(ticketFlag));
        ticket.displayId = read.NeededOr<qint32>(rows.Value(displayId), "DisplayId", 0);
        ticket.entry.ServiceIndex = std::max<qint16>(m_installation.FindServiceById(service), 0);
        ticket.entry.RecordId = read.Needed<qint32>(rows.Value(id), "ID");
        ticket.entry.Seconds = SecondsOfDay(MomentOf(rows.Value(moment)));
        if (read.IsGood())
            tickets.push_back(ticket);
    }
    if (!isGood) {
        m_log.WriteLog(QStringLiteral("Load database: rData: %1").arg(rows.LastError()), EventLog::Error);
        return std::nullopt;
    }
    rows.Close();
    const std::optional<qint32> highest = GetMaxTicket(0);
    if (!highest)
        return std::nullopt;
    for (const Ticket& ticket : tickets)
        FileTicket(ticket.entry, ticket.displayId, ticket.isFlagged);

    constexpr qint32 Largest = std::numeric_limits<qint16>::max();
    if (*highest < Largest)
        return static_cast<qint16>(std::max<qint32>(*highest + 1, std::numeric_limits<qint16>::min()));
    m_log.WriteLog(QStringLiteral("Load database: the next ticket number %1 is too large.").arg(*highest + 1),
                   EventLog::Error);
    return static_cast<qint16>(Largest);
}

void TicketRecords::FileTicket(const model::TicketEntry& entry, qint32 displayId, bool isFlagged) {
    const QString noRoom = QStringLiteral("Lost Ticket, no buffer!");
    const qint16 object = displayId == 0 ? qint16(-1) : m_installation.FindObjectById(displayId);
    if (object >= 0) {
        if (RingOf(m_installation.QObjects[static_cast<std::size_t>(object)], isFlagged).RingAdd(entry))
            return;
        m_log.WriteLog(noRoom, EventLog::Error);
    }
    // Without services the index 0 that stands for "the first service" is nobody's.
    bool isFiled = false;
    if (m_installation.NumServices > 0) {
        auto& services = m_installation.QServices;
        auto service = static_cast<std::size_t>(entry.ServiceIndex);
        if (services[service].Route != 0)
            service = static_cast<std::size_t>(m_installation.FindServiceByNumber(services[service].Route));
        isFiled = RingOf(services[service], isFlagged).RingAdd(entry);
    }
    if (!isFiled)
        m_log.WriteLog(noRoom, EventLog::Error);
}

QString TicketRecords::GetLastInfo(quint8 number) {
    Recordset& display = m_database.RsDisplay();
    if (!display.State() || !display.MoveFirst() || !display.Find(u"d_Number", number))
        return {};
    return display.Field(u"lastinfo").toString();
}

model::TicketEntry TicketRecords::GetLastTicket(quint8 number) {
    model::TicketEntry entry;
    const QString lastInfo = GetLastInfo(number);
    bool isNumber = false;
    const qint32 id = lastInfo.toInt(&isNumber);
    Recordset& data = m_database.RsData();
    if (!isNumber || !data.State() || !data.MoveFirst() || !data.Find(u"ID", id))
        return entry;
    RowReader read(m_log, id);
    const auto ticketNo = read.Needed<qint16>(data.Field(u"TicketNo"), "TicketNo");
    if (!read.IsGood())
        return entry;
    entry.TicketNo = ticketNo;
    entry.RecordId = id;
    // A service that is not there counts as the first one, and so does a number that names none.
    const auto serviceId = read.Needed<qint32>(data.Field(u"ServiceId"), "ServiceId");
    if (read.IsGood())
        entry.ServiceIndex = std::max<qint16>(m_installation.FindServiceById(serviceId), 0);
    return entry;
}

Database::Error TicketRecords::ClearTicketRecords() {
    const Database::Error error = m_database.RunTogether({
        {QStringLiteral("DELETE FROM [rData]")},
        {QStringLiteral("Update [Display] SET LastInfo=''")},
    });
    if (!error)
        m_database.RsData().Requery();
    return error;
}

float TicketRecords::SecondsOfDay(const QDateTime& moment) {
    if (!moment.isValid())
        return 0;
    const QTime time = moment.time();
    return static_cast<float>(time.hour() * 3600 + time.minute() * 60 + time.second());
}
