#include "link/LineStatistics.h"

#include "link/Bus.h"
#include "link/Frames.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace {

constexpr qint64 Smallest = 250; ///< microseconds, the end of the first step

} // namespace

void RoundTrips::Add(Time time) {
    // Without a logarithm: octaves by the highest bit, quarters by comparing.
    const auto value = static_cast<quint64>(std::max<qint64>(time.count(), 0));
    int step = 0;
    if (value > Smallest) {
        const quint64 times = value / Smallest;
        const int octave = std::bit_width(times) - 1;
        constexpr std::array<quint64, StepsOfAnOctave> Quarters = {1189, 1414, 1682, 2000}; // thousandths
        const quint64 inOctave = value * 1000 / (static_cast<quint64>(Smallest) << octave);
        const auto quarter =
            std::find_if(Quarters.begin(), Quarters.end(), [&](quint64 end) { return inOctave < end; });
        step = octave * StepsOfAnOctave + static_cast<int>(quarter - Quarters.begin()) + 1;
    }
    ++m_steps[static_cast<std::size_t>(std::min(step, Steps - 1))];
    ++m_count;
    m_largest = std::max(m_largest, time);
}

RoundTrips::Time RoundTrips::Quantile(double part) const {
    if (m_count == 0)
        return Time{0};
    const auto wanted = static_cast<quint64>(std::ceil(part * static_cast<double>(m_count)));
    quint64 counted = 0;
    int step = 0;
    while (step < Steps - 1 && (counted += m_steps[static_cast<std::size_t>(step)]) < wanted)
        ++step;
    const double end = static_cast<double>(Smallest) * std::exp2(static_cast<double>(step) / StepsOfAnOctave);
    return std::min(m_largest, Time(static_cast<qint64>(std::ceil(end))));
}

LineStatistics::LineStatistics(const Bus& bus, const Clock& clock, QObject* parent)
    : QObject(parent)
    , m_clock(clock) {
    connect(&bus, &Bus::FrameSent, this, &LineStatistics::OnSent);
    connect(&bus, &Bus::FrameReceived, this, &LineStatistics::OnReceived);
    connect(&bus, &Bus::ReplyTaken, this, &LineStatistics::OnTaken);
    connect(&bus, &Bus::ReplyMissed, this, [this](quint8 address) {
        ++m_all.missed;
        ++m_byAddress[address].missed;
    });
}

void LineStatistics::OnSent(quint8 address, const QByteArray& frame, int attempt) {
    m_command = frame;
    m_address = address;
    m_isFirstTry = attempt == 1;
    for (Counters* counters : {&m_all, &m_byAddress[address]})
        ++(m_isFirstTry ? counters->commands : counters->retries);
    m_sent = m_clock.Monotonic();
}

void LineStatistics::OnReceived(const QByteArray& frame, bool isGood, bool isAwaited) {
    if (!isAwaited) {
        ++m_all.unasked;
        if (const std::optional<frames::Parts> parts = isGood ? frames::Split(frame) : std::nullopt)
            ++m_byAddress[parts->address].unasked;
        return;
    }
    const bool isForeign = isGood && IsForeign(FitOf(m_command, frame));
    for (Counters* counters : {&m_all, &m_byAddress[m_address]}) {
        counters->badSums += isGood ? 0 : 1;
        counters->foreign += isForeign ? 1 : 0;
    }
}

void LineStatistics::OnTaken(quint8 address, const QByteArray& frame) {
    const auto roundTrip = std::chrono::duration_cast<RoundTrips::Time>(m_clock.Monotonic() - m_sent);
    const bool isAsSent = frame == m_command;
    for (Counters* counters : {&m_all, &m_byAddress[address]}) {
        counters->answeredOnce += m_isFirstTry ? 1 : 0;
        counters->asSent += isAsSent ? 1 : 0;
        counters->roundTrips.Add(roundTrip);
    }
}
