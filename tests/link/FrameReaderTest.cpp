#include "link/FrameReader.h"

#include "link/Frames.h"

#include <gtest/gtest.h>

#include <random>

namespace {

const QByteArray& Answer() {
    static const QByteArray frame = frames::BuildFrame("5304PXYZ");
    return frame;
}

} // namespace

TEST(FrameReader, GoesThroughItsStages) {
    FrameReader reader;
    reader.Feed("\x06\x04noise");
    EXPECT_TRUE(reader.AckReceived());
    EXPECT_FALSE(reader.InFrame());
    reader.Feed(Answer().chopped(1));
    EXPECT_TRUE(reader.InFrame());
    EXPECT_FALSE(reader.ReplyComplete());
    reader.Feed("\x06\x04"); // neither belongs to a frame
    reader.Feed("\x03");
    EXPECT_TRUE(reader.ReplyComplete());
    EXPECT_EQ(reader.TakeReply(), Answer());
    EXPECT_FALSE(reader.ReplyComplete());
    EXPECT_TRUE(reader.ReceiveBuffer().isEmpty());
}

TEST(FrameReader, OfWhatCameTheLastWholeFrameCounts) {
    const QByteArray other = frames::BuildFrame("7101Q");
    const QByteArray broken = "\x02"
                              "5304PXYZ00\x03";
    const struct {
        QByteArray line;
        QByteArray reply; ///< empty: none
    } cases[] = {
        {Answer() + other, other},
        {"\x02"
         "half" +
             Answer(),
         Answer()},
        {Answer() + "\x02"
                    "half",
         ""},
        {Answer() + broken, ""},
        {broken + Answer(), Answer()},
        {Answer() + "stray", Answer()},
        {Answer() + "\x03", ""},
        {"\x02"
         "ab\x03",
         ""},
    };
    for (const auto& [line, reply] : cases) {
        FrameReader reader;
        reader.Feed(line);
        EXPECT_EQ(reader.ReplyComplete(), !reply.isEmpty()) << line.toHex(' ').constData();
        if (!reply.isEmpty()) {
            EXPECT_EQ(reader.TakeReply(), reply);
        }
    }
}

TEST(FrameReader, DoesNotMindHowTheLineIsSliced) {
    std::mt19937 random(7);
    QByteArray line;
    for (int i = 0; i < 2000; ++i) {
        const auto kind = random() % 4;
        if (kind == 0) {
            line += Answer();
        } else if (kind == 1) {
            line += Answer().left(static_cast<qsizetype>(random() % 8));
        } else {
            for (auto length = random() % 12; length > 0; --length)
                line += static_cast<char>(random() % (kind == 2 ? 8 : 256));
        }
    }
    FrameReader whole;
    whole.Feed(line);
    FrameReader sliced;
    for (qsizetype at = 0; at < line.size();) {
        const auto length = std::min<qsizetype>(line.size() - at, static_cast<qsizetype>(1 + random() % 9));
        sliced.Feed(QByteArrayView(line).sliced(at, length));
        at += length;
    }
    EXPECT_EQ(sliced.ReceiveBuffer(), whole.ReceiveBuffer());
    EXPECT_EQ(sliced.ReplyComplete(), whole.ReplyComplete());
    EXPECT_EQ(sliced.Counts().Frames, whole.Counts().Frames);
    EXPECT_EQ(sliced.Counts().BadSums, whole.Counts().BadSums);
    EXPECT_EQ(sliced.Counts().Abandoned, whole.Counts().Abandoned);
    EXPECT_GT(whole.Counts().Frames, 100U);
}

TEST(FrameReader, ADeviceThatNeverEndsItsFrameCostsNothing) {
    FrameReader reader;
    reader.Feed("\x02");
    const QByteArray flood(100'000, 'x');
    for (int i = 0; i < 20; ++i) {
        reader.Feed(flood);
        EXPECT_LE(reader.ReceiveBuffer().size(), FrameReader::LongestFrame);
    }
    EXPECT_EQ(reader.Counts().Overlong, 1U);
    reader.Feed(Answer());
    EXPECT_TRUE(reader.ReplyComplete());
}
