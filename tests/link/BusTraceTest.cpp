#include "link/BusTrace.h"

#include "link/Frames.h"
#include "tests/support/BusWorld.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/Waiting.h"

using namespace std::chrono_literals;

namespace {

class BusTraceTest : public BusWorld {
protected:
    BusTraceTest() { Open(m_terminal.Path()); }

    /// Sends `P` to 5, and whatever `answer` is as soon as the command has come.
    void Command(const QByteArray& answer, int tries = 1) {
        const auto running = m_bus.SendCommand(5, 'P', {}, 30ms, tries);
        QByteArray line;
        ASSERT_TRUE(WaitUntil([&] { return (line += m_terminal.Read()).contains(frames::Etx); }));
        m_terminal.Write(answer);
        ASSERT_TRUE(WaitUntil([&] { return running.isReady(); }));
    }

    std::vector<TraceRow::Outcome> Outcomes() const {
        std::vector<TraceRow::Outcome> outcomes;
        for (quint64 serial = m_trace.First(); serial < m_trace.End(); ++serial)
            outcomes.push_back(m_trace.Row(serial).outcome);
        return outcomes;
    }

    PseudoTerminal m_terminal;
    BusTrace m_trace{m_bus, m_clock};
};

const QByteArray& Answer() {
    static const QByteArray frame = frames::BuildFrame("5002P1");
    return frame;
}

} // namespace

TEST_F(BusTraceTest, EveryFrameIsARowThatTellsHowItEnded) {
    using enum TraceRow::Outcome;
    Command(Answer());
    Command("\x02garbled\x03" + Answer());
    Command(Answer().first(4), 2);
    m_terminal.Write(Answer());
    ASSERT_TRUE(WaitUntil([&] { return m_trace.End() == 8; }));
    Await(m_bus.SendCommand(frames::Broadcast, 'R', "x"));
    const auto cut = m_bus.SendCommand(5, 'P', {}, 5s, 1);
    m_control.Close();
    EXPECT_TRUE(cut.isReady());

    EXPECT_EQ(Outcomes(),
              (std::vector{Answered, Good, Answered, BadSum, Good, NoAnswer, NoAnswer, Unasked, ToAll, LineClosed}));
    EXPECT_EQ(m_trace.Row(0).frame, frames::BuildFrame("5001P"));
    EXPECT_EQ(m_trace.Row(1).frame, Answer());
    EXPECT_EQ(m_trace.Row(4).request, 2U);
    EXPECT_EQ(m_trace.Row(5).attempt, 1);
    EXPECT_EQ(m_trace.Row(5).collected, 4);
    EXPECT_EQ(m_trace.Row(6).attempt, 2);
    for (const quint64 answered : {1U, 4U})
        EXPECT_TRUE(m_trace.Row(answered).roundTrip > 0 && m_trace.Row(answered).roundTrip < 5'000'000) << answered;
    EXPECT_EQ(m_trace.Row(7).roundTrip, -1);
}

TEST_F(BusTraceTest, AFrameThatNobodyWaitedForBelongsToNoCommand) {
    m_terminal.Write("\x02\x03\x02\x03");
    ASSERT_TRUE(WaitUntil([&] { return m_trace.End() == 2; }));
    Command(Answer());
    m_terminal.Write("\x02late\x03");
    ASSERT_TRUE(WaitUntil([&] { return m_trace.End() == 5; }));
    for (const quint64 stray : {0U, 1U, 4U}) {
        EXPECT_EQ(m_trace.Row(stray).outcome, TraceRow::BadSum);
        EXPECT_EQ(m_trace.Row(stray).request, stray);
    }
    EXPECT_EQ(m_trace.Row(3).request, 2U);
}

TEST_F(BusTraceTest, TheOldestRowsGiveWayAndAClearedTraceBeginsAnew) {
    const auto send = [this](quint64 count) {
        for (quint64 i = 0; i < count; ++i)
            Q_EMIT m_bus.FrameSent(1, QByteArray::number(m_trace.End()), 1);
    };
    const auto expectOwnFrames = [this] {
        for (const quint64 serial : {m_trace.First(), m_trace.First() + 1, m_trace.End() - 1})
            EXPECT_EQ(m_trace.Row(serial).frame, QByteArray::number(serial));
    };
    send(BusTrace::Capacity + 5);
    EXPECT_EQ(m_trace.First(), 5U);
    EXPECT_EQ(m_trace.End() - m_trace.First(), BusTrace::Capacity);
    expectOwnFrames();

    const quint64 end = m_trace.End();
    m_trace.Clear();
    EXPECT_EQ(m_trace.First(), m_trace.End());
    EXPECT_GE(m_trace.End(), end);
    send(3);
    EXPECT_EQ(m_trace.End() - m_trace.First(), 3U);
    expectOwnFrames();
    send(BusTrace::Capacity);
    EXPECT_EQ(m_trace.End() - m_trace.First(), BusTrace::Capacity);
    expectOwnFrames();
}
