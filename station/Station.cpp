#include "station/Station.h"

#include "database/DirectionMatrix.h"
#include "database/StoreWait.h"
#include "platform/Clock.h"
#include "platform/Ended.h"
#include "platform/LeadingNumber.h"
#include "platform/VoiceChannel.h"
#include "platform/WholeFile.h"

#include <QFileInfo>
#include <QLocale>

#include <limits>

namespace {

constexpr qint16 SendingCheck = 50;   ///< milliseconds between looks at the line while ending
constexpr int LongestEndingWait = 60; ///< such looks: 3.0 seconds

QString AutoDeleteSection() {
    return QStringLiteral("AutoDelete");
}

Outcome Busy() {
    return Outcome::Refused(QStringLiteral("Devices are being configured. Please try again when this is done."));
}

} // namespace

Station::Station(const ProgramFolders& folders, const Machine& machine)
    : ProgramFolder(folders.user)
    , InstallFolder(folders.install)
    , clock(machine.clock)
    , dialogs(machine.dialogs)
    , operationBoxes(dialogs)
    , log(ProgramFolder, clock)
    , ini(ProgramFolder + QStringLiteral("/Tallora.ini"))
    , installation(std::make_unique<model::Installation>())
    , control(machine.line)
    , line(control, ini, dialogs, clock)
    , bus(control, clock, log)
    , database(ProgramFolder, ini, log, clock)
    , copies(database, clock)
    , record(database, log)
    , history(database.History(), record, copies)
    , watch(bus, *installation, record, clock)
    , trace(bus, clock)
    , statistics(bus, clock)
    , router(bus, *installation)
    , hubs(bus, *installation)
    , clocks(bus, *installation, clock)
    , starts(bus, router, *installation, options, clock)
    , hubOption(clocks, options, ini)
    , tickets(database, *installation, log)
    , loaders(database, *installation, options, log)
    , reload(database, loaders, *installation, log)
    , takeover(dialogs, clock, log, folders.install + QStringLiteral("/JetImport"))
    , printers({*installation, router, clock, operationBoxes, log}, ProgramFolder, CounterList())
    , forms({*installation, router, clock, operationBoxes, log}, ProgramFolder, ini, CounterList())
    , check(database, options, clock)
    , hall(database, record, forms, options, clock)
    , inquiry(bus, router, *installation, clock)
    , commissioning({*installation, router, inquiry, hubs, clocks, printers, forms, record, watch, clock, log,
                     CounterList(), [this] { return line.Settings.CommBaud.toInt(); }})
    , run(*installation, options, bus, line, clock)
    , init({*installation, options, tickets, starts, hubs, printers, forms, clock})
    , lineTest(inquiry, *installation)
    , scan(inquiry, *installation)
    , maintenance(
          database, clock, dialogs, [this](const Work& work) { return Alone(work, Stop::Never); },
          [this] { return CopyStore(QStringLiteral("deleting tickets")); })
    , console(bus, *installation, options, clock, dialogs)
    , m_user(machine.user) {
    hubs.OnDevice = clocks.OnDevice = [this](const QString& name) { return BeginDevice(name); };
    JoinRecord();
    JoinHistory();
    const PrinterTransfer* const transfers[] = {&printers, &forms.transfer, &forms.fonts};
    for (const PrinterTransfer* transfer : transfers)
        connect(transfer, &PrinterTransfer::Progress, this, &Station::ShowTransfer);
}

PrinterTables::CounterList Station::CounterList() {
    return [this](qint32 serviceId) { return loaders.CounterListOfService(serviceId); };
}

void Station::ShowTransfer(const QString& printer, const QString& phase, int done, int total) {
    if (total == 0)
        Q_EMIT ProgressChanged(tr("Printer %1: %2").arg(printer, phase), 0, 0);
    else
        Q_EMIT ProgressChanged(tr("Printer %1: %2, %3 of %4").arg(printer, phase).arg(done).arg(total), done, total);
}

Station::~Station() {
    Close();
}

QCoro::Task<Outcome> Station::Alone(Work work, Stop stop) {
    if (m_isBusy)
        co_return Busy();
    m_isBusy = true;
    operationBoxes.Begin();
    m_canCancel = stop == Stop::OnRequest;
    m_isCancelled = false;
    Q_EMIT BusyChanged(true);
    Outcome outcome = Outcome::Cancelled();
    try {
        outcome = co_await work();
    } catch (const Ended&) {
    }
    watch.EndAll();
    m_isBusy = false;
    Q_EMIT ProgressChanged(QString(), 0, 0);
    Q_EMIT BusyChanged(false);
    co_return outcome;
}

void Station::CancelOperation() {
    if (!CanCancel())
        return;
    m_isCancelled = true;
    printers.Cancel();
    forms.transfer.Cancel();
    forms.fonts.Cancel();
}

bool Station::BeginDevice(const QString& name) {
    if (!m_isCancelled)
        Q_EMIT ProgressChanged(tr("Setting %1").arg(name), 0, 0);
    return !m_isCancelled;
}

Outcome Station::Unless(Outcome outcome) const {
    return m_isCancelled ? Outcome::Cancelled() : outcome;
}

// Start and end.

QString Station::UnusedFiles() const {
    if (InstallFolder == ProgramFolder || QFileInfo(InstallFolder).isWritable())
        return {};
    for (const QString& name : {QStringLiteral("Tallora.ini"), QStringLiteral("Harbinet.mdb")}) {
        if (QFileInfo::exists(InstallFolder + u'/' + name)) {
            return tr("The folder %1 cannot be written to. Its settings and its database are not used, but those of "
                      "%2.")
                .arg(InstallFolder, ProgramFolder);
        }
    }
    return {};
}

QCoro::Task<> Station::ReadSettings() {
    RemoveUnfinished(ProgramFolder);
    RemoveUnfinished(ProgramFolder + QStringLiteral("/Data"));
    log.WriteLog(QStringLiteral("-"));
    log.WriteLog(QStringLiteral("---System Startup---"));
    if (const QString unused = UnusedFiles(); !unused.isEmpty())
        co_await dialogs.ShowMessage(BoxKind::Information, unused);
    if (const Result<> readable = ini.Check(); !readable)
        co_await dialogs.ShowMessage(BoxKind::Exclamation, readable.Error());
    options = ReadOptions(ini, log);
    log.WriteLog(QStringLiteral("---System Initialize.."));
    line.LoadCommSettings();
    SetReplyRules(line.Settings.StrictReplies, line.Settings.LocalEcho);
    co_await forms.LoadLetters();
    log.WriteLog(QStringLiteral("before DBOpen.."));
}

QString Station::OfferedStore() {
    const QString path = ProgramFolder + QStringLiteral("/Harbinet.mdb");
    if (!QFileInfo::exists(path)) {
        if (const Result<> made = Database::CreateEmpty(path); !made)
            log.WriteLog(QStringLiteral("%1 could not be made: %2").arg(path, made.Error()), EventLog::Error);
    }
    return path;
}

QCoro::Task<Outcome> Station::PrepareStore(QString path) {
    return takeover.Prepare(path);
}

Outcome Station::OpenStore(const QString& store) {
    record.Flush();
    database.OpenDatabase(store);
    record.Open();
    const Result<> loaded = reload.ReloadAll();
    bus.ResetSequenceNumbers();
    if (const std::optional<qint16> next = tickets.RecoverTickets())
        installation->LastTicketNumber = *next;
    if (!database.IsOpen())
        return Outcome::Failed(database.OpenError());
    return loaded ? Outcome::Done() : Outcome::Failed(loaded.Error());
}

QCoro::Task<Outcome> Station::Start(QString store) {
    const Outcome outcome = OpenStore(store);
    Q_EMIT Loaded();
    const bool opened = co_await line.OpenPort();
    line.SetCommStatus(line.Settings.CommDevice, line.Settings.CommBaud, opened);
    log.WriteLog(opened ? QStringLiteral("Initialize system..") : QStringLiteral("No COM to Initialize system."));
    Q_EMIT Ready();
    log.WriteLog(QStringLiteral("End initialize."));
    co_return outcome;
}

QCoro::Task<> Station::End() {
    if (std::exchange(m_isEnding, true))
        co_return;
    run.Stop();
    if (m_isBusy)
        log.WriteLog(QStringLiteral("The program ends while devices are being configured."), EventLog::Warning);
    bus.Finish();
    for (int look = 0; look < LongestEndingWait && bus.Sending(); ++look)
        co_await clock.DelayMilliseconds(SendingCheck);
    CloseVoice();
    Close();
    watch.EndAll();
    record.Flush();
    database.CloseDatabase();
    database.BackupDatabase();
}

void Station::Close() {
    // Boxes first: what fails because of the end must not open one.
    dialogs.Close();
    bus.Close();
    inquiry.Close();
    clock.Close();
    takeover.Close();
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

// Operations on the model.

QCoro::Task<Outcome> Station::StoreIsReady() {
    if (const Result<> there = database.CheckPlace(); !there) {
        const QString path = database.Path();
        const QString question = tr("%1\n\nOpen it again?").arg(there.Error());
        const bool again = co_await dialogs.AskYesNo(BoxKind::Exclamation, question);
        if (!again)
            co_return Outcome::Cancelled();
        const Outcome opened = OpenStore(path);
        if (!opened.IsDone())
            co_return opened;
    }
    const bool isFree = co_await StoreWait::UntilFree(database.File(), dialogs, clock);
    co_return isFree ? Outcome::Done() : Outcome::Failed(Sqlite::InUseText());
}

QCoro::Task<Outcome> Station::Reloaded() {
    const Outcome ready = co_await StoreIsReady();
    if (!ready.IsDone())
        co_return ready;
    if (const Result<> loaded = reload.ReloadAll(); !loaded)
        co_return Outcome::Failed(loaded.Error());
    Q_EMIT ModelChanged();
    co_return Outcome::Done();
}

QCoro::Task<Outcome> Station::RefreshModel() {
    if (m_isBusy)
        co_return Busy();
    co_return co_await Reloaded();
}

QCoro::Task<Outcome> Station::ReloadDirections() {
    if (m_isBusy)
        co_return Busy();
    const Outcome ready = co_await StoreIsReady();
    if (!ready.IsDone())
        co_return ready;
    if (const Result<> loaded = reload.ReloadObjectsAndDirections(); !loaded)
        co_return Outcome::Failed(loaded.Error());
    Q_EMIT ModelChanged();
    co_return Outcome::Done();
}

Outcome Station::StoreDirections(DirectionMatrix& directions) {
    if (const Result<> updated = directions.UpdateDataDir(database); !updated)
        return Outcome::Failed(updated.Error());
    if (const Result<> loaded = reload.ReloadDirections(); !loaded)
        return Outcome::Failed(loaded.Error());
    Q_EMIT HallChanged();
    return Outcome::Done(BoxKind::Plain, QStringLiteral("Update Done."));
}

QCoro::Task<> Station::RefreshIfChanged() {
    if (m_isBusy || !reload.IsStoreChanged())
        co_return;
    const int unknown = reload.Refresh().ValueOr(-1);
    if (unknown < 0)
        co_return;
    Q_EMIT ModelChanged();
    // The boxes come last: nobody must see a model that is half new while one of them stands open.
    for (int i = 0; i < unknown; ++i) {
        co_await dialogs.ShowMessage(
            BoxKind::Exclamation,
            QStringLiteral("Warning, Queue system has changed, you must restart program to apply these changes."));
    }
}

QCoro::Task<Outcome> Station::ActiveAll() {
    run.ResetObjects();
    co_return Outcome::Done(BoxKind::Information, QStringLiteral("All queue objects are marked as active."));
}

void Station::ActivateObject(qint16 object) {
    model::QObject& activated = installation->Object(object);
    if (activated.State == 0)
        activated.Changed = true;
}

void Station::MarkDrawn() {
    for (model::QObject& object : installation->LoadedObjects())
        object.Dirty = true;
}

// Settings.

QCoro::Task<bool> Station::ChoosePort(QString name, QString baud) {
    return line.ChoosePort(name, baud);
}

void Station::SetReplyRules(bool strictReplies, bool localEcho) {
    bus.StrictReplies = line.Settings.StrictReplies = strictReplies;
    bus.LocalEcho = line.Settings.LocalEcho = localEcho;
}

Outcome Station::SaveReplyRules(bool strictReplies, bool localEcho) {
    SetReplyRules(strictReplies, localEcho);
    if (line.SaveCommSettings())
        return Outcome::Done();
    return Outcome::Failed(tr("The settings could not be written to %1.").arg(ini.IniPath));
}

void Station::UsePort(const QString& name, const QString& baud) {
    line.Settings.CommDevice = line.Settings.CommName = name;
    line.Settings.CommBaud = baud;
}

Outcome Station::SaveOptions(const Options& edited, const QString& resetAt) {
    options = edited;
    options.ResetAt = ResetTime(resetAt);
    Q_EMIT HallChanged();
    if (WriteOptions(options, resetAt, ini))
        return Outcome::Done();
    return Outcome::Failed(tr("The settings could not be written to %1.").arg(ini.IniPath));
}

void Station::SaveSetting(const QString& section, const QString& key, const QString& value) {
    if (!ini.WriteIni(section, key, value))
        log.WriteLog(tr("The settings could not be written to %1.").arg(ini.IniPath), EventLog::Error);
}

void Station::SetAutoDelete(bool isOn) {
    options.AutoDeleteEnable = isOn;
    SaveSetting(AutoDeleteSection(), QStringLiteral("Enable"), isOn ? QStringLiteral("yes") : QStringLiteral("no"));
}

void Station::SetAutoDeleteYear(const QString& year) {
    // In full: a number of many digits must not come out in powers of ten.
    options.AutoDeleteFromYear = QString::number(number::LeadingDecimal(year), 'f', QLocale::FloatingPointShortest);
    SaveSetting(AutoDeleteSection(), QStringLiteral("FromYear"), year);
}
