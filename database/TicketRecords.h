#pragma once

#include "database/Database.h"

#include <QDateTime>

#include <optional>

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

    /// The highest ticket number among the rows with Flags 0 of one service, or of all with a `serviceId` of 0; 0 if
    /// there is no such row. Nothing if the query failed. A number beyond 32 bits is logged and counts as 0.
    std::optional<qint32> GetMaxTicket(qint32 serviceId) const;

    /// The waiting tickets, oldest first, forward-only; all for -1, else those directed to the object with that `d_Id`.
    /// Closed if the query failed. To be closed before anything is written.
    Recordset OpenUnannouncedTickets(qint32 displayId) const;

    /// Files every waiting ticket in the ring of its object or of its service; the rings must be empty. A full ring is
    /// logged, and so is a row that lacks a number or has one that is too large. An unreadable moment counts as
    /// midnight.
    /// @return the next free ticket number, at most 32767. Nothing, and no ring touched, if a query failed.
    std::optional<qint16> RecoverTickets();

    /// `LastInfo` of the first object with that `d_Number`, as it was when the store was opened; empty if there is
    /// none.
    QString GetLastInfo(quint8 number);

    /// The ticket last served at the first object with that `d_Number`; zeros if there is none.
    model::TicketEntry GetLastTicket(quint8 number);

    /// Deletes all rows of `rData` and empties every `LastInfo`, both or none.
    Database::Error ClearTicketRecords();

    /// Hour, minute and second as seconds after midnight; 0 for an invalid moment.
    static float SecondsOfDay(const QDateTime& moment);

private:
    void FileTicket(const model::TicketEntry& entry, qint32 displayId, bool isFlagged);

    Database& m_database;
    model::Installation& m_installation;
    EventLog& m_log;
};
