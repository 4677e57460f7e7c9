#include "utilities/frmUtils.h"

#include "station/Station.h"
#include "utilities/ui_frmUtils.h"
#include "widgets/OutcomeBox.h"

#include <QCloseEvent>
#include <QPointer>

namespace {

void SetOpen(QLineEdit& box, bool isOpen) {
    box.setReadOnly(!isOpen);
    QPalette palette = box.palette();
    palette.setColor(QPalette::Base, isOpen ? QGuiApplication::palette().color(QPalette::Base)
                                            : QGuiApplication::palette().color(QPalette::Midlight));
    box.setPalette(palette);
}

} // namespace

frmUtils::frmUtils(Station& station, QWidget* parent)
    : QDialog(parent)
    , m_station(station)
    , m_maintenance(station.Maintenance())
    , m_ui(std::make_unique<Ui::frmUtils>()) {
    m_ui->setupUi(this);
    setModal(true);
    setAttribute(Qt::WA_DeleteOnClose);
    QSizePolicy kept = m_ui->prgDelete->sizePolicy();
    kept.setRetainSizeWhenHidden(true);
    m_ui->prgDelete->setSizePolicy(kept);
    m_ui->prgDelete->hide();
    ShowChoice();
    connect(m_ui->chkAutoDelete, &QCheckBox::toggled, this, [this](bool isOn) { m_station.SetAutoDelete(isOn); });
    connect(m_ui->txtDelYear, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_station.SetAutoDeleteYear(text); });
    m_ui->chkAutoDelete->setChecked(station.Settings().AutoDeleteEnable);
    m_ui->txtDelYear->setText(station.Settings().AutoDeleteFromYear);
    connect(m_ui->optFromYear, &QRadioButton::toggled, this, &frmUtils::ShowChoice);
    connect(m_ui->cmdDel, &QPushButton::clicked, this, &frmUtils::Delete);
    connect(m_ui->cmdOK, &QPushButton::clicked, this, &QDialog::close);
    connect(&m_maintenance, &DataMaintenance::Progress, this, &frmUtils::ShowProgress);
}

frmUtils::~frmUtils() = default;

void frmUtils::ShowChoice() {
    const bool byYear = m_ui->optFromYear->isChecked();
    SetOpen(*m_ui->txtYear, byYear);
    SetOpen(*m_ui->txtFromDate, !byYear);
    SetOpen(*m_ui->txtToDate, !byYear);
}

void frmUtils::Delete() {
    const bool byYear = m_ui->optFromYear->isChecked();
    m_ui->cmdDel->setEnabled(false);
    ShowOutcome(m_station.dialogs,
                byYear ? m_maintenance.DeleteFromYear(m_ui->txtYear->text())
                       : m_maintenance.DeleteFromDays(m_ui->txtFromDate->text(), m_ui->txtToDate->text()))
        .then([window = QPointer(this), byYear](const Outcome& outcome) {
            if (!window)
                return;
            window->m_ui->cmdDel->setEnabled(true);
            if (byYear && outcome.end == Outcome::End::Refused)
                window->m_ui->txtYear->setFocus();
        });
}

void frmUtils::ShowProgress(qint64 done, qint64 total) {
    constexpr int Steps = 1000; // the bar counts in int
    m_ui->prgDelete->setVisible(total > 0);
    m_ui->prgDelete->setRange(0, Steps);
    m_ui->prgDelete->setValue(total > 0 ? static_cast<int>(done * Steps / total) : 0);
    for (QWidget* control : {static_cast<QWidget*>(m_ui->optFromYear), static_cast<QWidget*>(m_ui->optFromDate),
                             static_cast<QWidget*>(m_ui->cmdOK)})
        control->setEnabled(total == 0);
}

void frmUtils::reject() {
    if (!m_maintenance.IsRunning())
        QDialog::reject();
}

void frmUtils::closeEvent(QCloseEvent* event) {
    if (m_maintenance.IsRunning())
        event->ignore();
    else
        QDialog::closeEvent(event);
}
