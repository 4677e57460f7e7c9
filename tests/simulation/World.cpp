#include "tests/simulation/World.h"

#include "core/IniUtility.h"
#include "platform/Ended.h"
#include "simulator/FaultyDisk.h"
#include "tests/simulation/Memory.h"

#include <QCoreApplication>
#include <QDir>

#include <sqlite3.h>

using namespace std::chrono_literals;

namespace {

constexpr Timeline::Moment LongestOperation = 12h;  ///< 64 printers with forms, all silent, all boxes answered slowly
constexpr Timeline::Moment LongestStandstill = 60s; ///< without anything sent, shown or begun
constexpr Timeline::Moment LongestEnd = 4s;

constexpr std::size_t LargestGrowth = 100'000; ///< bytes

const std::vector<QString>& FaultKinds() {
    static const std::vector<QString> kinds = {
        QStringLiteral("drop"),  QStringLiteral("corrupt"), QStringLiteral("noise"),  QStringLiteral("slice"),
        QStringLiteral("delay"), QStringLiteral("late"),    QStringLiteral("echo"),   QStringLiteral("foreign"),
        QStringLiteral("twin"),  QStringLiteral("deaf"),    QStringLiteral("forget"), QStringLiteral("silent"),
        QStringLiteral("pull"),  QStringLiteral("block"),   QStringLiteral("power"),  QStringLiteral("full"),
        QStringLiteral("flush"), QStringLiteral("busy"),    QStringLiteral("kill"),   QStringLiteral("cut"),
        QStringLiteral("end")};
    return kinds;
}

} // namespace

World::World(const Plan& plan)
    : m_plan(plan)
    , m_dice(plan.seed)
    , m_folder(QStringLiteral("/dev/shm/orvex-simulation-XXXXXX"))
    , m_store(m_folder.filePath(QStringLiteral("Harbinet.mdb")))
    , m_hall(m_dice) {
    QDir(m_folder.path()).mkdir(QStringLiteral("Data"));
    QDir(m_folder.path()).mkdir(QStringLiteral("Log"));
    for (const QString& name : {QStringLiteral("VNIl.dat"), QStringLiteral("VCODE.dat")})
        QFile::copy(QStringLiteral(DATA_FOLDER "/") + name, m_folder.filePath(name));
    m_isRouted = m_dice.OnceIn(4);
    m_isStrict = m_dice.OnceIn(3);
    m_hasLocalEcho = m_dice.OnceIn(2);
    const IniUtility ini(m_folder.filePath(QStringLiteral("Tallora.ini")));
    const std::vector<std::array<QString, 3>> settings = {
        {QStringLiteral("Comm"), QStringLiteral("Device"), QStringLiteral("COM1")},
        {QStringLiteral("Comm"), QStringLiteral("Baud"),
         m_dice.OnceIn(2) ? QStringLiteral("115200") : QStringLiteral("9600")},
        {QStringLiteral("Comm"), QStringLiteral("StrictReplies"),
         m_isStrict ? QStringLiteral("yes") : QStringLiteral("no")},
        {QStringLiteral("Comm"), QStringLiteral("LocalEcho"),
         m_hasLocalEcho ? QStringLiteral("yes") : QStringLiteral("no")},
        {QStringLiteral("Ticket"), QStringLiteral("LastForm"), m_folder.filePath(QStringLiteral("Data/Form.rtf"))},
        {QStringLiteral("options"), QStringLiteral("WakeupTime"), QStringLiteral("15")},
        {QStringLiteral("options"), QStringLiteral("KeyDelayTime"), QStringLiteral("15")},
        {QStringLiteral("options"), QStringLiteral("FromToval"), QStringLiteral("5")},
        {QStringLiteral("options"), QStringLiteral("RoutedSeries"),
         m_isRouted ? QStringLiteral("yes") : QStringLiteral("no")},
        {QStringLiteral("options"), QStringLiteral("SendConfigOnStart"),
         m_dice.OnceIn(2) ? QStringLiteral("yes") : QStringLiteral("no")},
    };
    for (const auto& [section, key, value] : settings) {
        ini.WriteIni(section, key, value);
        m_possibleSettings[section + u'/' + key] = {value};
    }
    WriteForm(m_dice);
    QString problem;
    m_line = std::make_unique<SimulatedLine>(*BusInstallation::Parse(m_hall.devices, QStringLiteral("hall"), problem),
                                             m_timeline);
    m_laws = std::make_unique<LineLaws>(*m_line, m_timeline);
    if (plan.isTraced)
        m_line->Log().OnLine = [](const QString& line) { std::puts(qUtf8Printable(line)); };
    m_laws->IsStrict = m_isStrict;
    m_laws->HasLocalEcho = m_hasLocalEcho;
    m_laws->OnBroken = [this](const QString& law) { Break(law); };
    m_laws->IsSearching = [this] {
        return std::any_of(m_running.begin(), m_running.end(), [](const Running& one) {
            return one.runsAlone && one.name.startsWith(QStringLiteral("Scan"));
        });
    };
    m_laws->OnTried = [this](const LineLaws::Command& command, bool answered) {
        for (Running& running : m_running)
            running.tried[command] = answered;
    };
    m_line->OnWritten = [this](const QByteArray& bytes) {
        Trace(QStringLiteral("> ") + QString::fromLatin1(bytes.toHex()));
        m_lastProgress = m_timeline.Now();
        m_laws->Written(bytes);
    };
    m_line->OnDelivered = [this](const QByteArray& bytes) {
        Trace(QStringLiteral("< ") + QString::fromLatin1(bytes.toHex()));
        m_laws->Delivered(bytes);
    };
    ThrowFaults();
    MakeStore();
    FaultyDisk::Instance().Begin(m_folder.path());
    FaultyDisk::Instance().OnSleep = [this](std::chrono::nanoseconds time) { m_timeline.Pass(time); };
}

World::~World() {
    m_station.reset();
    FaultyDisk::Instance().End();
    sqlite3_close(m_shadow);
}

void World::ThrowFaults() {
    // One world of three has a line and devices without a fault; what remains to go wrong there is the user.
    const bool isClean = m_dice.OnceIn(3);
    for (const QString& kind : FaultKinds()) {
        const bool isThrown = m_dice.OnceIn(3) && (!isClean || kind == QStringLiteral("end"));
        if (isThrown && !m_plan.without.contains(kind))
            m_report.faults.insert(kind);
    }
    const auto chance = [this](const char* kind, int sides) {
        const double thrown = 0.01 * (1 + m_dice.Roll(sides));
        return Happens(QLatin1String(kind)) ? thrown : 0;
    };
    const auto address = [this] {
        return static_cast<quint8>(
            m_hall.addresses[static_cast<std::size_t>(m_dice.Roll(static_cast<int>(m_hall.addresses.size())))]);
    };
    FaultSettings faults;
    faults.DropRequest = chance("drop", 20);
    faults.DropReply = chance("drop", 20);
    faults.Corrupt = chance("corrupt", 20);
    faults.Noise = chance("noise", 30);
    faults.Slice = chance("slice", 50);
    faults.Delay = chance("delay", 20);
    faults.DelayMilliseconds = m_dice.Roll(2000);
    faults.Foreign = chance("foreign", 20);
    // An adapter that echoes is no fault where the station knows of it, and one where it only believes so.
    faults.Echo = Happens(QStringLiteral("echo")) || (m_hasLocalEcho && m_dice.OnceIn(2));
    m_isDirty |= faults.Echo != m_hasLocalEcho;
    faults.Forget = Happens(QStringLiteral("forget"));
    const int late = 1 + m_dice.Roll(1500);
    if (Happens(QStringLiteral("late")))
        faults.LateMilliseconds = late;
    const quint8 twin = address();
    if (Happens(QStringLiteral("twin")))
        faults.Twins = {twin};
    const char letter = "PMNKLWJHSUQVOXYZG"[m_dice.Roll(17)];
    const int row = m_dice.Roll(8);
    if (Happens(QStringLiteral("deaf")))
        faults.Deaf = {{letter, row < 4 ? std::optional(row) : std::nullopt}};
    const quint8 silent = address();
    if (Happens(QStringLiteral("silent")))
        faults.Silent = {silent};
    faults.Seed = static_cast<quint32>(m_plan.seed);
    m_line->SetFaults(faults);
    for (const char* kind : {"drop", "corrupt", "noise", "delay", "late", "foreign", "twin", "deaf", "forget", "silent",
                             "pull", "block", "power"})
        m_isDirty |= Happens(QLatin1String(kind));
}

void World::MakeStore() {
    sqlite3_open(":memory:", &m_shadow);
    (void)Database::CreateEmpty(m_store);
    sqlite3* store = nullptr;
    sqlite3_open(m_store.toUtf8().constData(), &store);
    sqlite3_exec(store, "BEGIN", nullptr, nullptr, nullptr);
    for (const QString& statement : m_hall.statements) {
        char* error = nullptr;
        if (sqlite3_exec(store, statement.toUtf8().constData(), nullptr, nullptr, &error) != SQLITE_OK)
            Break(QStringLiteral("the hall cannot be made: %1: %2").arg(statement, QString::fromUtf8(error)));
    }
    sqlite3_exec(store, "COMMIT", nullptr, nullptr, nullptr);
    QFile::copy(m_store, m_first.filePath(QStringLiteral("first.mdb")));
    sqlite3_backup* const copy = sqlite3_backup_init(m_shadow, "main", store, "main");
    sqlite3_backup_step(copy, -1);
    sqlite3_backup_finish(copy);
    sqlite3_close(store);
    m_possible = {Digest(m_shadow)};
    m_states = m_possible;
    m_possibleTickets = {m_ticketsBefore = StoredTickets()};
}

void World::Break(const QString& law) {
    if (m_report.broken.isEmpty())
        m_report.broken = QStringLiteral("%1 s: %2").arg(m_timeline.Now() / 1s).arg(law);
    Trace(QStringLiteral("BROKEN ") + law);
}

void World::Trace(const QString& what) {
    const QByteArray line = QByteArray::number(qint64(m_timeline.Now() / 1us)) + ' ' + what.toUtf8();
    for (const char byte : line)
        m_report.hash = (m_report.hash ^ static_cast<quint8>(byte)) * 1099511628211ULL;
    if (m_plan.isTraced)
        std::puts(line.constData());
}

Report World::Run() {
    const int last = m_plan.acts;
    Live();
    for (int act = 0; act < last && !IsOver(); ++act) {
        if (m_plan.kept && !m_plan.kept->contains(act))
            continue;
        m_report.actsDone.insert(act);
        Do(act);
    }
    if (!IsOver() && m_plan.transactions > 0)
        Transact();
    if (!IsOver() && m_plan.idleHours > 0)
        Idle();
    if (!IsOver())
        Settle();
    if (!IsOver())
        EndStation();
    m_report.tries = m_laws->Tries;
    m_report.hours = static_cast<double>(m_timeline.Now() / 1s) / 3600;
    return m_report;
}

void World::Transact() {
    Begin(QStringLiteral("transactions"), false, [this](Station&) -> QCoro::Task<Outcome> {
        for (int i = 0; i < m_plan.transactions; ++i) {
            const int address = m_hall.addresses[static_cast<std::size_t>(i % m_hall.objects)];
            co_await m_station->bus.SendCommand(static_cast<quint8>(address), 'P', {}, Bus::DirectTimeout, 1);
        }
        co_return Outcome::Done();
    });
    while (!m_running.empty() && !IsOver())
        PassTime(1h);
}

void World::Idle() {
    // The second half needs no more memory than the first.
    const std::chrono::minutes half(std::chrono::hours(m_plan.idleHours) / 2);
    PassTime(half);
    const std::size_t before = UsedMemory();
    PassTime(half);
    if (!IsOver() && UsedMemory() > before + LargestGrowth)
        Break(QStringLiteral("the memory in use grew by %1 bytes in %2 hours")
                  .arg(UsedMemory() - before)
                  .arg(m_plan.idleHours / 2));
}

void World::Live() {
    ++m_lives;
    m_clock = std::make_unique<SimulatedClock>(m_timeline, QDateTime(QDate(2026, 11, 18), QTime(6, 13, 38)));
    m_user = std::make_unique<SimulatedUser>(m_timeline, static_cast<quint32>(m_plan.seed));
    m_user->OnBox = [this](const QString& text) {
        Trace(QStringLiteral("box ") + text.section(u'/', 0, 0));
        m_lastProgress = m_timeline.Now();
    };
    m_station =
        std::make_unique<OpenStation>(ProgramFolders{m_folder.path(), m_folder.path()},
                                      Station::Machine{*m_clock, *m_line, *m_user, QStringLiteral("installer")});
    m_laws->Follow(m_station->bus);
    m_triesBefore = m_laws->Tries;
    Begin(QStringLiteral("start"), false, [this](Station& station) -> QCoro::Task<Outcome> {
        co_await station.ReadSettings();
        if (!station.Settings().RoutedSeries && m_isRouted)
            Break(QStringLiteral("a setting was lost"));
        co_return co_await station.Start(m_store);
    });
    PassTime(30s);
}

void World::PassTime(Timeline::Moment time) {
    const Timeline::Moment end = m_timeline.Now() + time;
    while (!IsOver() && m_timeline.Step(end)) {
        AfterEvent();
        // What died took the machine with it.
        if (FaultyDisk::Instance().IsDead())
            return Crash(Happens(QStringLiteral("cut")));
    }
}

void World::Settle() {
    // Whatever holds the line or the disk up ends some time.
    m_line->SetBlocked(false);
    m_line->Plug();
    FaultyDisk::Instance().SetFull(false);
    m_station->Console().CancelPoll();
    const Timeline::Moment end = m_timeline.Now() + LongestOperation;
    while (!m_running.empty() && m_timeline.Now() < end && !IsOver())
        PassTime(10s);
    if (!m_running.empty())
        Break(QStringLiteral("\"%1\" never ends").arg(m_running.front().name));
    else if (m_user->OpenBoxes() > 0)
        Break(QStringLiteral("a box stays open that belongs to nobody"));
}

void World::AfterEvent() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (auto running = m_running.begin(); running != m_running.end();) {
        if (running->isDone) {
            CheckOutcome(*running);
            running = m_running.erase(running);
        } else {
            // A poll on a line that is closed goes on in silence.
            if (m_timeline.Now() - m_lastProgress > LongestStandstill && running->name != u"PoolTicket")
                Break(QStringLiteral("\"%1\" stands still").arg(running->name));
            ++running;
        }
    }
    if (!m_station)
        return;
    // A deletion asks first, and is an operation only then.
    const bool runs =
        std::any_of(m_running.begin(), m_running.end(), [](const Running& one) { return one.runsAlone; }) ||
        m_station->Maintenance().IsRunning();
    if (runs != m_station->IsBusy())
        Break(runs ? QStringLiteral("an operation runs, and the station is not busy")
                   : QStringLiteral("no operation runs, and the station is busy"));
}

void World::Begin(const QString& name, bool runsAlone, const Work& work) {
    Trace(QStringLiteral("begin ") + name);
    m_lastProgress = m_timeline.Now();
    Running& running = m_running.emplace_back();
    running.name = name;
    running.runsAlone = runsAlone && !m_station->IsBusy();
    running.begun = m_timeline.Now();
    running.editsBefore = m_edits;
    running.wasInStep = name == u"CommissionHall" && IsAllInStep(false);
    if (m_running.size() > 1) {
        for (Running& one : m_running)
            one.isBeside = true;
    }
    running.task = Watch(running, work);
    AfterEvent();
}

QCoro::Task<> World::Watch(Running& running, Work work) {
    try {
        running.outcome = co_await work(*m_station);
    } catch (const Ended&) {
        running.outcome = Outcome::Cancelled();
    }
    running.isDone = true;
    Trace(QStringLiteral("end %1: %2 %3 %4")
              .arg(running.name)
              .arg(static_cast<int>(running.outcome.end))
              .arg(running.outcome.text.section(u'/', 0, 0), running.outcome.silent.join(u',')));
}

void World::EndStation() {
    bool isOver = false;
    const auto end = [](Station& station, bool& over) -> QCoro::Task<> {
        co_await station.End();
        over = true;
    };
    Trace(QStringLiteral("the program ends"));
    const Timeline::Moment begun = m_timeline.Now();
    m_laws->ExpectNoCommand();
    const QCoro::Task<> ending = end(*m_station, isOver);
    while (!isOver && !IsOver() && m_timeline.Now() < begun + LongestEnd && !FaultyDisk::Instance().IsDead()) {
        m_timeline.Step(begun + LongestEnd);
        AfterEvent();
    }
    if (FaultyDisk::Instance().IsDead())
        return Crash(Happens(QStringLiteral("cut")));
    AfterEvent();
    if (!isOver)
        Break(QStringLiteral("the program does not end"));
    else if (!m_running.empty())
        Break(QStringLiteral("\"%1\" goes on after the end of the program").arg(m_running.front().name));
    CheckStatistics();
    m_isRecordLost |= !m_station->Record().Fault().isEmpty();
    m_endedOn = m_clock->Now().date();
    m_laws->ExpectSilence();
    // Until another program has let the store go as well.
    const int life = m_lives;
    PassTime(60s);
    if (life != m_lives)
        return;
    m_line->Close();
    m_station.reset();
    CheckDisk(false);
}

void World::Crash(bool isPowerCut) {
    Trace(isPowerCut ? QStringLiteral("power cut") : QStringLiteral("killed"));
    m_isRecordLost |= !m_station->Record().Fault().isEmpty();
    FaultyDisk& disk = FaultyDisk::Instance();
    disk.Die();
    sqlite3_close(std::exchange(m_other, nullptr));
    m_laws->ExpectSilence();
    m_line->Close();
    m_station.reset();
    if (std::any_of(m_running.begin(), m_running.end(), [](const Running& one) { return !one.isDone; }))
        Break(QStringLiteral("an operation outlives its station"));
    m_running.clear();
    disk.Restart(isPowerCut, m_dice.Engine());
    CheckDisk(true);
    if (!IsOver())
        Live();
}
