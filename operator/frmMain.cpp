#include "operator/frmMain.h"

#include "operator/ui_frmMain.h"
#include "platform/Dialogs.h"
#include "station/Station.h"
#include "tickets/VniText.h"
#include "widgets/Artwork.h"
#include "widgets/LinePanels.h"
#include "widgets/OperationStatus.h"
#include "widgets/OutcomeBox.h"
#include "widgets/PortBoxes.h"
#include "widgets/frmSysTray.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QLabel>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <array>

namespace {

constexpr int StatusTimer = 250; ///< milliseconds
constexpr int LogLimit = 300;    ///< characters
constexpr qint16 InfoSeconds = 5;
constexpr int InfoLabels = 17;
constexpr int BalloonTime = 30'000; ///< milliseconds

constexpr const char* OpenKey = "open";
constexpr const char* WebKey = "KTL";
constexpr const char* CloseKey = "close";

QString ButtonStyle(bool running) {
    return QStringLiteral("QPushButton { background: %1; color: white; font-weight: bold; border: 1px solid #404040; "
                          "border-radius: 4px; } QPushButton:focus { border: 2px solid palette(highlight); } "
                          "QPushButton:pressed { padding-top: 2px; }")
        .arg(running ? QStringLiteral("#3FA03F") : QStringLiteral("#D03F3F"));
}

} // namespace

frmMain::frmMain(Station& station, std::unique_ptr<ShellIcon> shell, const QString& website)
    : m_station(station)
    , m_website(website)
    , m_ui(std::make_unique<Ui::frmMain>())
    , m_timeConnect(new QLabel(this))
    , m_timer2(new QTimer(this)) {
    EventLog& log = station.Log();
    log.WriteLog(QStringLiteral("---Start load frMain"));
    m_ui->setupUi(this);
    InitTimers();
    ShowRunning(station.Run().QueueRunning());
    log.WriteLog(QStringLiteral("----- Init picObjs & lblInfo.."));
    InitPictures();
    log.WriteLog(QStringLiteral("----- Init lnTrucks.."));
    m_ui->frmQObjs->Use(station);
    log.WriteLog(QStringLiteral("----- Init Scrolling.."));
    InitScrolling();
    log.WriteLog(QStringLiteral("----- Init COM.."));
    InitComm();
    log.WriteLog(QStringLiteral("----- Init Menu status.."));
    InitMenus();
    SetMenuStatus(station.Run().QueueRunning());
    log.WriteLog(QStringLiteral("----- Load Systray.."));
    LoadSystray(std::move(shell));
    log.WriteLog(QStringLiteral("----- Load Done."));
}

frmMain::~frmMain() = default;

void frmMain::InitTimers() {
    connect(&m_station.Run(), &RunControl::SecondPassed, this, &frmMain::CountSecond);
    m_timer2->setObjectName(QStringLiteral("Timer2"));
    m_timer2->setInterval(StatusTimer);
    connect(m_timer2, &QTimer::timeout, m_ui->frmQObjs, &ObjectMap::DrawAllObjects);
    connect(m_ui->chkStatus, &QCheckBox::toggled, this, [this](bool show) {
        if (show)
            m_timer2->start();
        else
            m_timer2->stop();
    });
    connect(m_ui->cmdStart, &QPushButton::clicked, this,
            [this] { m_station.SetRunning(!m_station.Run().QueueRunning()); });
    connect(&m_station.Run(), &RunControl::RunningChanged, this, &frmMain::ShowRunning);
    connect(&m_station.Init(), &InitRun::presetGauge, this, &frmMain::presetGauge);
    connect(&m_station.Init(), &InitRun::UpdateGauge, this, &frmMain::UpdateGauge);
    connect(&m_station.Init(), &InitRun::closeGauge, this, &frmMain::closeGauge);
    connect(m_ui->cmdMsgCancel, &QPushButton::clicked, this, [this] { m_station.CancelInit(); });
    m_ui->fraMess->hide();
}

void frmMain::InitPictures() {
    QSizePolicy kept = m_ui->Frame1->sizePolicy();
    kept.setRetainSizeWhenHidden(true);
    m_ui->Frame1->setSizePolicy(kept);
    m_ui->Frame1->hide();
    m_ui->txtLog1->SetLimit(LogLimit);
    connect(m_ui->frmQObjs, &ObjectMap::ObjectClicked, this, &frmMain::ShowInfo);
    connect(m_ui->cmdCloseInf_0, &QToolButton::clicked, this, [this] {
        m_ui->Frame1->hide();
        m_infoCountdown = -1;
    });
    connect(m_ui->cmdCloseInf_1, &QToolButton::clicked, this, [this] { m_infoCountdown = -1; });
    connect(m_ui->cmdForm, &QPushButton::clicked, this, &frmMain::TicketDesignWanted);
    connect(m_ui->Command1, &QPushButton::clicked, this, &frmMain::TestConsoleWanted);
    connect(m_ui->picPC, &ComputerPicture::Pressed, this, [this](Qt::MouseButton button, Qt::KeyboardModifiers held) {
        if (button == Qt::LeftButton && held == Qt::ShiftModifier)
            Q_EMIT TestConsoleWanted();
        else if (button == Qt::RightButton && held != Qt::NoModifier)
            m_ui->txtLog1->setVisible(m_ui->txtLog1->isHidden());
    });
}

void frmMain::InitScrolling() {
    QPalette around = m_ui->mapView->palette();
    // The map is light whatever the desktop is, and so is what is written on it.
    around.setColor(QPalette::Window, ObjectMap::BackgroundColour());
    around.setColor(QPalette::Base, Qt::white);
    for (const QPalette::ColorRole text : {QPalette::WindowText, QPalette::Text})
        around.setColor(text, QColor(0x20, 0x20, 0x20));
    m_ui->mapView->setPalette(around);
    m_ui->mapView->setAutoFillBackground(true);
    m_ui->mapView->installEventFilter(this);
    for (const QScrollBar* bar : {m_ui->VScroll1, m_ui->HScroll1})
        connect(bar, &QScrollBar::valueChanged, this, &frmMain::PlaceMap);
    connect(m_ui->frmQObjs, &ObjectMap::PictureFocused, this, &frmMain::ScrollTo);
}

void frmMain::InitComm() {
    m_status = new OperationStatus(*m_ui->StatusBar);
    connect(m_status, &OperationStatus::CancelWanted, this, [this] { m_station.CancelOperation(); });
    connect(m_status, &OperationStatus::DetailsWanted, this,
            [this](const QString& text) { m_station.dialogs.ShowMessage(BoxKind::Information, text); });
    m_linePanels = std::make_unique<LinePanels>(*m_ui->StatusBar);
    m_timeConnect->setObjectName(QStringLiteral("TimeConnect"));
    m_ui->StatusBar->addPermanentWidget(m_timeConnect);
    // Alt and these letters open the menus.
    for (QPushButton* button : {m_ui->cmdOK, m_ui->cmdCancel, m_ui->cmdDial})
        button->setShortcut({});
    ports::FillPorts(*m_ui->cboModems, SerialControl::AvailablePorts(), m_station.Line().Settings.CommName);
    ports::FillSpeeds(*m_ui->cboBaud, m_station.Line().Settings.CommBaud);
    connect(&m_station.Line(), &CommLine::StatusChanged, this, &frmMain::SetCommStatus);
    connect(m_ui->cmdOK, &QPushButton::clicked, this, [this] {
        m_ui->cmdOK->setEnabled(false);
        m_station.ChoosePort(m_ui->cboModems->currentText(), m_ui->cboBaud->currentText())
            .then([window = QPointer(this)](bool) {
                if (window)
                    window->m_ui->cmdOK->setEnabled(true);
            });
    });
}

void frmMain::InitMenus() {
    const auto start = [this](QAction* action, QCoro::Task<Outcome> (Station::*operation)()) {
        connect(action, &QAction::triggered, this, [this, operation] {
            ShowOutcome(m_station.dialogs, (m_station.*operation)())
                .then([window = QPointer(this), operation](const Outcome& outcome) {
                    if (!window)
                        return;
                    if (operation == &Station::ResetSystem && window->m_station.Init().IsCancelled())
                        window->ShowCancelledBefore();
                    else
                        window->m_status->ShowSilent(outcome.silent);
                });
        });
    };
    start(m_ui->mnSendConfig, &Station::ConfigPrinters);
    start(m_ui->mnInitHub, &Station::InitHubs);
    start(m_ui->mnuReset, &Station::ResetSystem);
    start(m_ui->mnActiveQAlls, &Station::ActiveAll);
    connect(m_ui->mnInitObjects, &QAction::triggered, this, &frmMain::InitAllObjects);
    connect(m_ui->mnVNIFont, &QAction::triggered, this, [this] {
        ShowOutcome(
            m_station.dialogs,
            m_station.LoadVniFont(m_station.Forms().Family().PrinterZoneRich ? LetterSet::FontFile : LetterSet::Table));
    });
    connect(m_ui->mnDataBase, &QAction::triggered, this, &frmMain::SetupWanted);
    connect(m_ui->mnSetpoty, &QAction::triggered, this, &frmMain::PortChoiceWanted);
    connect(m_ui->mnTicketForm, &QAction::triggered, this, &frmMain::TicketDesignWanted);
    connect(m_ui->mnBusMonitor, &QAction::triggered, this, &frmMain::BusMonitorWanted);
    connect(m_ui->mnCommission, &QAction::triggered, this, &frmMain::CommissioningWanted);
    connect(m_ui->mnHistory, &QAction::triggered, this, &frmMain::HistoryWanted);
    connect(m_ui->mnRecord, &QAction::triggered, this, &frmMain::RecordWanted);
    connect(m_ui->mnLineTest, &QAction::triggered, this, &frmMain::LineTestWanted);
    connect(m_ui->mnDBmaintenance, &QAction::triggered, this, &frmMain::MaintenanceWanted);
    connect(m_ui->mnQOptions, &QAction::triggered, this, &frmMain::OptionsWanted);
    connect(m_ui->mnAbout, &QAction::triggered, this, &frmMain::AboutWanted);
    connect(m_ui->mnuHelp, &QAction::triggered, this, &frmMain::HelpWanted);
    connect(m_ui->mnExit, &QAction::triggered, this, &frmMain::Exit);
    connect(m_ui->mnVoiceClient, &QAction::triggered, this, [this] {
        m_station.dialogs.ShowMessage(BoxKind::Information, QStringLiteral("No voice clients for this Version."));
    });
    m_ui->mnWeb->setVisible(!m_website.isEmpty());
    connect(&m_station, &Station::BusyChanged, this, &frmMain::ShowBusy);
    connect(&m_station, &Station::ProgressChanged, m_status, &OperationStatus::ShowProgress);
}

void frmMain::LoadSystray(std::unique_ptr<ShellIcon> shell) {
    if (!shell)
        return;
    m_frmSysTray = std::make_unique<frmSysTray>(std::move(shell), QStringLiteral("Queue Management System"));
    frmSysTray& tray = *m_frmSysTray;
    tray.AddMenuItem(QStringLiteral("&Open Orvex"), QLatin1String(OpenKey), true);
    tray.AddMenuItem(QStringLiteral("-"), QString());
    if (!m_website.isEmpty()) {
        tray.AddMenuItem(QStringLiteral("&KTL Website"), QLatin1String(WebKey));
        tray.AddMenuItem(QStringLiteral("-"), QString());
    }
    tray.AddMenuItem(QStringLiteral("&Exit"), QLatin1String(CloseKey));
    tray.SetToolTip(QStringLiteral("KTL Queue System"));
    constexpr int TraySize = 64;
    tray.SetIconHandle(QIcon(artwork::Sign(TraySize)));
    connect(&tray, &frmSysTray::SysTrayDoubleClick, this, &frmMain::Open);
    connect(&tray, &frmSysTray::SysTrayMouseDown, this, [&tray](int button) {
        constexpr int Right = 2;
        constexpr int InformationIcon = 1;
        if (button == Right)
            tray.ShowMenu();
        else
            tray.ShowBalloonTip(QStringLiteral("KTL Automatic Queue System."), QStringLiteral("KTL Orvex"),
                                InformationIcon, BalloonTime);
    });
    // Behind the click: an exit takes the menu away.
    connect(
        &tray, &frmSysTray::MenuClick, this,
        [this](int, const QString& key) {
            if (key == QLatin1String(OpenKey))
                Open();
            else if (key == QLatin1String(WebKey))
                OpenWebsite();
            else if (key == QLatin1String(CloseKey))
                AskToExit();
        },
        Qt::QueuedConnection);
}

void frmMain::UnloadTray() {
    m_frmSysTray.reset();
}

void frmMain::SetCommStatus(const QString& device, const QString& baud, bool opened) {
    ports::Show(*m_ui->cboModems, device);
    ports::Show(*m_ui->cboBaud, baud);
    m_linePanels->SetCommStatus(device, baud, opened);
    m_timeConnect->setText(
        opened ? tr("since %1").arg(m_station.Line().TimeConnected().toString(QStringLiteral("hh:mm"))) : QString());
}

void frmMain::CloseComm() {
    m_station.CloseLine();
}

void frmMain::SetMenuStatus(bool running) {
    for (QAction* action : {m_ui->mnSetup->menuAction(), m_ui->mnRestore, m_ui->mnDBmaintenance})
        action->setEnabled(!running);
}

void frmMain::AddLog1(const QString& text) {
    m_ui->txtLog1->Add(text);
}

void frmMain::presetGauge(int min, int max) {
    m_ui->ProgressBar1->setRange(min, max == 0 ? 1 : max);
    m_ui->ProgressBar1->setValue(min);
    m_ui->fraMess->show();
}

void frmMain::UpdateGauge(int value) {
    m_ui->ProgressBar1->setValue(value);
}

void frmMain::closeGauge() {
    m_ui->ProgressBar1->setValue(m_ui->ProgressBar1->minimum());
    m_ui->fraMess->hide();
}

void frmMain::ShowRunning(bool running) {
    m_ui->cmdStart->setText(running ? QStringLiteral("STOP") : QStringLiteral("START"));
    m_ui->cmdStart->setStyleSheet(ButtonStyle(running));
    SetMenuStatus(running);
}

void frmMain::ShowBusy(bool busy) {
    m_status->SetBusy(busy, m_station.CanCancel());
    for (QAction* action : {m_ui->mnTicketForm, m_ui->mnSendConfig, m_ui->mnVNIFont, m_ui->mnInitHub,
                            m_ui->mnInitObjects, m_ui->mnuReset})
        action->setEnabled(!busy);
    m_ui->cmdForm->setEnabled(!busy);
}

void frmMain::InitAllObjects() {
    ShowOutcome(m_station.dialogs, m_station.InitAllObjects()).then([window = QPointer(this)](const Outcome& outcome) {
        using End = Outcome::End;
        if (!window || outcome.end == End::Refused)
            return;
        // A cancelled run stays cancelled, as does each that comes behind it.
        if (window->m_station.Init().IsCancelled())
            window->ShowCancelledBefore();
        else if (outcome.silent.isEmpty())
            window->m_status->ShowResult(tr("Initialized: all devices answered."));
        else
            window->m_status->ShowResult(
                tr("Initialized, no answer from %1.").arg(outcome.silent.join(QStringLiteral(", "))), outcome.silent);
    });
}

void frmMain::ShowCancelledBefore() {
    m_status->ShowResult(tr("Cancelled before; restart the program to run whole."));
}

void frmMain::CountSecond() {
    if (m_infoCountdown > 0)
        --m_infoCountdown;
    if (m_infoCountdown == 0 && m_ui->Frame1->isVisible())
        m_ui->Frame1->hide();
}

void frmMain::PlaceMap() {
    ObjectMap& map = *m_ui->frmQObjs;
    const QSize beyond = map.size() - m_ui->mapView->size();
    m_ui->VScroll1->setMaximum(std::max(0, beyond.height()));
    m_ui->HScroll1->setMaximum(std::max(0, beyond.width()));
    m_ui->HScroll1->setVisible(beyond.width() > 0);
    map.move(beyond.width() > 0 ? -m_ui->HScroll1->value() : -beyond.width() / 2, -m_ui->VScroll1->value());
}

void frmMain::ScrollTo(const QRect& place) {
    QScrollBar& bar = *m_ui->VScroll1;
    if (place.top() < bar.value())
        bar.setValue(place.top());
    else if (place.bottom() > bar.value() + m_ui->mapView->height())
        bar.setValue(place.bottom() - m_ui->mapView->height());
}

void frmMain::ShowInfoLines(const QStringList& lines) {
    for (int i = 0; i < InfoLabels; ++i) {
        auto* label = findChild<QLabel*>(QStringLiteral("lblInfo_%1").arg(i));
        label->setText(i < lines.size() ? lines[i] : QString());
        label->setVisible(i < lines.size());
    }
}

void frmMain::ShowInfo(int object) {
    const model::Installation& model = m_station.Model();
    const model::QObject& shown = model.Object(static_cast<qint16>(object));
    QStringList lines;
    if (shown.Type == model::Counter) {
        lines += QStringLiteral("Address : %1").arg(shown.Address);
        const qint16 service = model.FirstServiceOf(static_cast<qint16>(object));
        if (service >= 0) {
            const model::QService& first = model.Service(service);
            lines += QStringLiteral("Service   : ") + vni::ToUnicode(first.Name);
            lines += QStringLiteral("Wait        : %1").arg(first.WaitRing.Count);
        } else {
            lines += {QString(), QString()};
        }
        lines += QStringLiteral("Current   : %1").arg(shown.CurrentTicket.TicketNo);
    } else {
        lines += QStringLiteral("Address: %1").arg(shown.Address);
        if (shown.Type == model::Printer) {
            for (const model::QService& service : model.LoadedServices()) {
                if (lines.size() < InfoLabels)
                    lines += QStringLiteral("%1: %2").arg(vni::ToUnicode(service.Name)).arg(service.WaitRing.Count);
            }
        }
    }
    ShowInfoLines(lines);
    if (shown.Type == model::Counter || shown.Type == model::Printer) {
        m_ui->Frame1->show();
        m_infoCountdown = InfoSeconds;
    }
}

void frmMain::Open() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void frmMain::Exit() {
    if (m_station.Run().QueueRunning())
        m_station.dialogs.Warn(QStringLiteral("Please Stop Queue first"));
    else
        Q_EMIT ExitWanted();
}

void frmMain::AskToExit() {
    const QString question =
        QStringLiteral("Exit Orvex will stop your queue system, are you sure you want to continue?");
    m_station.dialogs.AskYesNo(BoxKind::Exclamation, question).then([window = QPointer(this)](bool yes) {
        if (window && yes)
            window->Exit();
    });
}

void frmMain::OpenWebsite() {
    if (!QDesktopServices::openUrl(QUrl(m_website)))
        m_station.dialogs.ShowTitledMessage(BoxKind::Exclamation, QStringLiteral("URL Failed"),
                                            QStringLiteral("Web Page not Opened"));
}

void frmMain::closeEvent(QCloseEvent* event) {
    // What is unwritten elsewhere comes first; the program itself then takes this window away.
    event->ignore();
    m_station.SetRunning(false);
    Q_EMIT ExitWanted();
}

void frmMain::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && isMinimized() && m_frmSysTray)
        QMetaObject::invokeMethod(this, &QWidget::hide, Qt::QueuedConnection);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_station.RefreshIfChanged();
}

bool frmMain::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize) {
        PlaceMap();
    } else if (event->type() == QEvent::Wheel) {
        QApplication::sendEvent(m_ui->VScroll1, event);
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}
