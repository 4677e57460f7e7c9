#include "tests/simulation/LineLaws.h"

#include "link/Encodings.h"
#include "link/Frames.h"

using namespace std::chrono_literals;

namespace {

/// By which a time-out may be longer than told: timers count in milliseconds, looks at the output come every five.
constexpr Timeline::Moment Patience = 20ms;
constexpr Timeline::Moment ShortestSearch = 60ms;

} // namespace

LineLaws::Command LineLaws::CommandOf(quint8 address, const QByteArray& frame) {
    const std::optional<frames::Parts> parts = frames::Split(frame);
    Command command = QByteArray::number(address) + ' ' + (parts ? parts->letter : '?');
    if (parts && parts->letter == 'N' && parts->data.size() >= 2)
        command += ' ' + QByteArray::number(encoding::FromSmallNumber(parts->data[0])) + ' ' + parts->data[1];
    return command;
}

void LineLaws::Follow(Bus& bus) {
    m_isEnding = m_isEnded = false;
    m_running.reset();
    m_echoDue = 0;
    m_answers = m_acks = Foreign = 0;
    connect(&bus, &Bus::FrameSent, this, [this](quint8 address, const QByteArray& frame, int attempt) {
        ++Tries;
        if (m_isEnding)
            OnBroken(QStringLiteral("a command begins while the program ends"));
        if (m_running)
            OnBroken(QStringLiteral("a command is sent while another one waits for its answer"));
        if (m_acks != m_answers)
            OnBroken(QStringLiteral("%1 answers and %2 ACKs").arg(m_answers).arg(m_acks));
        const Command command = CommandOf(address, frame);
        if (attempt > 1 && command != m_lastMissed)
            OnBroken(QStringLiteral("a command is tried again that was answered"));
        m_lastMissed.clear();
        if (address == frames::Broadcast)
            return;
        // Only a relay to a device behind a hub waits longer, and the bench's question to a hub.
        const bool isRelay = command.contains(" N ") || command.endsWith(" Q");
        m_running = Running{
            command,        frame, m_timeline.Now(), isRelay ? 1200ms : 800ms, m_timeline.Passed(), m_line.IsBlocked(),
            m_line.Blocks()};
    });
    connect(&bus, &Bus::ReplyTaken, this, [this](quint8, const QByteArray& frame) { Taken(frame); });
    connect(&bus, &Bus::ReplyMissed, this, [this](quint8, const QByteArray&, bool isLineOpen) { Missed(isLineOpen); });
}

bool LineLaws::IsForeign(const Running& running, const QByteArray& frame) {
    const auto head = [](const QByteArray& of) { return of.mid(1, 2) + of.mid(5, 1); };
    const bool isRelay = running.command.contains(" N ");
    const bool isOther = isRelay && (frame.size() < 10 || frame[6] != running.frame[7]);
    // A damaged one may have a good sum and be too short for a head.
    const bool isWhole = frames::Split(frame).has_value();
    return frame != running.frame && (!isWhole || head(frame) != head(running.frame) || isOther);
}

void LineLaws::Missed(bool isLineOpen) {
    if (!m_running)
        return OnBroken(QStringLiteral("an answer is missed that nobody waits for"));
    const Running running = *std::exchange(m_running, std::nullopt);
    m_lastMissed = running.command;
    m_echoDue = 0;
    OnTried(running.command, false);
    if (!isLineOpen || running.wasBlocked || running.blocks != m_line.Blocks() || m_line.IsBlocked())
        return;
    const Timeline::Moment left = std::max(m_line.OutputEnd(), running.written);
    const Timeline::Moment waited = m_timeline.Now() - left;
    const bool isSearch = running.command.endsWith(" P") && IsSearching() && waited >= ShortestSearch;
    const bool mayBeShort = isSearch || (running.command.endsWith(" Q") && waited >= 800ms);
    if (waited < running.timeout && !mayBeShort)
        OnBroken(QStringLiteral("the wait for %1 ended after %2 ms")
                     .arg(QString::fromLatin1(running.command))
                     .arg(waited / 1ms));
    if (waited > running.timeout + Patience + (m_timeline.Passed() - running.passed))
        OnBroken(
            QStringLiteral("the wait for %1 took %2 ms").arg(QString::fromLatin1(running.command)).arg(waited / 1ms));
    // What comes back as it was sent, data and all, is an echo.
    const std::optional<frames::Parts> last = frames::Split(m_last.bytes);
    const bool isEcho = m_last.bytes == running.frame && last && !last->data.isEmpty();
    const bool mayPassOver = IsStrict && (isEcho || IsForeign(running, m_last.bytes));
    if (!mayPassOver && !m_last.isTaken && m_last.begun > running.written && m_last.ended < m_timeline.Now())
        OnBroken(QStringLiteral("a whole answer to %1 was passed over").arg(QString::fromLatin1(running.command)));
}

void LineLaws::Taken(const QByteArray& frame) {
    ++m_answers;
    if (!m_running)
        return OnBroken(QStringLiteral("an answer is taken that nobody waits for"));
    const Running running = *std::exchange(m_running, std::nullopt);
    OnTried(running.command, true);
    Foreign += IsForeign(running, frame) ? 1 : 0;
    if (m_acks != m_answers)
        OnBroken(QStringLiteral("an answer was taken without an ACK"));
    if (m_last.isTaken)
        OnBroken(QStringLiteral("an answer is used twice"));
    else if (m_last.bytes != frame)
        OnBroken(QStringLiteral("an answer is taken that did not come"));
    else if (m_last.ended != m_timeline.Now())
        OnBroken(QStringLiteral("an answer is taken that came before its command"));
    m_last.isTaken = true;
}

void LineLaws::Written(const QByteArray& bytes) {
    if (m_isEnded)
        OnBroken(QStringLiteral("the station sends after its end"));
    m_echoDue += HasLocalEcho ? bytes.size() : 0;
    if (bytes == QByteArray(1, frames::Ack))
        ++m_acks;
    else if (!bytes.startsWith(frames::Stx) || !bytes.endsWith(frames::Etx))
        OnBroken(QStringLiteral("what is written is no frame"));
}

void LineLaws::Delivered(const QByteArray& bytes) {
    const qsizetype echoed = std::min(m_echoDue, bytes.size());
    m_echoDue -= echoed;
    for (const char byte : bytes.sliced(echoed)) {
        if (byte == frames::Ack || byte == frames::Eot)
            continue;
        if (byte == frames::Stx) {
            m_coming.clear();
            m_begun = m_timeline.Now();
        } else if (m_coming.isEmpty()) {
            continue;
        }
        m_coming += byte;
        if (byte != frames::Etx)
            continue;
        const QByteArray frame = std::exchange(m_coming, {});
        if (frames::chkCS(QByteArrayView(frame).chopped(1)))
            m_last = {frame, m_begun, m_timeline.Now(), false};
    }
}
