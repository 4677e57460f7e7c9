#include "widgets/LinePanels.h"

#include <QLabel>
#include <QPainter>
#include <QStatusBar>

namespace {

/// The lamp of an open or a closed line.
QPixmap LinePicture(bool opened, int height, qreal scale) {
    QPixmap picture(QSize(height, height) * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(0x50, 0x50, 0x50));
    painter.setBrush(opened ? QColor(0x2E, 0xB0, 0x40) : QColor(0xC8, 0x3C, 0x3C));
    painter.drawEllipse(QRectF(1.5, 1.5, height - 3, height - 3));
    return picture;
}

} // namespace

LinePanels::LinePanels(QStatusBar& bar)
    : m_device(new QLabel(&bar))
    , m_baud(new QLabel(&bar))
    , m_lineState(new QLabel(&bar)) {
    m_device->setObjectName(QStringLiteral("lblDevice"));
    m_baud->setObjectName(QStringLiteral("lblBaud"));
    m_lineState->setObjectName(QStringLiteral("lblLineState"));
    m_baud->setToolTip(QLabel::tr("bit/s"));
    for (QLabel* panel : {m_device, m_baud, m_lineState})
        bar.addPermanentWidget(panel);
}

void LinePanels::SetCommStatus(const QString& device, const QString& baud, bool opened) {
    if (!device.isEmpty())
        m_device->setText(device);
    if (!baud.isEmpty())
        m_baud->setText(baud);
    m_lineState->setPixmap(LinePicture(opened, m_lineState->fontMetrics().height(), m_lineState->devicePixelRatioF()));
    const QString words = opened ? QLabel::tr("The line is open") : QLabel::tr("The line is closed");
    m_lineState->setToolTip(words);
    m_lineState->setAccessibleName(words);
}
