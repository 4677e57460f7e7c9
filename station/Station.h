#pragma once

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "core/Installation.h"
#include "core/Options.h"
#include "database/Database.h"
#include "database/Loaders.h"
#include "database/Reload.h"
#include "database/TicketRecords.h"
#include "hubs/DeviceClocks.h"
#include "hubs/DeviceStart.h"
#include "hubs/HubConfig.h"
#include "hubs/HubOption.h"
#include "hubs/HubRouter.h"
#include "link/Bus.h"
#include "link/BusTrace.h"
#include "link/CommLine.h"
#include "platform/SerialControl.h"
#include "printers/PrinterConfig.h"
#include "printers/TicketForms.h"
#include "station/InitRun.h"
#include "station/InstallationCheck.h"
#include "station/RunControl.h"

#include <QObject>

class Clock;
class Dialogs;

/// The program without its windows: owns settings, model, line, database and the operations on them. Made once, at
/// start.
///
/// A window gets a reference, starts operations and listens to signals; it may go away while an operation runs.
class Station : public ::QObject {
    Q_OBJECT

public:
    /// @param programFolder the folder of settings, log, backups and data files.
    /// @param clock, dialogs  must outlive the station.
    Station(QString programFolder, Clock& clock, Dialogs& dialogs);
    ~Station() override;

    const QString ProgramFolder;
    Clock& clock;
    Dialogs& dialogs;

    EventLog log;
    IniUtility ini;
    Options options;
    const std::unique_ptr<model::Installation> installation;

    SerialControl control;
    CommLine line;
    Bus bus;
    BusTrace trace;
    HubRouter router;
    HubConfig hubs;
    DeviceClocks clocks;
    DeviceStart starts;
    HubOption hubOption;

    Database database;
    TicketRecords tickets;
    Loaders loaders;
    Reload reload;

    PrinterConfig printers;
    TicketForms forms;
    InstallationCheck check;
    RunControl run;
    InitRun init;

    /// An operation that reads the model over a longer time runs. `RefreshModel` and further such operations are
    /// refused meanwhile, so that no device gets what was meant for another.
    bool IsBusy() const { return m_busy || forms.IsRunning(); }

    /// Reloads the model for the setup window's refresh. With the database closed, or while an operation runs, a box
    /// says so and the model stays.
    QCoro::Task<> RefreshModel();

    /// Reads objects and directions anew, without first services and hub table; the objects' rings are empty after it.
    /// Ends like `RefreshModel` where it cannot be done.
    QCoro::Task<> ReloadDirections();

    /// Asks an object for a sign of life and shows in a box whether it answered ("True", "False"), or that the model
    /// does not know it.
    /// @param number   its number, by which the model knows it; without one its address is asked first.
    /// @param address  its address; nothing is sent without one.
    QCoro::Task<> TestConnect(std::optional<qint32> number, std::optional<qint32> address);

    /// Reloads the model, loads every printer and shows the outcome in a box.
    QCoro::Task<> SetServiceConfig();

    /// Reloads the model, sends the configuration block to every hub and shows the outcome in a box. What the block
    /// cannot carry is named in a box and nothing is sent.
    QCoro::Task<> SetHubs();

    /// Sets the clocks of all hubs, of all printers, and says that it is done, whoever answered.
    QCoro::Task<> SetHubClocks();
    QCoro::Task<> SetPrinterClocks();

    /// Loads every printer from the model as it stands and shows the outcome in a box.
    QCoro::Task<> ConfigPrinters();

    /// Sends every hub its member list, names each that fails in a box, and says that it is done, whatever the outcome.
    QCoro::Task<> InitHubs();

    /// Runs the initialization over all objects. @return false if it was refused because another operation runs.
    QCoro::Task<bool> InitAllObjects();

    /// Resets all devices, forgets all tickets, lets all numbers begin anew, and says so. Asks nothing.
    QCoro::Task<> ResetSystem();

    /// Marks all objects as active and says so.
    QCoro::Task<> ActiveAll();

    /// Brings the model up to date if the setup window has changed the store, as far as that is possible while the
    /// system runs. While an operation reads the model nothing happens, and the change is still to be taken.
    QCoro::Task<> RefreshIfChanged();

    /// Loads letters into every printer and says that it is done. @param zoneRich sets the family of printers.
    QCoro::Task<> LoadVniFont(bool zoneRich);

    /// Tells the voice program, if there is to be one, that this program ends. Never waits.
    void CloseVoice();

    /// Ends every running operation: commands fail, waits and boxes end. Nothing can be started afterwards.
    void Close();

Q_SIGNALS:
    /// Services or objects have been read anew.
    void ModelChanged();
    /// Every command and every wait will end at once from now on.
    void Closing();
    /// A long operation has begun or ended.
    void BusyChanged(bool busy);
    /// What the running operation is at, for the status bar; empty when it has ended.
    void ProgressChanged(const QString& text);

private:
    class Operation;

    QCoro::Task<> ExplainBusy();
    QCoro::Task<> ExplainClosed();
    QCoro::Task<bool> ReloadOrExplain();
    QCoro::Task<> ShowAnswered(bool answered);

    bool m_busy = false;
};
