#pragma once

#include "tickets/Bitmap24.h"

/// A logo as the editor shows it: one cell a pixel, dark or white.
///
/// A dark cell has the colour (127, 127, 127), not black; that is what goes into the file.
class LogoCells {
public:
    static constexpr quint8 Dark = 127;
    static constexpr quint8 White = 255;

    LogoCells() = default;
    /// All cells white.
    LogoCells(qint32 width, qint32 height);
    /// The cells of a bitmap, by its red bytes.
    explicit LogoCells(const Bitmap24& bitmap);

    qint32 Width() const { return m_width; }
    qint32 Height() const { return m_height; }
    bool IsEmpty() const { return m_width == 0 || m_height == 0; }

    /// Red, green and blue of a cell alike: `Dark` or `White`. The place must be inside the logo.
    quint8 GetCell(qint32 x, qint32 y) const {
        return static_cast<quint8>(m_cells[static_cast<qint64>(y) * m_width + x]);
    }
    /// A place outside the logo changes nothing.
    void PutCell(qint32 x, qint32 y, quint8 value);
    void ClearCells();

    /// What the bitmap file of the logo holds.
    Bitmap24 ToBitmap() const;

    /// The value of a cell for the red byte of a pixel: below 128 dark, from 128 on white.
    static quint8 ToCellColour(quint8 red) { return static_cast<quint8>(red / 128 * 128 + 127); }

    bool operator==(const LogoCells&) const = default;

private:
    qint32 m_width = 0;
    qint32 m_height = 0;
    QByteArray m_cells; ///< rows from the top
};
