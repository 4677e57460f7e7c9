#pragma once

#include <QMainWindow>

#include <qcoro/qcorotask.h>

#include <memory>

class GridRecords;
class QLabel;
class Station;
namespace Ui {
class frmQueue;
}

/// The setup window: edits the database directly and starts the commands that set devices up.
class frmQueue : public QMainWindow {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmQueue(Station& station, QWidget* parent = nullptr);
    ~frmQueue() override;

    /// Reads the services from the database into their grid.
    void LoadQueue();

    /// Shows device, speed and state of the line in the status bar; empty texts leave what is shown.
    void SetCommStatus(const QString& device, const QString& baud, bool opened);

    /// Adds characters of the bus to the log box.
    void AddLog1(const QString& text);

Q_SIGNALS:
    /// The user wants to choose the serial port.
    void PortChoiceWanted();
    /// The user wants to set the hubs' counter option.
    void HubOptionWanted();
    /// The user has closed the window, with nothing left unwritten.
    void Closed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    using Operation = QCoro::Task<> (Station::*)();

    /// Starts an operation of the station once what stands in an open editor is written.
    void Run(Operation operation);
    void SetUpServicesGrid();
    void SetUpStatusBar();
    void ShowBusy(bool busy);
    void Refresh();
    void Empty();
    void OnDataError(const QString& text);

    Station& m_station;
    std::unique_ptr<Ui::frmQueue> m_ui;
    std::unique_ptr<GridRecords> rsQueue;
    QLabel* m_device = nullptr;
    QLabel* m_baud = nullptr;
    QLabel* m_lineState = nullptr;
    QLabel* m_progress = nullptr;
    bool m_isBusy = false;
};
