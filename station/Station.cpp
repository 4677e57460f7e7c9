#include "station/Station.h"

#include "platform/Clock.h"
#include "platform/Dialogs.h"
#include "platform/VoiceChannel.h"

#include <limits>

namespace {

constexpr qint16 FirstTicketNumber = 1001; ///< after a reset of the system

} // namespace

/// Marks the station busy for as long as it lives.
class Station::Operation {
public:
    explicit Operation(Station& station)
        : m_station(station) {
        m_station.m_busy = true;
        Q_EMIT m_station.BusyChanged(true);
    }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation() {
        m_station.m_busy = false;
        Q_EMIT m_station.ProgressChanged(QString());
        Q_EMIT m_station.BusyChanged(m_station.IsBusy());
    }

private:
    Station& m_station;
};

Station::Station(QString programFolder, Clock& stationClock, Dialogs& stationDialogs)
    : ProgramFolder(std::move(programFolder))
    , clock(stationClock)
    , dialogs(stationDialogs)
    , log(ProgramFolder, clock)
    , ini(ProgramFolder + QStringLiteral("/Tallora.ini"))
    , installation(std::make_unique<model::Installation>())
    , line(control, ini, dialogs, clock)
    , bus(control, log)
    , trace(bus)
    , router(bus, *installation)
    , hubs(bus, *installation)
    , clocks(bus, *installation, clock)
    , starts(bus, router, *installation, options, clock)
    , hubOption(clocks, options, ini, dialogs)
    , database(ProgramFolder, ini, log, clock)
    , tickets(database, *installation, log)
    , loaders(database, tickets, *installation, options, log)
    , reload(database, loaders, tickets, *installation, log)
    , printers(
          ProgramFolder, *installation, router, clock,
          [this](qint32 serviceId) { return loaders.CounterListOfService(serviceId); }, log)
    , forms(
          ProgramFolder, *installation, router, clock, dialogs, ini,
          [this](qint32 serviceId) { return loaders.CounterListOfService(serviceId); }, log)
    , check(database, tickets, options, clock)
    , run(*this)
    , init(*this) {
    reload.OnRefreshed = [this] { Q_EMIT ModelChanged(); };
    connect(&printers, &PrinterConfig::Progress, this, [this](const QString& printerName, int done, int total) {
        Q_EMIT ProgressChanged(tr("Printer %1: %2 of %3").arg(printerName).arg(done).arg(total));
    });
    hubs.OnDevice =
        clocks.OnDevice = [this](const QString& name) { Q_EMIT ProgressChanged(tr("Setting %1").arg(name)); };
    connect(&forms.fonts, &FontTransfer::Progress, this, [this](const QString& printerName, int done, int total) {
        Q_EMIT ProgressChanged(tr("Printer %1: letters, %2 of %3").arg(printerName).arg(done).arg(total));
    });
    connect(&forms, &TicketForms::RunningChanged, this, [this](bool running) {
        // A form that an operation of the station sends is only a part of it.
        if (!running && !m_busy)
            Q_EMIT ProgressChanged(QString());
        Q_EMIT BusyChanged(running || m_busy);
    });
}

Station::~Station() {
    Close();
}

void Station::Close() {
    Q_EMIT Closing();
    // Boxes first: what fails because of the end must not open one.
    dialogs.Close();
    bus.Close();
    clock.Close();
}

QCoro::Task<> Station::ExplainBusy() {
    const QString running = QStringLiteral("Devices are being configured. Please try again when this is done.");
    co_await dialogs.ShowMessage(BoxKind::Exclamation, running);
}

QCoro::Task<> Station::ExplainClosed() {
    const QString closed = QStringLiteral("Can't open Queue database!");
    co_await dialogs.ShowMessage(BoxKind::Exclamation, closed);
}

QCoro::Task<bool> Station::ReloadOrExplain() {
    if (IsBusy()) {
        co_await ExplainBusy();
        co_return false;
    }
    if (reload.ReloadAll() == Reload::Outcome::NoDatabase) {
        co_await ExplainClosed();
        co_return false;
    }
    Q_EMIT ModelChanged();
    co_return true;
}

QCoro::Task<> Station::RefreshModel() {
    co_await ReloadOrExplain();
}

QCoro::Task<> Station::ReloadDirections() {
    if (IsBusy()) {
        co_await ExplainBusy();
        co_return;
    }
    const auto counters = loaders.ReadCounters();
    const auto directions = loaders.ReadDirections();
    if (!counters || !directions) {
        co_await ExplainClosed();
        co_return;
    }
    installation->NumObjects = loaders.TakeCounters(*counters);
    installation->NumDirections = loaders.TakeDirections(*directions);
    Q_EMIT ModelChanged();
}

QCoro::Task<> Station::ShowAnswered(bool answered) {
    const QString text = answered ? QStringLiteral("True") : QStringLiteral("False");
    co_await dialogs.ShowMessage(BoxKind::Plain, text);
}

QCoro::Task<> Station::TestConnect(std::optional<qint32> number, std::optional<qint32> address) {
    if (address && (*address < 0 || *address > std::numeric_limits<quint8>::max()))
        address.reset();
    const qint16 object = installation->FindObjectByNumber(number.value_or(0));
    // Only what is relayed by a hub goes to the address that the model knows.
    const bool isRelayed = object >= 0 && installation->QObjects[static_cast<std::size_t>(object)].HubId != 0;
    if (!address && (!number || (object >= 0 && !isRelayed))) {
        const QString missing = QStringLiteral("This object has no address to ask.");
        co_await dialogs.ShowMessage(BoxKind::Exclamation, missing);
        co_return;
    }
    const auto busAddress = static_cast<quint8>(address.value_or(0));
    if (!number) {
        const QByteArray nothing;
        const Reply reply = co_await bus.SendCommand(busAddress, 'P', nothing, Bus::DirectTimeout, 1);
        co_await ShowAnswered(reply.ok);
    }
    std::optional<bool> answered;
    if (object >= 0)
        answered = co_await router.TestConnection(object, busAddress);
    if (answered) {
        co_await ShowAnswered(*answered);
        co_return;
    }
    const QString unknown = QStringLiteral("Database not refresh, please restart application");
    co_await dialogs.ShowMessage(BoxKind::Exclamation, unknown);
}

QCoro::Task<> Station::SetServiceConfig() {
    const bool reloaded = co_await ReloadOrExplain();
    if (!reloaded)
        co_return;
    co_await ConfigPrinters();
}

QCoro::Task<> Station::ConfigPrinters() {
    if (IsBusy()) {
        co_await ExplainBusy();
        co_return;
    }
    bool all = false;
    {
        const Operation running(*this);
        all = co_await printers.ConfigAllPrinters();
    }
    const BoxKind kind = all ? BoxKind::Information : BoxKind::Exclamation;
    const QString outcome = all ? QStringLiteral("Set config to all objects OK.")
                                : QStringLiteral("Error on setting config to all objects.");
    co_await dialogs.ShowMessage(kind, outcome);
}

QCoro::Task<> Station::SetHubs() {
    const bool reloaded = co_await ReloadOrExplain();
    if (!reloaded)
        co_return;
    QString outcome = QStringLiteral("Set config to all HUBs OK.");
    BoxKind kind = BoxKind::Information;
    if (const std::vector<BlockFault> faults = BlockFaults(*installation); !faults.empty()) {
        outcome = faults.front().text;
        kind = BoxKind::Exclamation;
    } else {
        const Operation running(*this);
        const bool all = co_await hubs.SetHubConfig();
        if (!all) {
            outcome = QStringLiteral("Error on setting config to HUB(s).");
            kind = BoxKind::Exclamation;
        }
    }
    co_await dialogs.ShowMessage(kind, outcome);
}

QCoro::Task<> Station::SetHubClocks() {
    if (IsBusy()) {
        co_await ExplainBusy();
        co_return;
    }
    {
        const Operation running(*this);
        co_await clocks.SetHubTime();
    }
    const QString done = QStringLiteral("done.");
    co_await dialogs.ShowMessage(BoxKind::Information, done);
}

QCoro::Task<> Station::SetPrinterClocks() {
    if (IsBusy()) {
        co_await ExplainBusy();
        co_return;
    }
    {
        const Operation running(*this);
        co_await clocks.SetAllPrinterTimes();
    }
    const QString done = QStringLiteral(".Done");
    co_await dialogs.ShowMessage(BoxKind::Plain, done);
}

QCoro::Task<> Station::LoadVniFont(bool zoneRich) {
    if (IsBusy())
        co_await ExplainBusy();
    else
        co_await forms.LoadVniFont(zoneRich);
}

QCoro::Task<bool> Station::InitAllObjects() {
    if (IsBusy()) {
        co_await ExplainBusy();
        co_return false;
    }
    const Operation running(*this);
    co_await init.InitQObjects();
    co_return true;
}

QCoro::Task<> Station::InitHubs() {
    if (IsBusy()) {
        co_await ExplainBusy();
        co_return;
    }
    {
        const Operation running(*this);
        for (qint16 i = 0; i < installation->NumObjects; ++i) {
            const model::QObject& object = installation->QObjects[static_cast<std::size_t>(i)];
            if (object.Type != model::Hub)
                continue;
            Q_EMIT ProgressChanged(tr("Setting %1").arg(object.Name));
            const bool answered = co_await hubs.SendHubMembers(i);
            if (answered)
                continue;
            const QString failed = QStringLiteral("Set config to Hub number: %1 fail.").arg(object.Number);
            co_await dialogs.ShowMessage(BoxKind::Exclamation, failed);
        }
    }
    const QString done = QStringLiteral("Init done.");
    co_await dialogs.ShowMessage(BoxKind::Information, done);
}

QCoro::Task<> Station::ResetSystem() {
    if (IsBusy()) {
        co_await ExplainBusy();
        co_return;
    }
    {
        const Operation running(*this);
        const std::function<bool()> isCancelled = [this] { return init.CancelInit; };
        co_await starts.BroadcastResetAndTime(isCancelled);
        // What cannot be deleted is in the log.
        tickets.ClearTicketRecords();
        for (model::QService& service : installation->LoadedServices()) {
            service.WaitRing.ResetRing();
            service.FlaggedRing.ResetRing();
            service.NextNumber = service.Series + 1;
        }
        installation->LastTicketNumber = FirstTicketNumber;
    }
    const QString done = QStringLiteral("System reset done. Please restart Orvex.");
    co_await dialogs.ShowMessage(BoxKind::Information, done);
}

QCoro::Task<> Station::ActiveAll() {
    run.ResetObjects();
    const QString marked = QStringLiteral("All queue objects are marked as active.");
    co_await dialogs.ShowMessage(BoxKind::Information, marked);
}

QCoro::Task<> Station::RefreshIfChanged() {
    if (IsBusy() || !reload.DbChanged)
        co_return;
    co_await reload.RefreshIfChanged(dialogs);
}

void Station::CloseVoice() {
    constexpr qint16 Messages = 1;
    constexpr qint16 Net = 2;
    constexpr qint16 Closing = 2;
    if (options.VoiceType == Messages)
        voice::PostToVoice(Closing, 0);
    else if (options.VoiceType == Net)
        log.WriteLog(QStringLiteral("Closing voice:localnet Not support!"), EventLog::Error);
}
