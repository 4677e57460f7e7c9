#include "station/Inquiry.h"

#include "core/Installation.h"
#include "link/Encodings.h"
#include "link/Frames.h"
#include "platform/Ended.h"

namespace {

constexpr char Status = 'P';
constexpr char Relay = 'N';
constexpr int EchoQuestions = 3;

bool Answers(const QByteArray& command, const QByteArray& frame) {
    return !command.isEmpty() && !IsForeign(FitOf(command, frame));
}

} // namespace

Inquiry::Inquiry(Bus& bus, HubRouter& router, const model::Installation& installation, Clock& clock)
    : m_bus(bus)
    , m_router(router)
    , m_installation(installation)
    , m_clock(clock)
    , m_trueAnswerOver(clock.MakeTimer([this] { EndTrueAnswer(true); })) {
    connect(&bus, &Bus::FrameSent, this, &Inquiry::OnSent);
    connect(&bus, &Bus::FrameReceived, this, &Inquiry::OnReceived);
    connect(&bus, &Bus::ReplyMissed, this, [this](quint8, const QByteArray& collected) {
        // A whole frame is what came unasked before.
        if (m_isOurs && !collected.endsWith(frames::Etx))
            m_hearing.noise += static_cast<quint64>(collected.size());
    });
}

bool Inquiry::IsDeviceAddress(int address) {
    return address >= 0 && address <= encoding::LargestSmallNumber && address != frames::Broadcast;
}

QCoro::Task<Hearing> Inquiry::AskObject(qint16 object) {
    const model::QObject& device = m_installation.Object(object);
    quint8 address = device.Address;
    char letter = Status;
    Milliseconds timeout = Bus::DirectTimeout;
    if (device.HubId != 0) {
        const std::optional<model::HubPlace> place = m_installation.PlaceBehindHub(object);
        if (!place)
            co_return Hearing{};
        address = m_installation.Object(place->hub).Address;
        letter = Relay;
        timeout = Bus::RelayTimeout;
    }
    const Sending send = [this, object] { return m_router.SendToObject(object, Status, {}, Bus::DirectTimeout, 1); };
    co_return co_await Listen(address, letter, timeout, send);
}

QCoro::Task<Hearing> Inquiry::Ask(quint8 address, Milliseconds timeout) {
    const Sending send = [this, address, timeout] { return m_bus.SendCommand(address, Status, {}, timeout, 1); };
    co_return co_await Listen(address, Status, timeout, send);
}

QCoro::Task<Hearing> Inquiry::AskBehind(quint8 hub, quint8 address, Milliseconds timeout) {
    QByteArray relayed(1, encoding::SmallNumber(address));
    relayed += Status;
    const Sending send = [this, hub, relayed, timeout] { return m_bus.SendCommand(hub, Relay, relayed, timeout, 1); };
    co_return co_await Listen(hub, Relay, timeout, send);
}

QCoro::Task<Hearing> Inquiry::Listen(quint8 address, char letter, Milliseconds timeout, Sending send) {
    m_expected = {address, letter};
    m_isOurs = false;
    const bool wasTwice = std::exchange(m_isTwice, false);
    m_hearing = Hearing{};
    const Reply reply = co_await send();
    m_expected.reset();
    // The bus has ended its wait with a frame that answers something else.
    if (m_isOurs && reply.ok && !m_hearing.isAnswered)
        co_await AwaitTrueAnswer(timeout);
    if (m_isOurs)
        m_hearing.noise += NoiseSoFar() - m_noiseBefore;
    m_isListening = false;
    Hearing heard = std::exchange(m_hearing, Hearing{});
    heard.isBeforeTwice |= wasTwice;
    heard.isEchoSwallowed = heard.wasAsked && m_bus.SwallowedEcho() != m_echoBefore;
    if (heard.isAnswered)
        m_lastAnswered = m_command;
    co_return heard;
}

QCoro::Task<> Inquiry::AwaitTrueAnswer(Milliseconds timeout) {
    Completion<bool> answer;
    m_trueAnswer = &answer;
    const auto due = m_sent + timeout + m_bus.TimeOnWire(m_command.size());
    m_trueAnswerOver->Start(std::max<std::chrono::nanoseconds>(due - m_clock.Monotonic(), Milliseconds{0}));
    const bool goesOn = co_await answer.Wait();
    if (!goesOn)
        throw Ended();
}

void Inquiry::EndTrueAnswer(bool goesOn) {
    if (m_trueAnswer)
        std::exchange(m_trueAnswer, nullptr)->Finish(goesOn);
}

void Inquiry::Close() {
    EndTrueAnswer(false);
}

void Inquiry::OnSent(quint8 address, const QByteArray& frame) {
    const std::optional<frames::Parts> parts = frames::Split(frame);
    m_isOurs = m_expected && parts && *m_expected == std::pair(address, parts->letter);
    m_isListening = m_isOurs;
    if (!m_isOurs)
        return;
    m_hearing = Hearing{};
    m_hearing.wasAsked = true;
    m_command = frame;
    // Sequence digits come again.
    if (m_lastAnswered == m_command)
        m_lastAnswered.clear();
    m_sent = m_clock.Monotonic();
    m_noiseBefore = NoiseSoFar();
    m_echoBefore = m_bus.SwallowedEcho();
}

void Inquiry::OnReceived(const QByteArray& frame, bool isGood) {
    if (!m_isOurs)
        return;
    if (!isGood) {
        m_hearing.badSums += m_isListening ? 1 : 0;
    } else if (!m_isListening || m_hearing.isAnswered) {
        const bool wasAnswered = m_hearing.isAnswered || m_lastAnswered == m_command;
        m_isTwice |= wasAnswered && Answers(m_command, frame);
    } else if (Answers(m_command, frame)) {
        m_hearing.isAnswered = true;
        m_hearing.isAsSent = frame == m_command;
        m_hearing.trip = std::chrono::duration_cast<RoundTrips::Time>(m_clock.Monotonic() - m_sent);
        m_hearing.beyondWire = m_hearing.trip - m_bus.TimeOnWire(m_command.size() + frame.size());
        // Not from within the signal: the bus is still at the frame, and would take it for the next answer too.
        if (m_trueAnswer)
            m_trueAnswerOver->Start(Milliseconds{0});
    } else if (Answers(m_lastAnswered, frame)) {
        m_hearing.isBeforeTwice = true;
    } else {
        ++m_hearing.foreign;
        if (const std::optional<frames::Parts> parts = frames::Split(frame))
            m_hearing.others.insert(parts->address);
    }
}

quint64 Inquiry::NoiseSoFar() const {
    const FrameReader::Counters& counts = m_bus.Counts();
    return counts.Stray + counts.Abandoned + counts.Overlong;
}

QCoro::Task<EchoFinding> Inquiry::LookForEcho() {
    EchoFinding finding;
    const bool isSwallowing = m_bus.LocalEcho;
    const auto isFree = [this](int address) {
        const auto objects = m_installation.LoadedObjects();
        return IsDeviceAddress(address) && std::none_of(objects.begin(), objects.end(), [address](const auto& object) {
                   return object.Address == address;
               });
    };
    int asked = 0;
    int asSent = 0;
    for (int address = encoding::LargestSmallNumber; address > 0 && asked < EchoQuestions; --address) {
        if (!isFree(address))
            continue;
        const Hearing heard = co_await Ask(static_cast<quint8>(address), Bus::DirectTimeout);
        if (!heard.wasAsked)
            co_return EchoFinding{};
        ++asked;
        asSent += heard.isAnswered && heard.isAsSent ? 1 : 0;
        if (heard.isAnswered)
            finding.stranger = static_cast<quint8>(address);
        if (isSwallowing)
            finding.lacks |= !heard.isEchoSwallowed;
        // An echo comes of every question, whether anybody is there or not.
        if (heard.IsNothing() && (!isSwallowing || finding.lacks || asked > 1))
            break;
    }
    // A single device may answer with its command as well.
    finding.has = asSent > 1;
    if (finding.has)
        finding.stranger.reset();
    co_return finding;
}
