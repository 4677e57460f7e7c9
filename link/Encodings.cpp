#include "link/Encodings.h"

#include <algorithm>

namespace encoding {
namespace {
constexpr int Zero = '0';
}

char SmallNumber(int n) {
    return static_cast<char>(Zero + n);
}

int FromSmallNumber(char character) {
    return static_cast<quint8>(character) - Zero;
}

QByteArray ClockText(const QDateTime& moment) {
    const QDate date = moment.date();
    const QTime time = moment.time();
    const int weekday = date.dayOfWeek() % 7 + 1;
    QByteArray text;
    for (const int value : {time.hour(), time.minute(), time.second(), std::max(date.year() - 2000, 0), date.month(),
                            date.day(), weekday})
        text += SmallNumber(value);
    return text;
}

QByteArray TimeText(const QDateTime& moment) {
    return ClockText(moment).first(3);
}

QByteArray Hexadecimal(quint32 value, int digits) {
    return QByteArray::number(value, 16).toUpper().rightJustified(digits, '0').right(digits);
}

QByteArray DisplayText(qint16 number, qint16 displayType) {
    if (number == 0)
        return displayType == 0 ? QByteArrayLiteral("0>><") : QByteArrayLiteral("----");
    return (QByteArrayLiteral("0000") + QByteArray::number(number)).right(4);
}

} // namespace encoding
