#include "link/Frames.h"

#include <gtest/gtest.h>

#include <random>

using namespace frames;

TEST(Frames, BuildsTheWorkedFrame) {
    EXPECT_EQ(BuildFrame(Body(5, '3', 'P', "")), QByteArray("\x02"
                                                            "5301P1B\x03"));
}

TEST(Frames, TellsAddressAndLength) {
    const struct {
        quint8 address;
        int dataLength;
        QByteArray head;
    } cases[] = {
        {0, 0, "0*01"}, {32, 9, "P*0A"}, {127, 254, "\xAF*FF"}, {127, 255, "\xAF*00"}, {207, 300, "\xFF*2D"},
    };
    for (const auto& [address, dataLength, head] : cases)
        EXPECT_EQ(Body(address, '*', 'X', QByteArray(dataLength, 'd')), head + 'X' + QByteArray(dataLength, 'd'));
}

TEST(Frames, JudgesCheckSums) {
    const std::pair<QByteArray, bool> cases[] = {
        {"\x02"
         "5301P1B",
         true},
        {"\x02"
         "5301P1b",
         true},
        {"\x02"
         "5301P1C",
         false},
        {"\x02"
         "ab",
         false},
        {"\x02"
         "ab"
         "C5",
         true},
        {"\x02"
         "\xF4"
         "\xFF"
         "5x",
         false},
        {"\x02"
         "\x7F"
         "\x84"
         "5x",
         true},
        {"\x02"
         "\x7F"
         "\x7F"
         "x5",
         true},
        {"", false},
    };
    for (const auto& [frame, good] : cases)
        EXPECT_EQ(chkCS(frame), good) << frame.toHex(' ').constData();
}

TEST(Frames, EscapesJustTheFourBytes) {
    EXPECT_EQ(EscapeData(QByteArray("\x02\x03\x06\xC0\x00\x22\x04", 7)),
              QByteArray("\xC0\x22\xC0\x23\xC0\x26\xC0\xE0\x00\x22\x04", 11));
    QByteArray all;
    for (int code = 0; code < 256; ++code)
        all += static_cast<char>(code);
    const QByteArray escaped = EscapeData(all);
    EXPECT_EQ(escaped.size(), 260);
    for (const char bare : {Stx, Etx, Ack})
        EXPECT_FALSE(escaped.contains(bare));
    EXPECT_EQ(UnescapeData(escaped), all);
    EXPECT_EQ(UnescapeData("a\xC0"), QByteArray("a\xC0"));
}

TEST(Frames, WhatWasBuiltComesApartAgain) {
    std::mt19937 random(20261123);
    const auto upTo = [&random](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    for (int world = 0; world < 2000; ++world) {
        QByteArray content(upTo(253), '\0');
        for (char& byte : content)
            byte = static_cast<char>(upTo(255));
        const auto address = static_cast<quint8>(upTo(207));
        const auto sequence = static_cast<char>('0' + upTo(9));
        const auto letter = static_cast<char>('A' + upTo(25));
        QByteArray frame = BuildFrame(Body(address, sequence, letter, EscapeData(content)));
        const std::optional<Parts> parts = Split(frame);
        ASSERT_TRUE(parts.has_value());
        EXPECT_EQ(parts->address, address);
        EXPECT_EQ(parts->sequence, sequence);
        EXPECT_EQ(parts->letter, letter);
        EXPECT_EQ(UnescapeData(parts->data), content);
        // A reply that a hub relays has one letter more, and reads like a direct one without it.
        QByteArray relayed = BuildFrame(Body(address, sequence, 'N', letter + EscapeData(content)));
        RemoveRelayLetter(relayed);
        EXPECT_EQ(Split(relayed)->letter, letter);
        EXPECT_EQ(UnescapeData(Split(relayed)->data), content);
        frame.truncate(upTo(8));
        EXPECT_FALSE(Split(frame).has_value());
    }
}
