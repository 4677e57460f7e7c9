#include "platform/LeadingNumber.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <limits>

namespace number {
namespace {

bool IsDigit(QChar character) {
    return character >= u'0' && character <= u'9';
}

/// Length of the number at the start of `text` once blanks are skipped; `start` is set to its first character.
qsizetype NumberLength(QStringView text, bool withFraction, qsizetype& start) {
    start = 0;
    while (start < text.size() && text[start].isSpace())
        ++start;
    qsizetype at = start;
    if (at < text.size() && (text[at] == u'-' || text[at] == u'+'))
        ++at;
    while (at < text.size() && IsDigit(text[at]))
        ++at;
    if (withFraction && at < text.size() && text[at] == u'.') {
        ++at;
        while (at < text.size() && IsDigit(text[at]))
            ++at;
    }
    return at - start;
}

qint32 Held(double value) {
    return static_cast<qint32>(std::clamp(value, static_cast<double>(std::numeric_limits<qint32>::min()),
                                          static_cast<double>(std::numeric_limits<qint32>::max())));
}

double Value(QStringView text, bool withFraction) {
    qsizetype start = 0;
    const qsizetype length = NumberLength(text, withFraction, start);
    bool ok = false;
    const double value = text.mid(start, length).toDouble(&ok);
    return ok ? value : 0.0;
}

} // namespace

qint32 LeadingInteger(QStringView text) {
    return Held(Value(text, false));
}

double LeadingDecimal(QStringView text) {
    return Value(text, true);
}

qint32 TypedNumber(QStringView text) {
    return Held(std::nearbyint(LeadingDecimal(text)));
}

} // namespace number
