#pragma once

#include "link/FrameReader.h"
#include "platform/Clock.h"
#include "platform/Completion.h"

#include <QObject>

#include <qcoro/qcorotask.h>

#include <array>
#include <deque>
#include <memory>

class EventLog;
class Line;

/// What a command brought back.
struct Reply {
    bool ok = false;    ///< a device answered (a broadcast: it was written)
    QByteArray frame;   ///< from STX to ETX; without an answer whatever had been collected
    bool isOwn = false; ///< the device that was asked has answered, see `IsOwn`

    explicit operator bool() const { return ok; }
};

/// The master of the line: every command of the system goes through `SendCommand`.
///
/// Commands are served one by one, first come first served; a command holds the line for all its tries. Meanwhile the
/// event loop runs, so windows live and further commands may queue up.
class Bus : public QObject {
    Q_OBJECT

public:
    using Milliseconds = std::chrono::milliseconds;

    static constexpr Milliseconds DirectTimeout{800};
    static constexpr Milliseconds RelayTimeout{1200};

    /// The references must outlive the bus.
    Bus(Line& line, Clock& clock, EventLog& log, QObject* parent = nullptr);
    ~Bus() override;

    /// Sends a command and waits for the reply.
    ///
    /// Each try takes the next sequence digit of the address and waits `timeout` from the moment the frame has left the
    /// machine (wire time at the line's speed is added); a line that takes no characters at all ends the try some time
    /// later, with a log line. A good reply is acknowledged with one ACK. Address 127 is the
    /// broadcast: sequence "*", no reply awaited, always ok once written. Data is sent as it stands: binary data must
    /// have gone through `frames::EscapeData`, since writing stops at the first ETX. More than 254 characters of data
    /// wrap the length field; that is logged. Fails at once if the line is closed, and at once when it goes away
    /// meanwhile. Throws `Ended` once the bus is closed.
    QCoro::Task<Reply> SendCommand(quint8 address, char letter, QByteArray data, Milliseconds timeout = DirectTimeout,
                                   int tries = 1);

    /// Sets the sequence digits of addresses 0 to 31 to 0; those above stay as they are.
    void ResetSequenceNumbers();

    /// A command is on the line.
    bool Sending() const { return m_sending; }

    /// Lets the try that is on the line come to its end, and begins no other: the program is about to end. Commands
    /// that wait, and every later one, throw `Ended`.
    void Finish();

    /// Ends the running command, all that wait and every later one: the program is about to end.
    void Close();

    const FrameReader::Counters& Counts() const { return m_reader.Counts(); }

    /// Characters that were swallowed as an echo since the program began, see `LocalEcho`.
    quint64 SwallowedEcho() const { return m_swallowedEcho; }

    /// The time that so many characters are on the wire at the present speed of the line.
    Milliseconds TimeOnWire(qsizetype characters) const;

    /// Transmissions of a frame within one try.
    qint16 FrameRepeats = 1;

    /// A good frame that is no answer of the asked device (`IsOwn`) is passed over: the wait goes on.
    bool StrictReplies = false;

    /// As many characters as were sent are swallowed of what comes, by count: an answer may be byte for byte its
    /// command.
    bool LocalEcho = false;

Q_SIGNALS:
    /// Characters came in, all that were waiting: STX, ETX and ACK included.
    void CharactersReceived(const QByteArray& characters);
    /// A frame goes out, whole as built. @param attempt 1 for the first, 2 and up where it is tried again.
    void FrameSent(quint8 address, const QByteArray& frame, int attempt);
    /// A frame came in. @param isGood its check sum holds. @param isAwaited a command waits for an answer.
    void FrameReceived(const QByteArray& frame, bool isGood, bool isAwaited);
    /// The answer that a waiting command took.
    void ReplyTaken(quint8 address, const QByteArray& frame);
    /// Nobody answered the frame that was sent last. @param collected what had come of an answer. @param isLineOpen the
    /// time is over; otherwise the line went away or is being closed.
    void ReplyMissed(quint8 address, const QByteArray& collected, bool isLineOpen);

private:
    class Turn;
    enum class Outcome { Answered, TimedOut, Failed };

    QCoro::Task<Reply> SendFrame(quint8 address, QByteArray frame, Milliseconds timeout, int attempt);
    Reply BroadcastFrame(quint8 address, const QByteArray& frame, int attempt);
    void WriteFrame(const QByteArray& frame);
    void Write(QByteArrayView characters);
    void OnCharacters();
    void TakeStrictly(QByteArrayView characters);
    void OnLineClosed();
    void OnWriteFailed(const QString& error);
    void OnDeadline();
    void Occupy(qsizetype characters);
    void StartDeadline(Milliseconds timeout);
    void ArmDeadline(Clock::Instant due);
    void EndWait(Outcome outcome);
    void LeaveLine();
    void EndQueue();

    Line& m_line;
    Clock& m_clock;
    EventLog& m_log;
    FrameReader m_reader;
    std::array<quint8, 256> m_sequenceNumber{};
    bool m_sending = false;
    QByteArray m_command;        ///< the frame that waits for its answer
    qsizetype m_echoAwaited = 0; ///< characters
    quint64 m_swallowedEcho = 0;
    bool m_isFinishing = false;
    bool m_closed = false;
    std::deque<Completion<bool>*> m_queue;
    Completion<Outcome>* m_wait = nullptr;
    const std::unique_ptr<ClockTimer> m_deadline;
    bool m_deadlineRuns = false;
    Milliseconds m_timeout{0};
    bool m_frameLeft = false;
    int m_outputChecks = 0;
    Clock::Instant m_due;      ///< when the running wait is to be looked at
    Clock::Instant m_expiry;   ///< when the timer comes, if it runs
    Clock::Instant m_lineFree; ///< when all that was written will have left at the line's speed
};
