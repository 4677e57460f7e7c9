#include "widgets/FlowLayout.h"

#include <QBoxLayout>

#include <algorithm>

FlowLayout::FlowLayout() = default;

FlowLayout::~FlowLayout() {
    for (const QLayoutItem* const item : m_items)
        delete item;
}

void FlowLayout::InPlaceOf(QBoxLayout& row) {
    auto* const around = qobject_cast<QBoxLayout*>(row.parent());
    Q_ASSERT(around);
    const int place = around->indexOf(&row);
    auto* const flow = new FlowLayout;
    flow->setSpacing(row.spacing());
    while (QLayoutItem* const item = row.takeAt(0)) {
        if (QLayout* const inner = item->layout())
            flow->Add(*inner);
        else
            flow->addItem(item);
    }
    delete around->takeAt(place);
    around->insertLayout(place, flow);
}

void FlowLayout::Add(QLayout& inner) {
    addChildLayout(&inner);
    addItem(&inner);
}

void FlowLayout::addItem(QLayoutItem* item) {
    m_items.push_back(item);
    invalidate();
}

int FlowLayout::count() const {
    return static_cast<int>(m_items.size());
}

QLayoutItem* FlowLayout::itemAt(int index) const {
    return index >= 0 && index < count() ? m_items[static_cast<std::size_t>(index)] : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index) {
    QLayoutItem* const item = itemAt(index);
    if (item)
        m_items.erase(m_items.begin() + index);
    return item;
}

int FlowLayout::heightForWidth(int width) const {
    return Arrange(QRect(0, 0, width, 0), false);
}

void FlowLayout::setGeometry(const QRect& place) {
    QLayout::setGeometry(place);
    Arrange(place, true);
}

QSize FlowLayout::sizeHint() const {
    int width = 0;
    int height = 0;
    for (const QLayoutItem* const item : m_items) {
        if (item->isEmpty())
            continue;
        width += item->sizeHint().width() + std::max(0, spacing());
        height = std::max(height, item->sizeHint().height());
    }
    return {width, height};
}

QSize FlowLayout::minimumSize() const {
    QSize size;
    for (const QLayoutItem* const item : m_items) {
        if (!item->isEmpty())
            size = size.expandedTo(item->minimumSize());
    }
    return size;
}

int FlowLayout::Arrange(const QRect& place, bool apply) const {
    const int gap = std::max(0, spacing());
    int y = place.y();
    auto first = m_items.begin();
    while (first != m_items.end()) {
        // One line: as many items as there is room for, all in the middle of its height.
        int width = 0;
        int height = 0;
        int springs = 0;
        auto end = first;
        for (; end != m_items.end(); ++end) {
            springs += (*end)->spacerItem() != nullptr;
            if ((*end)->isEmpty())
                continue;
            const QSize size = (*end)->sizeHint();
            if (width > 0 && width + gap + size.width() > place.width())
                break;
            width += (width > 0 ? gap : 0) + size.width();
            height = std::max(height, size.height());
        }
        int x = place.x();
        int rest = std::max(0, place.width() - width);
        for (; first != end; ++first) {
            if ((*first)->spacerItem()) {
                const int share = rest / springs--;
                x += share;
                rest -= share;
            }
            if ((*first)->isEmpty())
                continue;
            const QSize size = (*first)->sizeHint().boundedTo(QSize(place.width(), height));
            if (apply)
                (*first)->setGeometry(QRect(QPoint(x, y + (height - size.height()) / 2), size));
            x += size.width() + gap;
        }
        y += height + (end == m_items.end() ? 0 : gap);
    }
    return y - place.y();
}
