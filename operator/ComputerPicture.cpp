#include "operator/ComputerPicture.h"

#include "widgets/Artwork.h"

#include <QMouseEvent>
#include <QPainter>

namespace {

constexpr QRect LampPlace(29, 29, 42, 28);
constexpr QColor Lit(0, 255, 0);
constexpr QColor Dark(127, 127, 127);

} // namespace

ComputerPicture::ComputerPicture(QWidget* parent)
    : QWidget(parent) {
    setFixedSize(artwork::ComputerSize);
}

void ComputerPicture::SetLamp(bool isLit) {
    if (m_hasLamp && m_isLit == isLit)
        return;
    m_hasLamp = true;
    m_isLit = isLit;
    update();
}

void ComputerPicture::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawPixmap(0, 0, artwork::Computer(devicePixelRatioF()));
    if (m_hasLamp)
        painter.fillRect(LampPlace, m_isLit ? Lit : Dark);
}

void ComputerPicture::mousePressEvent(QMouseEvent* event) {
    Q_EMIT Pressed(event->button(), event->modifiers());
}
