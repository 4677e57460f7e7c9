#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QStringList>

#include <vector>

/// Tables as text, as spreadsheets write and read them (RFC 4180): cells between separators, a line for each row. A
/// cell that holds a separator, a quote or a line end stands in quotes, and a quote in it twice.
namespace delimited {

/// A table that was read.
struct Table {
    std::vector<QStringList> rows; ///< without those that are empty; of different lengths where they were written so
    QString encoding;              ///< how the text was taken: "UTF-8", "UTF-16", "Windows-1258", "Windows-1252"
    QChar separator;
};

/// The largest text that is read, bytes.
inline constexpr qint64 LargestText = 16 << 20;

/// What becomes of rows whose cells are all empty.
enum class EmptyRows : quint8 { Drop, Keep };

/// The cells of a text. Whatever it holds gives a table: a quote that is never closed is one of the text. Lines end in
/// line feed, carriage return, or both.
std::vector<QStringList> Cells(const QString& text, QChar separator, EmptyRows emptyRows = EmptyRows::Drop);

/// Finds encoding and separator (comma, semicolon or tab, whichever its first line has most of) and reads the cells.
/// What is neither UTF-8 nor UTF-16 is Windows-1258 if more marks stand where only that code page has them than where
/// only the letters of the printers have theirs, else Windows-1252.
/// A failure if the text holds no cell at all or is too large.
Result<Table> Read(const QByteArray& bytes);

/// The rows separated by commas, in UTF-8 with the mark by which spreadsheets know it. A cell that a spreadsheet would
/// take for a formula gets an apostrophe in front, which `Read` leaves to the caller.
QByteArray Write(const std::vector<QStringList>& rows);

} // namespace delimited
