#include "console/frmTest.h"

#include "console/ui_frmTest.h"
#include "link/Frames.h"
#include "platform/AnsiText.h"
#include "station/Station.h"
#include "tickets/VniText.h"
#include "widgets/Artwork.h"
#include "widgets/OutcomeBox.h"
#include "widgets/PortBoxes.h"

#include <QMouseEvent>
#include <QPointer>

namespace {

constexpr int SubDevices = 32;
constexpr int TwipsPerPixel = 15;

} // namespace

frmTest::frmTest(Station& station)
    : m_station(station)
    , m_console(station.Console())
    , m_ui(std::make_unique<Ui::frmTest>()) {
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    m_console.RestartPollTickets();
    // They show what is in use; the port is chosen elsewhere.
    ports::FillPorts(*m_ui->cboModems, {}, station.Line().Settings.CommName);
    ports::FillSpeeds(*m_ui->cboBaud, station.Line().Settings.CommBaud);
    for (int sub = 0; sub < SubDevices; ++sub)
        m_ui->cboSub->addItem(QString::number(sub));
    m_ui->cboSub->setEditText(QStringLiteral("Combo1"));
    m_ui->picQObj->setPixmap(artwork::Object(0, devicePixelRatioF()));
    for (QWidget* watched : {static_cast<QWidget*>(m_ui->Picture1), static_cast<QWidget*>(m_ui->picQObj)})
        watched->installEventFilter(this);

    connect(&m_console, &TestConsole::TicketListed, this, [this](const QString& text) {
        m_ui->List2->addItem(text);
        m_ui->List2->scrollToBottom();
    });
    connect(&station.Master(), &Bus::FrameSent, this, [this](quint8 address, const QByteArray& frame, int) {
        if (address != frames::Broadcast)
            m_ui->Label8->setText(ansi::Visible(ansi::Decode(frame)) + QStringLiteral(">>>"));
    });
    connect(m_ui->cmdCancel, &QPushButton::clicked, this, &QWidget::hide);
    BindCounters();
    BindPrinters();
    BindHubs();
    BindOthers();
}

frmTest::~frmTest() {
    m_console.CancelPoll();
}

void frmTest::Bind(QPushButton* button, std::function<QCoro::Task<Outcome>()> start) {
    connect(button, &QPushButton::clicked, this, [this, button, start = std::move(start)] {
        button->setEnabled(false);
        const QPointer<QWidget> next = focusWidget();
        ShowOutcome(m_station.dialogs, start()).then([this, button = QPointer(button), next](const Outcome&) {
            if (!button)
                return;
            button->setEnabled(true);
            // Back to where the keyboard was, unless the user has gone elsewhere.
            if (next && focusWidget() == next)
                button->setFocus();
        });
    });
}

void frmTest::BindCounters() {
    Bind(m_ui->cmdTest, [this] { return m_console.TestConnection(m_ui->txtOU->text()); });
    Bind(m_ui->cmdGetKey, [this] { return m_console.GetKey(m_ui->txtOU->text()); });
    Bind(m_ui->cmdDisplay, [this] { return m_console.Display(m_ui->txtOU->text()); });
}

void frmTest::BindPrinters() {
    Bind(m_ui->Command1, [this] { return m_console.TestConnection(m_ui->txtTD->text()); });
    Bind(m_ui->cmdStatus, [this] { return m_console.PrinterStatus(m_ui->txtTD->text()); });
    Bind(m_ui->cmdPrint, [this] { return m_console.PrintTest(m_ui->txtTD->text()); });
    Bind(m_ui->cmdPRNReset, [this] { return m_console.ResetPrinter(m_ui->txtTD->text()); });
    Bind(m_ui->cmdQTicket, [this] { return m_console.QueryTicket(m_ui->txtTD->text()); });
    Bind(m_ui->cmdPoolTD, [this] { return m_console.PoolTicket(m_ui->txtTD->text()); });
    connect(m_ui->cmdCancelP, &QPushButton::clicked, &m_console, &TestConsole::CancelPoll);
}

void frmTest::BindHubs() {
    Bind(m_ui->cmdTestHub, [this] { return m_console.TestHub(Hub()); });
    Bind(m_ui->cmdDump, [this] { return m_console.DumpHub(Hub()); });
    Bind(m_ui->cmdQ, [this] { return m_console.QueryHub(Hub()); });
    Bind(m_ui->cmdTestSub, [this] { return m_console.TestSub(Hub(), m_ui->cboSub->currentText()); });
    Bind(m_ui->cmdQSub, [this] { return m_console.QuerySub(m_ui->cboSub->currentText()); });
    Bind(m_ui->cmdH, [this] {
        return m_console.ShowAtSub(m_ui->txtHUBaddr->text(), m_ui->cboSub->currentText(), m_ui->txtValue->text());
    });
    Bind(m_ui->cmdW, [this] { return m_console.SetTwoMembers(); });
}

void frmTest::BindOthers() {
    Bind(m_ui->Command2, [this] { return m_console.SetInfo(m_ui->txtINF->text(), m_ui->Text2->text()); });
    Bind(m_ui->cmdPWOn, [this] { return m_console.SwitchPower(m_ui->txtPU->text(), true); });
    Bind(m_ui->cmdPWOff, [this] { return m_console.SwitchPower(m_ui->txtPU->text(), false); });
    Bind(m_ui->cmdU, [this] { return m_console.BroadcastClock(); });
    Bind(m_ui->cmdBroad, [this] { return m_console.BroadcastReset(); });
    Bind(m_ui->cmdMakeIntl, [this] { return m_console.AskPassword(); });
}

void frmTest::ListHubs() {
    const qint16 chosen = Hub();
    m_ui->cboHub->clear();
    for (const qint16 hub : m_station.Model().ObjectsOf(model::Hub))
        m_ui->cboHub->addItem(vni::ToUnicode(m_station.Model().Object(hub).Name), hub);
    m_ui->cboHub->setCurrentIndex(std::max(m_ui->cboHub->findData(chosen), m_ui->cboHub->count() > 0 ? 0 : -1));
}

qint16 frmTest::Hub() const {
    const QVariant index = m_ui->cboHub->currentData();
    return index.isValid() ? index.value<qint16>() : qint16(-1);
}

void frmTest::showEvent(QShowEvent* event) {
    ListHubs();
    QWidget::showEvent(event);
}

bool frmTest::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseMove) {
        const QPoint place = static_cast<QMouseEvent*>(event)->position().toPoint() * TwipsPerPixel;
        m_ui->Label2->setText(QStringLiteral("X=%1,Y=%2").arg(place.x()).arg(place.y()));
        return true;
    }
    return QWidget::eventFilter(watched, event);
}
