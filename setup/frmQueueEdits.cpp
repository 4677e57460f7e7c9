// The Edit menu of the setup window.

#include "platform/DelimitedText.h"
#include "platform/Dialogs.h"
#include "platform/WholeFile.h"
#include "setup/SetupRecords.h"
#include "setup/frmImport.h"
#include "setup/frmQueue.h"
#include "setup/ui_frmQueue.h"
#include "station/Station.h"
#include "widgets/DataGrid.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QShortcut>

namespace {

constexpr int ScanPlanTab = 1;
constexpr int DirectionTab = 2;
constexpr int HubTab = 3;

} // namespace

void frmQueue::SetUpEditMenu() {
    connect(m_ui->mnUndo, &QAction::triggered, this, &frmQueue::Undo);
    connect(m_ui->mnRedo, &QAction::triggered, this, &frmQueue::Redo);
    connect(m_ui->mnHistory, &QAction::triggered, this, [this] {
        if (DataGrid::CommitAll(*this))
            Q_EMIT HistoryWanted();
    });
    connect(&m_station, &Station::EditsChanged, this, &frmQueue::ShowSteps);
    connect(&m_records->directions, &GridModel::RecordsChanged, this, &frmQueue::ShowSteps);
    connect(&m_records->directions, &GridModel::modelReset, this, &frmQueue::ShowSteps);
    connect(m_ui->TabStrip1, &QTabWidget::currentChanged, this, &frmQueue::ShowSteps);
    connect(&m_station, &Station::RowsChanged, this, &frmQueue::GoToRow);
    ShowSteps();
}

void frmQueue::SetUpGridCommands() {
    const std::pair<QAction*, void (DataGrid::*)()> commands[] = {
        {m_ui->mnCut, &DataGrid::Cut},
        {m_ui->mnCopy, &DataGrid::Copy},
        {m_ui->mnPaste, &DataGrid::Paste},
        {m_ui->mnDuplicate, &DataGrid::DuplicateRows},
        {m_ui->mnFillDown, &DataGrid::FillDown},
        {m_ui->mnFillSeries, &DataGrid::FillSeries},
        {m_ui->mnDeleteRows, &DataGrid::DeleteRows},
    };
    for (const auto& [action, command] : commands)
        connect(action, &QAction::triggered, this, [this, command = command] { InGrid(command); });
    // A block is filled, rows are duplicated.
    connect(new QShortcut(QKeySequence(QStringLiteral("Ctrl+D")), this), &QShortcut::activated, this, [this] {
        const DataGrid* const grid = CurrentGrid();
        const bool fills = grid && grid->HasBlock() && grid->selectionModel()->selectedRows().isEmpty();
        InGrid(fills ? &DataGrid::FillDown : &DataGrid::DuplicateRows);
    });
    // What the menu greys out must not keep its keys from working elsewhere.
    connect(m_ui->mnEdit, &QMenu::aboutToShow, this, [this] {
        const DataGrid* const grid = CurrentGrid();
        for (QAction* action : {m_ui->mnCut, m_ui->mnCopy, m_ui->mnPaste})
            action->setEnabled(grid);
        m_ui->mnDuplicate->setEnabled(grid && grid->CanAdd());
        m_ui->mnDeleteRows->setEnabled(grid && grid->CanRemove());
        m_ui->mnFillDown->setEnabled(grid && grid->HasBlock());
        m_ui->mnFillSeries->setEnabled(grid && grid->HasBlock());
    });
    connect(m_ui->mnEdit, &QMenu::aboutToHide, this, [this] {
        for (QAction* action : {m_ui->mnCut, m_ui->mnCopy, m_ui->mnPaste, m_ui->mnDuplicate, m_ui->mnDeleteRows,
                                m_ui->mnFillDown, m_ui->mnFillSeries})
            action->setEnabled(true);
    });
    for (DataGrid* grid : findChildren<DataGrid*>()) {
        grid->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(grid, &DataGrid::customContextMenuRequested, this,
                [this, grid](QPoint place) { ShowContextMenu(*grid, place); });
        connect(grid, &DataGrid::RemovalWanted, this, [this, grid](int rows) {
            m_station.dialogs.AskYesNo(BoxKind::Exclamation, tr("Delete %1 rows?").arg(rows))
                .then([list = QPointer(grid)](bool yes) {
                    if (yes && list)
                        list->RemoveWantedRows();
                });
        });
    }
}

void frmQueue::SetUpFind() {
    connect(m_ui->mnFind, &QAction::triggered, this, [this] {
        DataGrid* grid = CurrentGrid();
        if (!grid)
            grid = m_ui->TabStrip1->currentWidget()->findChild<DataGrid*>();
        if (DataGrid::CommitAll(*this) && grid)
            m_ui->findBar->Open(*grid);
    });
    for (const auto& [key, step] : {std::pair(QStringLiteral("F3"), 1), {QStringLiteral("Shift+F3"), -1}})
        connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, this,
                [this, step = step] { m_ui->findBar->Step(step); });
    // Another tab holds other lists.
    connect(m_ui->TabStrip1, &QTabWidget::currentChanged, m_ui->findBar, &QWidget::hide);
    for (const DataGrid* grid : findChildren<DataGrid*>())
        connect(grid, &DataGrid::CurrentRowChanged, this, &frmQueue::ShowPlace);
    connect(qApp, &QApplication::focusChanged, this, &frmQueue::ShowPlace);
    ShowPlace();
}

void frmQueue::ShowPlace() {
    const DataGrid* const grid = CurrentGrid();
    const auto* const records = grid ? qobject_cast<const GridModel*>(grid->model()) : nullptr;
    if (!records)
        return;
    const int all = records->rowCount();
    const int rows = all > 0 && records->IsNewRow(all - 1) ? all - 1 : all;
    const int row = grid->currentIndex().row() + 1;
    m_place->setText(row >= 1 && row <= rows ? tr("Row %1 of %2").arg(row).arg(rows) : tr("%n rows", nullptr, rows));
}

void frmQueue::ShowContextMenu(DataGrid& grid, QPoint place) {
    grid.setFocus();
    if (!DataGrid::CommitAll(*this))
        return;
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("gridMenu"));
    const QModelIndex cell = grid.currentIndex();
    const auto* const records = qobject_cast<const GridModel*>(grid.model());
    if (records && cell.isValid() && !records->MarkOf(cell.row(), cell.column()).isEmpty())
        connect(menu.addAction(tr("&Go to Finding")), &QAction::triggered, this,
                [this, &grid, cell, records] { ShowFindingOf(grid, records->Key(cell.row()).toInt()); });
    if (&grid == findChild<DataGrid*>(QStringLiteral("TDBGridDisplay"))) {
        for (const char* const name : {"cmdTestConnect", "cmdNew"}) {
            auto* const button = findChild<QPushButton*>(QString::fromLatin1(name));
            QAction* const action = menu.addAction(button->text());
            action->setEnabled(button->isEnabled());
            connect(action, &QAction::triggered, button, &QPushButton::click);
        }
    }
    if (!menu.isEmpty())
        menu.addSeparator();
    Q_EMIT m_ui->mnEdit->aboutToShow();
    menu.addActions({m_ui->mnCut, m_ui->mnCopy, m_ui->mnPaste});
    menu.addSeparator();
    menu.addActions({m_ui->mnDuplicate, m_ui->mnFillDown, m_ui->mnFillSeries, m_ui->mnDeleteRows});
    menu.addSeparator();
    menu.addAction(m_ui->mnFind);
    menu.exec(grid.viewport()->mapToGlobal(place));
    Q_EMIT m_ui->mnEdit->aboutToHide();
}

void frmQueue::ShowFindingOf(const DataGrid& grid, qint32 key) {
    const QString table = grid.objectName() == u"TDBGridQueue" ? QStringLiteral("Queue") : QStringLiteral("Display");
    m_ui->dckCheck->show();
    for (std::size_t i = 0; i < m_findings.size(); ++i) {
        if (m_findings[i].table == table && m_findings[i].key == key) {
            m_ui->lstFindings->setCurrentRow(static_cast<int>(i));
            m_ui->lstFindings->setFocus();
            return;
        }
    }
}

void frmQueue::SetUpListMenus() {
    for (const lists::List list : lists::AllLists) {
        const QString name = lists::NameOf(list) + QStringLiteral("...");
        connect(m_ui->mnImport->addAction(name), &QAction::triggered, this, [this, list] { ImportList(list); });
        connect(m_ui->mnExport->addAction(name), &QAction::triggered, this, [this, list] { ExportList(list); });
    }
}

void frmQueue::ImportList(lists::List list) {
    if (!DataGrid::CommitAll(*this))
        return;
    m_station.dialogs.ChooseFile(QStringLiteral("Tables as text *.csv *.txt *.tsv|*.csv *.txt *.tsv"), {})
        .then([window = QPointer(this), list](const QString& path) {
            if (!window || path.isEmpty())
                return;
            const Result<QByteArray> bytes = ReadWhole(path, delimited::LargestText);
            const Result<delimited::Table> table = bytes ? delimited::Read(*bytes) : Failure{bytes.Error()};
            if (table)
                (new frmImport(window->m_station, list, path, *table, window))->show();
            else
                window->m_station.dialogs.Warn(bytes ? tr("%1: %2").arg(path, table.Error()) : table.Error());
        });
}

void frmQueue::ExportList(lists::List list) {
    if (!DataGrid::CommitAll(*this))
        return;
    m_station.dialogs.ChooseSaveFile(QStringLiteral("Comma separated *.csv|*.csv"), m_station.ProgramFolder)
        .then([window = QPointer(this), list](const QString& path) {
            if (!window || path.isEmpty())
                return;
            const Outcome outcome = window->m_station.ExportList(list, path);
            window->m_station.dialogs.ShowMessage(outcome.kind, outcome.text);
        });
}

DataGrid* frmQueue::CurrentGrid() const {
    for (QWidget* widget = focusWidget(); widget; widget = widget->parentWidget()) {
        if (auto* grid = qobject_cast<DataGrid*>(widget))
            return grid;
    }
    return nullptr;
}

void frmQueue::InGrid(void (DataGrid::*command)()) {
    DataGrid* const grid = CurrentGrid();
    // What is typed in an open cell is not what a row is deleted for.
    if (grid && grid->IsEditing() && command == &DataGrid::DeleteRows)
        return;
    if (DataGrid::CommitAll(*this) && grid)
        (grid->*command)();
}

void frmQueue::ShowSteps() {
    const auto show = [](QAction& action, const QString& verb, QString what) {
        constexpr int Longest = 60;
        if (what.size() > Longest)
            what = what.left(Longest - 1) + QChar(0x2026);
        what.replace(u'&', QStringLiteral("&&"));
        action.setEnabled(!what.isEmpty());
        action.setText(what.isEmpty() ? verb : tr("%1: %2").arg(verb, what));
    };
    const bool isAtDirections = m_ui->TabStrip1->currentIndex() == DirectionTab;
    const DirectionMatrix& directions = m_records->directions;
    show(*m_ui->mnUndo, tr("&Undo"),
         isAtDirections && directions.CanUndo() ? tr("choice of a direction") : m_station.NextUndo());
    show(*m_ui->mnRedo, tr("&Redo"),
         isAtDirections && directions.CanRedo() ? tr("choice of a direction") : m_station.NextRedo());
}

void frmQueue::Undo() {
    if (!DataGrid::CommitAll(*this))
        return;
    // Directions are choices until they are stored.
    if (m_ui->TabStrip1->currentIndex() == DirectionTab && m_records->directions.CanUndo())
        m_records->directions.Undo();
    else
        m_station.dialogs.Warn(m_station.UndoEdit().text);
}

void frmQueue::Redo() {
    if (!DataGrid::CommitAll(*this))
        return;
    if (m_ui->TabStrip1->currentIndex() == DirectionTab && m_records->directions.CanRedo())
        m_records->directions.Redo();
    else
        m_station.dialogs.Warn(m_station.RedoEdit().text);
}

void frmQueue::GoToRow(const QString& table, qint64 key, const QString& field) {
    const auto is = [&table](const char* name) { return table.compare(QLatin1String(name), Qt::CaseInsensitive) == 0; };
    const bool isHub = field.compare(QStringLiteral("d_HubId"), Qt::CaseInsensitive) == 0;
    m_ui->TabStrip1->setCurrentIndex(is("ScanPlan")         ? ScanPlanTab
                                     : is("Info-Direction") ? DirectionTab
                                     : isHub                ? HubTab
                                                            : 0);
    if (is("Queue") || (is("Display") && !isHub))
        findChild<DataGrid*>(is("Queue") ? QStringLiteral("TDBGridQueue") : QStringLiteral("TDBGridDisplay"))
            ->GoTo(key, field);
}
