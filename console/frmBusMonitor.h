#pragma once

#include <QWidget>

#include <memory>

class Station;
class TraceModel;
namespace Ui {
class frmBusMonitor;
}

/// Shows every frame of the line as one row, as it goes out and comes in: the last 100,000 since the program began.
class frmBusMonitor : public QWidget {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmBusMonitor(Station& station);
    ~frmBusMonitor() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void SetUpTable();
    void ListObjects();
    void ListCommands();
    void Filter();
    void Copy();
    void Save(bool asCsv);
    void Count();

    Station& m_station;
    std::unique_ptr<Ui::frmBusMonitor> m_ui;
    TraceModel* m_model;
    bool m_isAtEnd = true;
};
