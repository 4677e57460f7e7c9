#include "widgets/DataGrid.h"

#include "widgets/CellDelegate.h"
#include "widgets/CopiedText.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>

#include <algorithm>

namespace {

constexpr int NarrowestColumn = 44; ///< pixels
constexpr int PictureWidth = 24;    ///< pixels
constexpr int WidestColumn = 340;   ///< pixels, for what a column shows of its own accord

/// A quarter of one colour in another.
QColor Mixed(const QColor& quarter, const QColor& rest) {
    const auto mix = [](int one, int other) { return (one + 3 * other) / 4; };
    return {mix(quarter.red(), rest.red()), mix(quarter.green(), rest.green()), mix(quarter.blue(), rest.blue())};
}

} // namespace

DataGrid::DataGrid(QWidget* parent)
    : QTableView(parent)
    , m_drag(viewport()) {
    setItemDelegate(new CellDelegate(this));
    setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed);
    setSelectionMode(ExtendedSelection);
    setTabKeyNavigation(false);
    setAlternatingRowColors(true);
    QPalette colours = palette();
    colours.setColor(
        QPalette::Inactive, QPalette::Highlight,
        Mixed(colours.color(QPalette::Active, QPalette::Highlight), colours.color(QPalette::Active, QPalette::Base)));
    colours.setColor(QPalette::Inactive, QPalette::HighlightedText, colours.color(QPalette::Active, QPalette::Text));
    setPalette(colours);
    verticalHeader()->setDefaultAlignment(Qt::AlignCenter);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 10);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    // A click there is no choice of a column.
    disconnect(horizontalHeader(), &QHeaderView::sectionPressed, this, nullptr);
    disconnect(horizontalHeader(), &QHeaderView::sectionEntered, this, nullptr);
    connect(horizontalHeader(), &QHeaderView::sectionClicked, this, &DataGrid::SortBy);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, [this](int, int before, int now) {
        // A column that is hidden or shown has no width on one side.
        m_hasUserWidths |= !m_isFitting && before > 0 && now > 0;
    });
}

void DataGrid::SetRecords(GridModel* model) {
    m_records = model;
    m_refusedText.reset();
    model->SetReadable(m_letters.readable);
    setModel(model);
    connect(model, &GridModel::modelAboutToBeReset, this, &DataGrid::NoteCurrentRow);
    connect(model, &GridModel::modelReset, this, &DataGrid::RestoreCurrentRow);
    connect(model, &GridModel::dataChanged, this, [this](const QModelIndex& first, const QModelIndex& last) {
        FitColumns();
        if (currentIndex().row() >= first.row() && currentIndex().row() <= last.row())
            Q_EMIT CurrentRowChanged();
    });
    connect(model, &GridModel::MarksChanged, viewport(), qOverload<>(&QWidget::update));
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &DataGrid::NarrowSelection);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this, &DataGrid::NarrowSelection);
    connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] {
        if (!m_isRestoring)
            Q_EMIT CurrentRowChanged();
    });
    RestoreCurrentRow();
}

void DataGrid::SetLetters(Letters letters) {
    m_letters = std::move(letters);
    if (m_records)
        m_records->SetReadable(m_letters.readable);
}

QString DataGrid::CurrentText(int column) const {
    return m_records ? m_records->CellText(currentIndex().row(), column) : QString();
}

int DataGrid::FirstEditable() const {
    const std::vector<GridColumn>& columns = m_records->Columns();
    const auto editable = std::find_if(columns.begin(), columns.end(), [](const GridColumn& c) { return !c.readOnly; });
    return editable == columns.end() ? 0 : static_cast<int>(editable - columns.begin());
}

void DataGrid::NoteCurrentRow() {
    const QModelIndex current = currentIndex();
    if (!current.isValid())
        return;
    m_currentKey = m_records->Key(current.row());
    m_currentRow = current.row();
    m_currentColumn = current.column();
}

void DataGrid::RestoreCurrentRow() {
    FitColumns();
    const int rows = m_records->rowCount();
    const int columns = m_records->columnCount();
    int row = std::clamp(m_currentRow, 0, std::max(rows - 1, 0));
    for (int i = 0; m_currentKey.isValid() && i < rows; ++i) {
        if (m_records->Key(i) == m_currentKey)
            row = i;
    }
    int column = std::clamp(m_currentColumn.value_or(FirstEditable()), 0, std::max(columns - 1, 0));
    if (isColumnHidden(column))
        column = 0;
    if (rows > 0 && columns > 0) {
        m_isRestoring = true;
        setCurrentIndex(m_records->index(row, column));
        m_isRestoring = false;
    }
    Q_EMIT CurrentRowChanged();
}

bool DataGrid::GoTo(const QVariant& key, const QString& field) {
    for (int row = 0; row < m_records->rowCount(); ++row) {
        if (m_records->Key(row) != key)
            continue;
        const std::vector<GridColumn>& columns = m_records->Columns();
        int column = static_cast<int>(std::find_if(columns.begin(), columns.end(),
                                                   [&](const GridColumn& shown) {
                                                       return shown.field.section(u'.', -1) == field && !shown.readOnly;
                                                   }) -
                                      columns.begin());
        if (column == static_cast<int>(columns.size()) || isColumnHidden(column))
            column = 0;
        setCurrentIndex(m_records->index(row, column));
        scrollTo(currentIndex());
        setFocus();
        return true;
    }
    return false;
}

int DataGrid::FittingWidth(int column) const {
    int width = std::max(sizeHintForColumn(column), horizontalHeader()->sectionSizeHint(column));
    const GridColumn& description = m_records->Columns()[static_cast<std::size_t>(column)];
    // The arrow of a list, or the picture before a word.
    const int beside = description.readOnly ? PictureWidth : NarrowestColumn;
    for (const auto& [value, text] : description.values)
        width = std::max(width, fontMetrics().horizontalAdvance(text) + beside);
    return std::clamp(width + 8, NarrowestColumn, WidestColumn);
}

void DataGrid::FitColumns() {
    if (m_hasUserWidths || !m_records)
        return;
    m_isFitting = true;
    int room = viewport()->width();
    int wide = 0;
    for (int column = 0; column < m_records->columnCount(); ++column) {
        if (isColumnHidden(column))
            continue;
        setColumnWidth(column, FittingWidth(column));
        room -= columnWidth(column);
        wide += m_records->Columns()[static_cast<std::size_t>(column)].isWide;
    }
    for (int column = 0; room > 0 && wide > 0 && column < m_records->columnCount(); ++column) {
        if (!m_records->Columns()[static_cast<std::size_t>(column)].isWide || isColumnHidden(column))
            continue;
        const int share = room / wide--;
        setColumnWidth(column, columnWidth(column) + share);
        room -= share;
    }
    m_isFitting = false;
}

void DataGrid::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    FitColumns();
}

void DataGrid::OpenListsByClick() {
    // Through the event loop: the grid is still busy with the release of the button.
    connect(
        this, &QTableView::clicked, this, [this](const QModelIndex& cell) { OpenList(cell); }, Qt::QueuedConnection);
}

void DataGrid::OpenList(const QPersistentModelIndex& cell) {
    if (!cell.isValid() || cell != currentIndex() || state() == EditingState || m_refusedText)
        return;
    const GridColumn& column = m_records->Columns()[static_cast<std::size_t>(cell.column())];
    if (column.values.empty() || !cell.flags().testFlag(Qt::ItemIsEditable))
        return;
    edit(cell);
    if (auto* list = qobject_cast<QComboBox*>(indexWidget(cell)))
        list->showPopup();
}

void DataGrid::LetRowsBeDragged() {
    setDragEnabled(true);
    setDragDropMode(DragOnly);
}

void DataGrid::startDrag(Qt::DropActions) {
    const QModelIndex cell = currentIndex();
    if (!cell.isValid() || m_records->IsNewRow(cell.row()))
        return;
    m_drag.Begin(cell.data().toString(), font());
}

DataGrid* DataGrid::DropTargetAt(QPoint place) const {
    auto* grid = m_drag.Under<DataGrid>(place);
    return grid && grid->m_dragSource == this ? grid : nullptr;
}

void DataGrid::mouseMoveEvent(QMouseEvent* event) {
    const QPoint place = event->globalPosition().toPoint();
    if (m_drag.IsRunning())
        m_drag.Follow(place, DropTargetAt(place));
    else
        QTableView::mouseMoveEvent(event);
}

void DataGrid::mousePressEvent(QMouseEvent* event) {
    if (!m_drag.IsRunning())
        QTableView::mousePressEvent(event);
}

void DataGrid::mouseReleaseEvent(QMouseEvent* event) {
    if (!m_drag.IsRunning()) {
        QTableView::mouseReleaseEvent(event);
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    m_drag.End();
    if (DataGrid* target = DropTargetAt(event->globalPosition().toPoint()))
        Q_EMIT target->RowDropped();
}

void DataGrid::hideEvent(QHideEvent* event) {
    m_drag.End();
    QTableView::hideEvent(event);
}

void DataGrid::WriteCell(const QModelIndex& index, const QString& text) {
    if (!m_records)
        return;
    const QPersistentModelIndex cell(index);
    const Result<> written = m_records->Write(index.row(), index.column(), text);
    if (written) {
        m_refusedText.reset();
        return;
    }
    m_refusedCell = cell;
    m_refusedText = text;
    Q_EMIT DataError(written.Error());
}

bool DataGrid::CommitOpenEditor() {
    if (state() == EditingState) {
        if (QWidget* editor = indexWidget(currentIndex())) {
            commitData(editor);
            closeEditor(editor, QAbstractItemDelegate::NoHint);
        }
    }
    return !HasRefusedText();
}

bool DataGrid::CommitAll(const QWidget& window) {
    const QList<DataGrid*> grids = window.findChildren<DataGrid*>();
    return std::all_of(grids.begin(), grids.end(), [](DataGrid* grid) { return grid->CommitOpenEditor(); });
}

void DataGrid::ResumeEdit() {
    // Through the event loop: the editor whose text was refused may still be about to close.
    QMetaObject::invokeMethod(this, &DataGrid::EditRefusedText, Qt::QueuedConnection);
}

void DataGrid::NarrowSelection() {
    const QModelIndex current = currentIndex();
    const QModelIndexList selected = selectionModel()->selectedIndexes();
    if (!current.isValid() || selected == QModelIndexList{current})
        return;
    // A block stays as it is: as many cells as its corners say, the current one among them.
    int top = current.row();
    int bottom = top;
    int left = current.column();
    int right = left;
    for (const QModelIndex& cell : selected) {
        top = std::min(top, cell.row());
        bottom = std::max(bottom, cell.row());
        left = std::min(left, cell.column());
        right = std::max(right, cell.column());
    }
    if (selected.size() == qsizetype(bottom - top + 1) * (right - left + 1) && selected.contains(current))
        return;
    const bool isWhole = selectionModel()->isRowSelected(current.row());
    const auto rows = isWhole ? QItemSelectionModel::Rows : QItemSelectionModel::NoUpdate;
    selectionModel()->select(current, QItemSelectionModel::ClearAndSelect | rows);
}

void DataGrid::EditRefusedText() {
    if (!m_refusedText)
        return;
    const QString text = *std::exchange(m_refusedText, std::nullopt);
    setFocus();
    if (!m_refusedCell.isValid())
        return;
    const QModelIndex cell = m_refusedCell;
    setCurrentIndex(cell);
    edit(cell);
    if (auto* line = qobject_cast<QLineEdit*>(indexWidget(cell))) {
        line->setText(text);
        line->selectAll();
    }
}

void DataGrid::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    const bool toNext = hint == QAbstractItemDelegate::EditNextItem;
    const bool isEntered = hint == QAbstractItemDelegate::SubmitModelCache;
    const bool toOther = toNext || hint == QAbstractItemDelegate::EditPreviousItem;
    // A refused text comes back into its own cell; no other one must be opened meanwhile.
    QTableView::closeEditor(editor, m_refusedText || toOther ? QAbstractItemDelegate::NoHint : hint);
    if (toOther && !m_refusedText)
        EditBeside(toNext ? 1 : -1);
    else if (isEntered && !m_refusedText)
        GoBelow();
}

void DataGrid::GoBelow() {
    const QModelIndex below = currentIndex().siblingAtRow(currentIndex().row() + 1);
    if (below.isValid())
        setCurrentIndex(below);
}

void DataGrid::EditBeside(int step) {
    const int columns = m_records ? m_records->columnCount() : 0;
    const int cells = columns * (m_records ? m_records->rowCount() : 0);
    for (int cell = currentIndex().row() * columns + currentIndex().column() + step; cell >= 0 && cell < cells;
         cell += step) {
        const QModelIndex beside = m_records->index(cell / columns, cell % columns);
        if (isColumnHidden(beside.column()) || !beside.flags().testFlag(Qt::ItemIsEditable))
            continue;
        setCurrentIndex(beside);
        edit(beside);
        return;
    }
}

void DataGrid::keyPressEvent(QKeyEvent* event) {
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (m_drag.IsRunning()) {
        if (event->key() == Qt::Key_Escape)
            m_drag.End();
    } else if (event->matches(QKeySequence::Copy)) {
        Copy();
    } else if (event->matches(QKeySequence::Paste)) {
        Paste();
    } else if (event->matches(QKeySequence::Cut)) {
        Cut();
    } else if (event->key() == Qt::Key_Delete && isPlain) {
        DeleteSelected();
    } else if (event->key() == Qt::Key_Space && event->modifiers() == Qt::ShiftModifier) {
        selectRow(currentIndex().row());
    } else if (event->key() == Qt::Key_Tab && event->modifiers() == Qt::ControlModifier) {
        LeaveForward();
    } else if (event->key() == Qt::Key_Apostrophe && event->modifiers() == Qt::ControlModifier) {
        TakeFromAbove();
    } else if (isPlain && event->text().size() == 1 && event->text()[0].isLetter() && ChoosesForAll()) {
        Tell(Blocks().Choose(SelectedCells(), event->text()[0]));
    } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && isPlain) {
        // The Enter that ends an edit comes here as well.
        if (state() != EditingState && currentIndex().flags().testFlag(Qt::ItemIsEditable))
            edit(currentIndex());
    } else {
        QTableView::keyPressEvent(event);
    }
}

GridInsertion DataGrid::InsertionFor(QStringView before, QString typed, qsizetype room) const {
    // What was typed and what was pasted come alike.
    for (const QClipboard::Mode mode : {QClipboard::Clipboard, QClipboard::Selection}) {
        const QMimeData* data = QApplication::clipboard()->mimeData(mode);
        const std::optional<QString> stored = copied::StoredText(data);
        if (stored && typed == data->text() && stored->size() <= room)
            return {0, *stored};
    }
    while (true) {
        const GridInsertion insertion = m_letters.typed ? m_letters.typed(before, typed) : GridInsertion{0, typed};
        if (typed.isEmpty() || insertion.text.size() - insertion.replaces <= room)
            return insertion;
        typed.chop(1);
    }
}
