#include "setup/frmNewFrom.h"

#include "platform/Dialogs.h"
#include "setup/ui_frmNewFrom.h"
#include "station/Station.h"
#include "tickets/VniText.h"

#include <QPointer>

namespace {

enum Column { Name, Number, Address, Columns };

QString TextOf(std::optional<int> number) {
    return number ? QString::number(*number) : QString();
}

} // namespace

frmNewFrom::frmNewFrom(Station& station, const QString& source, QWidget* parent)
    : QDialog(parent)
    , m_station(station)
    , m_source(source)
    , m_ui(std::make_unique<Ui::frmNewFrom>()) {
    m_ui->setupUi(this);
    setModal(true);
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->lblSource->setText(tr("Services, objects, assignments, scan plan, directions and hubs are taken from %1. "
                                "Tickets, record and history stay there.")
                                 .arg(source));
    m_ui->tblObjects->setColumnCount(Columns);
    m_ui->tblObjects->setHorizontalHeaderLabels({tr("Counter Name"), tr("Number"), tr("Address")});
    m_ui->tblObjects->horizontalHeader()->setSectionResizeMode(Name, QHeaderView::Stretch);
    for (QSpinBox* box : {m_ui->spnNumber, m_ui->spnAddress})
        connect(box, &QSpinBox::valueChanged, this, &frmNewFrom::ShowPreview);
    connect(m_ui->cmdMake, &QPushButton::clicked, this, &frmNewFrom::Make);
    connect(m_ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    ShowPreview();
}

frmNewFrom::~frmNewFrom() = default;

StoreTemplate::Shift frmNewFrom::Shift() const {
    return {m_ui->spnNumber->value(), m_ui->spnAddress->value()};
}

void frmNewFrom::ShowPreview() {
    const Result<std::vector<StoreTemplate::Object>> objects = StoreTemplate(m_source).Preview(Shift());
    QTableWidget& table = *m_ui->tblObjects;
    table.setRowCount(objects ? static_cast<int>(objects->size()) : 0);
    int faults = 0;
    for (int row = 0; row < table.rowCount(); ++row) {
        const StoreTemplate::Object& object = (*objects)[static_cast<std::size_t>(row)];
        const QString texts[Columns] = {vni::ToUnicode(object.newName), TextOf(object.newNumber),
                                        TextOf(object.newAddress)};
        for (int column = 0; column < Columns; ++column) {
            auto* cell = new QTableWidgetItem(texts[column]);
            if (!object.fault.isEmpty()) {
                cell->setBackground(QColor(0xFF, 0xC9, 0xC0));
                cell->setForeground(Qt::black);
                cell->setToolTip(object.fault);
            }
            table.setItem(row, column, cell);
        }
        if (!object.fault.isEmpty() && faults++ == 0)
            m_ui->lblResult->setText(tr("%1: %2").arg(vni::ToUnicode(object.name), object.fault));
    }
    if (!objects)
        m_ui->lblResult->setText(objects.Error());
    else if (faults == 0)
        m_ui->lblResult->setText(tr("%n object(s).", nullptr, table.rowCount()));
    m_ui->cmdMake->setEnabled(objects && faults == 0);
}

void frmNewFrom::Make() {
    m_station.dialogs.ChooseSaveFile(QStringLiteral("Harbinet Access Database *.mdb|*.mdb"), m_station.ProgramFolder)
        .then([window = QPointer(this)](const QString& path) {
            if (!window || path.isEmpty())
                return;
            const Outcome outcome = window->m_station.MakeStoreFrom(window->m_source, path, window->Shift());
            if (!outcome.IsDone()) {
                window->m_station.dialogs.Warn(outcome.text);
                return;
            }
            Q_EMIT window->Made(path, outcome.text);
            window->accept();
        });
}
