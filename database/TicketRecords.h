#pragma once

#include "database/Database.h"

#include <QDateTime>

#include <optional>
#include <vector>

class EventLog;

namespace model {
struct Installation;
struct TicketEntry;
} // namespace model

/// The ticket records of table `rData`: read and cleared here, never written. A statement that fails is logged.
class TicketRecords {
public:
    /// The references must outlive this.
    TicketRecords(Database& database, model::Installation& installation, EventLog& log);

    /// The highest ticket number among the rows with Flags 0; 0 if there is no such row. Nothing if the query failed. A
    /// number beyond 32 bits is logged and counts as 0.
    std::optional<qint32> GetMaxTicket() const;

    /// Files every waiting ticket in the ring of its object or of its service; the rings must be empty. A full ring is
    /// logged, and so is a row that lacks a number or has one that is too large. An unreadable moment counts as
    /// midnight.
    /// @return the next free ticket number, at most 32767. Nothing, and no ring touched, if a query failed.
    std::optional<qint16> RecoverTickets();

    /// The ticket last served at the first object with that `d_Number`, which is the one that its `LastInfo` names;
    /// zeros if there is none.
    model::TicketEntry GetLastTicket(quint8 number) const;

    /// Deletes all rows of `rData` and empties every `LastInfo`, both or none.
    Result<> ClearTicketRecords();

    /// Hour, minute and second as seconds after midnight; 0 for an invalid moment.
    static float SecondsOfDay(const QDateTime& moment);

private:
    struct Ticket;

    /// Nothing if the query failed.
    std::optional<std::vector<Ticket>> ReadWaiting() const;
    void FileTicket(const model::TicketEntry& entry, qint32 displayId, bool isFlagged);

    Database& m_database;
    model::Installation& m_installation;
    EventLog& m_log;
};
