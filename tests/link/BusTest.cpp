#include "link/Bus.h"

#include "link/Frames.h"
#include "tests/support/BusWorld.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/Waiting.h"

#include <QElapsedTimer>

using namespace std::chrono_literals;

namespace {

const QByteArray& Answer() {
    static const QByteArray frame = frames::BuildFrame("5301PPX");
    return frame;
}

/// A bus on a pseudo-terminal whose other end the test plays byte by byte.
class BusTest : public BusWorld {
protected:
    BusTest() { Open(m_terminal.Path()); }

    /// The bytes that have come from the station once there are `count` of them.
    QByteArray Line(qsizetype count) {
        EXPECT_TRUE(WaitUntil([&] { return (m_line += m_terminal.Read()).size() >= count; }));
        return std::exchange(m_line, QByteArray());
    }

    /// Sends a command to a silent device and gives the frame.
    QByteArray FrameOf(quint8 address, char letter, const QByteArray& data) {
        const auto running = m_bus.SendCommand(address, letter, data, 1ms, 1);
        const qsizetype length = data.size() + 9;
        QByteArray frame =
            Line(std::min<qsizetype>(length, data.indexOf('\x03') < 0 ? length : 7 + data.indexOf('\x03')));
        EXPECT_TRUE(WaitUntil([&] { return running.isReady(); }));
        return frame;
    }

    PseudoTerminal m_terminal;
    QByteArray m_line;
};

QCoro::Task<> Record(QCoro::Task<Reply> task, std::vector<Reply>& replies) {
    const Reply reply = co_await task;
    replies.push_back(reply);
}

} // namespace

TEST_F(BusTest, AnAnsweredCommandIsAcknowledged) {
    std::vector<Reply> replies;
    const auto running = Record(m_bus.SendCommand(5, 'P', QByteArray(), 2s, 3), replies);
    EXPECT_EQ(Line(9), frames::BuildFrame("5001P"));
    EXPECT_TRUE(m_bus.Sending());
    m_terminal.Write("noise" + Answer().first(4));
    m_terminal.Write(Answer().sliced(4));
    ASSERT_TRUE(WaitUntil([&] { return running.isReady(); }));
    EXPECT_TRUE(replies[0].ok);
    EXPECT_EQ(replies[0].frame, Answer());
    EXPECT_EQ(replies[0].frame.mid(6, 2), "PX");
    EXPECT_EQ(Line(1), "\x06");
    EXPECT_FALSE(m_bus.Sending());
}

TEST_F(BusTest, EachTryTakesTheNextDigitOfItsAddress) {
    const auto running = m_bus.SendCommand(5, 'P', QByteArray(), 5ms, 3);
    EXPECT_EQ(Line(27), frames::BuildFrame("5001P") + frames::BuildFrame("5101P") + frames::BuildFrame("5201P"));
    ASSERT_TRUE(WaitUntil([&] { return running.isReady(); }));
    for (const char digit : {'3', '4', '5', '6', '7', '8', '9', '0', '1'})
        EXPECT_EQ(FrameOf(5, 'P', ""), frames::BuildFrame(QByteArray("5") + digit + "01P"));
    EXPECT_EQ(FrameOf(6, 'P', ""), frames::BuildFrame("6001P"));
}

TEST_F(BusTest, ResettingTheSequenceLeavesAddressesFrom32On) {
    for (const quint8 address : {quint8(31), quint8(32)})
        FrameOf(address, 'P', "");
    m_bus.ResetSequenceNumbers();
    EXPECT_EQ(FrameOf(31, 'P', ""), frames::BuildFrame("O001P"));
    EXPECT_EQ(FrameOf(32, 'P', ""), frames::BuildFrame("P101P"));
}

TEST_F(BusTest, ABroadcastAwaitsNothing) {
    const Reply reply = Await(m_bus.SendCommand(127, 'R', QByteArray("abc"), 10s, 1));
    EXPECT_TRUE(reply.ok);
    EXPECT_EQ(Line(12), frames::BuildFrame("\xAF*04Rabc"));
    EXPECT_EQ(Await(m_bus.SendCommand(127, 'R', QByteArray(), 10s, 1)).ok, true);
    EXPECT_EQ(Line(9), frames::BuildFrame("\xAF*01R"));
}

TEST_F(BusTest, WritingStopsAtTheFirstEtx) {
    EXPECT_EQ(FrameOf(5, 'O',
                      "ab\x03"
                      "cd"),
              QByteArray("\x02"
                         "5006Oab\x03"));
}

TEST_F(BusTest, DataTooLongForItsLengthFieldWrapsAndIsLogged) {
    FrameOf(5, 'L', QByteArray(254, 'd'));
    EXPECT_TRUE(m_messages.isEmpty());
    EXPECT_TRUE(FrameOf(5, 'L', QByteArray(255, 'd'))
                    .startsWith("\x02"
                                "5100L"));
    EXPECT_EQ(m_messages.size(), 1);
}

TEST_F(BusTest, WhatIsNoAnswerFailsAndIsShownAsCollected) {
    const QByteArray cases[] = {"\x02"
                                "53",
                                "\x02"
                                "5301PPX00\x03",
                                "\x02"
                                "5A\x03"};
    for (const QByteArray& line : cases) {
        std::vector<Reply> replies;
        const auto running = Record(m_bus.SendCommand(5, 'P', QByteArray(), 40ms, 1), replies);
        Line(9);
        m_terminal.Write(line);
        ASSERT_TRUE(WaitUntil([&] { return running.isReady(); }));
        EXPECT_FALSE(replies[0].ok);
        EXPECT_EQ(replies[0].frame, line.endsWith('\x03') ? QByteArray() : line);
    }
}

TEST_F(BusTest, AnAddressThatNoCharacterCarriesIsLoggedAndNotSent) {
    EXPECT_FALSE(Await(m_bus.SendCommand(208, 'P', QByteArray(), 10s, 3)).ok);
    EXPECT_EQ(m_terminal.Read(), "");
    EXPECT_EQ(m_messages.size(), 1);
    EXPECT_EQ(FrameOf(207, 'P', ""), frames::BuildFrame("\xFF"
                                                        "001P"));
}
