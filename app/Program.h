#pragma once

#include "platform/RegistryStore.h"
#include "platform/SerialControl.h"
#include "station/ProgramFolders.h"
#include "widgets/ShellIcon.h"
#include "widgets/WindowPlaces.h"

#include <QObject>
#include <QPointer>

#include <qcoro/qcorotask.h>

#include <memory>

class Clock;
class Dialogs;
class QWidget;
class Station;
class frmBusMonitor;
class frmCommission;
class frmHistory;
class frmLineTest;
class frmMain;
class frmQueue;
class frmRecord;
class frmSetPort;
class frmTest;

/// The windows of the program: made, joined to each other and to the station, and closed.
class Program : public QObject {
    Q_OBJECT

public:
    /// @param clock, dialogs  must outlive the program.
    /// @param shell the notification area, none where the desktop has none.
    Program(const ProgramFolders& folders, Clock& clock, Dialogs& dialogs, std::unique_ptr<ShellIcon> shell = nullptr);
    ~Program() override;

    /// Starts the station on a database, and shows the setup window. @param store the one that the user has picked
    /// already; if it is empty, or cannot be used, the user picks one, and cancelling that ends the program without a
    /// message.
    QCoro::Task<> Main(QString store = {});

    /// The database with which the user wants to begin anew, once this has ended; empty for none.
    QString NextStore() const { return m_nextStore; }

    /// Brings what the user sees of the program to the front.
    void ShowUp();

    /// Closes the windows, and ends the program unless one of them has something to settle first.
    void Leave();

    /// The one way out: closes the windows and ends the station. `Ended` comes at its end. A second call does nothing.
    QCoro::Task<> ExitSystem();

    Station& TheStation() { return *m_station; }

    /// F1 opens the manual from every window.
    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// Nothing is left to do: the process may end.
    void Ended();

private:
    QCoro::Task<QString> ChooseDatabase(QString store);
    /// The windows that can be open beside the two that are always there.
    std::vector<QWidget*> OtherWindows() const;
    void MakeMainWindow();
    void MakeSetupWindow();
    void ShowPortWindow(QWidget& parent);
    void ShowTicketDesigner(QWidget& parent);
    void ShowTestConsole();
    void ShowBusMonitor();
    void ShowCommissioning();
    void ShowRecord();
    void ShowHistory();
    void ShowLineTest();
    /// @param page of the manual, without its ending.
    void ShowHelp(const QString& page);
    /// The page about the window that the user is in.
    static QString HelpPage();

    const ProgramFolders m_folders;
    Dialogs& m_dialogs;
    WindowPlaces m_places;
    SerialControl m_port;
    std::unique_ptr<Station> m_station;
    const RegistryStore m_registry;
    std::unique_ptr<ShellIcon> m_shell; ///< until the main window takes it
    std::unique_ptr<frmMain> m_mainWindow;
    std::unique_ptr<frmQueue> m_setupWindow;
    std::unique_ptr<frmSetPort> m_portWindow;
    QPointer<frmTest> m_testWindow;
    QPointer<frmBusMonitor> m_busMonitor;
    QPointer<frmCommission> m_commissioning;
    QPointer<frmHistory> m_history;
    QPointer<frmRecord> m_record;
    QPointer<frmLineTest> m_lineTest;
    QString m_nextStore;
    bool m_isExiting = false;
};
