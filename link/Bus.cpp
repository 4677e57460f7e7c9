#include "link/Bus.h"

#include "core/EventLog.h"
#include "link/Encodings.h"
#include "link/Frames.h"
#include "link/ReplyFit.h"
#include "platform/Ended.h"
#include "platform/Line.h"

#include <algorithm>

namespace {

constexpr int BitsPerCharacter = 10; ///< start bit, 8 data bits, stop bit

/// How often an output that should have left by now is looked at again.
constexpr std::chrono::milliseconds OutputCheck{5};
constexpr int MostOutputChecks = 200; ///< one second beyond the wire time

std::chrono::nanoseconds WireTime(qsizetype characters, qint32 baud) {
    if (baud <= 0)
        return std::chrono::nanoseconds{0};
    constexpr std::chrono::nanoseconds Second = std::chrono::seconds{1};
    return Second * (characters * BitsPerCharacter) / baud;
}

} // namespace

/// Holds the line from its construction until it goes out of scope; then the next in the queue gets it.
class Bus::Turn {
public:
    explicit Turn(Bus& bus)
        : m_bus(bus) {}
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() { m_bus.LeaveLine(); }

private:
    Bus& m_bus;
};

Bus::Bus(Line& line, Clock& clock, EventLog& log, QObject* parent)
    : QObject(parent)
    , m_line(line)
    , m_clock(clock)
    , m_log(log)
    , m_deadline(clock.MakeTimer([this] { OnDeadline(); })) {
    m_reader.OnFrame = [this](const QByteArray& frame, bool isGood) {
        Q_EMIT FrameReceived(frame, isGood, m_wait != nullptr);
    };
    connect(&m_line, &Line::CharactersArrived, this, &Bus::OnCharacters);
    connect(&m_line, &Line::Closed, this, &Bus::OnLineClosed);
    connect(&m_line, &Line::WriteFailed, this, &Bus::OnWriteFailed);
}

Bus::~Bus() {
    Close();
}

QCoro::Task<Reply> Bus::SendCommand(quint8 address, char letter, QByteArray data, Milliseconds timeout, int tries) {
    Reply reply;
    if (m_closed || m_isFinishing)
        throw Ended();
    if (!m_line.IsOpen())
        co_return reply;
    if (address > encoding::LargestSmallNumber) {
        m_log.WriteLog(QStringLiteral("Command %1 to address %2: one character carries addresses 0 to %3 only.")
                           .arg(QLatin1Char(letter))
                           .arg(address)
                           .arg(encoding::LargestSmallNumber),
                       EventLog::Error);
        co_return reply;
    }

    if (m_sending) {
        Completion<bool> turn;
        m_queue.push_back(&turn);
        const bool granted = co_await turn.Wait();
        if (!granted)
            throw Ended();
    }
    m_sending = true;
    const Turn held(*this);

    if (data.size() + 1 > frames::LongestContent) {
        m_log.WriteLog(
            QStringLiteral("Command %1 to address %2: %3 characters do not fit the length field, which wraps.")
                .arg(QLatin1Char(letter))
                .arg(address)
                .arg(data.size() + 1),
            EventLog::Warning);
    }
    for (int attempt = 0; attempt < tries && !reply.ok; ++attempt) {
        if (!m_line.IsOpen() || (m_isFinishing && attempt > 0))
            break;
        const bool broadcast = address == frames::Broadcast;
        const char sequence = broadcast ? '*' : static_cast<char>('0' + m_sequenceNumber[address]);
        const QByteArray frame = frames::BuildCommand(address, sequence, letter, data);
        if (broadcast)
            reply = BroadcastFrame(address, frame, attempt + 1);
        else
            reply = co_await SendFrame(address, frame, timeout, attempt * FrameRepeats + 1);
    }
    if (!reply.ok)
        m_reader.ClearReceiveState();
    co_return reply;
}

QCoro::Task<Reply> Bus::SendFrame(quint8 address, QByteArray frame, Milliseconds timeout, int attempt) {
    Outcome outcome = Outcome::TimedOut;
    for (qint16 repeat = 0; repeat < FrameRepeats && outcome == Outcome::TimedOut; ++repeat) {
        Q_EMIT FrameSent(address, frame, attempt + repeat);
        m_reader.ForgetReply();
        Completion<Outcome> wait;
        m_wait = &wait;
        m_command = frame;
        WriteFrame(frame);
        StartDeadline(timeout);
        outcome = co_await wait.Wait();
        m_wait = nullptr;
        if (m_closed)
            throw Ended();
        // What has not come back by now was lost.
        if (outcome != Outcome::Answered) {
            m_echoAwaited = 0;
            Q_EMIT ReplyMissed(address, m_reader.ReceiveBuffer(), outcome == Outcome::TimedOut);
        }
    }

    Reply reply;
    reply.ok = outcome == Outcome::Answered;
    if (reply.ok) {
        reply.frame = m_reader.TakeReply();
        reply.isOwn = IsOwn(FitOf(frame, reply.frame), frame);
        // A device that has heard the frame shows that it has left, whatever the reckoning says.
        if (reply.isOwn)
            m_lineFree = std::min(m_lineFree, m_clock.Monotonic());
        Write(QByteArrayView(&frames::Ack, 1));
        Q_EMIT ReplyTaken(address, reply.frame);
    } else {
        reply.frame = m_reader.ReceiveBuffer();
    }
    quint8& sequence = m_sequenceNumber[address];
    sequence = static_cast<quint8>((sequence + 1) % 10);
    co_return reply;
}

Reply Bus::BroadcastFrame(quint8 address, const QByteArray& frame, int attempt) {
    Q_EMIT FrameSent(address, frame, attempt);
    WriteFrame(frame);
    return {.ok = true, .frame = {}, .isOwn = false};
}

void Bus::WriteFrame(const QByteArray& frame) {
    const qsizetype etx = frame.indexOf(frames::Etx);
    Write(QByteArrayView(frame).first(etx < 0 ? frame.size() : etx + 1));
}

void Bus::Write(QByteArrayView characters) {
    if (!m_line.IsOpen())
        return;
    if (LocalEcho)
        m_echoAwaited += characters.size();
    if (const Result<> written = m_line.Write(characters); !written)
        OnWriteFailed(written.Error());
    Occupy(characters.size());
}

void Bus::Occupy(qsizetype characters) {
    m_lineFree = std::max(m_lineFree, m_clock.Monotonic()) + WireTime(characters, m_line.BaudRate());
}

void Bus::StartDeadline(Milliseconds timeout) {
    m_timeout = timeout;
    m_frameLeft = false;
    m_outputChecks = 0;
    ArmDeadline(m_lineFree);
}

void Bus::ArmDeadline(Clock::Instant due) {
    m_due = due;
    // A timer that runs already is left alone if it comes before: most commands are answered long before it.
    if (m_deadlineRuns && m_expiry <= due)
        return;
    const auto now = m_clock.Monotonic();
    m_expiry = std::max(due, now);
    m_deadlineRuns = true;
    m_deadline->Start(m_expiry - now);
}

void Bus::OnDeadline() {
    m_deadlineRuns = false;
    if (!m_wait)
        return;
    const auto now = m_clock.Monotonic();
    if (now < m_due) {
        ArmDeadline(m_due);
    } else if (m_frameLeft) {
        EndWait(Outcome::TimedOut);
    } else if (m_line.IsOutputSent()) {
        m_frameLeft = true;
        ArmDeadline(now + m_timeout);
    } else if (++m_outputChecks <= MostOutputChecks) {
        ArmDeadline(now + OutputCheck);
    } else {
        m_log.WriteLog(QStringLiteral("Write Comm Err,the line takes no characters"), EventLog::Error);
        m_line.DropOutput();
        EndWait(Outcome::TimedOut);
    }
}

void Bus::OnCharacters() {
    QByteArray characters = m_line.TakeAll();
    if (m_echoAwaited > 0) {
        const qsizetype echoed = std::min(m_echoAwaited, characters.size());
        m_echoAwaited -= echoed;
        m_swallowedEcho += static_cast<quint64>(echoed);
        characters.remove(0, echoed);
        if (characters.isEmpty())
            return;
    }
    Q_EMIT CharactersReceived(characters);
    if (StrictReplies)
        return TakeStrictly(characters);
    m_reader.Feed(characters);
    if (m_wait && m_reader.ReplyComplete())
        EndWait(Outcome::Answered);
}

void Bus::TakeStrictly(QByteArrayView characters) {
    // Frame by frame: behind one that is passed over the answer may come at once.
    while (!characters.isEmpty()) {
        const qsizetype etx = characters.indexOf(frames::Etx);
        const QByteArrayView piece = characters.first(etx < 0 ? characters.size() : etx + 1);
        characters = characters.sliced(piece.size());
        m_reader.Feed(piece);
        if (!m_wait || !m_reader.ReplyComplete())
            continue;
        if (!IsOwn(FitOf(m_command, m_reader.ReceiveBuffer()), m_command))
            m_reader.ClearReceiveState();
        else
            EndWait(Outcome::Answered);
    }
}

void Bus::OnLineClosed() {
    m_lineFree = {};
    m_echoAwaited = 0;
    EndWait(Outcome::Failed);
}

void Bus::OnWriteFailed(const QString& error) {
    m_log.WriteLog(QStringLiteral("Write Comm Err,") + error, EventLog::Error);
}

void Bus::EndWait(Outcome outcome) {
    if (m_wait)
        std::exchange(m_wait, nullptr)->Finish(outcome);
}

void Bus::LeaveLine() {
    if (m_queue.empty()) {
        m_sending = false;
        return;
    }
    // The line stays taken; the next command gets it from the event loop, not from within this one's last step.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_queue.empty())
                return;
            Completion<bool>* next = m_queue.front();
            m_queue.pop_front();
            next->Finish(true);
        },
        Qt::QueuedConnection);
}

Bus::Milliseconds Bus::TimeOnWire(qsizetype characters) const {
    return std::chrono::ceil<Milliseconds>(WireTime(characters, m_line.BaudRate()));
}

void Bus::ResetSequenceNumbers() {
    std::fill_n(m_sequenceNumber.begin(), 32, quint8(0));
}

void Bus::EndQueue() {
    while (!m_queue.empty()) {
        Completion<bool>* waiting = m_queue.front();
        m_queue.pop_front();
        waiting->Finish(false);
    }
}

void Bus::Finish() {
    m_isFinishing = true;
    EndQueue();
}

void Bus::Close() {
    m_closed = true;
    EndWait(Outcome::Failed);
    EndQueue();
    m_sending = false;
}
