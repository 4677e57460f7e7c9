#include "jetimport/JetValue.h"

#include <gtest/gtest.h>

#include <limits>

TEST(JetValue, TellsMomentsToTheSecond) {
    const struct {
        double days;
        const char* text;
    } cases[] = {
        {0, "1899-12-30 00:00:00"},
        {0.25, "1899-12-30 06:00:00"}, // a time of day alone
        {-0.25, "1899-12-30 06:00:00"},
        {-1.25, "1899-12-29 06:00:00"}, // the fraction counts forward within its day
        {-36522.75, "1800-01-01 18:00:00"},
        {2.0, "1900-01-01 00:00:00"},
        {46348.33339120371, "2026-11-22 08:00:05"},
        {46348.0 - 0.1 / 86400, "2026-11-22 00:00:00"}, // rounded up over midnight
        {-657434, "0100-01-01 00:00:00"},
        {2958465.0 + 86399.0 / 86400, "9999-12-31 23:59:59"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(jet::Moment(c.days).toString().toStdString(), c.text) << c.days;
}

TEST(JetValue, KeepsANumberThatIsNoMoment) {
    for (const double days :
         {1e300, -1e9, 2958466.0, 2958466.0 - 1e-9, -657435.0, std::numeric_limits<double>::infinity()})
        EXPECT_EQ(jet::Moment(days), QVariant(days)) << days;
    EXPECT_EQ(jet::Moment(std::numeric_limits<double>::quiet_NaN()).typeId(), QMetaType::Double);
}

TEST(JetValue, ReadsPlainAndCompressedText) {
    const struct {
        QByteArray bytes;
        QString text;
    } cases[] = {
        {"", u""_qs},
        {"\xFF\xFE", u""_qs},
        {"\xFF\xFEG\xF4\xFBi", u"G\u00F4\u00FBi"_qs},
        {QByteArray("G\0\xFB\0", 4), u"G\u00FB"_qs},
        {QByteArray("\x92\x01", 2), u"\u0192"_qs},
        // One byte each, then pairs, then one byte each again.
        {QByteArray("\xFF\xFE\x41\0\x20\x20\x22\x21\0\x42", 10), u"A\u2020\u2122B"_qs},
        {QByteArray("A\0B", 3), u"A"_qs}, // half a character at the end
        {QByteArray("\xFF\xFE\x41\0\x20", 5), u"A"_qs},
    };
    for (const auto& c : cases)
        EXPECT_EQ(jet::Text4(c.bytes), c.text) << c.bytes.toHex().constData();
}

TEST(JetValue, WritesExactDecimals) {
    EXPECT_EQ(jet::Money(std::numeric_limits<qint64>::min()), u"-922337203685477.5808"_qs);
    EXPECT_EQ(jet::Money(-5), u"-0.0005"_qs);
    const QByteArray big = QByteArray("\x80", 1) + QByteArray(3, '\0') + "\1" + QByteArray(12, '\0');
    EXPECT_EQ(jet::Numeric(QByteArray("\0", 1) + QByteArray(12, '\0') + QByteArray("\x39\x30\0\0", 4), 2).toString(),
              u"123.45"_qs);
    EXPECT_EQ(jet::Numeric(big, 0).toString(), u"-1329227995784915872903807060280344576"_qs); // -(2^120)
    EXPECT_TRUE(jet::Numeric("short", 0).isNull());
}
