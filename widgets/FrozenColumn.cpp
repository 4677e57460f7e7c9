#include "widgets/FrozenColumn.h"

#include "widgets/DataGrid.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QStyledItemDelegate>

namespace {

/// Draws a cell as the grid does. The grid's own delegate would tell two views when an editor closes.
class SameDrawing final : public QStyledItemDelegate {
public:
    explicit SameDrawing(DataGrid& grid, QObject* parent)
        : QStyledItemDelegate(parent)
        , m_grid(grid) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        m_grid.itemDelegate()->paint(painter, option, index);
    }

private:
    const DataGrid& m_grid;
};

} // namespace

FrozenColumn::FrozenColumn(DataGrid& grid)
    : QTableView(&grid)
    , m_grid(grid) {
    setModel(grid.model());
    setSelectionModel(grid.selectionModel());
    setItemDelegate(new SameDrawing(grid, this));
    setFont(grid.font());
    setPalette(grid.palette());
    setFocusPolicy(Qt::NoFocus);
    setFrameShape(QFrame::NoFrame);
    setEditTriggers(NoEditTriggers);
    setAlternatingRowColors(grid.alternatingRowColors());
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(grid.verticalScrollMode());
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(grid.verticalHeader()->defaultSectionSize());
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    // A scroll bar moves by whole cells otherwise, and what lies below this column would be hidden half.
    grid.setHorizontalScrollMode(ScrollPerPixel);
    connect(horizontalHeader(), &QHeaderView::sectionClicked, grid.horizontalHeader(), &QHeaderView::sectionClicked);
    connect(grid.verticalScrollBar(), &QScrollBar::valueChanged, verticalScrollBar(), &QScrollBar::setValue);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, grid.verticalScrollBar(), &QScrollBar::setValue);
    connect(grid.horizontalHeader(), &QHeaderView::sectionResized, this, &FrozenColumn::LieOver);
    connect(grid.horizontalHeader(), &QHeaderView::geometriesChanged, this, &FrozenColumn::LieOver);
    connect(model(), &QAbstractItemModel::modelReset, this, &FrozenColumn::LieOver);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this, &FrozenColumn::Uncover);
    grid.installEventFilter(this);
    viewport()->installEventFilter(this);
    LieOver();
    show();
}

void FrozenColumn::LieOver() {
    // A window that goes may hide its grids behind their records.
    if (!model())
        return;
    for (int column = 1; column < model()->columnCount(); ++column)
        setColumnHidden(column, true);
    const int width = m_grid.columnWidth(0);
    setColumnWidth(0, width);
    horizontalHeader()->setFixedHeight(m_grid.horizontalHeader()->height());
    const QRect cells = m_grid.viewport()->geometry();
    setGeometry(cells.left(), cells.top() - m_grid.horizontalHeader()->height(), std::min(width, cells.width()),
                cells.height() + m_grid.horizontalHeader()->height());
    raise();
}

void FrozenColumn::Uncover(const QModelIndex& current) {
    if (!current.isValid() || current.column() == 0)
        return;
    const int hidden = width() - m_grid.visualRect(current).left();
    if (hidden > 0)
        m_grid.horizontalScrollBar()->setValue(m_grid.horizontalScrollBar()->value() - hidden);
}

bool FrozenColumn::eventFilter(::QObject* watched, QEvent* event) {
    if (watched == &m_grid) {
        if (event->type() == QEvent::Resize || event->type() == QEvent::Show)
            QMetaObject::invokeMethod(this, &FrozenColumn::LieOver, Qt::QueuedConnection);
        else if (event->type() == QEvent::FontChange)
            setFont(m_grid.font());
        return false;
    }
    if (event->type() == QEvent::MouseButtonPress)
        m_grid.setFocus(Qt::MouseFocusReason);
    if (event->type() == QEvent::ContextMenu) {
        const auto& wanted = static_cast<const QContextMenuEvent&>(*event);
        QContextMenuEvent menu(wanted.reason(), m_grid.viewport()->mapFromGlobal(wanted.globalPos()),
                               wanted.globalPos());
        return QCoreApplication::sendEvent(m_grid.viewport(), &menu);
    }
    return QTableView::eventFilter(watched, event);
}
