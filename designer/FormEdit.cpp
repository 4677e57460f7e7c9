#include "designer/FormEdit.h"

#include "platform/AnsiText.h"
#include "tickets/RichText.h"
#include "tickets/VniText.h"
#include "widgets/CopiedText.h"

#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QTextBlock>
#include <QTextDocumentFragment>

#include <algorithm>

namespace {

CharacterFormat FormatFrom(const QTextCharFormat& format) {
    CharacterFormat read;
    read.bold = format.fontWeight() >= QFont::Bold;
    if (format.fontPointSize() > 0)
        read.size = format.fontPointSize();
    if (format.foreground().style() != Qt::NoBrush)
        read.colour = format.foreground().color().rgb() & 0xFFFFFF;
    return read;
}

Alignment AlignmentFrom(Qt::Alignment alignment) {
    if (alignment.testFlag(Qt::AlignHCenter))
        return Alignment::Centre;
    return alignment.testFlag(Qt::AlignRight) ? Alignment::Right : Alignment::Left;
}

QTextBlockFormat BlockFormat(Alignment alignment) {
    QTextBlockFormat format;
    format.setAlignment(alignment == Alignment::Centre  ? Qt::AlignHCenter
                        : alignment == Alignment::Right ? Qt::AlignRight
                                                        : Qt::AlignLeft);
    return format;
}

/// A value that all have in common, as long as there is one.
template <typename T>
class Common {
public:
    void Add(const T& value) {
        if (m_isFirst)
            m_value = value;
        else if (m_value != value)
            m_value.reset();
        m_isFirst = false;
    }
    const std::optional<T>& Value() const { return m_value; }

private:
    std::optional<T> m_value;
    bool m_isFirst = true;
};

TicketDocument DocumentOf(const QTextDocument& shown) {
    TicketDocument read{{}};
    for (QTextBlock block = shown.begin(); block.isValid(); block = block.next()) {
        TicketDocument::Paragraph& paragraph = read.paragraphs.emplace_back();
        paragraph.alignment = AlignmentFrom(block.blockFormat().alignment());
        paragraph.empty = FormatFrom(block.charFormat());
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            QString text = part.fragment().text();
            text.remove(QChar::ObjectReplacementCharacter);
            // A soft line end is one as well.
            const QStringList lines = text.split(QChar::LineSeparator);
            for (qsizetype line = 0; line < lines.size(); ++line) {
                if (line > 0) {
                    const Alignment alignment = read.paragraphs.back().alignment;
                    read.paragraphs.push_back({{}, alignment, FormatFrom(part.fragment().charFormat())});
                }
                read.paragraphs.back().Append(lines[line], FormatFrom(part.fragment().charFormat()));
            }
        }
    }
    return read;
}

QString FormType() {
    return QStringLiteral("application/x-orvex-form");
}

} // namespace

FormEdit::FormEdit(QWidget* parent)
    : QTextEdit(parent) {
    // A ticket is dark on white paper, whatever the desktop is.
    QPalette paper = palette();
    paper.setColor(QPalette::Base, Qt::white);
    paper.setColor(QPalette::Text, Qt::black);
    setPalette(paper);
    setAcceptRichText(false);
    SetDocument(TicketDocument());
}

QTextCharFormat FormEdit::FormatOf(const CharacterFormat& format) const {
    QTextCharFormat shown;
    shown.setFontFamilies({QStringLiteral("VNI-Aptima")});
    shown.setFontPointSize(format.size);
    shown.setFontWeight(format.bold ? QFont::Bold : QFont::Normal);
    shown.setForeground(QColor::fromRgb(format.colour));
    return shown;
}

TicketDocument FormEdit::Document() const {
    return DocumentOf(*document());
}

void FormEdit::SetDocument(const TicketDocument& shown) {
    document()->clear();
    document()->setDefaultFont(FormatOf(CharacterFormat()).font());
    QTextCursor cursor(document());
    // Laid out once, not after each piece.
    cursor.beginEditBlock();
    for (std::size_t i = 0; i < shown.paragraphs.size(); ++i) {
        const TicketDocument::Paragraph& paragraph = shown.paragraphs[i];
        const QTextCharFormat own = FormatOf(paragraph.EndFormat());
        if (i > 0)
            cursor.insertBlock(BlockFormat(paragraph.alignment), own);
        else
            cursor.setBlockFormat(BlockFormat(paragraph.alignment));
        cursor.setBlockCharFormat(own);
        for (const TicketDocument::Run& run : paragraph.runs)
            cursor.insertText(run.text, FormatOf(run.format));
    }
    cursor.endEditBlock();
    document()->clearUndoRedoStacks();
    moveCursor(QTextCursor::Start);
    const auto& first = shown.paragraphs.front();
    setCurrentCharFormat(FormatOf(first.runs.empty() ? first.empty : first.runs.front().format));
}

void FormEdit::Clear() {
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.removeSelectedText();
    cursor.setBlockFormat(BlockFormat(Alignment::Left));
    cursor.setBlockCharFormat(FormatOf(CharacterFormat()));
    cursor.endEditBlock();
    setTextCursor(cursor);
    setCurrentCharFormat(FormatOf(CharacterFormat()));
}

void FormEdit::InsertToken(const QString& token) {
    QTextCursor cursor = textCursor();
    const int start = cursor.selectionStart();
    cursor.setPosition(start);
    setTextCursor(cursor);
    InsertTyped(token);
    const int end = textCursor().position();
    cursor.setPosition(std::min(start, end));
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    setTextCursor(cursor);
    setFocus();
}

FormEdit::Formats FormEdit::SelectionFormats() const {
    const QTextCursor cursor = textCursor();
    Common<bool> bold;
    Common<double> size;
    Common<quint32> colour;
    Common<Alignment> alignment;
    const auto add = [&](const CharacterFormat& format) {
        bold.Add(format.bold);
        size.Add(format.size);
        colour.Add(format.colour);
    };
    if (!cursor.hasSelection())
        add(FormatFrom(currentCharFormat()));
    const int start = cursor.selectionStart();
    const int end = cursor.selectionEnd();
    for (QTextBlock block = document()->findBlock(start); block.isValid() && block.position() <= end;
         block = block.next()) {
        alignment.Add(AlignmentFrom(block.blockFormat().alignment()));
        for (auto part = block.begin(); cursor.hasSelection() && !part.atEnd(); ++part) {
            const QTextFragment fragment = part.fragment();
            if (fragment.position() < end && fragment.position() + fragment.length() > start)
                add(FormatFrom(fragment.charFormat()));
        }
    }
    return {bold.Value(), size.Value(), colour.Value(), alignment.Value()};
}

void FormEdit::Merge(const QTextCharFormat& format) {
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.mergeCharFormat(format);
    // The line ends of the selection, and an empty paragraph's own format.
    for (QTextBlock block = document()->findBlock(cursor.selectionStart());
         block.isValid() && block.position() <= cursor.selectionEnd(); block = block.next()) {
        if (block.length() == 1)
            QTextCursor(block).mergeBlockCharFormat(format);
    }
    cursor.endEditBlock();
    mergeCurrentCharFormat(format);
}

void FormEdit::SetBold(bool bold) {
    QTextCharFormat format;
    format.setFontWeight(bold ? QFont::Bold : QFont::Normal);
    Merge(format);
}

void FormEdit::SetSize(double points) {
    QTextCharFormat format;
    format.setFontPointSize(points);
    Merge(format);
}

void FormEdit::SetColour(quint32 colour) {
    QTextCharFormat format;
    format.setForeground(QColor::fromRgb(colour));
    Merge(format);
}

void FormEdit::SetAlignmentOf(Alignment alignment) {
    textCursor().mergeBlockFormat(BlockFormat(alignment));
}

void FormEdit::InsertTyped(const QString& typed) {
    QTextCursor cursor = textCursor();
    const int start = cursor.selectionStart();
    const QTextBlock block = document()->findBlock(start);
    const vni::Insertion insertion = vni::Typed(QStringView(block.text()).first(start - block.position()), typed);
    InsertText(insertion.text, insertion.replaces);
}

void FormEdit::InsertText(const QString& text, qsizetype replaces) {
    QTextCursor cursor = textCursor();
    const int start = cursor.selectionStart();
    QString taken;
    QString refused;
    for (const char32_t character : text.toUcs4()) {
        const QString one = QString::fromUcs4(&character, 1);
        const bool isLayout = character == '\n' || character == '\t';
        if (isLayout || (character >= ' ' && ansi::Encode(one).lacking.isEmpty()))
            taken += one;
        else if (!refused.contains(one))
            refused += one;
    }
    const QTextCharFormat format = currentCharFormat();
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    if (refused.isEmpty() || !taken.isEmpty()) {
        cursor.setPosition(start - static_cast<int>(replaces), QTextCursor::KeepAnchor);
        cursor.insertText(taken, format);
    }
    cursor.endEditBlock();
    setTextCursor(cursor);
    ensureCursorVisible();
    if (!refused.isEmpty())
        Q_EMIT Refused(refused);
}

void FormEdit::keyPressEvent(QKeyEvent* event) {
    const QString text = event->text();
    const bool isShortcut =
        event->modifiers().testFlag(Qt::ControlModifier) != event->modifiers().testFlag(Qt::AltModifier);
    if (!text.isEmpty() && text[0].isPrint() && !isShortcut) {
        InsertTyped(text);
    } else if (!text.isEmpty() && text[0].isPrint() && event->modifiers().testFlag(Qt::AltModifier)) {
        event->ignore(); // a menu's letter, whether or not there is such a menu
    } else if (event->key() == Qt::Key_Return && event->modifiers() == Qt::ShiftModifier) {
        InsertTyped(QStringLiteral("\n"));
    } else {
        QTextEdit::keyPressEvent(event);
    }
}

void FormEdit::inputMethodEvent(QInputMethodEvent* event) {
    const QString typed = event->commitString();
    if (typed.isEmpty()) {
        QTextEdit::inputMethodEvent(event);
        return;
    }
    // Ends what the input method shows, without its text.
    QInputMethodEvent rest(QString(), {});
    QTextEdit::inputMethodEvent(&rest);
    InsertTyped(typed);
    event->accept();
}

void FormEdit::InsertDocument(const TicketDocument& inserted) {
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    bool isFirst = true;
    for (const TicketDocument::Paragraph& paragraph : inserted.paragraphs) {
        if (!std::exchange(isFirst, false))
            cursor.insertBlock(BlockFormat(paragraph.alignment), FormatOf(paragraph.EndFormat()));
        else if (cursor.block().length() == 1)
            cursor.setBlockFormat(BlockFormat(paragraph.alignment));
        for (const TicketDocument::Run& run : paragraph.runs)
            cursor.insertText(run.text, FormatOf(run.format));
    }
    cursor.endEditBlock();
    setTextCursor(cursor);
    ensureCursorVisible();
}

QMimeData* FormEdit::createMimeDataFromSelection() const {
    QTextDocument selected;
    QTextCursor(&selected).insertFragment(textCursor().selection());
    const TicketDocument document = DocumentOf(selected);
    const QString text = document.Text().replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    auto data = copied::MimeOf(text, vni::ToUnicode(text));
    data->setData(FormType(), richtext::Write(document));
    return data.release();
}

bool FormEdit::canInsertFromMimeData(const QMimeData* source) const {
    return source->hasText();
}

void FormEdit::insertFromMimeData(const QMimeData* source) {
    if (source->hasFormat(FormType())) {
        if (const auto form = richtext::Read(source->data(FormType()))) {
            InsertDocument(form->document);
            return;
        }
    }
    if (const std::optional<QString> stored = copied::StoredText(source)) {
        InsertText(*stored, 0);
        return;
    }
    QString text = source->text();
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    InsertTyped(text);
}

void FormEdit::dropEvent(QDropEvent* event) {
    if (event->source() == this || event->source() == viewport()) {
        QTextEdit::dropEvent(event); // text that is moved within the form
    } else if (event->mimeData()->hasText()) {
        event->acceptProposedAction();
        InsertToken(event->mimeData()->text());
    } else {
        event->ignore();
    }
}
