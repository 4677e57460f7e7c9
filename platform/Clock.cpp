#include "platform/Clock.h"

#include "platform/Completion.h"
#include "platform/Ended.h"

#include <QTimer>

#include <algorithm>
#include <list>

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

class SystemClock::Waits {
public:
    QCoro::Task<> Wait(int milliseconds) {
        if (m_closed)
            throw Ended();
        if (milliseconds <= 0)
            co_return;
        Completion<bool> done;
        QTimer timer;
        timer.setSingleShot(true);
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, &timer, [&done] { done.Finish(true); });
        timer.start(milliseconds);
        const auto place = m_running.insert(m_running.end(), &done);
        co_await done.Wait();
        // After Close the list belongs to the loop there.
        if (m_closed)
            throw Ended();
        m_running.erase(place);
    }

    void Close() {
        m_closed = true;
        const auto running = std::exchange(m_running, {});
        for (Completion<bool>* wait : running)
            wait->Finish(false);
    }

private:
    std::list<Completion<bool>*> m_running;
    bool m_closed = false;
};

SystemClock::SystemClock()
    : m_waits(std::make_unique<Waits>()) {}

SystemClock::~SystemClock() {
    Close();
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

QCoro::Task<> SystemClock::DelayMilliseconds(qint16 n) {
    return m_waits->Wait(n);
}

QCoro::Task<> SystemClock::DelaySeconds(qint16 n) {
    return m_waits->Wait(static_cast<int>(n) * 1000);
}

void SystemClock::Close() {
    m_waits->Close();
}
