#include "station/DataMaintenance.h"

#include "platform/Clock.h"
#include "platform/Dialogs.h"

#include <QRegularExpression>

DataMaintenance::DataMaintenance(Database& database, Clock& clock, Dialogs& dialogs)
    : m_clock(clock)
    , m_dialogs(dialogs)
    , m_archive(database, clock) {}

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

QCoro::Task<> DataMaintenance::Tell(QString text) {
    co_await m_dialogs.ShowMessage(BoxKind::Exclamation, text);
}

QCoro::Task<> DataMaintenance::Run(std::function<QCoro::Task<Database::Error>()> start) {
    m_running = true;
    const Database::Error error = co_await start();
    m_running = false;
    Q_EMIT Progress(0, 0);
    if (error) {
        const QString failed = QStringLiteral("Nothing was deleted: %1").arg(*error);
        co_await Tell(failed);
        co_return;
    }
    const QString done = QStringLiteral("Done.");
    co_await m_dialogs.ShowMessage(BoxKind::Information, done);
}

QCoro::Task<bool> DataMaintenance::DeleteFromYear(QString year) {
    static const QRegularExpression form(QStringLiteral("^[0-9]{4}$"));
    if (!form.match(year).hasMatch()) {
        const QString wrong = QStringLiteral("Please enter year as 'yyyy' format.");
        co_await Tell(wrong);
        co_return false;
    }
    const QString question =
        QStringLiteral("Are you sure you want to delete all data from year %1 backwards?").arg(year);
    const bool yes = co_await m_dialogs.AskYesNo(BoxKind::Exclamation, question);
    const std::function<QCoro::Task<Database::Error>()> start = [this, number = year.toInt()] {
        return m_archive.DeleteYears(number, OnProgress());
    };
    if (yes)
        co_await Run(start);
    co_return true;
}

QCoro::Task<> DataMaintenance::DeleteFromDays(QString from, QString to) {
    const bool isChecked = (!to.isEmpty() || IsReadableDay(from)) && (!from.isEmpty() || IsReadableDay(to));
    if (!isChecked) {
        const QString wrong = QStringLiteral("Please enter date as 'dd/mm/yyyy' format.");
        co_await Tell(wrong);
        co_return;
    }
    QString range = QStringLiteral("%1 to %2 ").arg(from, to);
    if (from.isEmpty())
        range = to + QStringLiteral(" backwards");
    else if (to.isEmpty())
        range = from + QStringLiteral(" to now");
    const QString question = QStringLiteral("Are you sure you want to delete all data from %1?").arg(range);
    const bool yes = co_await m_dialogs.AskYesNo(BoxKind::Exclamation, question);
    // Read whatever the answer was: a date that is none is told in any case.
    const QDate first = ReadDay(from);
    const QDate end = to.isEmpty() ? m_clock.Now().date() : ReadDay(to).addDays(1);
    if ((!from.isEmpty() && !first.isValid()) || !end.isValid()) {
        const QString wrong = QStringLiteral("Error in Date/Time format.");
        co_await Tell(wrong);
        co_return;
    }
    const std::function<QCoro::Task<Database::Error>()> start = [this, first, end] {
        return m_archive.DeleteDays(first, end, OnProgress());
    };
    if (yes)
        co_await Run(start);
}
