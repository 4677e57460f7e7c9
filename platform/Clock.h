#pragma once

#include <QDateTime>
#include <QObject>

#include <qcoro/qcorotask.h>

#include <memory>

/// The time of day and the waits of the program. Tests put a clock in its place on which every wait passes at once.
class Clock {
public:
    virtual ~Clock() = default;

    /// Local date and time.
    virtual QDateTime Now() const = 0;

    /// Waits `n` milliseconds while everything else goes on. Ends at once if `n` is 0 or less, or once `Close` was
    /// called.
    virtual QCoro::Task<> DelayMilliseconds(qint16 n) = 0;

    /// Waits `n` seconds, otherwise like `DelayMilliseconds`.
    virtual QCoro::Task<> DelaySeconds(qint16 n) = 0;

    /// Ends every running wait and lets every later one end at once: the program is about to end.
    virtual void Close() = 0;
};

/// The computer's own clock. Waits are measured on the monotonic clock.
class SystemClock final : public Clock {
public:
    SystemClock();
    ~SystemClock() override;

    QDateTime Now() const override;
    QCoro::Task<> DelayMilliseconds(qint16 n) override;
    QCoro::Task<> DelaySeconds(qint16 n) override;
    void Close() override;

private:
    class Waits;
    std::unique_ptr<Waits> m_waits;
};
