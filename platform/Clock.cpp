#include "platform/Clock.h"

#include "platform/Completion.h"
#include "platform/Ended.h"

#include <QTimer>

#include <algorithm>

namespace {

class SystemTimer final : public ClockTimer {
public:
    explicit SystemTimer(std::function<void()> onDue)
        : m_onDue(std::move(onDue)) {
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { m_onDue(); });
    }

    void Start(std::chrono::nanoseconds after) override {
        m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(std::max(after, std::chrono::nanoseconds{0})));
    }
    void Stop() override { m_timer.stop(); }

private:
    QTimer m_timer;
    std::function<void()> m_onDue;
};

} // namespace

QCoro::Task<> Clock::Wait(int milliseconds) {
    if (m_isClosed)
        throw Ended();
    if (milliseconds <= 0)
        co_return;
    Completion<bool> done;
    const auto timer = MakeTimer([&done] { done.Finish(true); });
    timer->Start(std::chrono::milliseconds(milliseconds));
    const auto place = m_waits.insert(m_waits.end(), &done);
    co_await done.Wait();
    // After Close the list belongs to the loop there.
    if (m_isClosed)
        throw Ended();
    m_waits.erase(place);
}

QCoro::Task<> Clock::DelayMilliseconds(qint16 n) {
    return Wait(n);
}

QCoro::Task<> Clock::DelaySeconds(qint16 n) {
    return Wait(static_cast<int>(n) * 1000);
}

void Clock::Close() {
    m_isClosed = true;
    const auto waits = std::exchange(m_waits, {});
    for (Completion<bool>* wait : waits)
        wait->Finish(false);
}

QDateTime SystemClock::Now() const {
    return QDateTime::currentDateTime();
}

qint64 SystemClock::EpochMilliseconds() const {
    // Without the cost of a time zone.
    return QDateTime::currentMSecsSinceEpoch();
}

std::unique_ptr<ClockTimer> SystemClock::MakeTimer(std::function<void()> onDue) {
    return std::make_unique<SystemTimer>(std::move(onDue));
}
