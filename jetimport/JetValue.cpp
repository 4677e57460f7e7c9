#include "jetimport/JetValue.h"

#include <QDate>
#include <QtEndian>

#include <array>
#include <cmath>
#include <cstring>
#include <numeric>
#include <utility>

namespace jet {
namespace {

constexpr int MaskStart = 0x18;
constexpr int KeyPlace = 0x3E;
constexpr int PasswordPlace = 0x42;
constexpr int CreationPlace = 0x72;

// The mask is the RC4 stream of a key that every Jet file shares.
void Unmask(char* bytes, int count) {
    constexpr std::array<quint8, 4> Key = {0xC7, 0xDA, 0x39, 0x6B};
    std::array<quint8, 256> state;
    std::iota(state.begin(), state.end(), quint8(0));
    for (int i = 0, j = 0; i < 256; ++i) {
        j = (j + state[i] + Key[i % 4]) & 0xFF;
        std::swap(state[i], state[j]);
    }
    for (int n = 0, i = 0, j = 0; n < count; ++n) {
        i = (i + 1) & 0xFF;
        j = (j + state[i]) & 0xFF;
        std::swap(state[i], state[j]);
        bytes[n] = static_cast<char>(static_cast<quint8>(bytes[n]) ^ state[(state[i] + state[j]) & 0xFF]);
    }
}

QString Decimal(unsigned __int128 value, bool negative, int scale) {
    QString digits;
    do {
        digits.prepend(QChar(u'0' + static_cast<int>(value % 10)));
        value /= 10;
    } while (value > 0);
    if (scale > 0) {
        digits = digits.rightJustified(scale + 1, u'0');
        digits.insert(digits.size() - scale, u'.');
    }
    return negative ? u'-' + digits : digits;
}

} // namespace

QByteArray UnmaskedHeader(QByteArrayView head) {
    QByteArray bytes = head.first(0x98).toByteArray();
    Unmask(bytes.data() + MaskStart, bytes[0x14] == 0 ? 126 : 128);
    return bytes;
}

QString Protection(QByteArrayView head) {
    if (head.size() < 0x98)
        return QStringLiteral("its first page is cut off");
    const QByteArray bytes = UnmaskedHeader(head);
    if (qFromLittleEndian<quint32>(bytes.constData() + KeyPlace) != 0)
        return QStringLiteral("it is encrypted");
    const bool jet3 = bytes[0x14] == 0;
    // From Jet 4 on the whole days of the file's creation lie over the password.
    char dateMask[4] = {};
    if (!jet3) {
        const double days = qFromLittleEndian<double>(bytes.constData() + CreationPlace);
        if (std::isfinite(days) && std::abs(days) < 2147483647.0)
            qToLittleEndian<qint32>(static_cast<qint32>(days), dateMask);
    }
    for (int i = 0; i < (jet3 ? 20 : 40); ++i) {
        if ((bytes[PasswordPlace + i] ^ dateMask[i % 4]) != 0)
            return QStringLiteral("it is protected by a password");
    }
    return {};
}

QString Text4(QByteArrayView bytes) {
    if (!bytes.startsWith(QByteArrayView("\xFF\xFE", 2))) {
        QString text(bytes.size() / 2, Qt::Uninitialized);
        qFromLittleEndian<quint16>(bytes.data(), text.size(), text.data());
        return text;
    }
    // Runs of single bytes and of pairs take turns, a zero byte between them.
    QString text;
    bool single = true;
    for (qsizetype i = 2; i < bytes.size();) {
        if (bytes[i] == 0) {
            single = !single;
            ++i;
        } else if (single) {
            text += QChar(static_cast<char16_t>(static_cast<quint8>(bytes[i++])));
        } else if (i + 1 < bytes.size()) {
            text += QChar(qFromLittleEndian<quint16>(bytes.data() + i));
            i += 2;
        } else {
            break;
        }
    }
    return text;
}

QVariant Moment(double days) {
    constexpr double FirstDay = -657434;
    constexpr double EndDay = 2958466;
    if (!(days > FirstDay - 1 && days < EndDay))
        return days;
    const double wholeDays = std::trunc(days);
    auto seconds = qint64(std::llround(std::abs(days - wholeDays) * 86400));
    const QDate date = QDate(1899, 12, 30).addDays(static_cast<qint64>(wholeDays) + seconds / 86400);
    seconds %= 86400;
    // Rounded up out of the last day.
    if (date.year() > 9999)
        return days;
    return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d", date.year(), date.month(), date.day(),
                             static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60 % 60),
                             static_cast<int>(seconds % 60));
}

QString Money(qint64 tenThousandths) {
    const bool negative = tenThousandths < 0;
    return Decimal(negative ? -static_cast<__int128>(tenThousandths) : tenThousandths, negative, 4);
}

QVariant Numeric(QByteArrayView bytes, int scale) {
    if (bytes.size() != 17)
        return {};
    unsigned __int128 value = 0;
    for (int word = 0; word < 4; ++word)
        value = value << 32 | qFromLittleEndian<quint32>(bytes.data() + 1 + 4 * word);
    return Decimal(value, (bytes[0] & 0x80) != 0, scale);
}

} // namespace jet
