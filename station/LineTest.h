#pragma once

#include "core/Installation.h"
#include "station/Inquiry.h"

/// How a line test or a search for devices came to its end.
enum class AskingEnd : quint8 { Done, Cancelled, LineClosed };

/// Asks all loaded objects for signs of life, round by round, and says in words how each of them is reached.
class LineTest {
public:
    /// A device whose answers are later than this, beyond the time that the frames are on the wire, is slow: half of
    /// the time-out.
    static constexpr std::chrono::milliseconds SlowDirect{400};
    static constexpr std::chrono::milliseconds SlowBehindHub{600};
    static constexpr int MostRounds = 1000;

    enum class Verdict : quint8 {
        NotAsked, ///< not yet
        Healthy,
        Slow,          ///< every second answer or more is slow
        Disturbed,     ///< a round was lost, or frames came with a bad check sum
        TwoDevices,    ///< one question was answered twice
        AnotherDevice, ///< what came as the answer was another device's, or came too late for its question
        OnlyEcho,      ///< the station hears itself, and takes that for answers
        Silent,
        BehindSilentHub,
        SilentDisplay, ///< a display that never answered, which is its right
        NotListed,     ///< its hub does not list it, so nothing reaches it
        NoAddress,     ///< no device can have its address
    };

    struct Device {
        QString name; ///< VNI
        quint8 address = 0;
        model::ObjectType type = model::Counter;
        bool isBehindHub = false;
        qint16 hub = -1; ///< index of its hub among the devices, -1 if there is none
        QString hubName; ///< VNI
        int asked = 0;
        int answers = 0; ///< its own, those too that repeat the command
        int asSent = 0;  ///< of these: repeat the command
        int foreign = 0;
        int badSums = 0;
        quint64 noise = 0; ///< characters
        int silent = 0;    ///< rounds without an answer of its own
        int slow = 0;      ///< answers that were slow
        bool isTwice = false;
        RoundTrips trips; ///< of its own answers
        Verdict verdict = Verdict::NotAsked;
    };

    struct Result {
        EchoFinding echo;
        std::vector<Device> devices; ///< in object order
    };

    /// Tells that a device, by its name in VNI, is at its turn. @return false if the user wants no more.
    using Step = std::function<bool(const QString& name, int done, int total)>;

    /// The references must outlive the test.
    LineTest(Inquiry& inquiry, const model::Installation& installation)
        : m_inquiry(inquiry)
        , m_installation(installation) {}

    /// Looks for an echo and makes `rounds` rounds, 1 to `MostRounds`. The model must stay as it is meanwhile.
    QCoro::Task<AskingEnd> Run(int rounds, Step step);

    /// What was found by the last run, or by the running one until now.
    const Result& Found() const { return m_result; }

    /// A verdict for a user to read, with Unicode letters.
    static QString TextOf(const Device& device);
    /// What is to be said about a result as a whole, sentences for a user.
    static QString SummaryOf(const Result& result);

private:
    void List();
    void Note(Device& device, const Hearing& heard);
    void Judge();
    Verdict VerdictOf(const Device& device) const;

    Inquiry& m_inquiry;
    const model::Installation& m_installation;
    Result m_result;
    qint16 m_lastAnswered = -1; ///< the device whose answer came last
};
