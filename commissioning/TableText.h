#pragma once

#include <QByteArray>
#include <QModelIndexList>
#include <QString>

class QAbstractItemModel;

/// A shown table as text for other programs.
namespace tabletext {

/// Rows with tabs between the columns, a line each, under the titles; line ends and tabs in cells become blanks.
/// @param rows of the first column, in any order; those of a tree too; all rows if there are none.
QString Tabbed(const QAbstractItemModel& model, const QModelIndexList& rows);

/// All rows, separated by commas (RFC 4180), under the titles, UTF-8. The rows of a tree come behind their parents. A
/// cell that a spreadsheet would take for a formula gets an apostrophe in front.
QByteArray Csv(const QAbstractItemModel& model);

} // namespace tabletext
