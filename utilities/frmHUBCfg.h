#pragma once

#include <QDialog>

#include <memory>

class Station;
namespace Ui {
class frmHUBCfg;
}

/// The small window in which the user sets the number of tickets called at all hubs.
class frmHUBCfg : public QDialog {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmHUBCfg(Station& station, QWidget* parent = nullptr);
    ~frmHUBCfg() override;

private:
    std::unique_ptr<Ui::frmHUBCfg> m_ui;
};
