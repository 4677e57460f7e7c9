#pragma once

#include "station/Commissioning.h"

#include <QWidget>

#include <memory>

class HallModel;
class QTimer;
class Station;
namespace Ui {
class frmCommission;
}

/// Shows which devices of the hall hold what they are to hold, and brings them into step.
class frmCommission : public QWidget {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmCommission(Station& station);
    ~frmCommission() override;

Q_SIGNALS:
    void RecordWanted();

private:
    void Run(Commissioning::What what);
    void Refresh();
    void ShowBusy(bool busy);
    void ShowProgress(const QString& text, int done, int total);
    void ShowRemaining();
    void ShowButtons();
    void Copy();

    Station& m_station;
    std::unique_ptr<Ui::frmCommission> m_ui;
    HallModel* m_model;
    QTimer* m_refresh;   ///< many changes are shown at once
    QTimer* m_remaining; ///< while an operation runs
};
