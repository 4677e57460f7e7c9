#include "widgets/InnerDrag.h"

#include <QLabel>

void InnerDrag::Begin(const QString& text, const QFont& font) {
    m_label = new QLabel(text, m_source->window());
    m_label->setFont(font);
    m_label->setMargin(3);
    m_label->setAutoFillBackground(true);
    m_label->setBackgroundRole(QPalette::Highlight);
    m_label->setForegroundRole(QPalette::HighlightedText);
    m_label->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_label->adjustSize();
    Follow(QCursor::pos(), false);
    m_label->show();
}

void InnerDrag::Follow(QPoint place, bool isTaken) {
    m_label->move(m_source->window()->mapFromGlobal(place) + QPoint(12, 12));
    m_label->raise();
    m_source->setCursor(isTaken ? Qt::DragCopyCursor : Qt::ForbiddenCursor);
}

void InnerDrag::End() {
    if (!m_label)
        return;
    delete m_label;
    m_source->unsetCursor();
}
