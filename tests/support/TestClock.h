#pragma once

#include "platform/Clock.h"
#include "platform/Ended.h"

#include <vector>

/// A time of day that stands still until it is moved, and on which every wait passes at once and moves it. Monotonic
/// time and timers are the computer's own: what waits for an answer waits for real devices.
class TestClock final : public SystemClock {
public:
    QDateTime Time = QDateTime(QDate(2026, 11, 18), QTime(6, 13, 38));
    std::vector<int> Waits; ///< milliseconds, in order

    QDateTime Now() const override { return Time; }
    qint64 EpochMilliseconds() const override { return Time.toMSecsSinceEpoch(); }

    QCoro::Task<> DelayMilliseconds(qint16 n) override {
        Pass(n);
        co_return;
    }

    QCoro::Task<> DelaySeconds(qint16 n) override {
        Pass(int(n) * 1000);
        co_return;
    }

    void Close() override { m_closed = true; }
    /// For a program that starts anew.
    void Reopen() { m_closed = false; }

private:
    void Pass(int milliseconds) {
        if (m_closed)
            throw Ended();
        Waits.push_back(milliseconds);
        Time = Time.addMSecs(milliseconds);
    }

    bool m_closed = false;
};
