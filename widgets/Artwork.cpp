#include "widgets/Artwork.h"

#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

/// The pictures lie in a static library: the linker keeps them only if they are asked for.
static void InitPictures() {
    Q_INIT_RESOURCE(pictures);
}

namespace {

QPixmap Draw(const QString& name, QSize size, qreal scale) {
    const QString key = QStringLiteral("orvex:%1@%2x%3").arg(name).arg(size.width()).arg(scale);
    QPixmap picture;
    if (QPixmapCache::find(key, &picture))
        return picture;
    picture = QPixmap((QSizeF(size) * scale).toSize());
    picture.fill(Qt::transparent);
    InitPictures();
    {
        QPainter painter(&picture);
        QSvgRenderer(QStringLiteral(":/pictures/%1.svg").arg(name)).render(&painter);
    }
    picture.setDevicePixelRatio(scale);
    QPixmapCache::insert(key, picture);
    return picture;
}

} // namespace

QPixmap artwork::Object(int type, qreal scale) {
    switch (type) {
    case 0:
        return Draw(QStringLiteral("counter"), ObjectSize, scale);
    case 1:
        return Draw(QStringLiteral("printer"), ObjectSize, scale);
    case 2:
        return Draw(QStringLiteral("display"), ObjectSize, scale);
    default:
        return Draw(QStringLiteral("hub"), ObjectSize, scale);
    }
}

QPixmap artwork::Computer(qreal scale) {
    return Draw(QStringLiteral("pc"), ComputerSize, scale);
}

QPixmap artwork::Sign(int size) {
    return Draw(QStringLiteral("orvex"), QSize(size, size), 1);
}
