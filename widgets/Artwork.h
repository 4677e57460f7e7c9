#pragma once

#include <QPixmap>

/// The program's own pictures, drawn from vectors so that they are sharp at any scale.
namespace artwork {

constexpr QSize ObjectSize(67, 105); ///< pixels at scale 1 of the picture of an object
constexpr QSize ComputerSize(100, 96);

/// A device: 0 counter, 1 printer, 2 information display, 3 hub (and everything else). Drawn once for each scale.
QPixmap Object(int type, qreal scale);

/// The computer at the end of the line.
QPixmap Computer(qreal scale);

/// The program's sign.
QPixmap Sign(int size);

} // namespace artwork
