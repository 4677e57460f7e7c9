#include "platform/AnsiText.h"

#include <gtest/gtest.h>

TEST(AnsiText, EveryByteComesBackUnchanged) {
    QByteArray all;
    for (int code = 0; code < 256; ++code)
        all += static_cast<char>(code);
    const ansi::Encoded back = ansi::Encode(ansi::Decode(all));
    EXPECT_EQ(back.bytes, all);
    EXPECT_TRUE(back.lacking.isEmpty());
}

TEST(AnsiText, KnowsTheUpperControlRow) {
    EXPECT_EQ(ansi::Encode(u"\u20AC\u0152\u0178").bytes, QByteArray("\x80\x8C\x9F"));
}

TEST(AnsiText, ReportsEachCharacterThatItLacks) {
    const ansi::Encoded encoded = ansi::Encode(u"a\u1EBF\U0001F600b\u1EBF");
    EXPECT_EQ(encoded.bytes, QByteArray("a??b?"));
    EXPECT_EQ(encoded.lacking, QStringLiteral("\u1EBF\U0001F600\u1EBF"));
}
