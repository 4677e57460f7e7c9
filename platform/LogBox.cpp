#include "platform/LogBox.h"

#include <QFontDatabase>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>

namespace {

constexpr int GatheringTime = 50; ///< milliseconds

/// One sign for each control character: those of the frames have their own, all others are a dot.
QChar Visible(QChar character) {
    switch (character.unicode()) {
    case 0x02:
        return u'\u25B8';
    case 0x03:
        return u'\u25C2';
    case 0x06:
        return u'\u2713';
    default:
        return character.unicode() < 0x20 || character.unicode() == 0x7F ? QChar(u'\u00B7') : character;
    }
}

QString Visible(QStringView text) {
    QString visible(text.size(), Qt::Uninitialized);
    std::transform(text.begin(), text.end(), visible.begin(), [](QChar character) { return Visible(character); });
    return visible;
}

} // namespace

LogBox::LogBox(QWidget* parent)
    : QPlainTextEdit(parent) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setFamilies({QStringLiteral("Terminal"), font.family()});
    font.setStyleHint(QFont::Monospace);
    setFont(font);
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setLineWrapMode(WidgetWidth);
    setWordWrapMode(QTextOption::WrapAnywhere);
    setTabChangesFocus(true);
    m_gathering.setSingleShot(true);
    m_gathering.setInterval(GatheringTime);
    connect(&m_gathering, &QTimer::timeout, this, &LogBox::ShowGathered);
}

void LogBox::Add(const QString& text) {
    if (m_content.size() > m_limit) {
        m_content.clear();
        m_shown = 0;
        m_startsAnew = true;
    }
    m_content += text;
    if (!m_gathering.isActive())
        m_gathering.start();
}

void LogBox::ShowGathered() {
    if (std::exchange(m_startsAnew, false))
        clear();
    // A cursor of its own, so that what the user has selected stays selected.
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    end.insertText(Visible(QStringView(m_content).sliced(m_shown)));
    m_shown = m_content.size();
    if (!textCursor().hasSelection())
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void LogBox::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
    m_content.clear();
    m_shown = 0;
    m_startsAnew = false;
    clear();
}
