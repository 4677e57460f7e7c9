#pragma once

#include <QDateTime>
#include <QObject>

#include <qcoro/qcorotask.h>

#include <chrono>
#include <functional>
#include <list>
#include <memory>

template <typename T>
class Completion;

/// A timer of a clock, which calls once what it was made with. It goes away without calling.
class ClockTimer {
public:
    virtual ~ClockTimer() = default;

    /// Calls `after` this moment; a call that was still to come is dropped. Never calls from within this.
    virtual void Start(std::chrono::nanoseconds after) = 0;
    virtual void Stop() = 0;
};

/// The one owner of time: time of day, monotonic time, timers and waits of the program. Tests put another in its place.
class Clock {
public:
    using Instant = std::chrono::steady_clock::time_point;

    virtual ~Clock() = default;

    /// Local date and time.
    virtual QDateTime Now() const = 0;

    /// The same as milliseconds since 1970, UTC.
    virtual qint64 EpochMilliseconds() const { return Now().toMSecsSinceEpoch(); }

    /// A time that only goes forward, for measuring and for deadlines.
    virtual Instant Monotonic() const = 0;

    /// @param onDue called from the event loop. @return a timer that does not run yet; the clock must outlive it.
    virtual std::unique_ptr<ClockTimer> MakeTimer(std::function<void()> onDue) = 0;

    /// Waits `n` milliseconds while everything else goes on; not at all if `n` is 0 or less. Throws `Ended` once
    /// `Close` was called.
    virtual QCoro::Task<> DelayMilliseconds(qint16 n);

    /// Waits `n` seconds, otherwise like `DelayMilliseconds`.
    virtual QCoro::Task<> DelaySeconds(qint16 n);

    /// Ends every running and every later wait: the program is about to end.
    virtual void Close();

private:
    QCoro::Task<> Wait(int milliseconds);

    std::list<Completion<bool>*> m_waits;
    bool m_isClosed = false;
};

/// The computer's own clock. Waits are measured on the monotonic clock.
class SystemClock : public Clock {
public:
    ~SystemClock() override { Close(); }

    QDateTime Now() const override;
    qint64 EpochMilliseconds() const override;
    Instant Monotonic() const override { return std::chrono::steady_clock::now(); }
    std::unique_ptr<ClockTimer> MakeTimer(std::function<void()> onDue) override;
};
