#include "commissioning/frmLineTest.h"

#include "commissioning/Findings.h"
#include "commissioning/SaveTable.h"
#include "commissioning/TableText.h"
#include "commissioning/ui_frmLineTest.h"
#include "platform/Dialogs.h"
#include "platform/WholeFile.h"
#include "station/Station.h"
#include "widgets/OutcomeBox.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QMenu>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QTimer>

namespace {

constexpr int FollowingTime = 150; ///< milliseconds
constexpr int CountingTime = 1000; ///< milliseconds
constexpr int RowPadding = 6;      ///< pixels beside the height of a line
constexpr int LeastOfName = 80;    ///< pixels
constexpr int MostOfName = 150;

/// Shows in bold what somebody has to look at: that can be read in every palette.
class MarkingDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        option->font.setBold(index.data(FindingTable::IsMarkedRole).toBool());
    }
};

} // namespace

frmLineTest::frmLineTest(Station& station)
    : m_station(station)
    , m_ui(std::make_unique<Ui::frmLineTest>())
    , m_devices(new FindingTable(findings::TestColumns(), this))
    , m_addresses(new FindingTable(findings::ScanColumns(), this))
    , m_counts(new FindingTable(findings::CountColumns(), this))
    , m_following(new QTimer(this))
    , m_counting(new QTimer(this))
    , m_isScanned(!station.Scanned().rows.empty()) {
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->spnRounds->setMaximum(LineTest::MostRounds);
    SetUpTable(*m_ui->tblDevices, m_devices, {0, 2});
    SetUpTable(*m_ui->tblAddresses, m_addresses, {1, 2});
    SetUpTable(*m_ui->tblCounts, m_counts, {0, 0});
    m_ui->tblCounts->horizontalHeader()->setSectionResizeMode(m_counts->columnCount() - 1,
                                                              QHeaderView::ResizeToContents);
    JoinParts();
    ShowFindings();
    ShowBusy();
}

frmLineTest::~frmLineTest() = default;

void frmLineTest::SetUpTable(QTableView& table, FindingTable* model, std::pair<int, int> names) {
    table.setModel(model);
    table.setItemDelegate(new MarkingDelegate(&table));
    table.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table.verticalHeader()->setDefaultSectionSize(table.fontMetrics().height() + RowPadding);
    QHeaderView& header = *table.horizontalHeader();
    header.setSectionResizeMode(QHeaderView::ResizeToContents);
    header.setSectionResizeMode(model->columnCount() - 1, QHeaderView::Stretch);
    // Long names leave room for what is said about the device.
    const auto fit = [&table, names] {
        for (const int column : {names.first, names.second})
            table.setColumnWidth(column, std::clamp(static_cast<QAbstractItemView&>(table).sizeHintForColumn(column),
                                                    LeastOfName, MostOfName));
    };
    for (const int column : {names.first, names.second})
        header.setSectionResizeMode(column, QHeaderView::Interactive);
    connect(model, &QAbstractItemModel::modelReset, &table, fit);
}

void frmLineTest::JoinParts() {
    auto* types = new QMenu(m_ui->cmdAdd);
    for (const auto& [type, text] : {std::pair(model::Counter, tr("&Counter")),
                                     {model::Printer, tr("&Printer")},
                                     {model::Display, tr("&Display")},
                                     {model::Hub, tr("&Hub")}})
        connect(types->addAction(text), &QAction::triggered, this, [this, chosen = type] { Add(chosen); });
    m_ui->cmdAdd->setMenu(types);
    connect(m_ui->cmdTest, &QPushButton::clicked, this, &frmLineTest::Test);
    connect(m_ui->cmdScan, &QPushButton::clicked, this, &frmLineTest::Scan);
    connect(m_ui->cmdCancel, &QPushButton::clicked, this, [this] { m_station.CancelOperation(); });
    connect(m_ui->cmdCopy, &QPushButton::clicked, this, &frmLineTest::Copy);
    connect(m_ui->cmdSaveCsv, &QPushButton::clicked, this, [this] { SaveAsCsv(m_station, ShownModel()); });
    connect(m_ui->tblAddresses->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &frmLineTest::OfferTypes);
    connect(m_addresses, &QAbstractItemModel::modelReset, this, &frmLineTest::OfferTypes);
    connect(m_ui->tabs, &QTabWidget::currentChanged, this, [this] {
        ShowCounts();
        ShowBusy();
    });
    connect(m_counting, &QTimer::timeout, this, &frmLineTest::ShowCounts);
    m_counting->start(CountingTime);
    connect(&m_station, &Station::BusyChanged, this, [this](bool isBusy) {
        // What begins while a box about ours still stands open is another's.
        m_isOurs &= isBusy;
        ShowBusy();
    });
    connect(&m_station, &Station::ProgressChanged, this, &frmLineTest::ShowProgress);
    connect(m_following, &QTimer::timeout, this, &frmLineTest::ShowFindings);
}

void frmLineTest::Begin() {
    m_isOurs = !m_station.IsBusy();
    m_following->start(FollowingTime);
}

void frmLineTest::End() {
    m_isOurs = false;
    m_following->stop();
    ShowFindings();
    ShowBusy();
}

void frmLineTest::Test() {
    Begin();
    ShowOutcome(m_station.dialogs, m_station.TestLine(m_ui->spnRounds->value()))
        .then([window = QPointer(this)](const Outcome& outcome) {
            if (window)
                window->OnEnded(outcome, window->m_station.Tested().echo, &frmLineTest::Test);
        });
}

void frmLineTest::OnEnded(const Outcome& outcome, const EchoFinding& echo, void (frmLineTest::*again)()) {
    End();
    if (!outcome.IsDone() || (!echo.has && !echo.lacks))
        return;
    const bool localEcho = echo.has;
    const QString question =
        localEcho
            ? tr("The adapter echoes what is sent, so that every device seems to answer. Set \"The adapter echoes "
                 "what is sent\" for the port, and try again?")
            : tr("The port is set to pass over an echo, and none comes: the answers are passed over instead. Clear "
                 "\"The adapter echoes what is sent\" for the port, and try again?");
    m_station.dialogs.AskYesNo(BoxKind::Exclamation, question)
        .then([window = QPointer(this), localEcho, again](bool yes) {
            if (!window || !yes)
                return;
            Station& station = window->m_station;
            const Outcome saved = station.SaveReplyRules(station.Line().Settings.StrictReplies, localEcho);
            station.dialogs.Warn(saved.text);
            (window->*again)();
        });
}

void frmLineTest::Scan() {
    m_isScanned = true;
    Begin();
    ShowOutcome(m_station.dialogs, m_station.ScanAddresses(m_ui->chkBehindHubs->isChecked()))
        .then([window = QPointer(this)](const Outcome& outcome) {
            if (window)
                window->OnEnded(outcome, window->m_station.Scanned().echo, &frmLineTest::Scan);
        });
}

void frmLineTest::ShowBusy() {
    const bool isBusy = m_station.IsBusy();
    m_ui->cmdTest->setEnabled(!isBusy);
    m_ui->cmdScan->setEnabled(!isBusy);
    m_ui->cmdCancel->setEnabled(isBusy && m_isOurs);
    m_ui->cmdCopy->setEnabled(ShownModel().rowCount() > 0);
    m_ui->cmdSaveCsv->setEnabled(ShownModel().rowCount() > 0);
    OfferTypes();
}

void frmLineTest::ShowProgress(const QString&, int done, int total) {
    m_ui->barProgress->setVisible(m_isOurs && m_station.IsBusy());
    // A maximum of 0 would show that nobody knows.
    m_ui->barProgress->setMaximum(std::max(total, 1));
    m_ui->barProgress->setValue(done);
}

void frmLineTest::ShowFindings() {
    m_devices->SetRows(findings::TestRows(m_station.Tested()));
    m_addresses->SetRows(findings::ScanRows(m_station.Scanned()));
    if (m_devices->rowCount() > 0)
        m_ui->lblTested->setText(LineTest::SummaryOf(m_station.Tested()));
    if (m_isScanned)
        m_ui->lblScanned->setText(AddressScan::SummaryOf(m_station.Scanned()));
}

void frmLineTest::ShowCounts() {
    if (m_ui->tabs->currentWidget() == m_ui->tabCounts)
        m_counts->SetRows(findings::CountRows(m_station.Statistics(), m_station.Model()));
}

void frmLineTest::OfferTypes() {
    const auto& rows = m_station.Scanned().rows;
    bool isUnknown = false;
    for (const QModelIndex& index : m_ui->tblAddresses->selectionModel()->selectedRows()) {
        const auto row = static_cast<std::size_t>(index.row());
        isUnknown |= row < rows.size() && rows[row].kind == AddressScan::Kind::Unknown;
    }
    m_ui->cmdAdd->setEnabled(isUnknown && !m_station.IsBusy());
}

void frmLineTest::Add(int type) {
    for (const QModelIndex& index : m_ui->tblAddresses->selectionModel()->selectedRows()) {
        const auto& rows = m_station.Scanned().rows;
        const auto row = static_cast<std::size_t>(index.row());
        if (row >= rows.size() || rows[row].kind != AddressScan::Kind::Unknown)
            continue;
        const FoundDevice device{rows[row].address, static_cast<model::ObjectType>(type), rows[row].hubId};
        const Outcome added = m_station.AddScanned(device);
        m_station.dialogs.Warn(added.text);
        if (!added.IsDone())
            break;
    }
    ShowFindings();
    OfferTypes();
    m_station.RefreshIfChanged();
}

QTableView& frmLineTest::ShownTable() const {
    QTableView* const tables[] = {m_ui->tblDevices, m_ui->tblAddresses, m_ui->tblCounts};
    return *tables[m_ui->tabs->currentIndex()];
}

FindingTable& frmLineTest::ShownModel() const {
    FindingTable* const models[] = {m_devices, m_addresses, m_counts};
    return *models[m_ui->tabs->currentIndex()];
}

void frmLineTest::Copy() {
    QApplication::clipboard()->setText(tabletext::Tabbed(ShownModel(), ShownTable().selectionModel()->selectedRows()));
}

void frmLineTest::closeEvent(QCloseEvent* event) {
    // Nobody would see what comes of it.
    if (m_isOurs)
        m_station.CancelOperation();
    QWidget::closeEvent(event);
}
