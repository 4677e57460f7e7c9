#include "link/Encodings.h"

#include <gtest/gtest.h>

using namespace encoding;

TEST(Encodings, ClockTextAtKnownMoments) {
    const std::pair<QDateTime, QByteArray> cases[] = {
        {QDateTime(QDate(2016, 12, 31), QTime(23, 59, 59)), "\x47\x6B\x6B\x40\x3C\x4F\x37"},
        {QDateTime(QDate(2026, 11, 18), QTime(6, 13, 38)), "\x36\x3D\x56\x4A\x3B\x42\x34"},
        {QDateTime(QDate(2010, 1, 1), QTime(0, 0, 0)), "000:116"},
        {QDateTime(QDate(1999, 8, 1), QTime(1, 2, 3)), "1230811"},
    };
    for (const auto& [moment, text] : cases) {
        EXPECT_EQ(ClockText(moment), text);
        EXPECT_EQ(TimeText(moment), text.first(3));
    }
}

TEST(Encodings, SmallNumbersReachTo207) {
    EXPECT_EQ(SmallNumber(0), '0');
    EXPECT_EQ(SmallNumber(10), ':');
    EXPECT_EQ(SmallNumber(16), '@');
    EXPECT_EQ(SmallNumber(LargestSmallNumber), char(0xFF));
    for (int n = 0; n <= LargestSmallNumber; ++n)
        EXPECT_EQ(FromSmallNumber(SmallNumber(n)), n);
}

TEST(Encodings, HexadecimalIsCutToItsLowDigits) {
    EXPECT_EQ(Hexadecimal(0x1B, 2), "1B");
    EXPECT_EQ(Hexadecimal(5, 4), "0005");
    EXPECT_EQ(Hexadecimal(0x12C, 2), "2C");
}

TEST(Encodings, DisplayTextHasFourPlaces) {
    EXPECT_EQ(DisplayText(12, 0), "0012");
    EXPECT_EQ(DisplayText(12345, 1), "2345");
    EXPECT_EQ(DisplayText(0, 0), "0>><");
    EXPECT_EQ(DisplayText(0, 1), "----");
}
