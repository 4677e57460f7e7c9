#include "station/DataMaintenance.h"

#include "platform/Clock.h"

#include <QRegularExpression>
#include <QScopeGuard>

DataMaintenance::DataMaintenance(Database& database, Clock& clock, Dialogs& dialogs, Runner alone, Copier copy)
    : m_clock(clock)
    , m_dialogs(dialogs)
    , m_archive(database, clock)
    , m_alone(std::move(alone))
    , m_copy(std::move(copy)) {}

QDate DataMaintenance::ReadDay(const QString& text) {
    static const QRegularExpression form(
        QStringLiteral("^\\s*(\\d{1,2})\\s*/\\s*(\\d{1,2})\\s*/\\s*(\\d{4})\\s*(/.*)?$"));
    const QRegularExpressionMatch match = form.match(text);
    return match.hasMatch() ? QDate(match.captured(3).toInt(), match.captured(2).toInt(), match.captured(1).toInt())
                            : QDate();
}

bool DataMaintenance::IsReadableDay(const QString& text) {
    QString slashed = text;
    slashed.replace(u'-', u'/').replace(u'.', u'/');
    return ReadDay(slashed).isValid();
}

TicketArchive::Progress DataMaintenance::OnProgress() {
    return [this](qint64 done, qint64 total) { Q_EMIT Progress(done, total); };
}

QCoro::Task<Outcome> DataMaintenance::Delete(Deleting deleting) {
    const Work work = [this, deleting] { return Run(deleting); };
    co_return co_await m_alone(work);
}

QCoro::Task<Outcome> DataMaintenance::Run(Deleting deleting) {
    m_isRunning = true;
    const auto ended = qScopeGuard([this] {
        m_isRunning = false;
        Q_EMIT Progress(0, 0);
    });
    const bool goesOn = co_await m_copy();
    if (!goesOn)
        co_return Outcome::Cancelled();
    const Result<> deleted = co_await deleting();
    if (!deleted)
        co_return Outcome::Failed(QStringLiteral("Nothing was deleted: %1").arg(deleted.Error()));
    co_return Outcome::Done(BoxKind::Information, QStringLiteral("Done."));
}

QCoro::Task<Outcome> DataMaintenance::DeleteFromYear(QString year) {
    static const QRegularExpression form(QStringLiteral("^[0-9]{4}$"));
    if (!form.match(year).hasMatch())
        co_return Outcome::Refused(QStringLiteral("Please enter year as 'yyyy' format."));
    const QString question =
        QStringLiteral("Are you sure you want to delete all data from year %1 backwards?").arg(year);
    const bool yes = co_await m_dialogs.AskYesNo(BoxKind::Exclamation, question);
    if (!yes)
        co_return Outcome::Cancelled();
    const Deleting deleting = [this, number = year.toInt()] { return m_archive.DeleteYears(number, OnProgress()); };
    co_return co_await Delete(deleting);
}

QCoro::Task<Outcome> DataMaintenance::DeleteFromDays(QString from, QString to) {
    const bool isChecked = (!to.isEmpty() || IsReadableDay(from)) && (!from.isEmpty() || IsReadableDay(to));
    if (!isChecked)
        co_return Outcome::Refused(QStringLiteral("Please enter date as 'dd/mm/yyyy' format."));
    QString range = QStringLiteral("%1 to %2 ").arg(from, to);
    if (from.isEmpty())
        range = to + QStringLiteral(" backwards");
    else if (to.isEmpty())
        range = from + QStringLiteral(" to now");
    const QString question = QStringLiteral("Are you sure you want to delete all data from %1?").arg(range);
    const bool yes = co_await m_dialogs.AskYesNo(BoxKind::Exclamation, question);
    // Read whatever the answer was: a date that is none is shown in any case.
    const QDate first = ReadDay(from);
    const QDate end = to.isEmpty() ? m_clock.Now().date() : ReadDay(to).addDays(1);
    if ((!from.isEmpty() && !first.isValid()) || !end.isValid())
        co_return Outcome::Refused(QStringLiteral("Error in Date/Time format."));
    if (!yes)
        co_return Outcome::Cancelled();
    const Deleting deleting = [this, first, end] { return m_archive.DeleteDays(first, end, OnProgress()); };
    co_return co_await Delete(deleting);
}
