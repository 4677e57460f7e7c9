#pragma once

#include "platform/Clock.h"
#include "platform/Outcome.h"
#include "station/HallState.h"

#include <QObject>

#include <qcoro/qcorotask.h>

#include <set>

class DeviceClocks;
class HubConfig;
class HubRouter;
class Inquiry;
class LoadWatch;
class PrinterConfig;

namespace model {
enum ObjectType : quint8;
}

/// Brings a whole hall into step: asks every device for a sign of life, loads what it does not hold yet, and lets the
/// printers confirm it.
///
/// Hubs, counters and printers are asked with `P`, up to three times; displays may not answer it and are left alone. A
/// device that does not answer is told and gets nothing, and so does one behind a silent hub; the others go on. Loads
/// go by kind over all devices: member lists, configuration blocks, tables, forms, logos, letters, clocks. What the
/// record does not show as taken by the device itself begins anew, up to three times, letters up to nine. Where
/// everything is in step nothing but `P` goes out.
class Commissioning : public ::QObject {
    Q_OBJECT

public:
    enum class What {
        Verify,    ///< asks only
        NotInStep, ///< loads what is not in step
        Selected,  ///< loads what was chosen, in step or not
    };

    /// A thing of a device, by `d_Id`.
    using Choice = std::pair<qint32, LoadKind>;

    /// What the run works with; all must outlive it.
    struct Parts {
        const model::Installation& installation;
        HubRouter& router;
        Inquiry& inquiry;
        HubConfig& hubs;
        DeviceClocks& clocks;
        PrinterConfig& printers;
        TicketForms& forms;
        const LoadRecord& record;
        LoadWatch& watch;
        Clock& clock;
        EventLog& log;
        PrinterTables::CounterList counterListOfService;
        std::function<int()> baud;
    };

    /// What the last run has made of one device.
    struct Visit {
        enum class Answer : quint8 {
            NotAsked,     ///< not yet, or a display
            Answered,     ///< the device itself has answered
            Silent,       ///< nobody has answered
            OtherAnswers, ///< something else has answered
            BehindSilent, ///< its hub has not answered
            NotListed,    ///< it is not in its hub's list of 16
        };

        Answer answer = Answer::NotAsked;
        std::optional<LoadKind> loading; ///< at this moment
        bool isAsked = false;            ///< at this moment

        bool IsReachable() const { return answer == Answer::Answered || answer == Answer::NotAsked; }
    };

    explicit Commissioning(Parts parts);

    /// Asked before each command or load whether to go on. @param text what comes, for a user.
    std::function<bool(const QString& text)> OnStep = [](const QString&) { return true; };

    /// Asked before each load, behind `OnStep`, whether it can be written down what it makes of the device.
    std::function<QCoro::Task<bool>()> OnLoad = []() -> QCoro::Task<bool> { co_return true; };

    /// Runs over the model as it stands, after a question to an address that nobody has: on a line that echoes nothing
    /// would tell that a device is not there. @param chosen what `Selected` loads.
    /// @return done if all that was asked answered, and everything, or with `Selected` what was chosen, is in step.
    /// Else failed; its text counts and names what is not, and it names who was silent.
    QCoro::Task<Outcome> Run(What what, std::set<Choice> chosen);

    /// By `d_Id`, of the last run; none for devices that were not there.
    const std::map<qint32, Visit>& Visits() const { return m_visits; }

    /// The words for a user about an answer; empty for one that is as it should be.
    QString WordsOf(qint32 key) const;

    /// How long the run will take yet, as far as it is known: wire time and pauses of what is still to be loaded.
    std::chrono::milliseconds Remaining() const;
    /// How many loads were begun in this run, and how many there are with those to come, as far as it is known.
    std::pair<int, int> Loads() const { return {m_begun, m_begun + static_cast<int>(m_jobs.size())}; }

Q_SIGNALS:
    /// Something was asked, begun or ended.
    void Advanced();

private:
    struct Job {
        qint16 object = 0;
        Payload payload;
        StepState state = StepState::NeverLoaded; ///< when it was planned
    };

    QCoro::Task<bool> Ask(qint16 object);
    QCoro::Task<bool> AskAll(model::ObjectType type);
    QCoro::Task<bool> LoadAll(LoadKind from, LoadKind to);
    QCoro::Task<bool> Load(Job job);
    QCoro::Task<bool> Send(Job job);
    void Plan(What what, const std::set<Choice>& chosen);
    bool IsTaken(const Job& job) const;
    Outcome Sum(What what, const std::set<Choice>& chosen) const;
    Payloads MakePayloads() const;
    DeviceIdentity Identity(qint16 object) const;
    QString NameOfDevice(qint16 object) const;
    Visit& VisitOf(qint16 object);

    const Parts m_parts;
    std::map<qint32, Visit> m_visits;
    std::vector<Job> m_jobs;   ///< still to be done
    std::set<qint16> m_loaded; ///< printers that got something in this run
    int m_begun = 0;           ///< loads
    Clock::Instant m_due;
};
