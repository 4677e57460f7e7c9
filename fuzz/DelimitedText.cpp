#include "platform/DelimitedText.h"

#include <cstdlib>

/// Any bytes as a table: what was read comes back the same when it was written, but for cells that a spreadsheet would
/// calculate and for rows of nothing but empty cells.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const Result<delimited::Table> read = delimited::Read(bytes);
    if (!read)
        return 0;
    for (const QStringList& row : read->rows) {
        for (const QString& cell : row) {
            // What no text can hold, or what does not come back as it went.
            const bool isOdd = cell.contains(u'\r') || cell.contains(QChar::Null) || !cell.isValidUtf16() ||
                               (!cell.isEmpty() && QStringView(u"=+-@\t").contains(cell[0]));
            if (isOdd)
                return 0;
        }
    }
    // The first line alone tells the separator.
    const Result<delimited::Table> again = delimited::Read(delimited::Write(read->rows));
    if (!again || (again->separator == u',' && again->rows != read->rows))
        std::abort();
    return 0;
}
