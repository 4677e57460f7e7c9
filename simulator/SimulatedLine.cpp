#include "simulator/SimulatedLine.h"

using namespace std::chrono_literals;

namespace {
constexpr Timeline::Moment Thinking = 1ms; ///< of a device before it answers
constexpr int BitsPerCharacter = 10;
} // namespace

Result<> SimulatedLine::SetPort(const QString& portName, const QString& settings) {
    bool reads = false;
    const int baud = settings.section(u',', 0, 0).toInt(&reads);
    if (portName.isEmpty() || !reads || baud <= 0)
        return Failure{QStringLiteral("\"%1\" is no port with these settings.").arg(portName)};
    m_baud = baud;
    return {};
}

bool SimulatedLine::Open() {
    if (!m_isPlugged)
        return false;
    m_isOpen = true;
    ++m_session;
    m_outFree = m_inFree = m_timeline.Now();
    m_received.clear();
    return true;
}

void SimulatedLine::Close() {
    if (!m_isOpen)
        return;
    m_isOpen = false;
    m_blocked.clear();
    ForgetUnfinished();
    Q_EMIT Closed();
}

void SimulatedLine::Pull() {
    m_isPlugged = false;
    if (!m_isOpen)
        return;
    Close();
    Q_EMIT LineLost(QStringLiteral("The adapter was pulled."));
}

void SimulatedLine::SetBlocked(bool isBlocked) {
    m_isBlocked = isBlocked;
    m_blocks += isBlocked ? 1 : 0;
    if (isBlocked)
        return;
    for (const QByteArray& bytes : std::exchange(m_blocked, {}))
        Transmit(bytes);
}

Timeline::Moment SimulatedLine::WireTime(qsizetype characters) const {
    return Timeline::Moment(1s) * (characters * BitsPerCharacter) / m_baud;
}

Result<> SimulatedLine::Write(QByteArrayView characters) {
    if (!m_isOpen)
        return Failure{QStringLiteral("The line is closed.")};
    const QByteArray bytes = characters.toByteArray();
    OnWritten(bytes);
    if (m_isBlocked)
        m_blocked += bytes;
    else
        Transmit(bytes);
    return {};
}

void SimulatedLine::Transmit(const QByteArray& bytes) {
    m_outFree = std::max(m_outFree, m_timeline.Now()) + WireTime(bytes.size());
    m_timeline.Plan(m_outFree - m_timeline.Now(), [this, bytes, session = m_session] {
        if (m_isOpen && session == m_session)
            Hear(bytes);
    });
}

void SimulatedLine::Send(const Answer& answer) {
    if (answer.isEcho)
        return Deliver(Timeline::Moment{0}, answer.bytes);
    const Timeline::Moment now = m_timeline.Now();
    Timeline::Moment start = std::max(now + Thinking + std::chrono::milliseconds(answer.lateMilliseconds), m_inFree);
    const qsizetype piece = answer.isSliced ? 1 : answer.bytes.size();
    for (qsizetype sent = 0; sent < answer.bytes.size(); sent += piece) {
        start += WireTime(piece);
        Deliver(start - now, answer.bytes.mid(sent, piece));
    }
    // A late answer leaves the line to others meanwhile.
    if (answer.lateMilliseconds == 0)
        m_inFree = start;
}

void SimulatedLine::Deliver(Timeline::Moment after, const QByteArray& bytes) {
    m_timeline.Plan(after, [this, bytes, session = m_session] {
        if (!m_isOpen || session != m_session)
            return;
        m_received += bytes;
        OnDelivered(bytes);
        Q_EMIT CharactersArrived();
    });
}
