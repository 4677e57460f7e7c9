#include "platform/Clock.h"

#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

namespace {

QCoro::Task<> Count(Clock& clock, qint16 milliseconds, int& ended) {
    co_await clock.DelayMilliseconds(milliseconds);
    ++ended;
}

} // namespace

TEST(SystemClock, WaitsAtLeastAsLongAsAskedWhileOthersGoOn) {
    SystemClock clock;
    QElapsedTimer elapsed;
    elapsed.start();
    int ended = 0;
    const auto longer = Count(clock, 60, ended);
    const auto shorter = Count(clock, 20, ended);
    const auto none = Count(clock, 0, ended);
    EXPECT_EQ(ended, 1);
    EXPECT_TRUE(WaitUntil([&] { return ended == 2; }));
    EXPECT_TRUE(shorter.isReady());
    EXPECT_FALSE(longer.isReady());
    EXPECT_TRUE(WaitUntil([&] { return ended == 3; }));
    EXPECT_GE(elapsed.elapsed(), 60);
}

TEST(SystemClock, ClosingEndsEveryWaitAndWhatStandsBehindIt) {
    SystemClock clock;
    int ended = 0;
    const auto first = Count(clock, 30'000, ended);
    const auto second = Count(clock, 30'000, ended);
    clock.Close();
    EXPECT_TRUE(first.isReady() && second.isReady());
    EXPECT_TRUE(Count(clock, 0, ended).isReady());
    EXPECT_EQ(ended, 0) << "nothing happens behind a wait that the end has cut off";
}
