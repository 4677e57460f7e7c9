#include "database/TicketArchive.h"

#include "platform/Clock.h"

namespace {

constexpr int RowsOfAStep = 10'000; ///< some 50 ms
constexpr int LastYear = 9999;

QString DayText(QDate day) {
    return day.toString(QStringLiteral("yyyy-MM-dd"));
}

} // namespace

TicketArchive::TicketArchive(Database& database, Clock& clock)
    : m_database(database)
    , m_clock(clock) {}

QCoro::Task<Result<>> TicketArchive::DeleteYears(int year, Progress progress) {
    // Moments are text that begins with the day, so they compare like it.
    const QString end = year >= LastYear ? QStringLiteral("~") : DayText(QDate(year + 1, 1, 1));
    const QString condition = QStringLiteral("[DateTime] < ?");
    const QVariantList values{end};
    co_return co_await Delete(condition, values, progress);
}

QCoro::Task<Result<>> TicketArchive::DeleteDays(QDate from, QDate end, Progress progress) {
    const QString last = DayText(end);
    QString condition = QStringLiteral("([DateTime] < ? OR [DateTime] IN (?, ? || ' 00:00:00', ? || 'T00:00:00', ? || "
                                       "' 00:00:00.000', ? || 'T00:00:00.000'))");
    QVariantList values{last, last, last, last, last, last};
    if (from.isValid()) {
        condition += QStringLiteral(" AND [DateTime] >= ?");
        values += DayText(from);
    }
    co_return co_await Delete(condition, values, progress);
}

Result<qint64> TicketArchive::Number(const Statement& query) const {
    auto rows = m_database.Select(query);
    if (!rows)
        return Failure{rows.Error()};
    return rows->next() ? rows->value(0).toLongLong() : 0;
}

QCoro::Task<Result<>> TicketArchive::Delete(QString condition, QVariantList values, Progress progress) {
    Transaction transaction(m_database.File(), Transaction::Kind::Write);
    if (!transaction.Begun())
        co_return transaction.Begun();
    const auto total = Number({QStringLiteral("SELECT COUNT(*) FROM qData WHERE ") + condition, values});
    if (!total)
        co_return Failure{total.Error()};
    const QString deleting =
        QStringLiteral("DELETE FROM qData WHERE rowid IN (SELECT rowid FROM qData WHERE %1 LIMIT %2)")
            .arg(condition)
            .arg(RowsOfAStep);
    qint64 done = 0;
    while (done < *total) {
        if (const Result<> deleted = m_database.Run({deleting, values}); !deleted)
            co_return deleted;
        const auto gone = Number({QStringLiteral("SELECT changes()")});
        if (!gone)
            co_return Failure{gone.Error()};
        if (*gone == 0)
            break;
        done += *gone;
        progress(done, *total);
        co_await m_clock.DelayMilliseconds(1);
    }
    co_return transaction.Commit();
}
