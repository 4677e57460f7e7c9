#pragma once

#include <QWidget>

#include <memory>

class RecordModel;
class Station;
namespace Ui {
class frmRecord;
}

/// Shows what was loaded where, when, by whom and with what success.
class frmRecord : public QWidget {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmRecord(Station& station);
    ~frmRecord() override;

private:
    void Refresh();
    void ListDevices();
    void Filter();
    void Copy();

    Station& m_station;
    std::unique_ptr<Ui::frmRecord> m_ui;
    RecordModel* m_model;
};
