#pragma once

#include "app/ProgramFolders.h"
#include "platform/RegistryStore.h"
#include "widgets/ShellIcon.h"

#include <QObject>
#include <QPointer>

#include <qcoro/qcorotask.h>

#include <memory>
class Clock;
class Dialogs;
class JetTakeover;
class QWidget;
class DataMaintenance;
class Station;
class TestConsole;
class frmBusMonitor;
class frmMain;
class frmQueue;
class frmSetPort;
class frmTest;

/// Start and end of the program, and the only place that knows its windows.
class Program : public QObject {
    Q_OBJECT

public:
    /// @param clock, dialogs  must outlive the program.
    /// @param shell the notification area, none where the desktop has none.
    Program(const ProgramFolders& folders, Clock& clock, Dialogs& dialogs, std::unique_ptr<ShellIcon> shell = nullptr);
    ~Program() override;

    /// Reads the settings, lets the user pick the database, loads the installation, opens the line and shows the setup
    /// window. Cancelling the choice ends the program without a message.
    QCoro::Task<> Main();

    /// Closes the windows, and ends the program unless one of them has something to settle first.
    void Leave();

    /// The one way out: waits up to 3 s for a command on the line, ends what still runs, closes the database, takes the
    /// day's backup. `Ended` comes at its end. A second call does nothing.
    QCoro::Task<> ExitSystem();

    Station& TheStation() { return *m_station; }

    /// F1 opens the manual from every window.
    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// Nothing is left to do: the process may end.
    void Ended();

private:
    QCoro::Task<QString> ChooseDatabase();
    void InstallEmptyDatabase(const QString& path);
    void MakeMainWindow();
    void MakeSetupWindow();
    void ShowPortWindow(QWidget& parent);
    void ShowTicketDesigner(QWidget& parent);
    void ShowTestConsole();
    void ShowBusMonitor();
    /// @param page of the manual, without its ending.
    void ShowHelp(const QString& page);
    /// The page about the window that the user is in.
    static QString HelpPage();

    const ProgramFolders m_folders;
    Clock& m_clock;
    Dialogs& m_dialogs;
    std::unique_ptr<Station> m_station;
    std::unique_ptr<JetTakeover> m_takeover;
    const RegistryStore m_registry;
    std::unique_ptr<DataMaintenance> m_maintenance;
    std::unique_ptr<TestConsole> m_console;
    std::unique_ptr<ShellIcon> m_shell; ///< until the main window takes it
    std::unique_ptr<frmMain> m_mainWindow;
    std::unique_ptr<frmQueue> m_setupWindow;
    std::unique_ptr<frmSetPort> m_portWindow;
    QPointer<frmTest> m_testWindow;
    QPointer<frmBusMonitor> m_busMonitor;
    bool m_exiting = false;
};
