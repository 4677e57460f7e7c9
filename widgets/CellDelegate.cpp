#include "widgets/CellDelegate.h"

#include "widgets/CopiedText.h"
#include "widgets/DataGrid.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>

#include <algorithm>

namespace {

/// A line editor that hands everything typed or pasted to the grid's text hook.
class CellEdit final : public QLineEdit {
public:
    CellEdit(DataGrid& grid, QWidget* parent)
        : QLineEdit(parent)
        , m_grid(grid) {
        connect(this, &QLineEdit::textEdited, this, &CellEdit::Convert);
        connect(QApplication::clipboard(), &QClipboard::changed, this, &CellEdit::MakeReadable);
        setFrame(false);
    }

    void Begin(const QString& text) {
        setText(text);
        m_before = text;
    }

private:
    /// What this editor has just copied, by whatever key or menu, gets its form for other programs.
    void MakeReadable(QClipboard::Mode mode) const {
        QClipboard& clipboard = *QApplication::clipboard();
        // Whatever has just been copied here is still selected.
        if (!hasFocus() || !hasSelectedText() || copied::StoredText(clipboard.mimeData(mode)))
            return;
        if (clipboard.text(mode) != selectedText())
            return;
        clipboard.setMimeData(copied::MimeOf(selectedText(), m_grid.Readable(selectedText())).release(), mode);
    }

    void Convert(const QString& edited) {
        const QString before = std::exchange(m_before, edited);
        // What was inserted ends at the cursor; what stands behind it was there before.
        const qsizetype cursor = cursorPosition();
        const qsizetype behind = edited.size() - cursor;
        qsizetype start = 0;
        const qsizetype longest = std::min(cursor, before.size() - behind);
        while (start < longest && edited[start] == before[start])
            ++start;
        if (start >= cursor)
            return;
        const GridInsertion insertion = m_grid.InsertionFor(
            QStringView(edited).first(start), edited.mid(start, cursor - start), maxLength() - start - behind);
        const qsizetype kept = std::max<qsizetype>(start - insertion.replaces, 0);
        const QString converted = edited.first(kept) + insertion.text + edited.sliced(cursor);
        if (converted == edited)
            return;
        setText(converted);
        setCursorPosition(static_cast<int>(kept + insertion.text.size()));
        m_before = text();
    }

    DataGrid& m_grid;
    QString m_before;
};

/// A list editor. What is chosen with the mouse is final; keys go through the list until Enter, Tab or a click
/// elsewhere.
class CellBox final : public QComboBox {
public:
    using QComboBox::QComboBox;

    bool IsUsingKeys() const { return m_isUsingKeys; }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        m_isUsingKeys = true;
        QComboBox::keyPressEvent(event);
        m_isUsingKeys = false;
    }

private:
    bool m_isUsingKeys = false;
};

void WriteChoice(DataGrid& grid, const QModelIndex& index, const QComboBox& box) {
    // An untouched box must not turn a value of another form, or none at all, into one of its lines.
    if (box.currentIndex() >= 0 && box.currentText() != index.data(Qt::DisplayRole).toString())
        grid.WriteCell(index, box.currentData().toString());
}

const GridColumn& ColumnOf(const QModelIndex& index) {
    return static_cast<const GridModel*>(index.model())->Columns()[static_cast<std::size_t>(index.column())];
}

} // namespace

CellDelegate::CellDelegate(DataGrid* grid)
    : QStyledItemDelegate(grid)
    , m_grid(grid) {}

QWidget* CellDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex& index) const {
    const GridColumn& column = ColumnOf(index);
    if (column.values.empty()) {
        auto* line = new CellEdit(*m_grid, parent);
        if (column.maxLength > 0)
            line->setMaxLength(column.maxLength);
        return line;
    }
    auto* box = new CellBox(parent);
    for (const auto& [value, text] : column.values)
        box->addItem(text, QString::number(value));
    connect(box, &QComboBox::activated, this, [this, box] {
        if (box->IsUsingKeys())
            return;
        auto* self = const_cast<CellDelegate*>(this);
        Q_EMIT self->commitData(box);
        Q_EMIT self->closeEditor(box);
    });
    return box;
}

void CellDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    // Only the grid with the keyboard shows its selection in full colour.
    option->state.setFlag(QStyle::State_Active, m_grid->hasFocus());
    if (!static_cast<const GridModel*>(index.model())->MarkOf(index.row(), index.column()).isEmpty()) {
        option->backgroundBrush = QColor(0xFF, 0xE0, 0x9C);
        option->palette.setColor(QPalette::Text, Qt::black);
    }
}

void CellDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    const QString text = index.data(Qt::EditRole).toString();
    if (auto* line = dynamic_cast<CellEdit*>(editor))
        line->Begin(text);
    else if (auto* box = qobject_cast<QComboBox*>(editor))
        box->setCurrentIndex(box->findText(index.data(Qt::DisplayRole).toString()));
}

void CellDelegate::setModelData(QWidget* editor, QAbstractItemModel*, const QModelIndex& index) const {
    if (const auto* line = qobject_cast<QLineEdit*>(editor))
        m_grid->WriteCell(index, line->text());
    else if (const auto* box = qobject_cast<QComboBox*>(editor))
        WriteChoice(*m_grid, index, *box);
}

bool CellDelegate::eventFilter(QObject* editor, QEvent* event) {
    auto* const widget = qobject_cast<QWidget*>(editor);
    const auto* const key = event->type() == QEvent::KeyPress ? static_cast<QKeyEvent*>(event) : nullptr;
    if (!widget || !key || key->key() != Qt::Key_Tab || key->modifiers() != Qt::ControlModifier)
        return QStyledItemDelegate::eventFilter(editor, event);
    Q_EMIT commitData(widget);
    Q_EMIT closeEditor(widget, NoHint);
    if (!m_grid->HasRefusedText())
        m_grid->LeaveForward();
    return true;
}
