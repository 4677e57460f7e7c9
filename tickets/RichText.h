#pragma once

#include "platform/Result.h"
#include "tickets/TicketDocument.h"

#include <QByteArrayView>
#include <QStringList>

/// Reads and writes ticket forms as rich text (*.rtf), the format in which word processors exchange texts.
namespace richtext {

/// A file of more bytes is refused.
inline constexpr qsizetype LargestFile = qsizetype(100) * 1024 * 1024;
/// A file whose groups nest deeper is refused.
inline constexpr int DeepestNesting = 200;
/// A file of more paragraphs and runs, both together, is refused.
inline constexpr int MostPieces = 1000000;

struct Document {
    TicketDocument document;
    QStringList losses; ///< what the file holds and a ticket form cannot keep, for the user: "pictures", "italics"
};

/// Reads a rich text file.
///
/// Text becomes paragraphs of runs: `empty` of a paragraph is set only if it has no characters, lone halves of
/// surrogate pairs become U+FFFD, NUL is dropped. Each \\par, \\line, page break and table row ends a line, so that a
/// file that ends in one has an empty last paragraph; table cells are followed by a TAB. A paragraph is aligned as is
/// in force at its end, and justified counts as left. Sizes are clamped to 0.5 to 1638 points and are 12 where the file
/// names none. Of a field the result is kept; text that is hidden or marked as deleted is not. Bytes above 127 are read
/// in the code page of their font: Windows-1250, 1251, 1252, 1253, 1254, 1257 or 1258, any other single-byte one as
/// Windows-1252, and a character of an East Asian one as "?"; neither of the last two without a loss. Vietnamese comes
/// out in VNI: text in a font of a VNI name ("VNI-...") is taken for VNI, text in any other for Unicode, and where the
/// file names no font each word tells what it is. A broken file gives what can be read of it.
/// @return a failure if the file does not begin as rich text does or exceeds a limit above.
Result<Document> Read(QByteArrayView file);

/// The file of a ticket form, 7-bit characters only.
///
/// Sizes are rounded to half points and clamped to 0.5 to 1638. `Read` gives the same document back, without losses,
/// if within these its text holds no NUL, line end, lone half of a surrogate pair or Vietnamese letter above U+00FF, if
/// its runs are as `TicketDocument` asks, if `empty` of paragraphs that have characters is the default, and if the file
/// stays below the limits.
QByteArray Write(const TicketDocument& document);

} // namespace richtext
