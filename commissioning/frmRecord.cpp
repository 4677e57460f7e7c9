#include "commissioning/frmRecord.h"

#include "commissioning/RecordModel.h"
#include "commissioning/SaveTable.h"
#include "commissioning/TableText.h"
#include "commissioning/ui_frmRecord.h"
#include "station/Station.h"

#include <QApplication>
#include <QClipboard>
#include <QStyledItemDelegate>
#include <QTimer>

namespace {

constexpr int MostRows = 10'000;
constexpr int RefreshTime = 500; ///< milliseconds

/// Shows in bold what did not go well.
class BadDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        if (index.data(RecordModel::IsMarkedRole).toBool())
            option->font.setBold(true);
    }
};

} // namespace

frmRecord::frmRecord(Station& station)
    : m_station(station)
    , m_ui(std::make_unique<Ui::frmRecord>())
    , m_model(new RecordModel(this)) {
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    QTableView& table = *m_ui->tblRecord;
    table.setModel(m_model);
    table.setItemDelegate(new BadDelegate(&table));
    table.verticalHeader()->hide();
    const int letter = fontMetrics().averageCharWidth();
    const int widths[RecordModel::Columns] = {26, 36, 22, 18, 44, 9, 14, 8, 16, 11, 11, 8, 14, 16, 10, 80};
    for (int column = 0; column < RecordModel::Columns; ++column)
        table.setColumnWidth(column, widths[column] * letter);
    connect(m_ui->cboDevice, &QComboBox::currentIndexChanged, this, &frmRecord::Filter);
    connect(m_ui->cmdCopy, &QPushButton::clicked, this, &frmRecord::Copy);
    connect(m_ui->cmdSaveCsv, &QPushButton::clicked, this, [this] { SaveAsCsv(m_station, *m_model); });
    auto* refresh = new QTimer(this);
    refresh->setSingleShot(true);
    connect(refresh, &QTimer::timeout, this, &frmRecord::Refresh);
    connect(&m_station, &Station::HallChanged, this, [refresh] {
        if (!refresh->isActive())
            refresh->start(RefreshTime);
    });
    Refresh();
}

frmRecord::~frmRecord() = default;

void frmRecord::Refresh() {
    Result<std::vector<LoadEntry>> entries = m_station.Record().Read(MostRows);
    QStringList texts;
    if (entries) {
        const auto count = entries->size();
        m_model->Show(std::move(*entries));
        texts += count < MostRows ? tr("%L1 entries.").arg(count) : tr("The newest %L1 entries.").arg(count);
    } else {
        texts += entries.Error();
    }
    if (const QString& fault = m_station.Record().Fault(); !fault.isEmpty())
        texts += tr("Loads are not recorded: %1").arg(fault);
    m_ui->lblCount->setText(texts.join(u' '));
    ListDevices();
}

void frmRecord::ListDevices() {
    const QVariant chosen = m_ui->cboDevice->currentData();
    const QSignalBlocker quiet(m_ui->cboDevice);
    m_ui->cboDevice->clear();
    m_ui->cboDevice->addItem(tr("All devices"));
    for (const auto& [device, name] : m_model->Devices())
        m_ui->cboDevice->addItem(tr("%1 (address %2)").arg(name).arg(device.address),
                                 QVariantList{device.type, device.address, device.hub});
    m_ui->cboDevice->setCurrentIndex(chosen.isValid() ? std::max(0, m_ui->cboDevice->findData(chosen)) : 0);
    Filter();
}

void frmRecord::Filter() {
    const QVariantList device = m_ui->cboDevice->currentData().toList();
    if (device.isEmpty())
        m_model->SetFilter(std::nullopt);
    else
        m_model->SetFilter(DeviceIdentity{static_cast<quint8>(device[0].toUInt()),
                                          static_cast<quint8>(device[1].toUInt()),
                                          static_cast<qint16>(device[2].toInt())});
}

void frmRecord::Copy() {
    const QModelIndexList rows = m_ui->tblRecord->selectionModel()->selectedRows();
    if (!rows.isEmpty())
        QApplication::clipboard()->setText(tabletext::Tabbed(*m_model, rows));
}
