#pragma once

#include "database/Database.h"

#include <QDate>

#include <qcoro/qcorotask.h>

#include <functional>

class Clock;

/// The tickets that are done with, table `qData`.
class TicketArchive {
public:
    /// Called between the steps of a long delete. @param total rows that are to go.
    using Progress = std::function<void(qint64 done, qint64 total)>;

    /// The references must outlive this.
    TicketArchive(Database& database, Clock& clock);

    /// Deletes all tickets of `year` and of the years before it. Like all deletes here it is one transaction: all rows
    /// go or none. Everything else goes on meanwhile; nobody may write to the store until it is done.
    /// @param year 0 to 9999.
    QCoro::Task<Result<>> DeleteYears(int year, Progress progress);

    /// Deletes the tickets from the beginning of day `from` up to the beginning of day `end`, those stamped exactly
    /// with that midnight included. @param from not valid for all that are older than `end`.
    QCoro::Task<Result<>> DeleteDays(QDate from, QDate end, Progress progress);

private:
    QCoro::Task<Result<>> Delete(QString condition, QVariantList values, Progress progress);
    Result<qint64> Number(const Statement& query) const;

    Database& m_database;
    Clock& m_clock;
};
