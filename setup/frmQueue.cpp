#include "setup/frmQueue.h"

#include "database/GridRecords.h"
#include "platform/AnsiText.h"
#include "platform/DataGrid.h"
#include "platform/Dialogs.h"
#include "platform/WindowFonts.h"
#include "printers/VniText.h"
#include "setup/ui_frmQueue.h"
#include "station/Station.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPainter>
#include <QPointer>

namespace {

constexpr int LongestText = 64;  ///< characters of a name, a description, a note
constexpr int LongestSeries = 4; ///< characters
constexpr int SeriesColumn = 4;

/// Columns of the services grid, whose places other parts of the window rely on.
std::vector<GridColumn> ServiceColumns() {
    return {
        {.caption = QStringLiteral("ID"), .field = QStringLiteral("q_Id"), .readOnly = true},
        {.caption = QStringLiteral("Service Name"), .field = QStringLiteral("q_Name"), .maxLength = LongestText},
        {.caption = QStringLiteral("Number"), .field = QStringLiteral("q_Number")},
        {.caption = QStringLiteral("Description"), .field = QStringLiteral("q_Description"), .maxLength = LongestText},
        {.caption = QStringLiteral("Series"), .field = QStringLiteral("q_series"), .maxLength = LongestSeries},
        {.caption = QStringLiteral("Button"), .field = QStringLiteral("q_Button")},
        GridColumn::YesNo(QStringLiteral("Active"), QStringLiteral("q_On")),
        {.caption = QStringLiteral("Route To"), .field = QStringLiteral("q_route")},
        {.caption = QStringLiteral("Notes"), .field = QStringLiteral("q_Notes"), .maxLength = LongestText},
        {.caption = QStringLiteral("q_Id"), .field = QStringLiteral("q_Id"), .readOnly = true},
    };
}

/// The lamp of an open or a closed line.
QPixmap LinePicture(bool opened, int height, qreal scale) {
    QPixmap picture(QSize(height, height) * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(0x50, 0x50, 0x50));
    painter.setBrush(opened ? QColor(0x2E, 0xB0, 0x40) : QColor(0xC8, 0x3C, 0x3C));
    painter.drawEllipse(QRectF(1.5, 1.5, height - 3, height - 3));
    return picture;
}

/// Shows a refused change and lets the user go on with the typed text.
QCoro::Task<> TellDataError(Dialogs& dialogs, QString text, QPointer<DataGrid> grid) {
    co_await dialogs.ShowMessage(BoxKind::Exclamation, text);
    if (grid)
        grid->ResumeEdit();
}

/// Asks, empties the database, and has the window show it.
QCoro::Task<> AskAndEmpty(Station& station, QPointer<frmQueue> window) {
    const QString question = QStringLiteral("Are you sure You want to delete all database?");
    const bool isSure = co_await station.dialogs.AskYesNo(BoxKind::Critical, question);
    if (!isSure)
        co_return;
    QString problem;
    if (!station.database.IsOpen())
        problem = QStringLiteral("Can't open Queue database!");
    else if (const Database::Error error = station.database.EmptyDatabase())
        problem = *error;
    if (window)
        window->LoadQueue();
    if (!problem.isEmpty())
        co_await station.dialogs.ShowMessage(BoxKind::Exclamation, problem);
}

} // namespace

frmQueue::frmQueue(Station& station, QWidget* parent)
    : QMainWindow(parent)
    , m_station(station)
    , m_ui(std::make_unique<Ui::frmQueue>()) {
    fonts::Register();
    QFont vniFont = font();
    vniFont.setFamily(QStringLiteral("VNI-Avo"));
    setFont(vniFont);
    m_ui->setupUi(this);
    SetUpServicesGrid();
    SetUpStatusBar();

    connect(m_ui->cmdRefresh, &QPushButton::clicked, this, &frmQueue::Refresh);
    connect(m_ui->cmdEmpty, &QPushButton::clicked, this, &frmQueue::Empty);
    connect(m_ui->mnSetCOM, &QAction::triggered, this, &frmQueue::PortChoiceWanted);
    connect(m_ui->mnSetHubCounter, &QAction::triggered, this, &frmQueue::HubOptionWanted);
    connect(m_ui->mnSetServiceCfg, &QAction::triggered, this, [this] { Run(&Station::SetServiceConfig); });
    connect(m_ui->mnTDTime, &QAction::triggered, this, [this] { Run(&Station::SetPrinterClocks); });
    connect(m_ui->mnSetHub, &QAction::triggered, this, [this] { Run(&Station::SetHubs); });
    connect(m_ui->mnHubTime, &QAction::triggered, this, [this] { Run(&Station::SetHubClocks); });
    connect(&m_station, &Station::BusyChanged, this, &frmQueue::ShowBusy);
    connect(&m_station, &Station::ProgressChanged, m_progress, &QLabel::setText);
    connect(&m_station.line, &CommLine::StatusChanged, this, &frmQueue::SetCommStatus);
    connect(&m_station.bus, &Bus::CharacterReceived, this,
            [this](char character) { AddLog1(ansi::Decode(QByteArrayView(&character, 1))); });
    LoadQueue();
    m_ui->TDBGridQueue->setFocus();
}

frmQueue::~frmQueue() {
    ShowBusy(false);
}

void frmQueue::SetUpServicesGrid() {
    DataGrid& grid = *m_ui->TDBGridQueue;
    rsQueue = std::make_unique<GridRecords>(m_station.database, QStringLiteral("Queue"), QStringLiteral("q_Id"),
                                            QStringLiteral("q_Number"), ServiceColumns());
    grid.SetRecords(rsQueue.get());
    grid.SetTextHook([](QStringView before, const QString& typed) {
        const vni::Insertion insertion = vni::Typed(before, typed);
        return GridInsertion{insertion.replaces, insertion.text};
    });
    grid.setColumnHidden(SeriesColumn, !m_station.options.MultiTicketSeries);
    const int widths[] = {40, 215, 65, 240, 60, 60, 60, 70, 205, 50};
    for (int column = 0; column < static_cast<int>(std::size(widths)); ++column)
        grid.setColumnWidth(column, widths[column]);
    connect(rsQueue.get(), &GridModel::RecordsChanged, this, [this] { m_station.reload.DbChanged = true; });
    connect(&grid, &DataGrid::DataError, this, &frmQueue::OnDataError);
}

void frmQueue::SetUpStatusBar() {
    m_progress = new QLabel(this);
    m_progress->setObjectName(QStringLiteral("lblProgress"));
    m_device = new QLabel(this);
    m_device->setObjectName(QStringLiteral("lblDevice"));
    m_baud = new QLabel(this);
    m_baud->setObjectName(QStringLiteral("lblBaud"));
    m_lineState = new QLabel(this);
    m_lineState->setObjectName(QStringLiteral("lblLineState"));
    statusBar()->addWidget(m_progress, 1);
    for (QLabel* panel : {m_device, m_baud, m_lineState})
        statusBar()->addPermanentWidget(panel);
}

void frmQueue::LoadQueue() {
    rsQueue->Requery();
}

void frmQueue::SetCommStatus(const QString& device, const QString& baud, bool opened) {
    if (!device.isEmpty())
        m_device->setText(device);
    if (!baud.isEmpty())
        m_baud->setText(tr("%1 bit/s").arg(baud.trimmed()));
    m_lineState->setPixmap(LinePicture(opened, m_lineState->fontMetrics().height(), devicePixelRatioF()));
    const QString words = opened ? tr("The line is open") : tr("The line is closed");
    m_lineState->setToolTip(words);
    m_lineState->setAccessibleName(words);
}

void frmQueue::AddLog1(const QString& text) {
    m_ui->txtLog1->Add(text);
}

void frmQueue::Run(Operation operation) {
    if (m_ui->TDBGridQueue->CommitOpenEditor())
        (m_station.*operation)();
}

void frmQueue::ShowBusy(bool busy) {
    for (QAction* action :
         {m_ui->mnSetServiceCfg, m_ui->mnTDTime, m_ui->mnSetHub, m_ui->mnSetHubCounter, m_ui->mnHubTime})
        action->setEnabled(!busy);
    m_ui->cmdRefresh->setEnabled(!busy);
    if (busy == m_isBusy)
        return;
    m_isBusy = busy;
    if (busy)
        QApplication::setOverrideCursor(Qt::BusyCursor);
    else
        QApplication::restoreOverrideCursor();
}

void frmQueue::Refresh() {
    if (!m_ui->TDBGridQueue->CommitOpenEditor())
        return;
    LoadQueue();
    m_station.RefreshModel();
}

void frmQueue::Empty() {
    if (m_ui->TDBGridQueue->CommitOpenEditor())
        AskAndEmpty(m_station, this);
}

void frmQueue::OnDataError(const QString& text) {
    TellDataError(m_station.dialogs, text, m_ui->TDBGridQueue);
}

void frmQueue::closeEvent(QCloseEvent* event) {
    // A text that the store refuses must not go with the window.
    if (!m_ui->TDBGridQueue->CommitOpenEditor()) {
        event->ignore();
        return;
    }
    event->accept();
    Q_EMIT Closed();
}
