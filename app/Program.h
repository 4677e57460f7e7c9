#pragma once

#include <QObject>

#include <qcoro/qcorotask.h>

#include <memory>

class Clock;
class Dialogs;
class JetTakeover;
class Station;
class frmQueue;
class frmSetPort;

/// Start and end of the program, and the only place that knows its windows.
class Program : public QObject {
    Q_OBJECT

public:
    /// @param programFolder the folder of settings, log, database and data files.
    /// @param clock, dialogs  must outlive the program.
    Program(QString programFolder, Clock& clock, Dialogs& dialogs);
    ~Program() override;

    /// Reads the settings, lets the user pick the database, loads the installation, opens the line and shows the setup
    /// window. Cancelling the choice ends the program without a message.
    QCoro::Task<> Main();

    /// The one way out: waits up to 3 s for a command on the line, ends what still runs, closes the database, takes the
    /// day's backup. `Ended` comes at its end. A second call does nothing.
    QCoro::Task<> ExitSystem();

    Station& TheStation() { return *m_station; }

Q_SIGNALS:
    /// Nothing is left to do: the process may end.
    void Ended();

private:
    QCoro::Task<QString> ChooseDatabase();
    void InstallEmptyDatabase(const QString& path);
    void ShowSetupWindow();
    void ShowPortWindow();
    void ShowTicketDesigner();

    Clock& m_clock;
    Dialogs& m_dialogs;
    std::unique_ptr<Station> m_station;
    std::unique_ptr<JetTakeover> m_takeover;
    std::unique_ptr<frmQueue> m_setupWindow;
    std::unique_ptr<frmSetPort> m_portWindow;
    bool m_exiting = false;
};
