#include "designer/TokenList.h"

#include <QApplication>
#include <QKeyEvent>

TokenList::TokenList(QWidget* parent)
    : QListWidget(parent)
    , m_drag(viewport()) {
    connect(this, &QListWidget::itemActivated, this,
            [this](const QListWidgetItem* item) { Q_EMIT TokenWanted(item->data(Qt::UserRole).toString()); });
}

void TokenList::AddToken(const QString& text, const QString& token) {
    auto* item = new QListWidgetItem(text, this);
    item->setData(Qt::UserRole, token);
}

bool TokenList::IsOverTarget(QPoint place) const {
    const auto* widget = m_drag.Under<QWidget>(place);
    return m_target && widget && (widget == m_target || m_target->isAncestorOf(widget));
}

void TokenList::mousePressEvent(QMouseEvent* event) {
    QListWidget::mousePressEvent(event);
    m_pressed = event->pos();
}

void TokenList::mouseMoveEvent(QMouseEvent* event) {
    const bool isHeld = event->buttons() == Qt::LeftButton && currentItem();
    if (!m_drag.IsRunning() && isHeld &&
        (event->pos() - m_pressed).manhattanLength() >= QApplication::startDragDistance())
        m_drag.Begin(currentItem()->data(Qt::UserRole).toString(), font());
    const QPoint place = event->globalPosition().toPoint();
    if (m_drag.IsRunning())
        m_drag.Follow(place, IsOverTarget(place));
}

void TokenList::mouseReleaseEvent(QMouseEvent* event) {
    if (!m_drag.IsRunning()) {
        QListWidget::mouseReleaseEvent(event);
        return;
    }
    m_drag.End();
    if (IsOverTarget(event->globalPosition().toPoint()))
        Q_EMIT TokenWanted(currentItem()->data(Qt::UserRole).toString());
}

void TokenList::keyPressEvent(QKeyEvent* event) {
    if (m_drag.IsRunning() && event->key() == Qt::Key_Escape)
        m_drag.End();
    else
        QListWidget::keyPressEvent(event);
}
