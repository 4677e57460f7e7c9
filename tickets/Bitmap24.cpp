#include "tickets/Bitmap24.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace {

constexpr qint64 HeaderSize = 54;          ///< bytes of both headers
constexpr qint64 InfoHeaderSize = 40;      ///< bytes of the second one
constexpr qint64 MostPixels = 100'000'000; ///< bytes
constexpr qint32 Resolution = 3780;        ///< pixels a metre

qint32 NumberAt(const QByteArray& bytes, qsizetype place) {
    return qFromLittleEndian<qint32>(bytes.constData() + place);
}

void Append(QByteArray& bytes, qint32 number) {
    const qint32 stored = qToLittleEndian(number);
    bytes.append(reinterpret_cast<const char*>(&stored), sizeof stored);
}

} // namespace

QString InvalidBitmapText() {
    return QStringLiteral("Invalid Bitmap Format (not a 24-bit RGB)");
}

QString LogoTooLargeText() {
    return QStringLiteral("Logo must size smaller than 576 pixels width and 128 pixels height.");
}

std::optional<Bitmap24> LoadBitmap24(const QString& path) {
    QFile file(path);
    // A pipe or a device would be waited for.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return Bitmap24();
    return ReadBitmap24(file);
}

std::optional<Bitmap24> ReadBitmap24(QIODevice& file) {
    const QByteArray header = file.read(HeaderSize);
    if (!header.startsWith("BM"))
        return Bitmap24();
    if (header.size() < HeaderSize || static_cast<quint32>(NumberAt(header, 10)) > HeaderSize)
        return std::nullopt;
    Bitmap24 bitmap{NumberAt(header, 18), NumberAt(header, 22), {}};
    if (bitmap.width < 0 || bitmap.height < 0)
        return std::nullopt;
    const qint64 stride = Bitmap24::StrideOf(bitmap.width);
    if (stride > MostPixels || stride * bitmap.height > MostPixels)
        return std::nullopt;
    bitmap.data = file.read(stride * bitmap.height);
    if (bitmap.data.size() < stride * bitmap.height)
        return std::nullopt;
    return bitmap;
}

QByteArray BitmapFile(const Bitmap24& bitmap) {
    QByteArray file = QByteArrayLiteral("BM");
    Append(file, static_cast<qint32>(HeaderSize + bitmap.data.size()));
    Append(file, 0);
    Append(file, HeaderSize);
    Append(file, InfoHeaderSize);
    Append(file, bitmap.width);
    Append(file, bitmap.height);
    Append(file, 1 | 24 << 16); // planes and bits a pixel, two bytes each
    Append(file, 0);
    Append(file, static_cast<qint32>(bitmap.data.size()));
    Append(file, Resolution);
    Append(file, Resolution);
    Append(file, 0);
    Append(file, 0);
    return file + bitmap.data;
}
