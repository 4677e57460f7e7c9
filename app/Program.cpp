#include "app/Program.h"

#include "commissioning/frmCommission.h"
#include "commissioning/frmHistory.h"
#include "commissioning/frmLineTest.h"
#include "commissioning/frmRecord.h"
#include "console/frmBusMonitor.h"
#include "console/frmTest.h"
#include "designer/frmDesignTicket.h"
#include "designer/frmEditLogo.h"
#include "operator/frmMain.h"
#include "platform/Dialogs.h"
#include "platform/Ended.h"
#include "setup/frmQueue.h"
#include "station/Station.h"
#include "utilities/frmAbout.h"
#include "utilities/frmHUBCfg.h"
#include "utilities/frmOptions.h"
#include "utilities/frmSetPort.h"
#include "utilities/frmUtils.h"
#include "widgets/OutcomeBox.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QHash>
#include <QKeyEvent>
#include <QUrl>

namespace {

void ToFront(QWidget& window) {
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace

Program::Program(const ProgramFolders& folders, Clock& clock, Dialogs& dialogs, std::unique_ptr<ShellIcon> shell)
    : m_folders(folders)
    , m_dialogs(dialogs)
    , m_places(folders.user + QStringLiteral("/Windows.ini"))
    , m_station(std::make_unique<Station>(folders, Station::Machine{clock, m_port, dialogs}))
    , m_registry(RegistryStore::OfUser(folders.user))
    , m_shell(std::move(shell)) {
    QApplication::instance()->installEventFilter(this);
}

Program::~Program() {
    m_isExiting = true;
    for (const QWidget* window : OtherWindows())
        delete window;
}

std::vector<QWidget*> Program::OtherWindows() const {
    return {m_testWindow, m_busMonitor, m_commissioning, m_history, m_record, m_lineTest};
}

QCoro::Task<> Program::Main(QString store) {
    Station& station = *m_station;
    // Both windows are there, hidden, before the first box: the notification area can ask for them from then on.
    connect(&station, &Station::Loaded, this, [this] {
        MakeMainWindow();
        MakeSetupWindow();
    });
    connect(&station, &Station::Ready, this, [this] { m_setupWindow->show(); });
    try {
        co_await station.ReadSettings();
        store = co_await ChooseDatabase(store);
        if (store.isEmpty()) {
            Q_EMIT Ended();
            co_return;
        }
        // A store that does not open after all is in the log; every command then says that it is closed.
        co_await station.Start(store);
    } catch (const ::Ended&) {
    }
}

QCoro::Task<QString> Program::ChooseDatabase(QString store) {
    if (!store.isEmpty()) {
        const Outcome prepared = co_await ShowOutcome(m_dialogs, m_station->PrepareStore(store));
        if (prepared.IsDone())
            co_return store;
    }
    const QString offered = m_station->OfferedStore();
    const QString filter = QStringLiteral("Harbinet Access Database *.mdb|*.mdb");
    for (;;) {
        QString path = co_await m_dialogs.ChooseFile(filter, offered);
        if (path.isEmpty())
            co_return path;
        // If it cannot be used the user may choose another.
        const Outcome prepared = co_await ShowOutcome(m_dialogs, m_station->PrepareStore(path));
        if (prepared.IsDone())
            co_return path;
    }
}

void Program::MakeMainWindow() {
    m_mainWindow = std::make_unique<frmMain>(*m_station, std::move(m_shell), QStringLiteral(ORVEX_WEBSITE));
    const frmMain* window = m_mainWindow.get();
    connect(window, &frmMain::SetupWanted, this, [this] { ToFront(*m_setupWindow); });
    connect(window, &frmMain::PortChoiceWanted, this, [this] { ShowPortWindow(*m_mainWindow); });
    connect(window, &frmMain::TicketDesignWanted, this, [this] { ShowTicketDesigner(*m_mainWindow); });
    connect(window, &frmMain::TestConsoleWanted, this, &Program::ShowTestConsole);
    connect(window, &frmMain::BusMonitorWanted, this, &Program::ShowBusMonitor);
    connect(window, &frmMain::CommissioningWanted, this, &Program::ShowCommissioning);
    connect(window, &frmMain::RecordWanted, this, &Program::ShowRecord);
    connect(window, &frmMain::HistoryWanted, this, &Program::ShowHistory);
    connect(window, &frmMain::LineTestWanted, this, &Program::ShowLineTest);
    connect(window, &frmMain::MaintenanceWanted, this,
            [this] { (new frmUtils(*m_station, m_mainWindow.get()))->show(); });
    connect(window, &frmMain::OptionsWanted, this, [this] {
        const QString command = QApplication::applicationFilePath() + QStringLiteral(" /minimize /delay=60");
        (new frmOptions(*m_station, m_registry, command, m_mainWindow.get()))->show();
    });
    connect(window, &frmMain::AboutWanted, this, [this] {
        const QStringList contact = QStringLiteral(ORVEX_CONTACT).split(u'|');
        (new frmAbout(QStringLiteral(ORVEX_VERSION), contact, m_registry, m_dialogs, m_mainWindow.get()))->show();
    });
    connect(window, &frmMain::HelpWanted, this, [this] { ShowHelp(QStringLiteral("index")); });
    // Behind the event that wants it: a window that is closing must not go away under its own event.
    connect(window, &frmMain::ExitWanted, this, &Program::Leave, Qt::QueuedConnection);
}

void Program::MakeSetupWindow() {
    m_setupWindow = std::make_unique<frmQueue>(*m_station);
    connect(m_setupWindow.get(), &frmQueue::PortChoiceWanted, this, [this] { ShowPortWindow(*m_setupWindow); });
    connect(m_setupWindow.get(), &frmQueue::HubOptionWanted, this,
            [this] { (new frmHUBCfg(*m_station, m_setupWindow.get()))->show(); });
    connect(m_setupWindow.get(), &frmQueue::TicketDesignWanted, this, [this] { ShowTicketDesigner(*m_setupWindow); });
    connect(m_setupWindow.get(), &frmQueue::CommissioningWanted, this, &Program::ShowCommissioning);
    connect(m_setupWindow.get(), &frmQueue::HistoryWanted, this, &Program::ShowHistory);
    connect(m_setupWindow.get(), &frmQueue::MainWindowWanted, m_mainWindow.get(), &frmMain::Open);
    connect(m_setupWindow.get(), &frmQueue::LeaveWanted, this, &Program::Leave, Qt::QueuedConnection);
    connect(m_setupWindow.get(), &frmQueue::Closed, this, [this] {
        m_nextStore = m_setupWindow->NextStore();
        ExitSystem();
    });
}

void Program::ShowPortWindow(QWidget& parent) {
    if (!m_portWindow) {
        m_portWindow = std::make_unique<frmSetPort>(*m_station, SerialControl::AvailablePorts(), &parent);
        // Closed by its frame it is made anew the next time; hidden after a choice it comes back as it was.
        connect(m_portWindow.get(), &frmSetPort::LineTestWanted, this, &Program::ShowLineTest);
        connect(m_portWindow.get(), &QDialog::rejected, this, [this] { m_portWindow.release()->deleteLater(); });
    }
    if (m_portWindow->parentWidget() != &parent)
        m_portWindow->setParent(&parent, m_portWindow->windowFlags());
    m_portWindow->show();
}

void Program::ShowTicketDesigner(QWidget& parent) {
    auto* designer = new frmDesignTicket(*m_station, &parent);
    connect(designer, &frmDesignTicket::LogoEditorWanted, this, [this, designer] {
        auto* editor = new frmEditLogo(*m_station, designer);
        // What it has saved can be used in the form.
        connect(editor, &QObject::destroyed, designer, &frmDesignTicket::ListLogos);
        editor->show();
    });
    designer->show();
}

void Program::ShowTestConsole() {
    if (!m_testWindow)
        m_testWindow = new frmTest(*m_station);
    ToFront(*m_testWindow);
}

void Program::ShowBusMonitor() {
    if (!m_busMonitor)
        m_busMonitor = new frmBusMonitor(*m_station);
    ToFront(*m_busMonitor);
}

void Program::ShowCommissioning() {
    if (!m_commissioning) {
        m_commissioning = new frmCommission(*m_station);
        connect(m_commissioning, &frmCommission::RecordWanted, this, &Program::ShowRecord);
    }
    ToFront(*m_commissioning);
}

void Program::ShowRecord() {
    if (!m_record)
        m_record = new frmRecord(*m_station);
    ToFront(*m_record);
}

void Program::ShowHistory() {
    if (!m_history) {
        m_history = new frmHistory(*m_station);
        connect(m_history, &frmHistory::RecordWanted, this, &Program::ShowRecord);
    }
    ToFront(*m_history);
}

void Program::ShowLineTest() {
    if (!m_lineTest)
        m_lineTest = new frmLineTest(*m_station);
    ToFront(*m_lineTest);
}

QString Program::HelpPage() {
    static const QHash<QString, QString> pages = {
        {QStringLiteral("frmQueue"), QStringLiteral("setup")},
        {QStringLiteral("frmMain"), QStringLiteral("main-window")},
        {QStringLiteral("frmTest"), QStringLiteral("test-console")},
        {QStringLiteral("frmBusMonitor"), QStringLiteral("bus-monitor")},
        {QStringLiteral("frmCommission"), QStringLiteral("commissioning")},
        {QStringLiteral("frmHistory"), QStringLiteral("history")},
        {QStringLiteral("frmRecord"), QStringLiteral("record")},
        {QStringLiteral("frmLineTest"), QStringLiteral("line-test")},
        {QStringLiteral("frmDesignTicket"), QStringLiteral("printers")},
        {QStringLiteral("frmEditLogo"), QStringLiteral("printers")},
        {QStringLiteral("frmImportLogo"), QStringLiteral("printers")},
        {QStringLiteral("frmHUBCfg"), QStringLiteral("hubs")},
        {QStringLiteral("frmOptions"), QStringLiteral("options")},
        {QStringLiteral("frmUtils"), QStringLiteral("options")},
        {QStringLiteral("frmSetPort"), QStringLiteral("bus")},
    };
    const QWidget* window = QApplication::activeWindow();
    return pages.value(window ? window->objectName() : QString(), QStringLiteral("index"));
}

bool Program::eventFilter(QObject* watched, QEvent* event) {
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
    if (isKey && static_cast<QKeyEvent*>(event)->key() == Qt::Key_F1 && m_setupWindow) {
        // The menu's own F1 would come first: it opens the first page, whatever the window is.
        event->accept();
        if (event->type() == QEvent::KeyPress)
            ShowHelp(HelpPage());
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void Program::ShowHelp(const QString& page) {
    for (const QString& name : {QStringLiteral("help.chm"), page + QStringLiteral(".html")}) {
        const QString path = m_folders.install + QStringLiteral("/help/") + name;
        if (QFileInfo::exists(path) && QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
            return;
    }
    m_dialogs.Warn(tr("The manual cannot be opened: %1/help").arg(m_folders.install));
}

void Program::ShowUp() {
    if (m_isExiting)
        return;
    if (QWidget* const box = QApplication::activeModalWidget())
        ToFront(*box);
    else if (m_setupWindow && (m_setupWindow->isVisible() || !m_mainWindow->isVisible()))
        ToFront(*m_setupWindow);
    else if (m_mainWindow)
        ToFront(*m_mainWindow);
}

void Program::Leave() {
    if (m_isExiting)
        return;
    // A window that holds what nobody has saved asks first, and stays.
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isModal() && window->isVisible() && !window->close()) {
            m_setupWindow->ForgetNextStore();
            return;
        }
    }
    if (m_setupWindow->close())
        return;
    ToFront(*m_setupWindow);
}

QCoro::Task<> Program::ExitSystem() {
    if (std::exchange(m_isExiting, true))
        co_return;
    m_mainWindow->UnloadTray();
    for (QWidget* window : OtherWindows()) {
        if (window)
            window->close();
    }
    m_mainWindow->hide();
    co_await m_station->End();
    Q_EMIT Ended();
}
