#include "tickets/LogoCells.h"

#include <QBuffer>

#include <cstdlib>

/// What is taken for a bitmap has all its pixels, and as a logo it goes into a file and back unchanged.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QByteArray content(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QBuffer file(&content);
    file.open(QIODevice::ReadOnly);
    const std::optional<Bitmap24> bitmap = ReadBitmap24(file);
    if (!bitmap || bitmap->width > LargestLogoWidth || bitmap->height > LargestLogoHeight)
        return 0;
    const LogoCells logo(*bitmap);
    QByteArray written = BitmapFile(logo.ToBitmap());
    QBuffer again(&written);
    again.open(QIODevice::ReadOnly);
    const std::optional<Bitmap24> read = ReadBitmap24(again);
    if (!read || LogoCells(*read) != logo)
        std::abort();
    return 0;
}
