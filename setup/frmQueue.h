#pragma once

#include "platform/Outcome.h"
#include "station/InstallationCheck.h"
#include "station/ListTransfer.h"
#include "widgets/LinePanels.h"

#include <QMainWindow>

#include <qcoro/qcorotask.h>

#include <memory>
#include <optional>

class DataGrid;
class OperationStatus;
class QLabel;
class QPushButton;
class SetupPage;
class SetupRecords;
class Station;
namespace Ui {
class frmQueue;
}

/// The setup window: edits the database directly and starts the commands that set devices up.
///
/// The databases that were open last are kept in Windows.ini of the program folder.
class frmQueue : public QMainWindow {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmQueue(Station& station, QWidget* parent = nullptr);
    ~frmQueue() override;

    /// Shows device, speed and state of the line in the status bar; empty texts leave what is shown.
    void SetCommStatus(const QString& device, const QString& baud, bool opened);

    /// Adds characters of the bus to the log box.
    void AddLog1(const QString& text);

    /// Brings the tab of a grid to the front.
    void BringToFront(const DataGrid& grid);

    /// The database that the program is to begin anew with once this window is closed; empty for none.
    QString NextStore() const { return m_nextStore; }
    /// The user has thought better of it.
    void ForgetNextStore() { m_nextStore.clear(); }

Q_SIGNALS:
    /// The user wants to choose the serial port.
    void PortChoiceWanted();
    /// The user wants to set the hubs' counter option.
    void HubOptionWanted();
    /// The user wants to bring the hall into step.
    void CommissioningWanted();
    /// The user wants to see what happened to the installation.
    void HistoryWanted();
    /// The user wants to see the main window.
    void MainWindowWanted();
    /// The user wants to design a ticket form for the family of printers that is chosen now.
    void TicketDesignWanted();
    /// The user wants to go on with another database: `NextStore`.
    void LeaveWanted();
    /// The user has closed the window, with nothing left unwritten.
    void Closed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    using Operation = QCoro::Task<Outcome> (Station::*)();

    /// Starts an operation of the station once what stands in open editors is written.
    void Run(Operation operation);
    std::vector<SetupPage*> Pages() const;
    void SetUpTicketMenus();
    void SetUpFileMenu();
    void ListRecent();
    void NewStore();
    void NewStoreFrom();
    void OpenStore(const QString& path);
    /// Asks whether to go on with a database that was made.
    void OfferStore(const QString& path, const QString& text);
    void SaveDescription();
    void SetUpEditMenu();
    void SetUpGridCommands();
    void SetUpListMenus();
    void ImportList(lists::List list);
    void ExportList(lists::List list);
    void SetUpFind();
    /// What can be done with the selected cells of a list. @param place in its viewport.
    void ShowContextMenu(DataGrid& grid, QPoint place);
    /// Goes to what the check says about a row.
    void ShowFindingOf(const DataGrid& grid, qint32 key);
    /// Tells which row of the list that has the keyboard is the current one, and how many there are.
    void ShowPlace();
    /// The list that has the keyboard, an open cell of it included; nullptr if none has.
    DataGrid* CurrentGrid() const;
    /// Does something with the selected cells once what stands in open editors is written.
    void InGrid(void (DataGrid::*command)());
    /// Names what would be undone and redone.
    void ShowSteps();
    void Undo();
    void Redo();
    /// Goes to what a step back or forth has changed.
    void GoToRow(const QString& table, qint64 key, const QString& field);
    void SetUpGrids();
    void SetUpTabKeys();
    void SetUpStatusBar();
    void SetUpCheck();
    void ShowBusy(bool busy);
    /// What a tab that comes to the front wants.
    void ShowTab(int index);
    /// Brings a tab to the front, with the keyboard in its first grid.
    void GoToTab(int tab);
    void ShowFindings();
    /// Shows how each object is in step.
    void ShowHall();
    void ShowHint();
    void GoToFinding(int index);
    void Mend(const Finding& finding);
    QString PlacesFile() const;

    Station& m_station;
    std::unique_ptr<SetupRecords> m_records;
    std::unique_ptr<Ui::frmQueue> m_ui;
    std::vector<Finding> m_findings;
    QString m_hint; ///< about what is no fault; empty if there is none
    bool m_isMending = false;
    QTimer* m_hallChanged = nullptr; ///< many changes are shown at once
    std::optional<LinePanels> m_linePanels;
    OperationStatus* m_status = nullptr;
    QPushButton* m_findingCount = nullptr;
    QLabel* m_place = nullptr;
    QString m_nextStore;
    bool m_isBusy = false;
};
