#pragma once

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "core/Installation.h"
#include "core/Options.h"
#include "database/Database.h"
#include "database/JetTakeover.h"
#include "database/Loaders.h"
#include "database/Reload.h"
#include "database/StoreCopies.h"
#include "database/StoreTemplate.h"
#include "database/TicketRecords.h"
#include "hubs/DeviceClocks.h"
#include "hubs/DeviceStart.h"
#include "hubs/HubConfig.h"
#include "hubs/HubOption.h"
#include "hubs/HubRouter.h"
#include "link/Bus.h"
#include "link/BusTrace.h"
#include "link/CommLine.h"
#include "link/LineStatistics.h"
#include "platform/Line.h"
#include "platform/Outcome.h"
#include "platform/PlacedDialogs.h"
#include "printers/PrinterConfig.h"
#include "printers/TicketForms.h"
#include "station/AddressScan.h"
#include "station/Commissioning.h"
#include "station/DataMaintenance.h"
#include "station/FoundDevice.h"
#include "station/HallState.h"
#include "station/InitRun.h"
#include "station/Inquiry.h"
#include "station/InstallationCheck.h"
#include "station/LineTest.h"
#include "station/ListTransfer.h"
#include "station/LoadWatch.h"
#include "station/ProgramFolders.h"
#include "station/RunControl.h"
#include "station/SiteHistory.h"
#include "station/TestConsole.h"

#include <QObject>

class Clock;
class Dialogs;
class DirectionMatrix;

/// The name of the user whom this program runs for.
QString UserOfMachine();

/// The program without its windows: owns settings, model, line, database and the operations on them. Made once, by a
/// front end.
///
/// A front end looks at what is const here, starts operations and listens to signals; it writes no state of the station
/// itself. An operation gives an `Outcome`, whose box the front end shows; questions and messages in the middle of one
/// go through `Dialogs`. Those that configure devices run one at a time: while one of them runs (`IsBusy`), a second
/// one is refused, and so is a reload of services or objects. The end of the program ends an operation where it stands.
class Station : public ::QObject {
    Q_OBJECT

public:
    /// What the machine gives; all must outlive the station.
    struct Machine {
        Clock& clock;
        ::Line& line;
        Dialogs& dialogs;
        QString user = UserOfMachine(); ///< who works here, for the record of loads
    };

    Station(const ProgramFolders& folders, const Machine& machine);
    ~Station() override;

    /// The folder of settings, log, backups and data files.
    const QString ProgramFolder;
    /// The folder of the executable.
    const QString InstallFolder;
    Clock& clock;
    Dialogs& dialogs;

    // What there is to see.

    const model::Installation& Model() const { return *installation; }
    const Options& Settings() const { return options; }
    const CommLine& Line() const { return line; }
    /// The line is open at this moment; `Line` tells it once everybody else knows.
    bool LineIsOpen() const { return control.IsOpen(); }
    const Bus& Master() const { return bus; }
    const DeviceStart& Starts() const { return starts; }
    const RunControl& Run() const { return run; }
    const InitRun& Init() const { return init; }
    /// An operation that configures devices runs.
    bool IsBusy() const { return m_isBusy; }
    /// What the store holds that cannot be loaded or sent.
    std::vector<Finding> FindFaults() { return check.FindFaults(); }

    /// What each device of the store is to hold, and how that stands to what it was given; fails if the store cannot be
    /// read.
    Result<std::vector<DeviceState>> Hall();
    /// What was loaded where.
    const LoadRecord& Record() const { return record; }
    /// What the last commissioning has made of each device.
    const Commissioning& LastCommissioning() const { return commissioning; }

    /// What happened to the installation: edits, loads, copies of the store.
    const SiteHistory& History() const { return history; }
    /// The act that `UndoEdit`, `RedoEdit` take next, in words; empty if there is none.
    QString NextUndo() const;
    QString NextRedo() const;

    EventLog& Log() { return log; }
    /// The frames of the line; its reader may empty it.
    BusTrace& Trace() { return trace; }
    /// What the devices made of the commands since the start.
    const LineStatistics& Statistics() const { return statistics; }
    /// The store, for the grids and the links that an installer edits. Whoever changes it calls `NoteStoreChanged` or
    /// an operation that reloads.
    Database& Store() { return database; }
    /// Ticket forms as documents: options, compilation, files. Sending them is an operation of the station.
    TicketForms& Forms() { return forms; }
    TestConsole& Console() { return console; }
    DataMaintenance& Maintenance() { return maintenance; }

    // Start and end.

    /// Begins the log and reads the settings and the letters; what is wrong with the letter files is shown in boxes.
    /// Comes before everything else.
    QCoro::Task<> ReadSettings();

    /// Makes a file that the user chose ready to be opened, see `JetTakeover::Prepare`.
    QCoro::Task<Outcome> PrepareStore(QString path);

    /// Makes a new store out of another one, see `StoreTemplate`, and takes over the forms and logos that lie beside
    /// that one, where this program has none of their names. The outcome's text says what was made.
    Outcome MakeStoreFrom(const QString& source, const QString& target, StoreTemplate::Shift shift);

    /// The store that is offered at the start, Harbinet.mdb of the program folder; an empty one is made where it is
    /// missing. What goes wrong with that is logged.
    QString OfferedStore();

    /// Opens the store and loads the model. @return failed if it cannot be opened, with the reason; the station then
    /// runs without a store.
    Outcome OpenStore(const QString& store);

    /// Opens the store, loads the model and opens the line. Emits `Loaded` and `Ready` on the way. @return like
    /// `OpenStore`; what is wrong with the line is shown in a box.
    QCoro::Task<Outcome> Start(QString store);

    /// Ends the station: lets no further command begin, waits up to 3 seconds for the one on the line, ends every
    /// operation, tells the voice program, closes the store and backs it up. Nothing can be started afterwards. A
    /// second call does nothing.
    QCoro::Task<> End();

    // Operations on the model.

    /// Reloads the model for the setup window's refresh. Refused while an operation runs, failed with the store closed
    /// or held by another program: the model then stays. A store that was moved or replaced can be opened again.
    QCoro::Task<Outcome> RefreshModel();

    /// Reads objects and directions anew, without first services; the objects' rings are empty after it.
    /// Ends like `RefreshModel` where it cannot be done.
    QCoro::Task<Outcome> ReloadDirections();

    /// Stores a matrix of directions and loads it into the model.
    Outcome StoreDirections(DirectionMatrix& directions);

    /// Takes the last edit of the store back, does the last one again that was taken back; see `EditHistory`. The model
    /// follows like after an edit, directions at once. Emits `RowsChanged`.
    Outcome UndoEdit();
    Outcome RedoEdit();

    /// Makes the description what it was before an edit, or what a copy of the store holds, as one act that can be
    /// undone. The store is copied first; where it cannot be, the user is asked.
    QCoro::Task<Outcome> GoBackTo(SiteEvent event);

    /// Deletes all rows, see `Database::EmptyDatabase`; the store is copied first like there. The model is not touched.
    QCoro::Task<Outcome> EmptyStore();

    /// Imports a list, see `lists::Take`; the store is copied first like there. The outcome says what was done or what
    /// stood in the way.
    QCoro::Task<Outcome> ImportList(lists::Incoming incoming);
    /// Looks what that would do.
    lists::Import PreviewList(const lists::Incoming& incoming) { return lists::Preview(database, incoming); }
    /// Writes a list into a file, see `lists::Export`. @return the outcome with its box.
    Outcome ExportList(lists::List list, const QString& path);

    /// Copies the store before something that cannot be undone. @param before what is about to be done, see
    /// `StoreCopies`. @return false if it cannot be copied and the user does not want to go on without.
    QCoro::Task<bool> CopyStore(QString before);

    /// The store is ahead of the model: `RefreshIfChanged` will read it.
    void NoteStoreChanged();
    /// A form or a logo has been saved.
    void NoteFormsChanged() { Q_EMIT HallChanged(); }

    /// Brings the model up to date if the setup window has changed the store, as far as that is possible while the
    /// system runs. While an operation reads the model nothing happens, and the change is still to be taken.
    QCoro::Task<> RefreshIfChanged();

    /// Marks all objects as active.
    QCoro::Task<Outcome> ActiveAll();
    /// Marks one object as active, unless its state says otherwise. @param object index in `QObjects`.
    void ActivateObject(qint16 object);
    /// The map has drawn all objects.
    void MarkDrawn();

    // Operations on devices.

    /// Lets the running operation end behind the command that is on the line; what a device must still be told is sent.
    /// Its outcome is cancelled, or that of a form whose transfer failed.
    void CancelOperation();
    /// The running operation can be ended so. The initialization has a way of its own, and a reset none.
    bool CanCancel() const { return m_isBusy && m_canCancel; }

    /// Asks an object for a sign of life; the outcome's text says whether it answered ("True", "False"), or that the
    /// model does not know it. May run beside another operation.
    /// @param number   its number, by which the model knows it; without one its address is asked first.
    /// @param address  its address; nothing is sent without one.
    QCoro::Task<Outcome> TestConnect(std::optional<qint32> number, std::optional<qint32> address);

    /// Reloads the model and loads every printer.
    QCoro::Task<Outcome> SetServiceConfig();

    /// Loads every printer from the model as it stands.
    QCoro::Task<Outcome> ConfigPrinters();

    /// Reloads the model and sends the configuration block to every hub. What the block cannot carry is the outcome's
    /// text, and nothing is sent.
    QCoro::Task<Outcome> SetHubs();

    /// Sends every hub its member list, names each that fails in a box, and says that it is done, whatever the outcome.
    /// A member that no list can name is the outcome's text, and nothing is sent.
    QCoro::Task<Outcome> InitHubs();

    /// Sets the clocks of all hubs, of all printers, and says that it is done, whoever answered.
    QCoro::Task<Outcome> SetHubClocks();
    QCoro::Task<Outcome> SetPrinterClocks();

    /// Sends the hubs' counter option as typed, and saves it if all answered; see `HubOption`.
    QCoro::Task<Outcome> SetHubCounter(QString typed);

    /// Runs the initialization over all objects and starts the system. The outcome names who was silent and has no
    /// text.
    QCoro::Task<Outcome> InitAllObjects();
    /// Ends the initialization, and every later one and every reset, after the object that is at work.
    void CancelInit() { init.Cancel(); }

    /// Resets all devices, forgets all tickets, lets all numbers begin anew, and says so. Asks nothing.
    QCoro::Task<Outcome> ResetSystem();

    /// Asks every device in `rounds` rounds and says how it is reached, see `LineTest`; what was found is in `Tested`,
    /// also while it runs. The outcome has a text only where the line is closed or went away.
    QCoro::Task<Outcome> TestLine(int rounds);
    const LineTest::Result& Tested() const { return lineTest.Found(); }

    /// Asks every address whether somebody is there, see `AddressScan`; ends like `TestLine`.
    QCoro::Task<Outcome> ScanAddresses(bool behindHubs);
    const AddressScan::Result& Scanned() const { return scan.Found(); }

    /// Puts a device that was found into the store, see `AddFoundDevice`. The model follows with `RefreshIfChanged`.
    Outcome AddScanned(const FoundDevice& device);

    /// Reloads the model, asks every device and loads what is not in step, what was chosen, or nothing; see
    /// `Commissioning`. @param chosen what `What::Selected` loads.
    QCoro::Task<Outcome> CommissionHall(Commissioning::What what, std::set<Commissioning::Choice> chosen = {});

    /// Starts or stops the system.
    void SetRunning(bool running) { run.SetRunning(running); }

    // Ticket forms.

    void ChooseFamily(const PrinterFamily& family) { forms.ChooseFamily(family); }

    /// Compiles a form for the chosen family and sends it to one printer, to every printer; see `TicketForms`.
    QCoro::Task<Outcome> SendForm(qint16 object, TicketDocument document, QString formPath, Logos logos);
    QCoro::Task<Outcome> SendFormToAll(TicketDocument document, QString formPath, Logos logos);
    /// Lets the running transfer of a form end as if its next frame had failed.
    void CancelForm() { forms.transfer.Cancel(); }

    /// Loads letters into every printer and says that it is done. Sets the family of printers.
    QCoro::Task<Outcome> LoadVniFont(LetterSet letters);

    // Settings.

    /// Takes another port and speed: saves them and opens the line.
    QCoro::Task<bool> ChoosePort(QString name, QString baud);
    /// How answers are taken, see `Bus`; `ChoosePort` saves it.
    void SetReplyRules(bool strictReplies, bool localEcho);
    /// The same for good, with the line left as it is. @return failed if they could not be written; they hold for this
    /// run then.
    Outcome SaveReplyRules(bool strictReplies, bool localEcho);
    /// Takes them for this run only, before `Start`.
    void UsePort(const QString& name, const QString& baud);
    void CloseLine() { line.CloseComm(); }

    /// Takes edited options into memory and writes them. @param resetAt the time of the reset, as the user typed it.
    Outcome SaveOptions(const Options& edited, const QString& resetAt);
    /// The two settings of the automatic delete, each written at once. @param year as the user typed it.
    void SetAutoDelete(bool isOn);
    void SetAutoDeleteYear(const QString& year);

Q_SIGNALS:
    /// The store is open and the model loaded; the line comes next.
    void Loaded();
    /// The start is through: the first window is to be shown.
    void Ready();
    /// Services or objects have been read anew.
    void ModelChanged();
    /// What `Hall` tells may have changed.
    void HallChanged();
    /// There is something else to undo or to redo, or in the history.
    void EditsChanged();
    /// Rows of the store were changed by other means than the grids. The arguments name one of them: its table, key and
    /// a column; the table is empty if none is there any more.
    void RowsChanged(const QString& table, qint64 key, const QString& field);
    /// Comes exactly when `IsBusy` changes.
    void BusyChanged(bool busy);
    /// What the running operation is at, for the status bar; an empty text when it has ended.
    /// @param total steps of which `done` are done; 0 where nobody knows.
    void ProgressChanged(const QString& text, int done, int total);

protected:
    PlacedDialogs operationBoxes; ///< of the operation that runs alone
    EventLog log;
    IniUtility ini;
    Options options;
    const std::unique_ptr<model::Installation> installation;

    ::Line& control;
    CommLine line;
    Bus bus;
    Database database;
    StoreCopies copies;
    LoadRecord record;
    SiteHistory history;
    LoadWatch watch; ///< before those that measure: it writes to the store before a frame goes out
    BusTrace trace;
    LineStatistics statistics;
    HubRouter router;
    HubConfig hubs;
    DeviceClocks clocks;
    DeviceStart starts;
    HubOption hubOption;

    TicketRecords tickets;
    Loaders loaders;
    Reload reload;
    JetTakeover takeover;

    PrinterConfig printers;
    TicketForms forms;
    InstallationCheck check;
    HallState hall;
    Inquiry inquiry;
    Commissioning commissioning;
    RunControl run;
    InitRun init;
    LineTest lineTest;
    AddressScan scan;
    DataMaintenance maintenance;
    TestConsole console;

    /// Ends every running operation where it stands: its next wait throws `Ended`.
    void Close();
    /// Tells the voice program, if there is to be one, that this program ends. Never waits.
    void CloseVoice();

private:
    using Work = std::function<QCoro::Task<Outcome>()>;

    /// Whether `CancelOperation` ends an operation.
    enum class Stop { OnRequest, Never };

    /// The one runner of operations that configure devices.
    QCoro::Task<Outcome> Alone(Work work, Stop stop = Stop::OnRequest);
    /// Tells that a device is at its turn. @return false if the user wants no more.
    bool BeginDevice(const QString& name);
    /// An outcome, unless the user has ended the operation.
    Outcome Unless(Outcome outcome) const;
    /// Writes one setting; a failure is in the log.
    void SaveSetting(const QString& section, const QString& key, const QString& value);

    /// Says that files beside the executable are not used, where a user would look for them; empty if there are none.
    QString UnusedFiles() const;
    QCoro::Task<Outcome> Reloaded();
    /// Waits for a store that another program holds, and offers to open one again that was moved or replaced.
    QCoro::Task<Outcome> StoreIsReady();
    QCoro::Task<Outcome> LoadPrinters();
    PrinterTables::CounterList CounterList();
    void JoinRecord();
    /// Waits up to 10 seconds for the store to take entries of the record, unless the user does without.
    QCoro::Task<bool> CanRecord();
    void JoinHistory();
    Result<> UsableStore() const;
    Outcome Stepped(const Result<EditHistory::Step>& step);
    /// Lets everybody follow rows that were changed past the grids.
    void FollowRows(const std::vector<RowChange>& rows);
    QString SourceOf(const LoadEntry& entry) const;
    void ShowTransfer(const QString& printer, const QString& phase, int done, int total);

    const QString m_user;
    bool m_isBusy = false;
    bool m_canCancel = false;
    bool m_isCancelled = false;
    bool m_isEnding = false;
    bool m_goesUnrecorded = false; ///< the user commissions although nothing can be written down
};
