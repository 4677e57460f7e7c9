#include "link/BusTrace.h"

#include "link/Bus.h"
#include "link/Frames.h"

#include <algorithm>
#include <limits>

BusTrace::BusTrace(const Bus& bus, const Clock& clock, QObject* parent)
    : QObject(parent)
    , m_clock(clock) {
    connect(&bus, &Bus::FrameSent, this, &BusTrace::OnSent);
    connect(&bus, &Bus::FrameReceived, this, &BusTrace::OnReceived);
    connect(&bus, &Bus::ReplyTaken, this, [this](quint8, const QByteArray& frame) { OnTaken(frame); });
    connect(&bus, &Bus::ReplyMissed, this,
            [this](quint8, const QByteArray& collected, bool isLineOpen) { OnMissed(collected, isLineOpen); });
}

void BusTrace::Clear() {
    m_rows.clear();
    m_rows.shrink_to_fit();
    // Where a row stands depends on its serial alone.
    m_cleared = m_end = (m_end + Capacity - 1) / Capacity * Capacity;
}

TraceRow& BusTrace::Append(TraceRow::Outcome outcome, const QByteArray& frame) {
    if (m_rows.size() < Capacity)
        m_rows.emplace_back();
    TraceRow& row = m_rows[m_end % Capacity];
    ++m_end;
    row.frame = frame;
    row.time = m_clock.EpochMilliseconds();
    row.request = 0;
    row.roundTrip = -1;
    row.collected = 0;
    row.attempt = 1;
    row.outcome = outcome;
    row.fit = ReplyFit::Own;
    return row;
}

TraceRow* BusTrace::Open() {
    if (m_request < First() || m_request >= m_end)
        return nullptr;
    TraceRow& row = m_rows[m_request % Capacity];
    return row.outcome == TraceRow::Waiting ? &row : nullptr;
}

void BusTrace::OnSent(quint8 address, const QByteArray& frame, int attempt) {
    m_request = m_end;
    TraceRow& row = Append(address == frames::Broadcast ? TraceRow::ToAll : TraceRow::Waiting, frame);
    row.attempt = static_cast<qint16>(attempt);
    m_sent = m_clock.Monotonic();
}

void BusTrace::OnReceived(const QByteArray& frame, bool isGood, bool isAwaited) {
    using std::chrono::microseconds;
    TraceRow* request = isAwaited ? Open() : nullptr;
    ReplyFit fit = ReplyFit::Own;
    if (request && isGood) {
        fit = FitOf(request->frame, frame);
    }
    TraceRow& row = Append(!isGood ? TraceRow::BadSum : isAwaited ? TraceRow::Good : TraceRow::Unasked, frame);
    row.fit = fit;
    row.request = isAwaited ? m_request : m_end - 1;
    if (isAwaited) {
        const auto passed = std::chrono::duration_cast<microseconds>(m_clock.Monotonic() - m_sent).count();
        row.roundTrip = static_cast<qint32>(std::min<microseconds::rep>(passed, std::numeric_limits<qint32>::max()));
    }
}

void BusTrace::OnTaken(const QByteArray& frame) {
    TraceRow* request = Open();
    if (!request)
        return;
    request->outcome = TraceRow::Answered;
    request->fit = FitOf(request->frame, frame);
}

void BusTrace::OnMissed(const QByteArray& collected, bool isLineOpen) {
    TraceRow* request = Open();
    if (!request)
        return;
    request->outcome = isLineOpen ? TraceRow::NoAnswer : TraceRow::LineClosed;
    request->collected = static_cast<qint16>(collected.size());
}
