#pragma once

#include "simulator/SimulatedLine.h"
#include "simulator/SimulatedUser.h"
#include "tests/simulation/Hall.h"
#include "tests/simulation/LineLaws.h"
#include "tests/support/OpenStation.h"

#include <QTemporaryDir>

#include <list>
#include <set>

struct sqlite3;

/// What is to be simulated. The same plan gives the same trace on every machine.
struct Plan {
    quint64 seed = 1;
    int acts = 40;                     ///< of the user and of fate
    std::optional<std::set<int>> kept; ///< only these acts, by number, if not all
    std::set<QString> without;         ///< kinds of fault that do not happen
    bool isTraced = false;             ///< prints the trace
    int idleHours = 0;                 ///< hours that the station runs on behind the acts
    int transactions = 0;              ///< of a bench on a bad line, behind the acts
};

struct Report {
    QString broken; ///< the law that was broken first, empty if none was
    quint64 hash = 14695981039346656037ULL;
    quint64 tries = 0;
    double hours = 0;
    std::set<int> actsDone;
    std::set<QString> faults; ///< kinds that the world had
};

/// One hall with its station, from the first start to the last end, through kills and power cuts.
class World {
public:
    explicit World(const Plan& plan);
    ~World();

    Report Run();

private:
    struct Running {
        QString name;
        bool runsAlone = false;
        Timeline::Moment begun{0};
        int editsBefore = 0;
        bool wasInStep = false;
        bool isBeside = false;                   ///< something else ran meanwhile
        std::map<LineLaws::Command, bool> tried; ///< whether the last try was answered
        bool isDone = false;
        Outcome outcome = Outcome::Cancelled();
        QCoro::Task<> task;
    };
    using Work = std::function<QCoro::Task<Outcome>(Station&)>;

    // The world as it happens.
    void Break(const QString& law);
    void Trace(const QString& what);
    bool Happens(const QString& fault) const { return m_report.faults.contains(fault); }
    void ThrowFaults();
    void MakeStore();
    void Live();
    void Transact();
    void Idle();
    void PassTime(Timeline::Moment time);
    void Settle();
    void AfterEvent();
    bool IsOver() const { return !m_report.broken.isEmpty(); }

    // Acts.
    void Do(int act);
    void Begin(const QString& name, bool runsAlone, const Work& work);
    QCoro::Task<> Watch(Running& running, Work work);
    struct Edited;
    Edited ThrowEdit(Dice& dice) const;
    void Edit(Dice& dice);
    void StepBack(Dice& dice);
    void FollowStore();
    void CheckHistory();
    void ChangeOptions(Dice& dice);
    TicketDocument Form(Dice& dice) const;
    void WriteForm(Dice& dice);
    void Commission(Dice& dice);
    void EndStation();
    void Crash(bool isPowerCut);

    // Laws.
    void CheckOutcome(const Running& running);
    void CheckFound(const Running& running);
    void CheckAnswered(const Running& running, model::ObjectType type, char letter);
    void CheckTickets(const Outcome& outcome);
    void CheckCommissioned(const Running& running, bool wasEdited);
    void CheckHoldings();
    QByteArray HeldBy(quint8 address, LoadKind kind) const;
    bool MayHaveChangedUnseen(const DeviceState& device, LoadKind kind) const;
    bool IsAllInStep(bool whenUnknown);
    void CheckModel();
    void CheckStatistics();
    void CheckDisk(bool wasCrash);
    QByteArray Digest(sqlite3* store) const;
    QByteArray StoredDigest();
    int StoredTickets();

    const Plan m_plan;
    Report m_report;
    Dice m_dice;
    QTemporaryDir m_folder;
    QTemporaryDir m_first; ///< holds first.mdb, the store as it was made
    QString m_store;
    Timeline m_timeline;
    Hall m_hall;
    std::unique_ptr<SimulatedLine> m_line;
    std::unique_ptr<LineLaws> m_laws;
    std::unique_ptr<SimulatedClock> m_clock;
    std::unique_ptr<SimulatedUser> m_user;
    std::unique_ptr<OpenStation> m_station;
    std::list<Running> m_running;
    sqlite3* m_other = nullptr;       ///< another program that holds the store
    sqlite3* m_shadow = nullptr;      ///< what the store has to hold
    std::set<QByteArray> m_possible;  ///< digests that the store may have
    std::vector<QByteArray> m_done;   ///< digests from before the acts that can be undone
    std::vector<QByteArray> m_undone; ///< digests from before the steps back that can be redone
    bool m_isAnyPossible = false;     ///< nobody can say what the store holds after the crash
    int m_ticketsBefore = 0;
    std::set<int> m_possibleTickets;
    std::map<QString, std::set<QString>> m_possibleSettings; ///< by "section/key"
    std::set<QByteArray> m_states;                           ///< all that the store ever held, for backups
    Timeline::Moment m_lastProgress{0};
    quint64 m_triesBefore = 0;
    std::set<int> m_cycled; ///< addresses of devices that were off
    QDate m_endedOn;        ///< the day of the last backup
    int m_lives = 0;
    int m_edits = 0;
    bool m_hasCrashed = false;
    bool m_isRecordLost = false; ///< a station ended with loads that the store did not take
    bool m_isDirty = false;      ///< something went wrong with the line or the devices
    bool m_isRouted = false;
    bool m_isStrict = false;
    bool m_hasLocalEcho = false;
};
