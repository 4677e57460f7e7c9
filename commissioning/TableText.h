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

/// All rows under the titles, see `delimited::Write`. The rows of a tree come behind their parents and begin with the
/// names of those.
QByteArray Csv(const QAbstractItemModel& model);

} // namespace tabletext
