#pragma once

#include "platform/Clock.h"

#include <map>

/// The time of a simulated world, in which nothing passes but from event to event: what is due earliest comes next, of
/// two at the same moment the one that was planned first.
class Timeline {
public:
    using Moment = std::chrono::nanoseconds; ///< since the world began
    using Place = std::pair<Moment, quint64>;

    Moment Now() const { return m_now; }

    Place Plan(Moment after, std::function<void()> what);
    void Drop(const Place& place) { m_planned.erase(place); }

    /// Goes on to the next event and lets it happen. @return false if there is none before `end`; it is `end` then.
    bool Step(Moment end);

    /// Lets time pass in the middle of an event, as a call that waits does. What is due meanwhile comes late.
    void Pass(Moment time) {
        m_now += time;
        m_passed += time;
    }
    /// All that passed so.
    Moment Passed() const { return m_passed; }

private:
    Moment m_now{0};
    Moment m_passed{0};
    quint64 m_count = 0;
    std::map<Place, std::function<void()>> m_planned;
};

/// The clock of a simulated world.
class SimulatedClock final : public Clock {
public:
    SimulatedClock(Timeline& timeline, const QDateTime& start)
        : m_timeline(timeline)
        , m_start(start) {}

    QDateTime Now() const override { return m_start.addMSecs(m_timeline.Now() / std::chrono::milliseconds(1)); }
    qint64 EpochMilliseconds() const override {
        return m_start.toMSecsSinceEpoch() + m_timeline.Now() / std::chrono::milliseconds(1);
    }
    Instant Monotonic() const override { return Instant(m_timeline.Now()); }
    std::unique_ptr<ClockTimer> MakeTimer(std::function<void()> onDue) override;

private:
    Timeline& m_timeline;
    QDateTime m_start;
};
