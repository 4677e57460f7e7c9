#pragma once

#include "hubs/HubRouter.h"
#include "link/LineStatistics.h"

#include <set>

/// What one question for a sign of life brought, by what was heard on the bus and not by what the bus took.
struct Hearing {
    bool wasAsked = false;          ///< the frame went out; false: the line is closed
    bool isAnswered = false;        ///< the device's own answer came within the time-out
    bool isAsSent = false;          ///< that answer is byte for byte the command
    int foreign = 0;                ///< frames that answer something else
    int badSums = 0;                ///< frames with a bad check sum
    quint64 noise = 0;              ///< characters outside of whole frames
    std::set<quint8> others;        ///< addresses in the heads of the foreign frames
    RoundTrips::Time trip{0};       ///< from writing the frame to the end of the answer
    RoundTrips::Time beyondWire{0}; ///< the same without the time that both frames were on the wire
    bool isBeforeTwice = false;     ///< the device that answered before this question has answered it once more
    bool isEchoSwallowed = false;   ///< characters were swallowed as an echo

    bool IsDisturbed() const { return badSums > 0 || noise > 0; }
    bool IsNothing() const { return !isAnswered && foreign == 0 && !IsDisturbed(); }
};

/// Whether the adapter lets the station hear itself.
struct EchoFinding {
    bool has = false;   ///< it does, and the station takes it for answers
    bool lacks = false; ///< it does not, and the station swallows answers instead
    /// An address that nobody in the model has and at which something answers.
    std::optional<quint8> stranger;
};

/// Asks for signs of life with command `P`, one try each, and tells exactly what came of it. Any device but an
/// information display answers `P`, and none does anything else on it.
///
/// Where the bus took a foreign frame for the answer, the true one is waited for all the same until the time-out is
/// over, so that it is not booked as the answer of whoever is asked next. Only one question at a time.
class Inquiry : public QObject {
    Q_OBJECT

public:
    using Milliseconds = Bus::Milliseconds;

    /// The references must outlive the inquiry.
    Inquiry(Bus& bus, HubRouter& router, const model::Installation& installation, Clock& clock);

    /// An address of a device: 0 to 207, and not that of the broadcast.
    static bool IsDeviceAddress(int address);

    /// Asks an object of the model on its way, at the full time-out. Nothing is sent if its hub does not list it.
    QCoro::Task<Hearing> AskObject(qint16 object);
    /// Asks whoever has a device address on the bus itself.
    QCoro::Task<Hearing> Ask(quint8 address, Milliseconds timeout);
    /// The same behind the hub that has the address `hub`.
    QCoro::Task<Hearing> AskBehind(quint8 hub, quint8 address, Milliseconds timeout);

    /// Asks up to three addresses that nobody in the model has, from the highest one down.
    QCoro::Task<EchoFinding> LookForEcho();

    /// Ends a running wait, which throws `Ended`: the program is about to end.
    void Close();

private:
    using Sending = std::function<QCoro::Task<Reply>()>;

    QCoro::Task<Hearing> Listen(quint8 address, char letter, Milliseconds timeout, Sending send);
    QCoro::Task<> AwaitTrueAnswer(Milliseconds timeout);
    void EndTrueAnswer(bool goesOn);
    void OnSent(quint8 address, const QByteArray& frame);
    void OnReceived(const QByteArray& frame, bool isGood);
    quint64 NoiseSoFar() const;

    Bus& m_bus;
    HubRouter& m_router;
    const model::Installation& m_installation;
    Clock& m_clock;
    std::optional<std::pair<quint8, char>> m_expected; ///< address and letter of what is going to be sent
    bool m_isOurs = false;                             ///< what was sent last is the question
    bool m_isListening = false;
    Hearing m_hearing;
    QByteArray m_command;
    QByteArray m_lastAnswered; ///< the question that was answered last
    bool m_isTwice = false;
    Clock::Instant m_sent;
    quint64 m_noiseBefore = 0;
    quint64 m_echoBefore = 0;
    Completion<bool>* m_trueAnswer = nullptr;
    const std::unique_ptr<ClockTimer> m_trueAnswerOver;
};
