#include "platform/LogBox.h"

#include <QFontDatabase>
#include <QMouseEvent>

namespace {

constexpr int GatheringTime = 50; ///< milliseconds

/// Control characters as the pictures that Unicode has for them.
QString Visible(QStringView text) {
    constexpr char16_t Pictures = 0x2400;
    QString visible;
    visible.reserve(text.size());
    for (const QChar character : text)
        visible += character.unicode() < 0x20 ? QChar(char16_t(Pictures + character.unicode())) : character;
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
    moveCursor(QTextCursor::End);
    insertPlainText(Visible(QStringView(m_content).sliced(m_shown)));
    m_shown = m_content.size();
}

void LogBox::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
    m_content.clear();
    m_shown = 0;
    m_startsAnew = false;
    clear();
}
