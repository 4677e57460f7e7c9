#include "setup/frmImport.h"

#include "platform/DelimitedText.h"
#include "setup/ui_frmImport.h"
#include "station/Station.h"
#include "widgets/OutcomeBox.h"

#include <QPointer>
#include <QPushButton>

namespace {

constexpr int MostFaults = 8; ///< that are listed below the table

QString SeparatorName(QChar separator) {
    return separator == u'\t'  ? frmImport::tr("tabs")
           : separator == u';' ? frmImport::tr("semicolons")
                               : frmImport::tr("commas");
}

} // namespace

frmImport::frmImport(Station& station, lists::List list, const QString& path, const delimited::Table& table,
                     QWidget* parent)
    : QDialog(parent)
    , m_station(station)
    , m_ui(std::make_unique<Ui::frmImport>())
    , m_incoming{.list = list, .table = table.rows} {
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Import: %1").arg(lists::NameOf(list)));
    // What no encoding of Vietnamese explains may hold the letters of a VNI font.
    if (table.encoding == QStringLiteral("Windows-1252"))
        m_incoming.origin = vni::Origin::Unknown;
    m_ui->lblFile->setText(tr("%1 (%2, %3)").arg(path, table.encoding, SeparatorName(table.separator)));

    qsizetype columns = 0;
    for (const QStringList& row : table.rows)
        columns = std::max(columns, row.size());
    QTableWidget& cells = *m_ui->tblCells;
    cells.setColumnCount(static_cast<int>(columns));
    cells.setRowCount(static_cast<int>(table.rows.size()));
    QStringList heads{tr("Titles")};
    for (std::size_t row = 0; row < table.rows.size(); ++row) {
        if (row > 0)
            heads += QString::number(row);
        for (qsizetype column = 0; column < columns; ++column)
            cells.setItem(static_cast<int>(row), static_cast<int>(column),
                          new QTableWidgetItem(table.rows[row].value(column)));
    }
    cells.setVerticalHeaderLabels(heads);
    cells.horizontalHeader()->hide();
    cells.resizeColumnsToContents();

    const bool hasKeys = list == lists::List::Services || list == lists::List::Objects;
    m_ui->lblMatch->setVisible(hasKeys);
    m_ui->cboMatch->setVisible(hasKeys);
    m_ui->cboMatch->addItem(tr("the same number"), static_cast<int>(lists::Match::Number));
    m_ui->cboMatch->addItem(tr("the same name"), static_cast<int>(lists::Match::Name));
    m_ui->cboMatch->addItem(tr("the same ID"), static_cast<int>(lists::Match::Key));
    m_ui->cboMatch->addItem(tr("none: all are new"), static_cast<int>(lists::Match::None));
    connect(m_ui->cboMatch, &QComboBox::currentIndexChanged, this, &frmImport::ShowPreview);
    connect(m_ui->cmdImport, &QPushButton::clicked, this, &frmImport::Take);
    connect(m_ui->cmdCancel, &QPushButton::clicked, this, &frmImport::close);
    connect(&m_station, &Station::EditsChanged, this, &frmImport::ShowPreview);
    ShowPreview();
}

frmImport::~frmImport() = default;

void frmImport::ShowPreview() {
    m_incoming.match = static_cast<lists::Match>(m_ui->cboMatch->currentData().toInt());
    const lists::Import import = m_station.PreviewList(m_incoming);
    QTableWidget& cells = *m_ui->tblCells;
    for (int row = 0; row < cells.rowCount(); ++row) {
        for (int column = 0; column < cells.columnCount(); ++column) {
            QTableWidgetItem& cell = *cells.item(row, column);
            cell.setBackground(QBrush());
            cell.setForeground(QBrush());
            cell.setToolTip({});
        }
    }
    QStringList lines;
    for (const lists::Fault& fault : import.faults) {
        const bool isWhole = fault.column < 0;
        for (int column = isWhole ? 0 : fault.column; column < (isWhole ? cells.columnCount() : fault.column + 1);
             ++column) {
            QTableWidgetItem& cell = *cells.item(fault.row, column);
            cell.setBackground(QColor(0xFF, 0xC9, 0xC0));
            cell.setForeground(Qt::black);
            cell.setToolTip(fault.why);
        }
        if (lines.size() < MostFaults)
            lines += fault.row == 0 ? fault.why : tr("Row %1: %2").arg(fault.row).arg(fault.why);
    }
    if (const auto more = static_cast<qsizetype>(import.faults.size()) - lines.size(); more > 0)
        lines += tr("and %1 more").arg(more);
    if (import.faults.empty())
        lines +=
            tr("%1 rows are new, %2 are there already and take these values.").arg(import.added).arg(import.changed);
    if (!import.ignored.isEmpty())
        lines += tr("Not taken over: %1").arg(import.ignored.join(QStringLiteral(", ")));
    if (!import.error.isEmpty())
        lines = QStringList{import.error};
    m_ui->lblResult->setText(lines.join(u'\n'));
    m_ui->cmdImport->setEnabled(import.error.isEmpty() && import.faults.empty() && import.added + import.changed > 0);
}

void frmImport::Take() {
    m_ui->cmdImport->setEnabled(false);
    ShowOutcome(m_station.dialogs, m_station.ImportList(m_incoming))
        .then([window = QPointer(this)](const Outcome& outcome) {
            if (window && outcome.IsDone())
                window->close();
            else if (window)
                window->ShowPreview();
        });
}
