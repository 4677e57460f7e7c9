#pragma once

#include <QMainWindow>

#include <memory>

class LinePanels;
class OperationStatus;
class QLabel;
class QTimer;
class ShellIcon;
class Station;
class frmSysTray;
namespace Ui {
class frmMain;
}

/// The main window: menu, run switch, object map, and the state of the line. Made hidden; it comes up from the
/// notification area, to which minimising sends it back. Where the desktop has none it is minimised like any window.
class frmMain : public QMainWindow {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    /// @param shell the notification area, none where the desktop has none.
    /// @param website address of the maker's web site; without one nothing offers it.
    frmMain(Station& station, std::unique_ptr<ShellIcon> shell, const QString& website);
    ~frmMain() override;

    /// Shows device, speed and state of the line. Empty texts leave what is shown.
    void SetCommStatus(const QString& device, const QString& baud, bool opened);
    /// Closes the line and shows it.
    void CloseComm();
    /// Started, the menu Setup and what changes the database are out of use.
    void SetMenuStatus(bool running);
    /// Adds characters of the bus to the log box, which is emptied first above 300 characters.
    void AddLog1(const QString& text);

    /// The gauge of the initialization run: shown, moved, hidden again.
    void presetGauge(int min, int max);
    void UpdateGauge(int value);
    void closeGauge();

    /// Brings the window to the front, from wherever it is.
    void Open();

    /// Takes the icon out of the notification area.
    void UnloadTray();

Q_SIGNALS:
    /// The setup window is wanted in front.
    void SetupWanted();
    void PortChoiceWanted();
    void TicketDesignWanted();
    void TestConsoleWanted();
    void BusMonitorWanted();
    void CommissioningWanted();
    void RecordWanted();
    /// The user wants to see what happened to the installation.
    void HistoryWanted();
    void LineTestWanted();
    void MaintenanceWanted();
    void OptionsWanted();
    void AboutWanted();
    void HelpWanted();
    /// The program is to end.
    void ExitWanted();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void InitPictures();
    void InitScrolling();
    void InitComm();
    void InitTimers();
    void InitMenus();
    void LoadSystray(std::unique_ptr<ShellIcon> shell);
    void ShowRunning(bool running);
    void ShowBusy(bool busy);
    void ShowCancelledBefore();
    void CountSecond();
    /// Moves the map to where the scroll bars say; in the middle where there is room for all of it.
    void PlaceMap();
    void ScrollTo(const QRect& place);
    void ShowInfo(int object);
    void ShowInfoLines(const QStringList& lines);
    void Exit();
    void AskToExit();
    void OpenWebsite();
    void InitAllObjects();

    Station& m_station;
    const QString m_website;
    std::unique_ptr<Ui::frmMain> m_ui;
    std::unique_ptr<LinePanels> m_linePanels;
    std::unique_ptr<frmSysTray> m_frmSysTray;
    OperationStatus* m_status = nullptr;
    QLabel* m_timeConnect;
    QTimer* m_timer2;
    qint16 m_infoCountdown = 0; ///< seconds until Q-Info closes, -1 if it stays
};
