#include "link/LineStatistics.h"

#include "link/Frames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

TEST(RoundTrips, QuantilesAreThoseOfAllTimesToAFifth) {
    std::mt19937 dice(14);
    for (int world = 0; world < 200; ++world) {
        RoundTrips counted;
        std::vector<qint64> times;
        const qint64 longest = 300 << dice() % 13;
        for (unsigned i = 1 + dice() % 500; i > 0; --i) {
            times.push_back(250 + static_cast<qint64>(dice()) % longest);
            counted.Add(RoundTrips::Time(times.back()));
        }
        std::sort(times.begin(), times.end());
        EXPECT_EQ(counted.Count(), times.size());
        EXPECT_EQ(counted.Largest().count(), times.back());
        for (const double part : {0.5, 0.95, 1.0}) {
            const auto place = static_cast<std::size_t>(std::ceil(part * static_cast<double>(times.size())));
            const auto exact = static_cast<double>(times[place - 1]);
            const auto told = static_cast<double>(counted.Quantile(part).count());
            EXPECT_GE(told, exact) << part << " of " << times.size();
            EXPECT_LE(told, exact * 1.2 + 1) << part << " of " << times.size();
        }
    }
    EXPECT_EQ(RoundTrips().Quantile(0.5).count(), 0);
}

TEST(ReplyFit, TellsWhatAReplyAnswers) {
    const auto frame = [](quint8 address, char sequence, char letter, const QByteArray& data) {
        return frames::BuildFrame(frames::Body(address, sequence, letter, data));
    };
    const QByteArray status = frame(32, '4', 'P', {});
    const QByteArray relay = frame(64, '4', 'N', "QM00");
    const struct {
        QByteArray command;
        QByteArray reply;
        ReplyFit fit;
    } rows[] = {
        {status, frame(32, '4', 'P', "110001"), ReplyFit::Own},
        {status, status, ReplyFit::AsSent},
        {relay, relay, ReplyFit::AsSent},
        {status, frame(33, '4', 'P', "110001"), ReplyFit::OtherAddress},
        {status, frame(32, '3', 'P', "110001"), ReplyFit::OtherSequence},
        {status, frame(32, '4', 'K', {}), ReplyFit::OtherLetter},
        {status, QByteArray("\x02\x35\x33\x30\x31\x03"), ReplyFit::OtherAddress},
        {relay, frame(64, '4', 'N', "M"), ReplyFit::Own},
        {relay, frame(64, '4', 'N', "P110001"), ReplyFit::OtherDevice},
        {relay, frame(64, '4', 'N', {}), ReplyFit::OtherDevice},
        {frame(32, '4', 'N', {}), frame(32, '4', 'N', {}), ReplyFit::AsSent},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FitOf(row.command, row.reply), row.fit) << row.reply.toStdString();
}
