#include "benchmarks/Benchmarks.h"
#include "benchmarks/FilledStore.h"
#include "benchmarks/Report.h"
#include "platform/WholeFile.h"
#include "simulator/SimulatedLine.h"
#include "simulator/SimulatedUser.h"
#include "tests/support/OpenStation.h"

#include <QCoreApplication>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <random>

using namespace std::chrono_literals;
using What = Commissioning::What;

namespace {

constexpr int Baud = 9600;

/// A hall of 26 devices in simulated time: 16 counters, 4 printers, 4 displays and 2 hubs, with 12 services.
class Hall {
public:
    Hall() {
        for (const QString& name : {QStringLiteral("VNIl.dat"), QStringLiteral("VCODE.dat")})
            QFile::copy(QStringLiteral(DATA_FOLDER "/") + name, m_folder.filePath(name));
        const QString form = m_folder.filePath(QStringLiteral("Form.rtf"));
        (void)WriteWhole(form, "{\\rtf1 Ticket $VAR(4)\\par " + QByteArray(600, 'x') + "}");
        (void)WriteWhole(m_folder.filePath(QStringLiteral("Tallora.ini")),
                         "[Comm]\nDevice=COM1\nBaud=9600\n[Ticket]\nLastForm=" + form.toUtf8());
        const QString store = m_folder.filePath(QStringLiteral("Harbinet.mdb"));
        (void)Database::CreateEmpty(store);
        {
            Sqlite file;
            (void)file.Open(store);
            for (int i = 1; i <= 12; ++i)
                Run(file, QStringLiteral("INSERT INTO Queue (q_Number,q_Series,q_On,q_Name,q_Button,q_Route) VALUES "
                                         "(%1,%2,1,'Service %1',%1,0)")
                              .arg(i)
                              .arg(1000 * i));
            for (int i = 0; i < 26; ++i) {
                const int type = i < 2 ? model::Hub : i < 6 ? model::Printer : i < 10 ? model::Display : model::Counter;
                const int hub = i % 3 == 2 ? 1 + i % 2 : 0;
                Run(file, QStringLiteral("INSERT INTO Display (d_Number,d_Address,d_Name,d_On,d_Type,d_HubId) VALUES "
                                         "(%1,%2,'Device %1',1,%3,%4)")
                              .arg(i + 1)
                              .arg(i + 20)
                              .arg(type)
                              .arg(type == model::Counter || type == model::Printer ? hub : 0));
            }
        }
        QString problem;
        line = std::make_unique<SimulatedLine>(*BusInstallation::Read(store, problem), timeline);
        line->OnWritten = line->OnDelivered = [this](const QByteArray& bytes) { characters += bytes.size(); };
        station = std::make_unique<OpenStation>(ProgramFolders{m_folder.path(), m_folder.path()},
                                                Station::Machine{m_clock, *line, m_user});
        (void)Await([&]() -> QCoro::Task<Outcome> {
            co_await station->ReadSettings();
            co_return co_await station->Start(store);
        });
    }

    ~Hall() { station.reset(); }

    Outcome Await(const std::function<QCoro::Task<Outcome>()>& operation) {
        std::optional<Outcome> outcome;
        const auto watch = [](QCoro::Task<Outcome> task, std::optional<Outcome>& result) -> QCoro::Task<> {
            result = co_await task;
        };
        characters = 0;
        const Timeline::Moment begun = timeline.Now();
        const QCoro::Task<> running = watch(operation(), outcome);
        while (!outcome && timeline.Step(begun + 10h))
            QCoreApplication::sendPostedEvents();
        took = timeline.Now() - begun;
        return outcome.value_or(Outcome::Cancelled());
    }

    Outcome Commission() {
        return Await([this] { return station->CommissionHall(What::NotInStep); });
    }

    static void Run(const Sqlite& file, const QString& statement) {
        if (const Result<> done = file.Run({statement}); !done)
            std::printf("%s: %s\n", qPrintable(statement), qPrintable(done.Error()));
    }

    /// Printers that do not hold all rows of the service table; the form.
    int Wrong(const QByteArray& form) const {
        int wrong = 0;
        for (const auto& device : line->Devices()) {
            if (const auto* const printer = dynamic_cast<const TicketPrinter*>(device.get()))
                wrong += printer->ServiceRows().size() != 12 || (!form.isEmpty() && printer->Form() != form) ? 1 : 0;
        }
        return wrong;
    }

    Timeline timeline;
    std::unique_ptr<SimulatedLine> line;
    std::unique_ptr<OpenStation> station;
    qint64 characters = 0; ///< on the wire, of the last operation
    Timeline::Moment took{0};

private:
    QTemporaryDir m_folder;
    SimulatedClock m_clock{timeline, QDateTime(QDate(2026, 11, 18), QTime(6, 13, 38))};
    SimulatedUser m_user{timeline, 1};
};

double Seconds(Timeline::Moment time) {
    return std::chrono::duration<double>(time).count();
}

void MeasureRuns() {
    Hall hall;
    std::chrono::milliseconds estimate{0};
    const Result<std::vector<DeviceState>> before = hall.station->Hall();
    for (const DeviceState& device : *before) {
        for (const HeldItem& item : device.items)
            estimate += item.time;
    }
    const bool isDone = hall.Commission().IsDone();
    Report(isDone ? "commissioning 26 devices, done" : "commissioning 26 devices, NOT done", Seconds(hall.took), "s",
           "foretold", Seconds(estimate));
    (void)hall.Commission();
    const double wire = static_cast<double>(hall.characters) * 10 / Baud;
    Report("the second run, beyond the wire time of its questions", Seconds(hall.took) - wire, "s", "aim", 2);
}

void CountEdits() {
    Hall hall;
    (void)hall.Commission();
    OpenStation& station = *hall.station;
    const auto bytes = [&] {
        (void)station.reload.ReloadAll();
        Payloads payloads({*station.installation, station.Forms(), station.Record(), station.clock,
                           [&](qint32 service) { return station.loaders.CounterListOfService(service); }, station.log});
        std::map<Commissioning::Choice, QByteArray> all;
        for (qint16 i = 0; i < station.installation->NumObjects; ++i) {
            for (const Payload& payload : payloads.Of(i))
                all[{station.installation->Object(i).Id, payload.kind}] = payload.content;
        }
        return all;
    };
    const auto loaded = bytes();
    std::mt19937 dice(1);
    const auto roll = [&dice](unsigned sides) { return static_cast<int>(dice() % sides); };
    int wrong = 0;
    int changed = 0;
    constexpr int Edits = 10'000;
    for (int i = 0; i < Edits; ++i) {
        const QString edits[] = {
            QStringLiteral("UPDATE Queue SET q_Name='Service %1' WHERE q_Id=%2").arg(1 + roll(3)).arg(1 + roll(12)),
            QStringLiteral("UPDATE Queue SET q_Button=%1 WHERE q_Id=%2").arg(1 + roll(3)).arg(1 + roll(12)),
            QStringLiteral("UPDATE Queue SET q_Series=%1 WHERE q_Id=%2").arg(1000 * (1 + roll(3))).arg(1 + roll(12)),
            QStringLiteral("UPDATE Queue SET q_On=1-q_On WHERE q_Id=%1").arg(1 + roll(12)),
            QStringLiteral("UPDATE Queue SET q_Notes='%1' WHERE q_Id=%2").arg(roll(9)).arg(1 + roll(12)),
            QStringLiteral("UPDATE Display SET d_Number=%1 WHERE d_Id=%2").arg(1 + roll(26)).arg(1 + roll(26)),
            QStringLiteral("INSERT INTO [Queue-Display] (q_Id,d_Id) VALUES (%1,%2)")
                .arg(1 + roll(12))
                .arg(11 + roll(16)),
            QStringLiteral("DELETE FROM [Queue-Display] WHERE d_Id=%1").arg(11 + roll(16)),
            QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (%1,%2,%3)")
                .arg(7 + roll(4))
                .arg(11 + roll(16))
                .arg(roll(5)),
            QStringLiteral("DELETE FROM [Info-Direction] WHERE inf_Id=%1").arg(7 + roll(4)),
        };
        Hall::Run(station.database.File(), edits[roll(std::size(edits))]);
        const Result<std::vector<DeviceState>> state = station.Hall();
        const auto now = bytes();
        for (const DeviceState& device : *state) {
            for (const HeldItem& item : device.items) {
                const Commissioning::Choice choice{device.key, item.kind};
                const bool differs = now.at(choice) != loaded.at(choice);
                changed += differs ? 1 : 0;
                wrong += differs != (item.state == StepState::Changed) ? 1 : 0;
            }
        }
    }
    std::printf("%d random edits: %d things changed since, %d told wrongly\n", Edits, changed, wrong);
}

void MeasureFaults() {
    constexpr int Runs = 50;
    struct Count {
        int done = 0;
        int wrong = 0; ///< printers that are wrong where done was said
    };
    Count given;
    Count commissioned;
    double seconds = 0;
    for (int run = 0; run < Runs; ++run) {
        Hall hall;
        FaultSettings faults;
        faults.DropRequest = faults.DropReply = 0.025;
        faults.Seed = static_cast<quint32>(run + 1);
        hall.line->SetFaults(faults);
        if (hall.Await([&] { return hall.station->SetServiceConfig(); }).IsDone()) {
            ++given.done;
            given.wrong += hall.Wrong({});
        }
        hall.line->SetFaults(faults);
        const Outcome outcome = hall.Commission();
        seconds += Seconds(hall.took);
        if (outcome.IsDone()) {
            ++commissioned.done;
            const std::optional<FormSource> source = hall.station->Forms().LastSource();
            commissioned.wrong += hall.Wrong(hall.station->Forms().CompileSource(*source)->PrnForm);
        }
    }
    std::printf("5 %% faults, %d halls of 4 printers: the given load says OK in %d, with %d printers wrong\n", Runs,
                given.done, given.wrong);
    std::printf(
        "5 %% faults, %d halls of 4 printers: the commissioning is done in %d at the first run, with %d printers "
        "wrong; %.0f s each\n",
        Runs, commissioned.done, commissioned.wrong, seconds / Runs);
}

void MeasureLook() {
    const QTemporaryDir folder;
    const QString store = folder.filePath(QStringLiteral("Harbinet.mdb"));
    FillStore(store);
    Timeline timeline;
    SimulatedClock clock(timeline, QDateTime::currentDateTime());
    SimulatedUser user(timeline, 1);
    SerialControl port;
    OpenStation station({folder.path(), folder.path()}, {clock, port, user});
    (void)station.OpenStore(store);
    const double look = BestSeconds(20, [&] { (void)station.Hall(); });
    const double faults = BestSeconds(20, [&] { (void)station.FindFaults(); });
    Report("states of 64 objects with 64 services", look * 1000, "ms", "check of the installation", faults * 1000);
}

void MeasureWatch() {
    const QTemporaryDir folder;
    Timeline timeline;
    SimulatedClock clock(timeline, QDateTime::currentDateTime());
    const auto installation = std::make_unique<model::Installation>();
    installation->NumObjects = 1;
    installation->Object(0).Id = 1;
    installation->Object(0).Address = 5;
    installation->Object(0).Type = model::Printer;
    EventLog log(folder.path(), clock);
    IniUtility ini(folder.filePath(QStringLiteral("x.ini")));
    Database database(folder.path(), ini, log, clock);
    LoadRecord record(database, log);
    const double without = TransactionRate([](Bus&, const std::function<void()>& work) { work(); });
    const double with = TransactionRate([&](Bus& bus, const std::function<void()>& work) {
        const LoadWatch watch(bus, *installation, record, clock);
        work();
    });
    std::printf("watching a transaction for the record costs %.2f us\n", 1e6 / with - 1e6 / without);
}

} // namespace

void BenchmarkCommissioning() {
    MeasureRuns();
    MeasureLook();
    MeasureWatch();
    MeasureFaults();
    CountEdits();
}
