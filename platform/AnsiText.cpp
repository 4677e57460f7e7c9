#include "platform/AnsiText.h"

#include <QHash>

#include <algorithm>
#include <array>

namespace ansi {
namespace {

/// Characters of the codes 0x80 to 0x9F; all other codes are those of ISO 8859-1.
constexpr std::array<char16_t, 32> UpperControlRow = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

const QHash<char16_t, char>& UpperControlCodes() {
    static const QHash<char16_t, char> codes = [] {
        QHash<char16_t, char> made;
        for (std::size_t i = 0; i < UpperControlRow.size(); ++i)
            made.insert(UpperControlRow[i], static_cast<char>(0x80 + i));
        return made;
    }();
    return codes;
}

/// The visible sign of a character.
QChar Sign(QChar character) {
    switch (character.unicode()) {
    case 0x02:
        return u'\u25B8';
    case 0x03:
        return u'\u25C2';
    case 0x06:
        return u'\u2713';
    default:
        return character.category() == QChar::Other_Control ? QChar(u'\u00B7') : character;
    }
}

} // namespace

Encoded Encode(QStringView text) {
    Encoded result;
    result.bytes.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text[i];
        const char16_t code = unit.unicode();
        if (code < 0x80 || (code >= 0xA0 && code <= 0xFF)) {
            result.bytes.append(static_cast<char>(code));
            continue;
        }
        const auto known = UpperControlCodes().constFind(code);
        if (known != UpperControlCodes().constEnd()) {
            result.bytes.append(*known);
            continue;
        }
        result.bytes.append('?');
        result.lacking.append(unit);
        if (unit.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            result.lacking.append(text[++i]);
    }
    return result;
}

QString Decode(QByteArrayView bytes) {
    QString text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        text.append(code >= 0x80 && code <= 0x9F ? QChar(UpperControlRow[code - 0x80]) : QChar(char16_t(code)));
    }
    return text;
}

QString Visible(QStringView text) {
    QString visible(text.size(), Qt::Uninitialized);
    std::transform(text.begin(), text.end(), visible.begin(), Sign);
    return visible;
}

} // namespace ansi
