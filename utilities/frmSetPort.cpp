#include "utilities/frmSetPort.h"

#include "station/Station.h"
#include "utilities/ui_frmSetPort.h"
#include "widgets/PortBoxes.h"

#include <QPointer>

namespace {

/// Opens the chosen line; the window, if it is still there, goes out of sight once it is open.
QCoro::Task<> OpenChosen(Station& station, QString name, QString baud, QPointer<frmSetPort> window, bool thenTest) {
    window->setEnabled(false);
    const bool opened = co_await station.ChoosePort(name, baud);
    if (!window)
        co_return;
    window->setEnabled(true);
    if (!opened)
        co_return;
    window->hide();
    if (thenTest)
        Q_EMIT window->LineTestWanted();
}

} // namespace

frmSetPort::frmSetPort(Station& station, const QList<SerialControl::Port>& available, QWidget* parent)
    : QDialog(parent)
    , m_station(station)
    , m_ui(std::make_unique<Ui::frmSetPort>()) {
    m_ui->setupUi(this);
    setModal(true);
    // Any device can be typed, that of the bus in software for one.
    m_ui->cboModems->setEditable(true);
    m_ui->cboModems->setInsertPolicy(QComboBox::NoInsert);
    ports::FillPorts(*m_ui->cboModems, available, station.Line().Settings.CommName);
    ports::FillSpeeds(*m_ui->cboBaud, station.Line().Settings.CommBaud);
    connect(m_ui->cmdOK, &QPushButton::clicked, this, [this] { Choose(false); });
    connect(m_ui->cmdLineTest, &QPushButton::clicked, this, [this] { Choose(true); });
}

frmSetPort::~frmSetPort() = default;

void frmSetPort::showEvent(QShowEvent* event) {
    // The line test changes them too.
    m_ui->chkStrictReplies->setChecked(m_station.Line().Settings.StrictReplies);
    m_ui->chkLocalEcho->setChecked(m_station.Line().Settings.LocalEcho);
    QDialog::showEvent(event);
}

void frmSetPort::Choose(bool thenTest) {
    m_station.SetReplyRules(m_ui->chkStrictReplies->isChecked(), m_ui->chkLocalEcho->isChecked());
    OpenChosen(m_station, m_ui->cboModems->currentText(), m_ui->cboBaud->currentText(), this, thenTest);
}
