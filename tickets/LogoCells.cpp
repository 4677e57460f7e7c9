#include "tickets/LogoCells.h"

LogoCells::LogoCells(qint32 width, qint32 height)
    : m_width(width)
    , m_height(height)
    , m_cells(static_cast<qsizetype>(width) * height, static_cast<char>(White)) {}

LogoCells::LogoCells(const Bitmap24& bitmap)
    : LogoCells(bitmap.width, bitmap.height) {
    for (qint32 y = 0; y < m_height; ++y) {
        for (qint32 x = 0; x < m_width; ++x)
            PutCell(x, y, ToCellColour(bitmap.Red(x, y)));
    }
}

void LogoCells::PutCell(qint32 x, qint32 y, quint8 value) {
    if (x >= 0 && x < m_width && y >= 0 && y < m_height)
        m_cells[static_cast<qint64>(y) * m_width + x] = static_cast<char>(value);
}

void LogoCells::ClearCells() {
    m_cells.fill(static_cast<char>(White));
}

Bitmap24 LogoCells::ToBitmap() const {
    const qint64 stride = Bitmap24::StrideOf(m_width);
    Bitmap24 bitmap{m_width, m_height, QByteArray(stride * m_height, '\0')};
    for (qint32 y = 0; y < m_height; ++y) {
        char* row = bitmap.data.data() + (m_height - y - 1) * stride;
        for (qint32 x = 0; x < m_width; ++x)
            std::fill_n(row + static_cast<qint64>(x) * 3, 3, static_cast<char>(GetCell(x, y)));
    }
    return bitmap;
}
