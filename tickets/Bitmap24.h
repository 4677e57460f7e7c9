#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

class QIODevice;

/// The pixels of a Windows bitmap with 24 bits a pixel.
///
/// Rows from the bottom of the picture to the top, each padded to a multiple of four bytes; in a row the pixels from
/// left to right, three bytes each: blue, green, red.
struct Bitmap24 {
    qint32 width = 0;  ///< pixels
    qint32 height = 0; ///< pixels
    QByteArray data;

    /// Bytes of a row.
    static qint64 StrideOf(qint32 width) { return (static_cast<qint64>(width) * 3 + 3) / 4 * 4; }

    /// The red byte of a pixel. @param y counted from the top.
    quint8 Red(qint32 x, qint32 y) const {
        return static_cast<quint8>(data[(height - y - 1) * StrideOf(width) + static_cast<qint64>(x) * 3 + 2]);
    }
};

/// What the user is told of a file that is a bitmap, but none of these.
QString InvalidBitmapText();

/// Largest logo that a printer takes, and the text for one that is larger.
constexpr qint32 LargestLogoWidth = 576;  ///< pixels
constexpr qint32 LargestLogoHeight = 128; ///< pixels
QString LogoTooLargeText();

/// Reads a bitmap file:
///
///     0   2       10      14      18     22      26                54
///     BM  ignored offset  ignored width  height  ignored           pixels
///
/// numbers of four bytes, low byte first. Neither the bits a pixel nor the compression are looked at: a file with a
/// colour table is told by its offset above 54. A file that does not exist or does not begin with "BM" is a bitmap of
/// 0 x 0 pixels.
/// @return nothing for an offset above 54, a height or width below 0, fewer bytes than the pixels need, or pixels of
/// more than 100,000,000 bytes.
std::optional<Bitmap24> LoadBitmap24(const QString& path);
/// The same from an open file.
std::optional<Bitmap24> ReadBitmap24(QIODevice& file);

/// The file of a bitmap, with both headers in full.
QByteArray BitmapFile(const Bitmap24& bitmap);
