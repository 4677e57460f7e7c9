#pragma once

#include "link/ReplyFit.h"
#include "platform/Clock.h"

#include <QByteArray>
#include <QObject>

#include <vector>

class Bus;

/// One frame that went out or came in.
struct TraceRow {
    enum Outcome : quint8 {
        Waiting,    ///< out: the answer is not there yet
        Answered,   ///< out: a device answered
        NoAnswer,   ///< out: the time is over
        LineClosed, ///< out: the line went away meanwhile
        ToAll,      ///< out: a broadcast, which nobody answers
        Good,       ///< in: taken for the answer to the frame that was sent last
        BadSum,     ///< in: dropped for its check sum
        Unasked,    ///< in: nobody waited for it
    };

    QByteArray frame;      ///< from STX to ETX
    qint64 time = 0;       ///< milliseconds since 1970, UTC
    quint64 request = 0;   ///< in: serial of the command that waited when it came, its own if none did
    qint32 roundTrip = -1; ///< microseconds from writing the request to the end of the answer; -1 where there is none
    qint16 collected = 0;  ///< out, without answer: characters that had come of one
    qint16 attempt = 1;    ///< out: 2 and up where the command was tried again
    Outcome outcome = Waiting;
    ReplyFit fit = ReplyFit::Own; ///< in, if `Good`, and out, if `Answered`: whether it answers the command

    bool IsOut() const { return outcome <= ToAll; }
    bool HasRequest() const { return outcome == Good || outcome == BadSum; }
};

/// Keeps the last 100,000 frames of the line, from the start of the program on.
///
/// A row is known by its serial number, which counts up from 0 and is never used twice; rows from `First` up to but not
/// including `End` are there. Recording costs a command well under a microsecond.
class BusTrace : public QObject {
    Q_OBJECT

public:
    static constexpr quint64 Capacity = 100'000;

    /// Records from now on. The references must outlive the trace.
    BusTrace(const Bus& bus, const Clock& clock, QObject* parent = nullptr);

    quint64 First() const { return m_end > m_cleared + Capacity ? m_end - Capacity : m_cleared; }
    quint64 End() const { return m_end; }

    /// @param serial at least `First()`, less than `End()`.
    const TraceRow& Row(quint64 serial) const { return m_rows[serial % Capacity]; }

    /// Forgets all rows; the next one has the next serial number.
    void Clear();

private:
    void OnSent(quint8 address, const QByteArray& frame, int attempt);
    void OnReceived(const QByteArray& frame, bool isGood, bool isAwaited);
    void OnTaken(const QByteArray& frame);
    void OnMissed(const QByteArray& collected, bool isLineOpen);
    TraceRow& Append(TraceRow::Outcome outcome, const QByteArray& frame);
    /// The frame that was sent last, if it is still there and waits.
    TraceRow* Open();

    const Clock& m_clock;
    std::vector<TraceRow> m_rows; ///< a row stands at its serial modulo `Capacity`
    quint64 m_cleared = 0;
    quint64 m_end = 0;
    quint64 m_request = 0;
    Clock::Instant m_sent;
};
