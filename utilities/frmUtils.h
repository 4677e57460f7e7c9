#pragma once

#include <QDialog>

#include <memory>

class DataMaintenance;
class Station;
namespace Ui {
class frmUtils;
}

/// The window of data maintenance: deletes old tickets, and keeps the two settings of an automatic delete, each as soon
/// as it is changed.
class frmUtils : public QDialog {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmUtils(Station& station, QWidget* parent = nullptr);
    ~frmUtils() override;

    /// Not while a delete runs.
    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void ShowChoice();
    void Delete();
    void ShowProgress(qint64 done, qint64 total);

    Station& m_station;
    DataMaintenance& m_maintenance;
    std::unique_ptr<Ui::frmUtils> m_ui;
};
