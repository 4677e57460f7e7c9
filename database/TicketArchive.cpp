#include "database/TicketArchive.h"

#include "platform/Clock.h"

#include <QSqlQuery>

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

QCoro::Task<Database::Error> TicketArchive::DeleteYears(int year, Progress progress) {
    // Moments are text that begins with the day, so they compare like it.
    const QString end = year >= LastYear ? QStringLiteral("~") : DayText(QDate(year + 1, 1, 1));
    const QString condition = QStringLiteral("[DateTime] < ?");
    const QVariantList values{end};
    const Database::Error error = co_await Delete(condition, values, progress);
    co_return error;
}

QCoro::Task<Database::Error> TicketArchive::DeleteDays(QDate from, QDate end, Progress progress) {
    const QString last = DayText(end);
    QString condition = QStringLiteral("([DateTime] < ? OR [DateTime] IN (?, ? || ' 00:00:00', ? || 'T00:00:00', ? || "
                                       "' 00:00:00.000', ? || 'T00:00:00.000'))");
    QVariantList values{last, last, last, last, last, last};
    if (from.isValid()) {
        condition += QStringLiteral(" AND [DateTime] >= ?");
        values += DayText(from);
    }
    const Database::Error error = co_await Delete(condition, values, progress);
    co_return error;
}

qint64 TicketArchive::Number(const Statement& query, Database::Error& error) const {
    QString problem;
    auto rows = m_database.Select(query, problem);
    if (!rows || !rows->next()) {
        error = problem;
        return 0;
    }
    return rows->value(0).toLongLong();
}

QCoro::Task<Database::Error> TicketArchive::Delete(QString condition, QVariantList values, Progress progress) {
    Database::Error error = m_database.Run({QStringLiteral("BEGIN IMMEDIATE")});
    if (error)
        co_return error;
    const QString counting = QStringLiteral("SELECT COUNT(*) FROM qData WHERE ") + condition;
    const qint64 total = Number({counting, values}, error);
    const QString deleting =
        QStringLiteral("DELETE FROM qData WHERE rowid IN (SELECT rowid FROM qData WHERE %1 LIMIT %2)")
            .arg(condition)
            .arg(RowsOfAStep);
    qint64 done = 0;
    while (!error && done < total) {
        error = m_database.Run({deleting, values});
        const qint64 gone = error ? 0 : Number({QStringLiteral("SELECT changes()")}, error);
        if (gone == 0)
            break;
        done += gone;
        progress(done, total);
        co_await m_clock.DelayMilliseconds(1);
        // The program may have ended meanwhile; a store that is closed has kept its rows.
        if (!m_database.IsOpen())
            co_return QStringLiteral("The database is closed.");
    }
    if (!error)
        error = m_database.Run({QStringLiteral("COMMIT")});
    if (error)
        m_database.Run({QStringLiteral("ROLLBACK")});
    co_return error;
}
