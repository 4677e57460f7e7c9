// What an Edit menu does with the cells of a grid.

#include "platform/TextFold.h"
#include "widgets/CopiedText.h"
#include "widgets/DataGrid.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLineEdit>

#include <algorithm>
#include <set>

QModelIndexList DataGrid::SelectedCells() const {
    QModelIndexList cells;
    const QModelIndexList selected = selectionModel() ? selectionModel()->selectedIndexes() : QModelIndexList();
    std::copy_if(selected.begin(), selected.end(), std::back_inserter(cells),
                 [this](const QModelIndex& cell) { return !isColumnHidden(cell.column()); });
    if (cells.isEmpty() && currentIndex().isValid())
        cells += currentIndex();
    std::sort(cells.begin(), cells.end(), [](const QModelIndex& one, const QModelIndex& other) {
        return std::pair(one.row(), one.column()) < std::pair(other.row(), other.column());
    });
    return cells;
}

std::vector<int> DataGrid::SelectedRows() const {
    std::vector<int> rows;
    for (const QModelIndex& cell : SelectedCells()) {
        if ((rows.empty() || rows.back() != cell.row()) && !m_records->IsNewRow(cell.row()))
            rows.push_back(cell.row());
    }
    return rows;
}

bool DataGrid::HasBlock() const {
    const QModelIndexList cells = SelectedCells();
    return !cells.isEmpty() && cells.first().row() != cells.last().row();
}

bool DataGrid::CanAdd() const {
    return m_records && m_records->rowCount() > 0 && m_records->IsNewRow(m_records->rowCount() - 1);
}

Result<QString> DataGrid::Fitting(const GridColumn& column, const QString& text, bool isStored) const {
    if (!column.values.empty()) {
        const QString word = text.trimmed();
        if (word.isEmpty())
            return QString();
        QStringList words;
        for (const auto& [value, shown] : column.values) {
            if (shown.compare(word, Qt::CaseInsensitive) == 0 || QString::number(value) == word)
                return QString::number(value);
            words += shown;
        }
        return Failure{tr("\"%1\" is none of %2.").arg(Readable(word), words.join(QStringLiteral(", ")))};
    }
    if (isStored) {
        if (column.maxLength > 0 && text.size() > column.maxLength)
            return Failure{tr("The text is longer than %1 characters.").arg(column.maxLength)};
        return text;
    }
    const QString typed = text.trimmed();
    const qsizetype most = typed.size() * 3;
    const QString fitting = InsertionFor(QStringView(), typed, most).text;
    if (column.maxLength > 0 && fitting.size() > column.maxLength)
        return Failure{tr("The text is longer than %1 characters.").arg(column.maxLength)};
    return fitting;
}

void DataGrid::PasteText(const QModelIndex& cell, const QString& text, bool isStored) {
    const GridColumn& column = m_records->Columns()[static_cast<std::size_t>(cell.column())];
    if (!cell.flags().testFlag(Qt::ItemIsEditable))
        return;
    if (column.values.empty() && !isStored && column.maxLength > 0) {
        // As if it were typed: what finds no room is left out. A letter has at most three characters before it is
        // composed.
        const QString typed = text.trimmed().left(column.maxLength * 3);
        WriteCell(cell, InsertionFor(QStringView(), typed, column.maxLength).text);
        return;
    }
    const Result<QString> fitting = Fitting(column, text, isStored);
    if (fitting)
        WriteCell(cell, *fitting);
    else
        Q_EMIT DataError(fitting.Error());
}

GridBlocks DataGrid::Blocks() {
    std::vector<int> shown;
    for (int column = 0; column < m_records->columnCount(); ++column) {
        if (!isColumnHidden(column))
            shown.push_back(column);
    }
    return {*m_records, std::move(shown), [this](const GridColumn& column, const QString& text, bool isStored) {
                return Fitting(column, text, isStored);
            }};
}

void DataGrid::Tell(const Result<>& done) {
    if (!done)
        Q_EMIT DataError(done.Error());
}

void DataGrid::Copy() {
    CellBlock block;
    int row = -1;
    for (const QModelIndex& cell : SelectedCells()) {
        if (m_records->IsNewRow(cell.row()) && row >= 0)
            break;
        if (cell.row() != row)
            block.rows.emplace_back();
        row = cell.row();
        block.rows.back() += cell.data(Qt::DisplayRole).toString();
    }
    if (block.rows.empty())
        return;
    std::unique_ptr<QMimeData> data =
        cellblock::MimeOf(block, [this](const QString& stored) { return Readable(stored); });
    // An editor of a single cell takes the letters as they are.
    if (block.rows.size() == 1 && block.rows[0].size() == 1)
        data->setData(copied::StoredType(), block.rows[0][0].toUtf8());
    QApplication::clipboard()->setMimeData(data.release());
}

void DataGrid::Cut() {
    Copy();
    Tell(Blocks().Clear(SelectedCells()));
}

void DataGrid::Paste() {
    const QModelIndexList cells = SelectedCells();
    const QMimeData* const data = QApplication::clipboard()->mimeData();
    std::optional<CellBlock> block = cellblock::Of(data);
    if (!block || cells.isEmpty())
        return;
    // What an editor or the ticket designer has copied are letters too.
    if (const std::optional<QString> stored = copied::StoredText(data); stored && !block->isStored)
        block = CellBlock{{{*stored}}, true};
    if (cells.size() == 1 && block->rows.size() == 1 && block->rows[0].size() == 1) {
        PasteText(cells.first(), block->rows[0][0], block->isStored);
        return;
    }
    Tell(Blocks().Paste(cells.first().row(), cells.first().column(), *block, cells));
}

void DataGrid::FillDown() {
    Tell(Blocks().FillDown(SelectedCells()));
}

void DataGrid::FillSeries() {
    Tell(Blocks().FillSeries(SelectedCells()));
}

void DataGrid::DuplicateRows() {
    std::vector<int> rows = SelectedRows();
    // On the blank row the one above is meant, where Enter has come from.
    if (rows.empty() && CanAdd() && m_records->rowCount() > 1)
        rows.push_back(m_records->rowCount() - 2);
    if (rows.empty())
        return;
    const int first = m_records->rowCount() - 1;
    const Result<> done = Blocks().Duplicate(rows);
    Tell(done);
    if (done && !m_records->IsNewRow(first))
        setCurrentIndex(m_records->index(first, currentIndex().column()));
}

void DataGrid::DeleteRows() {
    if (!CanRemove())
        return;
    const std::vector<int> rows = SelectedRows();
    if (rows.size() > 1) {
        m_wantedRows.clear();
        for (const int row : rows)
            m_wantedRows.push_back(m_records->Key(row));
        Q_EMIT RemovalWanted(static_cast<int>(rows.size()));
    } else if (!rows.empty()) {
        Tell(m_records->Remove(rows.front()));
    }
}

void DataGrid::RemoveWantedRows() {
    std::vector<int> rows;
    for (int row = 0; m_records && row < m_records->rowCount(); ++row) {
        if (std::find(m_wantedRows.begin(), m_wantedRows.end(), m_records->Key(row)) != m_wantedRows.end())
            rows.push_back(row);
    }
    m_wantedRows.clear();
    if (!rows.empty())
        Tell(Blocks().Remove(rows));
}

void DataGrid::DeleteSelected() {
    if (!m_records || !selectionModel())
        return;
    if (!selectionModel()->selectedRows().isEmpty()) {
        DeleteRows();
        return;
    }
    const QModelIndexList cells = SelectedCells();
    if (cells.size() > 1)
        Tell(Blocks().Clear(cells));
    else if (!cells.isEmpty() && cells.first().flags().testFlag(Qt::ItemIsEditable))
        WriteCell(cells.first(), QString());
}

bool DataGrid::ChoosesForAll() const {
    const QModelIndexList cells = SelectedCells();
    return cells.size() > 1 && std::all_of(cells.begin(), cells.end(), [this](const QModelIndex& cell) {
               return !m_records->Columns()[static_cast<std::size_t>(cell.column())].values.empty();
           });
}

void DataGrid::TakeFromAbove() {
    const QModelIndex cell = currentIndex();
    if (cell.row() < 1 || !cell.flags().testFlag(Qt::ItemIsEditable))
        return;
    if (auto* const line = qobject_cast<QLineEdit*>(indexWidget(cell)))
        line->setText(m_records->CellText(cell.row() - 1, cell.column()));
    else if (state() != EditingState)
        WriteCell(cell, m_records->CellText(cell.row() - 1, cell.column()));
}

std::vector<int> DataGrid::BlockRows() const {
    std::set<int> rows;
    for (const QModelIndex& cell : SelectedCells())
        rows.insert(cell.row());
    if (rows.size() > 1)
        std::erase_if(rows, [this](int row) { return m_records->IsNewRow(row); });
    else if (currentIndex().isValid())
        rows = {currentIndex().row()};
    return {rows.begin(), rows.end()};
}

std::vector<qint32> DataGrid::BlockNumbers(int column) const {
    std::vector<qint32> numbers;
    for (const int row : BlockRows())
        numbers.push_back(m_records->CellText(row, column).toInt());
    return numbers;
}

DataGrid::Found DataGrid::Find(const QString& text, int step) {
    const QString wanted = Folded(text);
    if (!m_records || wanted.isEmpty())
        return {};
    std::vector<QModelIndex> places;
    for (int row = 0; row < m_records->rowCount(); ++row) {
        for (int column = 0; column < m_records->columnCount(); ++column) {
            const QModelIndex cell = m_records->index(row, column);
            if (!isColumnHidden(column) && Folded(cell.data(Qt::AccessibleTextRole).toString()).contains(wanted))
                places.push_back(cell);
        }
    }
    if (places.empty())
        return {};
    const auto count = static_cast<int>(places.size());
    // The first place that is not before the current cell.
    const auto at = std::lower_bound(places.begin(), places.end(), currentIndex());
    auto place = static_cast<int>(at - places.begin());
    if (step > 0 && at != places.end() && *at == currentIndex())
        ++place;
    else if (step < 0)
        --place;
    place = (place + count) % count;
    setCurrentIndex(places[static_cast<std::size_t>(place)]);
    scrollTo(currentIndex());
    return {place + 1, count};
}

void DataGrid::SortBy(int column) {
    QHeaderView& head = *horizontalHeader();
    if (!m_records || !m_records->CanSort() || !CommitOpenEditor())
        return;
    // The head may have turned its own mark already.
    const bool isSame = m_sortColumn == column;
    m_isSortedDown = isSame && !m_isSortedDown;
    m_sortColumn = isSame && !m_isSortedDown ? -1 : column;
    const Qt::SortOrder order = m_isSortedDown ? Qt::DescendingOrder : Qt::AscendingOrder;
    head.setSortIndicator(m_sortColumn, order);
    head.setSortIndicatorShown(m_sortColumn >= 0);
    m_records->sort(m_sortColumn, order);
}
