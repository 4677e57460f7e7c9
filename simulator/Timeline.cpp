#include "simulator/Timeline.h"

#include <optional>

namespace {

class TimelineTimer final : public ClockTimer {
public:
    TimelineTimer(Timeline& timeline, std::function<void()> onDue)
        : m_timeline(timeline)
        , m_onDue(std::move(onDue)) {}
    ~TimelineTimer() override { Stop(); }

    void Start(std::chrono::nanoseconds after) override {
        Stop();
        m_place = m_timeline.Plan(after, [this] {
            m_place.reset();
            m_onDue();
        });
    }

    void Stop() override {
        if (m_place)
            m_timeline.Drop(*m_place);
        m_place.reset();
    }

private:
    Timeline& m_timeline;
    std::function<void()> m_onDue;
    std::optional<Timeline::Place> m_place;
};

} // namespace

Timeline::Place Timeline::Plan(Moment after, std::function<void()> what) {
    const Place place{m_now + std::max(after, Moment{0}), m_count++};
    m_planned.emplace(place, std::move(what));
    return place;
}

bool Timeline::Step(Moment end) {
    if (m_planned.empty() || m_planned.begin()->first.first > end) {
        m_now = std::max(m_now, end);
        return false;
    }
    auto next = m_planned.extract(m_planned.begin());
    m_now = std::max(m_now, next.key().first);
    next.mapped()();
    return true;
}

std::unique_ptr<ClockTimer> SimulatedClock::MakeTimer(std::function<void()> onDue) {
    return std::make_unique<TimelineTimer>(m_timeline, std::move(onDue));
}
