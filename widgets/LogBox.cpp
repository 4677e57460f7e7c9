#include "widgets/LogBox.h"

#include "platform/AnsiText.h"

#include <QFontDatabase>
#include <QMouseEvent>
#include <QScrollBar>

namespace {

constexpr int GatheringTime = 50; ///< milliseconds

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
    end.insertText(ansi::Visible(QStringView(m_content).sliced(m_shown)));
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
