#include "commissioning/frmCommission.h"

#include "commissioning/HallModel.h"
#include "commissioning/SaveTable.h"
#include "commissioning/StateMark.h"
#include "commissioning/TableText.h"
#include "commissioning/ui_frmCommission.h"
#include "platform/Dialogs.h"
#include "station/Station.h"
#include "widgets/OutcomeBox.h"

#include <QApplication>
#include <QClipboard>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QTimer>

namespace {

constexpr int RowPadding = 6;      ///< pixels beside the height of a line
constexpr int RefreshTime = 150;   ///< milliseconds
constexpr int RemainingTime = 500; ///< milliseconds

/// Draws the picture of a state in front of its word.
class StateDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        // Rows with and without a picture are equally high.
        return QStyledItemDelegate::sizeHint(option, index)
            .expandedTo(QSize(0, option.fontMetrics.height() + RowPadding));
    }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        if (index.column() != HallModel::State)
            return;
        const auto state = static_cast<StepState>(index.data(HallModel::StateRole).toInt());
        if (const QIcon icon = StateMark(state); !icon.isNull()) {
            option->features |= QStyleOptionViewItem::HasDecoration;
            option->icon = icon;
        }
    }
};

/// Runs the operation, shows its box, and takes up what has become of the hall.
QCoro::Task<> RunShown(Station& station, Commissioning::What what, std::set<Commissioning::Choice> chosen) {
    co_await ShowOutcome(station.dialogs, station.CommissionHall(what, chosen));
}

} // namespace

frmCommission::frmCommission(Station& station)
    : m_station(station)
    , m_ui(std::make_unique<Ui::frmCommission>())
    , m_model(new HallModel(this))
    , m_refresh(new QTimer(this))
    , m_remaining(new QTimer(this)) {
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    QTreeView& tree = *m_ui->treHall;
    tree.setModel(m_model);
    tree.setItemDelegate(new StateDelegate(&tree));
    const int letter = fontMetrics().averageCharWidth();
    tree.setColumnWidth(HallModel::What, 48 * letter);
    tree.setColumnWidth(HallModel::State, 24 * letter);
    tree.setColumnWidth(HallModel::Size, 14 * letter);
    tree.setColumnWidth(HallModel::Time, 14 * letter);
    tree.header()->setStretchLastSection(false);
    tree.header()->setSectionResizeMode(HallModel::Why, QHeaderView::Stretch);
    connect(m_model, &HallModel::ChoiceChanged, this, &frmCommission::ShowButtons);
    connect(m_ui->cmdLoad, &QPushButton::clicked, this, [this] { Run(Commissioning::What::NotInStep); });
    connect(m_ui->cmdSelected, &QPushButton::clicked, this, [this] { Run(Commissioning::What::Selected); });
    connect(m_ui->cmdVerify, &QPushButton::clicked, this, [this] { Run(Commissioning::What::Verify); });
    connect(m_ui->cmdCancel, &QPushButton::clicked, this, [this] {
        m_ui->cmdCancel->setEnabled(false);
        m_station.CancelOperation();
    });
    connect(m_ui->cmdCopy, &QPushButton::clicked, this, &frmCommission::Copy);
    connect(m_ui->cmdSaveCsv, &QPushButton::clicked, this, [this] { SaveAsCsv(m_station, *m_model); });
    connect(m_ui->cmdRecord, &QPushButton::clicked, this, &frmCommission::RecordWanted);
    connect(&m_station, &Station::BusyChanged, this, &frmCommission::ShowBusy);
    connect(&m_station, &Station::ProgressChanged, this, &frmCommission::ShowProgress);
    const auto refreshSoon = [this] {
        if (!m_refresh->isActive())
            m_refresh->start(RefreshTime);
    };
    m_refresh->setSingleShot(true);
    connect(m_refresh, &QTimer::timeout, this, &frmCommission::Refresh);
    connect(&m_station, &Station::HallChanged, this, refreshSoon);
    connect(&m_station.LastCommissioning(), &Commissioning::Advanced, this, refreshSoon);
    connect(m_remaining, &QTimer::timeout, this, &frmCommission::ShowRemaining);
    Refresh();
    ShowBusy(m_station.IsBusy());
}

frmCommission::~frmCommission() = default;

void frmCommission::Run(Commissioning::What what) {
    RunShown(m_station, what, m_model->Chosen());
}

void frmCommission::Refresh() {
    const Result<std::vector<DeviceState>> hall = m_station.Hall();
    std::map<qint32, QString> words;
    std::set<Commissioning::Choice> loading;
    for (const auto& [key, visit] : m_station.LastCommissioning().Visits()) {
        words[key] = m_station.LastCommissioning().WordsOf(key);
        if (visit.loading)
            loading.insert({key, *visit.loading});
    }
    QStringList faults;
    if (hall)
        m_model->Show(*hall, words, loading);
    else
        faults += hall.Error();
    if (const QString& fault = m_station.Record().Fault(); !fault.isEmpty())
        faults += tr("Loads are not recorded: %1").arg(fault);
    m_ui->lblFault->setText(faults.join(u'\n'));
    m_ui->lblFault->setVisible(!faults.isEmpty());
    m_ui->lblSummary->setText(m_model->Summary());
}

void frmCommission::ShowButtons() {
    const bool isFree = !m_station.IsBusy();
    m_ui->cmdLoad->setEnabled(isFree);
    m_ui->cmdVerify->setEnabled(isFree);
    m_ui->cmdSelected->setEnabled(isFree && !m_model->Chosen().empty());
    m_ui->cmdCancel->setEnabled(m_station.CanCancel());
}

void frmCommission::ShowBusy(bool busy) {
    ShowButtons();
    for (QWidget* widget : {static_cast<QWidget*>(m_ui->barDevice), static_cast<QWidget*>(m_ui->lblRemaining)})
        widget->setVisible(busy);
    if (busy)
        m_remaining->start(RemainingTime);
    else
        m_remaining->stop();
    m_ui->lblRemaining->clear();
    if (!busy)
        m_ui->lblProgress->clear();
}

void frmCommission::ShowProgress(const QString& text, int done, int total) {
    m_ui->lblProgress->setText(text);
    m_ui->barDevice->setRange(0, total);
    m_ui->barDevice->setValue(done);
}

void frmCommission::ShowRemaining() {
    const std::chrono::milliseconds remaining = m_station.LastCommissioning().Remaining();
    const auto [begun, all] = m_station.LastCommissioning().Loads();
    QStringList words;
    if (begun > 0)
        words += tr("load %1 of %2").arg(begun).arg(all);
    if (remaining.count() > 0)
        words += tr("about %1 to go").arg(DurationText(remaining));
    m_ui->lblRemaining->setText(words.join(QStringLiteral(", ")));
}

void frmCommission::Copy() {
    QApplication::clipboard()->setText(tabletext::Tabbed(*m_model, m_ui->treHall->selectionModel()->selectedRows()));
}
