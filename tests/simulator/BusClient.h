#pragma once

#include "link/Frames.h"
#include "simulator/SimulatedBus.h"
#include "tests/support/Waiting.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

/// A bare master at the slave side: writes frames byte for byte as told, and takes what comes back.
class BusClient {
public:
    explicit BusClient(SimulatedBus& bus)
        : m_bus(bus)
        , m_line(::open(bus.SlavePath().toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        termios settings{};
        ::tcgetattr(m_line, &settings);
        ::cfmakeraw(&settings);
        ::tcsetattr(m_line, TCSANOW, &settings);
    }
    ~BusClient() { ::close(m_line); }
    BusClient(const BusClient&) = delete;
    BusClient& operator=(const BusClient&) = delete;

    void Write(const QByteArray& bytes) {
        EXPECT_EQ(::write(m_line, bytes.constData(), size_t(bytes.size())), bytes.size());
    }
    void Ack() { Write(QByteArray(1, frames::Ack)); }

    QByteArray Read() {
        char buffer[512];
        const ssize_t count = ::read(m_line, buffer, sizeof buffer);
        return count > 0 ? QByteArray(buffer, count) : QByteArray();
    }

    /// Sends a whole frame and returns all that the bus sends back for it; empty for silence.
    QByteArray Exchange(const QByteArray& frame) {
        const SimulatedBus::Counters before = m_bus.Counts();
        Write(frame);
        EXPECT_TRUE(WaitUntil([&] { return m_bus.Counts().Commands > before.Commands; }));
        QByteArray reply;
        if (m_bus.Counts().Replies > before.Replies)
            WaitUntil([&] { return (reply += Read()).endsWith(frames::Etx); }, 500);
        return reply;
    }

    /// What stands between the letter and the check sum of a good reply; nothing for silence or a bad reply.
    std::optional<QByteArray> Ask(int address, char letter, const QByteArray& data = {}, bool ack = true) {
        const char sequence = char('0' + m_sequence++ % 10);
        const QByteArray reply = Exchange(frames::BuildFrame(frames::Body(quint8(address), sequence, letter, data)));
        if (ack)
            Ack();
        const qsizetype start = reply.lastIndexOf(frames::Stx);
        const QByteArray frame = start < 0 ? QByteArray() : reply.sliced(start);
        if (frame.size() < 9 || !frames::chkCS(QByteArrayView(frame).chopped(1)) || frame[1] != char('0' + address) ||
            frame[2] != sequence || frame[5] != letter || frame.sliced(3, 2).toInt(nullptr, 16) != frame.size() - 8)
            return std::nullopt;
        return frame.sliced(6, frame.size() - 9);
    }

private:
    SimulatedBus& m_bus;
    int m_line;
    int m_sequence = 0;
};
