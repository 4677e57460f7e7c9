#include "platform/DelimitedText.h"

#include "platform/AnsiText.h"

#include <QStringDecoder>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

#include <iconv.h>

namespace {

/// The text of bytes in Windows-1258, whose tone marks stand behind their letters.
std::optional<QString> FromVietnamese(const QByteArray& bytes) {
    const iconv_t converter = iconv_open("UTF-8", "CP1258");
    if (reinterpret_cast<std::intptr_t>(converter) == -1)
        return std::nullopt;
    QByteArray text(bytes.size() * 4 + 16, Qt::Uninitialized);
    char* from = const_cast<char*>(bytes.data());
    char* to = text.data();
    auto fromLeft = static_cast<std::size_t>(bytes.size());
    auto toLeft = static_cast<std::size_t>(text.size());
    const bool isWhole = iconv(converter, &from, &fromLeft, &to, &toLeft) != static_cast<std::size_t>(-1) &&
                         iconv(converter, nullptr, nullptr, &to, &toLeft) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    if (!isWhole)
        return std::nullopt;
    text.truncate(to - text.data());
    return QString::fromUtf8(text).normalized(QString::NormalizationForm_C);
}

/// More tone marks of Windows-1258 behind vowels, and letters of its own, than marks of the printers' letters.
bool LooksVietnamese(const QByteArray& bytes) {
    const auto isOneOf = [](char byte, const char* signs) { return byte != '\0' && std::strchr(signs, byte); };
    constexpr const char* Tones = "\xCC\xD2\xDE\xEC\xF2";
    constexpr const char* Vowels = "aeiouyAEIOUY\xC2\xC3\xCA\xD4\xD5\xDD\xE2\xE3\xEA\xF4\xF5\xFD";
    constexpr const char* Struck = "\xD0\xF0";
    constexpr const char* PrinterMarks = "\xD8\xD9\xDB\xCF\xF8\xF9\xFB\xEF\xE0\xE1\xE4\xE5\xE8\xE9\xEB\xFA\xFC";
    int ofCodePage = 0;
    int ofPrinters = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const char before = i > 0 ? bytes[i - 1] : '\0';
        ofCodePage += isOneOf(bytes[i], Struck) || (isOneOf(bytes[i], Tones) && isOneOf(before, Vowels)) ? 1 : 0;
        ofPrinters += isOneOf(bytes[i], PrinterMarks) && isOneOf(before, "aeouyAEOUY\xF4\xF6\xD4\xD6") ? 1 : 0;
    }
    return ofCodePage > ofPrinters;
}

QString Decoded(const QByteArray& bytes, QString& encoding) {
    const auto utf16 = QStringConverter::encodingForData(bytes);
    if (utf16 == QStringConverter::Utf16LE || utf16 == QStringConverter::Utf16BE) {
        encoding = QStringLiteral("UTF-16");
        return QStringDecoder(*utf16)(bytes);
    }
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    if (!utf8.hasError()) {
        encoding = QStringLiteral("UTF-8");
        return text;
    }
    if (LooksVietnamese(bytes)) {
        if (std::optional<QString> vietnamese = FromVietnamese(bytes)) {
            encoding = QStringLiteral("Windows-1258");
            return *vietnamese;
        }
    }
    encoding = QStringLiteral("Windows-1252");
    return ansi::Decode(bytes);
}

QChar SeparatorOf(const QString& text) {
    const auto isEnd = [](QChar sign) { return sign == u'\n' || sign == u'\r'; };
    const auto begin = std::find_if_not(text.begin(), text.end(), isEnd);
    const QString line(begin, std::find_if(begin, text.end(), isEnd) - begin);
    const auto count = [&line](QChar candidate) {
        bool isQuoted = false;
        int found = 0;
        for (const QChar sign : line) {
            isQuoted ^= sign == u'"';
            found += !isQuoted && sign == candidate ? 1 : 0;
        }
        return found;
    };
    QChar best = u',';
    for (const QChar candidate : {QChar(u';'), QChar(u'\t')}) {
        if (count(candidate) > count(best))
            best = candidate;
    }
    return best;
}

QByteArray Quoted(QString cell) {
    // What a spreadsheet would calculate.
    if (!cell.isEmpty() && QStringView(u"=+-@\t\r").contains(cell[0]) && !cell.toDouble())
        cell.prepend(u'\'');
    const bool needsQuotes = std::any_of(cell.begin(), cell.end(), [](QChar sign) {
        return sign == u',' || sign == u';' || sign == u'"' || sign == u'\n' || sign == u'\r' || sign == u'\t';
    });
    if (needsQuotes)
        cell = u'"' + cell.replace(u'"', QStringLiteral("\"\"")) + u'"';
    return cell.toUtf8();
}

} // namespace

namespace delimited {

std::vector<QStringList> Cells(const QString& text, QChar separator, EmptyRows emptyRows) {
    std::vector<QStringList> rows;
    QStringList row;
    QString cell;
    const auto endRow = [&] {
        row += std::exchange(cell, {});
        const bool isEmpty = std::all_of(row.begin(), row.end(), [](const QString& one) { return one.isEmpty(); });
        if (!isEmpty || emptyRows == EmptyRows::Keep)
            rows.push_back(row);
        row.clear();
    };
    qsizetype lastQuote = text.lastIndexOf(u'"');
    bool isQuoted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar sign = text[i];
        if (isQuoted) {
            if (sign != u'"')
                cell += sign;
            else if (i + 1 < text.size() && text[i + 1] == u'"')
                cell += text[++i];
            else
                isQuoted = false;
        } else if (sign == u'"' && cell.isEmpty() && i < lastQuote) {
            isQuoted = true;
        } else if (sign == separator) {
            row += std::exchange(cell, {});
        } else if (sign == u'\n' || sign == u'\r') {
            if (sign == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                ++i;
            endRow();
        } else {
            cell += sign;
        }
    }
    // The end of the last line begins no further one.
    if (!row.isEmpty() || !cell.isEmpty())
        endRow();
    return rows;
}

Result<Table> Read(const QByteArray& bytes) {
    if (bytes.size() > LargestText)
        return Failure{QStringLiteral("The text is larger than %1 MB.").arg(LargestText >> 20)};
    Table table;
    const QString text = Decoded(bytes, table.encoding);
    table.separator = SeparatorOf(text);
    table.rows = Cells(text, table.separator);
    if (table.rows.empty())
        return Failure{QStringLiteral("There are no rows in it.")};
    return table;
}

QByteArray Write(const std::vector<QStringList>& rows) {
    QByteArray bytes("\xEF\xBB\xBF");
    for (const QStringList& row : rows) {
        for (qsizetype i = 0; i < row.size(); ++i)
            bytes += (i > 0 ? "," : "") + Quoted(row[i]);
        bytes += "\r\n";
    }
    return bytes;
}

} // namespace delimited
