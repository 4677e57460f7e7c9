#pragma once

#include "database/TicketArchive.h"

#include <QObject>

class Dialogs;

/// Deletes old tickets on the user's order, as typed into the window of data maintenance.
class DataMaintenance : public QObject {
    Q_OBJECT

public:
    /// The references must outlive this.
    DataMaintenance(Database& database, Clock& clock, Dialogs& dialogs);

    /// Deletes up to and including a year, after asking. @param year four digits; anything else is told and nothing is
    /// deleted.
    /// @return false if it is the year that was told.
    QCoro::Task<bool> DeleteFromYear(QString year);

    /// Deletes a range of days, after asking. @param from, to  as "dd/mm/yyyy"; an empty one leaves the range open at
    /// that end (`to` then is today without its hours). What is no date is told and nothing is deleted.
    QCoro::Task<> DeleteFromDays(QString from, QString to);

    /// A delete runs.
    bool IsRunning() const { return m_running; }

    /// The day of "dd/mm/yyyy": day, month and a year of four digits between "/". Not valid for anything else.
    static QDate ReadDay(const QString& text);
    /// A day in some form that people write: with "/", "-" or "." between its parts.
    static bool IsReadableDay(const QString& text);

Q_SIGNALS:
    /// @param total 0 when it has ended.
    void Progress(qint64 done, qint64 total);

private:
    /// Runs a delete and tells how it ended.
    QCoro::Task<> Run(std::function<QCoro::Task<Database::Error>()> start);
    QCoro::Task<> Tell(QString text);
    TicketArchive::Progress OnProgress();

    Clock& m_clock;
    Dialogs& m_dialogs;
    TicketArchive m_archive;
    bool m_running = false;
};
