#include "widgets/StepMark.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {

/// Draws a mark at whatever size it is asked for.
class MarkEngine : public QIconEngine {
public:
    explicit MarkEngine(StepMark mark)
        : m_mark(mark) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        DrawMark(*painter, rect, m_mark);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }
    QIconEngine* clone() const override { return new MarkEngine(m_mark); }

private:
    StepMark m_mark;
};

QColor ColourOf(StepMark mark) {
    switch (mark) {
    case StepMark::Good:
        return {0x2E, 0x8B, 0x3D};
    case StepMark::Doubtful:
        return {0x2A, 0x6F, 0xB8};
    case StepMark::Behind:
        return {0xD9, 0x8E, 0x04};
    case StepMark::Missing:
        return {0x80, 0x80, 0x80};
    case StepMark::Bad:
        break;
    }
    return {0xC0, 0x2A, 0x2A};
}

} // namespace

void DrawMark(QPainter& painter, const QRectF& place, StepMark mark) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    // Drawn on a square of 16.
    const qreal side = std::min(place.width(), place.height());
    painter.translate(place.center() - QPointF(side / 2, side / 2));
    painter.scale(side / 16, side / 16);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ColourOf(mark));
    const QPen white(Qt::white, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    QPainterPath sign;
    switch (mark) {
    case StepMark::Good:
        painter.drawEllipse(QRectF(1, 1, 14, 14));
        sign.moveTo(4.5, 8.5);
        sign.lineTo(7, 11);
        sign.lineTo(11.5, 5.5);
        break;
    case StepMark::Doubtful:
        painter.drawEllipse(QRectF(1, 1, 14, 14));
        sign.moveTo(5.8, 6);
        sign.cubicTo(5.8, 3, 10.4, 3, 10.4, 6);
        sign.cubicTo(10.4, 7.8, 8, 7.8, 8, 9.4);
        sign.moveTo(8, 12);
        sign.lineTo(8, 12.1);
        break;
    case StepMark::Behind:
        painter.drawPolygon(QPolygonF({{8, 1}, {15.5, 14.5}, {0.5, 14.5}}));
        sign.moveTo(8, 6);
        sign.lineTo(8, 9.5);
        sign.moveTo(8, 12.2);
        sign.lineTo(8, 12.3);
        break;
    case StepMark::Missing:
        painter.setBrush(QColor(255, 255, 255, 210));
        painter.setPen(QPen(ColourOf(mark), 2));
        painter.drawEllipse(QRectF(2, 2, 12, 12));
        break;
    case StepMark::Bad:
        painter.drawRoundedRect(QRectF(1, 1, 14, 14), 2.5, 2.5);
        sign.moveTo(5, 5);
        sign.lineTo(11, 11);
        sign.moveTo(11, 5);
        sign.lineTo(5, 11);
        break;
    }
    painter.strokePath(sign, white);
    painter.restore();
}

QIcon MarkIcon(StepMark mark) {
    return QIcon(new MarkEngine(mark));
}
