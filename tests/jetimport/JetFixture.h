#pragma once

#include <QByteArray>
#include <QStringList>

/// The Jet 4 file of the fixtures, and what can be made of it without a writer for such files.
namespace jetfixture {

inline constexpr int PageSize = 4096;
inline constexpr int TicketDefinitionPage = 44; ///< of table rData
inline constexpr int TicketPage = 61;           ///< holds its seven rows

QByteArray Bytes();

/// The same with `count` rows more in `rData`, numbered from 8: tickets 0 to 9998, one a second from 2026-11-22
/// 08:00:00 on, each tenth without an object, each even one announced.
QByteArray WithTickets(int count);

/// The same with row `row` (0 to 6) of `rData` moved to a page of its own, as an engine does with a row that grew.
QByteArray WithMovedTicket(int row);

/// The same with all rows of `rData` deleted.
QByteArray WithoutTickets();

/// The same with rows 1 to 4 in `Message`: `text` behind its reference, in a row elsewhere, in two chained rows, null.
QByteArray WithMessages(const QByteArray& text);

struct Finished {
    int code = -1; ///< -1 after a signal
    QString output;
};

/// Runs the real JetImport to its end.
Finished Import(const QString& source, const QString& target);

/// The rows of a statement, values joined by "|": null as "-", text in quotes.
QStringList Rows(const QString& store, const QString& statement);

} // namespace jetfixture
