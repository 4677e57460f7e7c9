#include "tickets/LogoImport.h"

#include <QPainter>

#include <algorithm>
#include <vector>

namespace {

constexpr int Neutral = 128;

} // namespace

LogoCells LogoFromPicture(const QImage& picture, LogoLevels levels, int threshold) {
    if (picture.isNull())
        return {};
    QImage scaled = picture;
    if (picture.width() > LargestLogoWidth || picture.height() > LargestLogoHeight)
        scaled = picture.scaled(LargestLogoWidth, LargestLogoHeight, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QImage paper(scaled.size(), QImage::Format_RGB32);
    paper.fill(Qt::white);
    QPainter(&paper).drawImage(0, 0, scaled);
    const QImage grey = paper.convertToFormat(QImage::Format_Grayscale8);

    LogoCells logo(grey.width(), grey.height());
    // What each pixel gets besides its own grey from those before it, in this row and the next one.
    const auto width = static_cast<std::size_t>(grey.width());
    std::vector<int> here(width + 2);
    std::vector<int> below(width + 2);
    for (int y = 0; y < grey.height(); ++y) {
        const uchar* row = grey.constScanLine(y);
        std::fill(below.begin(), below.end(), 0);
        for (std::size_t x = 0; x < width; ++x) {
            const bool isSpread = levels == LogoLevels::FloydSteinberg;
            const int value = isSpread ? row[x] + here[x + 1] / 16 + Neutral - threshold : row[x];
            const bool isDark = value < (isSpread ? Neutral : threshold);
            if (isDark)
                logo.PutCell(static_cast<qint32>(x), y, LogoCells::Dark);
            const int error = value - (isDark ? 0 : 255);
            here[x + 2] += error * 7;
            below[x] += error * 3;
            below[x + 1] += error * 5;
            below[x + 2] += error;
        }
        std::swap(here, below);
    }
    return logo;
}

QImage PictureOf(const LogoCells& logo) {
    QImage picture(logo.Width(), logo.Height(), QImage::Format_RGB32);
    for (qint32 y = 0; y < logo.Height(); ++y) {
        for (qint32 x = 0; x < logo.Width(); ++x) {
            const quint8 value = logo.GetCell(x, y);
            picture.setPixel(x, y, qRgb(value, value, value));
        }
    }
    return picture;
}
