#pragma once

#include "database/TicketArchive.h"
#include "platform/Outcome.h"

#include <QObject>

/// Deletes old tickets on the user's order, as typed into the window of data maintenance.
class DataMaintenance : public QObject {
    Q_OBJECT

public:
    using Work = std::function<QCoro::Task<Outcome>()>;
    /// Does work that must not run beside another of its kind, or refuses it.
    using Runner = std::function<QCoro::Task<Outcome>(const Work&)>;

    /// Copies the store before a delete. @return false if the user wants no delete without it.
    using Copier = std::function<QCoro::Task<bool>()>;

    /// The references must outlive this. @param alone runs each delete.
    DataMaintenance(Database& database, Clock& clock, Dialogs& dialogs, Runner alone, Copier copy);

    /// Deletes up to and including a year, after asking. @param year four digits; anything else is refused.
    QCoro::Task<Outcome> DeleteFromYear(QString year);

    /// Deletes a range of days, after asking. @param from, to  as "dd/mm/yyyy"; an empty one leaves the range open at
    /// that end (`to` then is today without its hours). What is no date is refused.
    QCoro::Task<Outcome> DeleteFromDays(QString from, QString to);

    /// A delete runs.
    bool IsRunning() const { return m_isRunning; }

    /// The day of "dd/mm/yyyy": day, month and a year of four digits between "/". Not valid for anything else.
    static QDate ReadDay(const QString& text);
    /// A day in some form that people write: with "/", "-" or "." between its parts.
    static bool IsReadableDay(const QString& text);

Q_SIGNALS:
    /// @param total 0 when it has ended.
    void Progress(qint64 done, qint64 total);

private:
    using Deleting = std::function<QCoro::Task<Result<>>()>;

    QCoro::Task<Outcome> Run(Deleting deleting);
    QCoro::Task<Outcome> Delete(Deleting deleting);
    TicketArchive::Progress OnProgress();

    Clock& m_clock;
    Dialogs& m_dialogs;
    TicketArchive m_archive;
    Runner m_alone;
    Copier m_copy;
    bool m_isRunning = false;
};
