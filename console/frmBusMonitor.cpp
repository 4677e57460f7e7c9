#include "console/frmBusMonitor.h"

#include "console/TraceModel.h"
#include "console/ui_frmBusMonitor.h"
#include "platform/Dialogs.h"
#include "platform/WholeFile.h"
#include "station/Station.h"
#include "tickets/VniText.h"
#include "widgets/FlowLayout.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QFontDatabase>
#include <QPointer>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTimer>

namespace {

constexpr int FollowingTime = 100; ///< milliseconds
constexpr int RowPadding = 4;      ///< pixels beside the height of a line

/// Shows what went wrong in red, on white as on the colour of a selection.
class MarkingDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        if (!index.data(TraceModel::IsMarkedRole).toBool())
            return;
        option->palette.setColor(QPalette::Text, QColor(0xB0, 0x20, 0x20));
        option->backgroundBrush = QColor(0xFF, 0xEC, 0xE8);
    }
};

} // namespace

frmBusMonitor::frmBusMonitor(Station& station)
    : m_station(station)
    , m_ui(std::make_unique<Ui::frmBusMonitor>())
    , m_model(new TraceModel(station.Trace(), station.Model(), this)) {
    m_ui->setupUi(this);
    FlowLayout::InPlaceOf(*m_ui->barLayout);
    setAttribute(Qt::WA_DeleteOnClose);
    SetUpTable();
    ListCommands();
    connect(m_ui->cboObject, &QComboBox::currentIndexChanged, this, &frmBusMonitor::Filter);
    connect(m_ui->cboCommand, &QComboBox::currentIndexChanged, this, &frmBusMonitor::Filter);
    connect(m_ui->cmdPause, &QPushButton::toggled, m_model, &TraceModel::SetPaused);
    connect(m_ui->cmdClear, &QPushButton::clicked, m_model, &TraceModel::Clear);
    connect(m_ui->cmdCopy, &QPushButton::clicked, this, &frmBusMonitor::Copy);
    connect(m_ui->cmdSaveText, &QPushButton::clicked, this, [this] { Save(false); });
    connect(m_ui->cmdSaveCsv, &QPushButton::clicked, this, [this] { Save(true); });
    connect(m_model, &TraceModel::RowsChanged, this, &frmBusMonitor::Count);
    auto* following = new QTimer(this);
    connect(following, &QTimer::timeout, m_model, &TraceModel::Follow);
    following->start(FollowingTime);
    Count();
}

frmBusMonitor::~frmBusMonitor() = default;

void frmBusMonitor::SetUpTable() {
    QTableView& table = *m_ui->tblFrames;
    table.setModel(m_model);
    table.setItemDelegate(new MarkingDelegate(&table));
    table.setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QFontMetrics metrics(table.font());
    table.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table.verticalHeader()->setDefaultSectionSize(metrics.height() + RowPadding);
    const int letter = metrics.averageCharWidth();
    const int widths[TraceText::Columns] = {14, 6, 5, 20, 5, 6, 21, 40, 18, 17};
    for (int column = 0; column < TraceText::Columns; ++column)
        table.setColumnWidth(column, widths[column] * letter);
    table.horizontalHeader()->setSectionResizeMode(TraceText::Data, QHeaderView::Stretch);
    // The newest row stays in sight for as long as the user has not scrolled away from it.
    connect(table.verticalScrollBar(), &QScrollBar::valueChanged, this,
            [this](int value) { m_isAtEnd = value == m_ui->tblFrames->verticalScrollBar()->maximum(); });
    connect(table.verticalScrollBar(), &QScrollBar::rangeChanged, this, [this](int, int maximum) {
        if (m_isAtEnd)
            m_ui->tblFrames->verticalScrollBar()->setValue(maximum);
    });
}

void frmBusMonitor::ListObjects() {
    const QVariant chosen = m_ui->cboObject->currentData();
    const QSignalBlocker quiet(m_ui->cboObject);
    m_ui->cboObject->clear();
    m_ui->cboObject->addItem(tr("All objects"));
    for (const model::QObject& object : m_station.Model().LoadedObjects())
        m_ui->cboObject->addItem(tr("%1 (address %2)").arg(vni::ToUnicode(object.Name)).arg(object.Address),
                                 object.Address);
    m_ui->cboObject->setCurrentIndex(std::max(0, m_ui->cboObject->findData(chosen)));
}

void frmBusMonitor::ListCommands() {
    const QSignalBlocker quiet(m_ui->cboCommand);
    m_ui->cboCommand->addItem(tr("All commands"));
    for (char letter = 'A'; letter <= 'Z'; ++letter)
        m_ui->cboCommand->addItem(QString(QLatin1Char(letter)), letter);
}

void frmBusMonitor::Filter() {
    const QVariant address = m_ui->cboObject->currentData();
    const QVariant letter = m_ui->cboCommand->currentData();
    m_model->SetFilter(address.isValid() ? std::optional(address.value<quint8>()) : std::nullopt,
                       letter.isValid() ? std::optional(letter.value<char>()) : std::nullopt);
}

void frmBusMonitor::Copy() {
    QModelIndexList rows = m_ui->tblFrames->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(), [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    if (!rows.isEmpty())
        QApplication::clipboard()->setText(m_model->AsText(rows));
}

void frmBusMonitor::Save(bool asCsv) {
    const QString filter = asCsv ? QStringLiteral("Comma separated *.csv|*.csv") : QStringLiteral("Text *.txt|*.txt");
    m_station.dialogs.ChooseSaveFile(filter, m_station.ProgramFolder)
        .then([window = QPointer(this), asCsv](const QString& path) {
            if (!window || path.isEmpty())
                return;
            QBuffer content;
            content.open(QIODevice::WriteOnly);
            if (asCsv)
                window->m_model->WriteCsv(content);
            else
                window->m_model->WriteText(content);
            const Result<> written = WriteWhole(path, content.data());
            if (!written)
                window->m_station.dialogs.Warn(written.Error());
        });
}

void frmBusMonitor::Count() {
    const FrameReader::Counters& counts = m_station.Master().Counts();
    m_ui->lblCount->setText(tr("%L1 rows shown. Since the start: %L2 frames came in, %L3 with a bad check sum, %L4 cut "
                               "off, %L5 that answered something else; %L6 stray characters.")
                                .arg(m_model->rowCount())
                                .arg(counts.Frames)
                                .arg(counts.BadSums)
                                .arg(counts.Abandoned + counts.Overlong)
                                .arg(m_station.Statistics().All().foreign)
                                .arg(counts.Stray));
}

void frmBusMonitor::showEvent(QShowEvent* event) {
    ListObjects();
    QWidget::showEvent(event);
    m_ui->tblFrames->scrollToBottom();
}
