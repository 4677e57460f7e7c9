#include "setup/frmQueue.h"

#include "commissioning/StateMark.h"
#include "platform/AnsiText.h"
#include "platform/Dialogs.h"
#include "setup/SetupRecords.h"
#include "setup/ui_frmQueue.h"
#include "station/Station.h"
#include "tickets/VniText.h"
#include "widgets/DataGrid.h"
#include "widgets/OperationStatus.h"
#include "widgets/OutcomeBox.h"
#include "widgets/WindowFonts.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QShortcut>
#include <QTimer>

namespace {

constexpr int DirectionTab = 2;
constexpr int HallTime = 200;       ///< milliseconds from a change to the state that it makes
constexpr int FindingsHeight = 110; ///< pixels of the list when it opens

/// Shows a refused change and lets the user go on with the typed text.
QCoro::Task<> TellDataError(Dialogs& dialogs, QString text, QPointer<frmQueue> window, QPointer<DataGrid> grid) {
    co_await dialogs.ShowMessage(BoxKind::Exclamation, text);
    if (!window)
        co_return;
    // Behind what is going on: the text may have been refused while another tab came to the front.
    QMetaObject::invokeMethod(
        window,
        [window, grid] {
            if (!grid)
                return;
            window->BringToFront(*grid);
            grid->ResumeEdit();
        },
        Qt::QueuedConnection);
}

} // namespace

frmQueue::frmQueue(Station& station, QWidget* parent)
    : QMainWindow(parent)
    , m_station(station)
    , m_records(std::make_unique<SetupRecords>(station))
    , m_ui(std::make_unique<Ui::frmQueue>()) {
    m_ui->setupUi(this);
    SetUpStatusBar();
    for (SetupPage* page : Pages())
        page->Use(m_station, *m_records);
    SetUpGrids();
    SetUpCheck();

    connect(m_ui->TabStrip1, &QTabWidget::currentChanged, this, &frmQueue::ShowTab);
    SetUpTabKeys();
    connect(m_ui->mnSetCOM, &QAction::triggered, this, &frmQueue::PortChoiceWanted);
    connect(m_ui->mnMainWindow, &QAction::triggered, this, &frmQueue::MainWindowWanted);
    connect(m_ui->mnSetHubCounter, &QAction::triggered, this, &frmQueue::HubOptionWanted);
    connect(m_ui->mnSetServiceCfg, &QAction::triggered, this, [this] { Run(&Station::SetServiceConfig); });
    connect(m_ui->mnTDTime, &QAction::triggered, this, [this] { Run(&Station::SetPrinterClocks); });
    connect(m_ui->mnSetHub, &QAction::triggered, this, [this] { Run(&Station::SetHubs); });
    connect(m_ui->mnHubTime, &QAction::triggered, this, [this] { Run(&Station::SetHubClocks); });
    SetUpTicketMenus();
    SetUpFileMenu();
    SetUpEditMenu();
    SetUpGridCommands();
    SetUpListMenus();
    SetUpFind();
    connect(&m_station, &Station::BusyChanged, this, &frmQueue::ShowBusy);
    connect(&m_station, &Station::ProgressChanged, m_status, &OperationStatus::ShowProgress);
    connect(&m_station.Line(), &CommLine::StatusChanged, this, &frmQueue::SetCommStatus);
    connect(&m_station.Master(), &Bus::CharactersReceived, this, [this](const QByteArray& characters) {
        for (const QChar character : ansi::Decode(characters))
            AddLog1(character);
    });
    m_hallChanged = new QTimer(this);
    m_hallChanged->setSingleShot(true);
    m_hallChanged->setInterval(HallTime);
    connect(m_hallChanged, &QTimer::timeout, this, &frmQueue::ShowHall);
    connect(&m_station, &Station::HallChanged, m_hallChanged, qOverload<>(&QTimer::start));
    connect(m_records.get(), &SetupRecords::StoreChanged, m_hallChanged, qOverload<>(&QTimer::start));
    connect(m_ui->mnCommission, &QAction::triggered, this, [this] {
        if (DataGrid::CommitAll(*this))
            Q_EMIT CommissioningWanted();
    });
    m_records->Load();
    ShowFindings();
    ShowHall();
    m_ui->TabStrip1->setCurrentIndex(0);
    findChild<DataGrid*>(QStringLiteral("TDBGridQueue"))->setFocus();
}

frmQueue::~frmQueue() {
    ShowBusy(false);
    // It is hidden with the window, when what it would tell is gone.
    m_ui->dckCheck->disconnect(this);
}

std::vector<SetupPage*> frmQueue::Pages() const {
    return {m_ui->fraTask_0, m_ui->fraTask_1, m_ui->fraTask_2, m_ui->fraTask_3};
}

void frmQueue::SetUpTicketMenus() {
    // The port of the printers stays as it was chosen last where an entry does not speak of it.
    const auto choose = [this](bool zoneRich, bool t81, std::optional<bool> db25) {
        const bool onDb25 = db25.value_or(m_station.Forms().Family().PrinterDB25);
        m_station.ChooseFamily({.PrinterZoneRich = zoneRich, .PrinterT81 = t81, .PrinterDB25 = onDb25});
    };
    const auto design = [this, choose](QAction* action, bool zoneRich, bool t81, std::optional<bool> db25) {
        connect(action, &QAction::triggered, this, [this, choose, zoneRich, t81, db25] {
            choose(zoneRich, t81, db25);
            if (DataGrid::CommitAll(*this))
                Q_EMIT TicketDesignWanted();
        });
    };
    design(m_ui->mnSetTicketZR, true, false, std::nullopt);
    design(m_ui->mnT81, false, true, std::nullopt);
    design(m_ui->mnPRPFB9, false, false, false);
    design(m_ui->mnPRPDB25, false, false, true);
    connect(m_ui->mnSetTicket, &QMenu::aboutToShow, this, [choose] { choose(false, false, std::nullopt); });
    connect(m_ui->mnVNIFontZR, &QAction::triggered, this,
            [this] { ShowOutcome(m_station.dialogs, m_station.LoadVniFont(LetterSet::FontFile)); });
    connect(m_ui->mnVNIFont, &QAction::triggered, this,
            [this] { ShowOutcome(m_station.dialogs, m_station.LoadVniFont(LetterSet::Table)); });
}

void frmQueue::SetUpGrids() {
    for (DataGrid* grid : findChildren<DataGrid*>()) {
        grid->setFont(fonts::ForStoredText(font()));
        grid->SetLetters({[](QStringView before, const QString& typed) {
                              const vni::Insertion insertion = vni::Typed(before, typed);
                              return GridInsertion{insertion.replaces, insertion.text};
                          },
                          [](QStringView stored) { return vni::ToUnicode(stored); }});
        connect(grid, &DataGrid::DataError, this,
                [this, grid](const QString& text) { TellDataError(m_station.dialogs, text, this, grid); });
    }
}

void frmQueue::SetUpTabKeys() {
    const int count = m_ui->TabStrip1->count();
    for (int tab = 0; tab < count; ++tab) {
        const QKeySequence key(QStringLiteral("Alt+%1").arg(tab + 1));
        connect(new QShortcut(key, this), &QShortcut::activated, this, [this, tab] { GoToTab(tab); });
        m_ui->TabStrip1->setTabToolTip(tab, key.toString());
    }
    // A grid would take these for itself.
    for (const auto& [key, step] : {std::pair(QStringLiteral("Ctrl+PgDown"), 1), {QStringLiteral("Ctrl+PgUp"), -1}}) {
        connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, this,
                [this, count, step = step] { GoToTab((m_ui->TabStrip1->currentIndex() + count + step) % count); });
    }
}

void frmQueue::GoToTab(int tab) {
    m_ui->TabStrip1->setCurrentIndex(tab);
    const QWidget* page = m_ui->TabStrip1->currentWidget();
    // The first one in reading order.
    for (QWidget* next = page->nextInFocusChain(); next && next != page; next = next->nextInFocusChain()) {
        if (qobject_cast<DataGrid*>(next) && page->isAncestorOf(next)) {
            next->setFocus();
            return;
        }
    }
}

void frmQueue::SetUpStatusBar() {
    m_findingCount = new QPushButton(this);
    m_findingCount->setObjectName(QStringLiteral("cmdFindings"));
    m_findingCount->setFlat(true);
    m_status = new OperationStatus(*statusBar());
    connect(m_status, &OperationStatus::CancelWanted, this, [this] { m_station.CancelOperation(); });
    connect(m_status, &OperationStatus::DetailsWanted, this,
            [this](const QString& text) { m_station.dialogs.ShowMessage(BoxKind::Information, text); });
    m_place = new QLabel(this);
    m_place->setObjectName(QStringLiteral("lblPlace"));
    statusBar()->addPermanentWidget(m_place);
    statusBar()->addPermanentWidget(m_findingCount);
    m_linePanels.emplace(*statusBar());
}

void frmQueue::SetUpCheck() {
    m_ui->dckCheck->hide();
    resizeDocks({m_ui->dckCheck}, {FindingsHeight}, Qt::Vertical);
    connect(m_records.get(), &SetupRecords::StoreChanged, this, &frmQueue::ShowFindings);
    connect(m_ui->fraTask_0, &DatabasePage::CheckWanted, m_ui->dckCheck, &QDockWidget::setVisible);
    connect(m_ui->dckCheck, &QDockWidget::visibilityChanged, this,
            [this] { m_ui->fraTask_0->ShowCheckOpen(!m_ui->dckCheck->isHidden()); });
    connect(m_findingCount, &QPushButton::clicked, this,
            [this] { m_ui->dckCheck->setVisible(m_ui->dckCheck->isHidden()); });
    connect(m_ui->lstFindings, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { GoToFinding(m_ui->lstFindings->row(item)); });
    connect(m_ui->lstFindings, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { GoToFinding(m_ui->lstFindings->row(item)); });
}

void frmQueue::ShowFindings() {
    m_findings = m_station.FindFaults();
    // In place: a click that begins on a line must end on it.
    QListWidget& list = *m_ui->lstFindings;
    while (list.count() > static_cast<int>(m_findings.size()))
        delete list.takeItem(list.count() - 1);
    while (list.count() < static_cast<int>(m_findings.size()))
        list.addItem(QString());
    std::vector<GridMark> services;
    std::vector<GridMark> objects;
    for (std::size_t i = 0; i < m_findings.size(); ++i) {
        const Finding& finding = m_findings[i];
        list.item(static_cast<int>(i))->setText(finding.text);
        const GridMark mark{finding.key, finding.field, finding.text};
        if (finding.table == QStringLiteral("Queue"))
            services.push_back(mark);
        else if (finding.table == QStringLiteral("Display"))
            objects.push_back(mark);
    }
    ShowHint();
    m_records->rsQueue.SetMarks(std::move(services));
    m_records->rsDisplay.SetMarks(std::move(objects));
    const auto count = static_cast<int>(m_findings.size());
    const QString number = count == 0   ? tr("nothing found")
                           : count == 1 ? tr("1 finding")
                                        : tr("%1 findings").arg(count);
    m_findingCount->setText(tr("Check: %1").arg(number));
    m_ui->dckCheck->setWindowTitle(m_findingCount->text());
    m_findingCount->setToolTip(tr("What in the database cannot be loaded or sent"));
}

void frmQueue::ShowHall() {
    const Result<std::vector<DeviceState>> hall = m_station.Hall();
    std::map<qint64, GridNote> notes;
    int behind = 0;
    if (hall) {
        for (const DeviceState& device : *hall) {
            notes[device.key] = {NameOf(device.state), device.what, QVariant::fromValue(StateMark(device.state))};
            behind += device.state > StepState::InStep ? 1 : 0;
        }
    }
    m_records->rsDisplay.SetNotes(m_records->rsDisplay.columnCount() - 1, std::move(notes));
    m_hint = behind == 0   ? QString()
             : behind == 1 ? tr("Hint: 1 device is not in step. A click opens the commissioning.")
                           : tr("Hint: %1 devices are not in step. A click opens the commissioning.").arg(behind);
    ShowHint();
}

void frmQueue::ShowHint() {
    // Behind the findings: it is none of them.
    QListWidget& list = *m_ui->lstFindings;
    const auto findings = static_cast<int>(m_findings.size());
    if (m_hint.isEmpty()) {
        if (list.count() > findings)
            delete list.takeItem(findings);
        return;
    }
    if (list.count() == findings)
        list.addItem(QString());
    list.item(findings)->setText(m_hint);
}

void frmQueue::GoToFinding(int index) {
    if (index == static_cast<int>(m_findings.size()))
        Q_EMIT CommissioningWanted();
    if (index < 0 || index >= static_cast<int>(m_findings.size()))
        return;
    const Finding finding = m_findings[static_cast<std::size_t>(index)];
    if (!finding.mend.isEmpty()) {
        Mend(finding);
        return;
    }
    const std::pair<QString, const char*> grids[] = {{QStringLiteral("Queue"), "TDBGridQueue"},
                                                     {QStringLiteral("Display"), "TDBGridDisplay"},
                                                     {QStringLiteral("Info-Direction"), "TDBGrid1"}};
    for (const auto& [table, name] : grids) {
        if (table != finding.table)
            continue;
        m_ui->TabStrip1->setCurrentIndex(table == QStringLiteral("Info-Direction") ? DirectionTab : 0);
        findChild<DataGrid*>(QString::fromLatin1(name))->GoTo(finding.key, finding.field);
    }
}

void frmQueue::Mend(const Finding& finding) {
    // A double click is one wish.
    if (std::exchange(m_isMending, true))
        return;
    m_station.dialogs.AskYesNo(BoxKind::Plain, finding.mend).then([window = QPointer(this), finding](bool yes) {
        if (!window)
            return;
        window->m_isMending = false;
        if (!yes)
            return;
        SetupRecords& records = *window->m_records;
        const Result<> done = finding.table == QStringLiteral("ScanPlan")
                                  ? records.assignments.RemoveFromPlan(finding.key)
                                  : records.assignments.SetHub(finding.key, 0);
        records.UpdateAll();
        window->m_station.dialogs.Warn(done.Error());
    });
}

void frmQueue::SetCommStatus(const QString& device, const QString& baud, bool opened) {
    m_linePanels->SetCommStatus(device, baud, opened);
}

void frmQueue::AddLog1(const QString& text) {
    m_ui->fraTask_0->AddLog1(text);
}

void frmQueue::Run(Operation operation) {
    if (!DataGrid::CommitAll(*this))
        return;
    ShowOutcome(m_station.dialogs, (m_station.*operation)()).then([window = QPointer(this)](const Outcome& outcome) {
        if (window)
            window->m_status->ShowSilent(outcome.silent);
    });
}

void frmQueue::ShowBusy(bool busy) {
    for (QAction* action :
         {m_ui->mnSetServiceCfg, m_ui->mnTDTime, m_ui->mnSetHub, m_ui->mnSetHubCounter, m_ui->mnHubTime, m_ui->mnNew,
          m_ui->mnNewFrom, m_ui->mnOpen, m_ui->mnTicket->menuAction(), m_ui->mnLoadFont->menuAction()})
        action->setEnabled(!busy);
    for (SetupPage* page : Pages())
        page->ShowBusy(busy);
    if (busy == m_isBusy)
        return;
    m_isBusy = busy;
    m_status->SetBusy(busy, m_station.CanCancel());
    if (busy)
        QApplication::setOverrideCursor(Qt::BusyCursor);
    else
        QApplication::restoreOverrideCursor();
}

void frmQueue::ShowTab(int index) {
    // Directions that could not be stored are still there to be stored.
    if (index != DirectionTab)
        m_ui->fraTask_2->SettleUnstored([window = QPointer(this)](bool settled) {
            if (!settled && window)
                window->m_ui->TabStrip1->setCurrentIndex(DirectionTab);
        });
    else if (!m_records->directions.IsChanged())
        m_ui->fraTask_2->LoadDirectionGrid();
}

void frmQueue::BringToFront(const DataGrid& grid) {
    for (int tab = 0; tab < m_ui->TabStrip1->count(); ++tab) {
        if (m_ui->TabStrip1->widget(tab)->isAncestorOf(&grid))
            m_ui->TabStrip1->setCurrentIndex(tab);
    }
}

QString frmQueue::PlacesFile() const {
    return m_station.ProgramFolder + QStringLiteral("/Windows.ini");
}

void frmQueue::closeEvent(QCloseEvent* event) {
    // A text that the store refuses must not go with the window, nor must directions that nobody stored.
    if (!DataGrid::CommitAll(*this)) {
        ForgetNextStore();
        event->ignore();
        return;
    }
    if (m_records->directions.IsChanged()) {
        event->ignore();
        m_ui->fraTask_2->SettleUnstored([window = QPointer(this)](bool settled) {
            // Behind this event: a window that is closing cannot be closed.
            if (settled && window)
                QMetaObject::invokeMethod(window, &QWidget::close, Qt::QueuedConnection);
            else if (window)
                window->ForgetNextStore();
        });
        return;
    }
    event->accept();
    Q_EMIT Closed();
}
