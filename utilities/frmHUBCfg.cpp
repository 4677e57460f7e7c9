#include "utilities/frmHUBCfg.h"

#include "station/Station.h"
#include "utilities/ui_frmHUBCfg.h"
#include "widgets/OutcomeBox.h"

#include <QPointer>

frmHUBCfg::frmHUBCfg(Station& station, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frmHUBCfg>()) {
    m_ui->setupUi(this);
    setModal(true);
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->txtFromTo->setText(QString::number(station.Settings().FromToval));
    m_ui->txtFromTo->selectAll();
    connect(m_ui->cmdOK, &QPushButton::clicked, this, [this, &station] {
        setEnabled(false);
        ShowOutcome(station.dialogs, station.SetHubCounter(m_ui->txtFromTo->text()))
            .then([window = QPointer(this)](const Outcome& outcome) {
                if (!window)
                    return;
                window->setEnabled(true);
                // Another value may be typed, or the same sent again later.
                if (outcome.end != Outcome::End::Refused)
                    window->accept();
            });
    });
    connect(m_ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

frmHUBCfg::~frmHUBCfg() = default;
