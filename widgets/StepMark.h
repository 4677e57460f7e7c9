#pragma once

#include <QIcon>

/// How a thing stands, told by shape and colour.
enum class StepMark {
    Good,     ///< a green disc with a tick
    Doubtful, ///< a blue disc with a question mark
    Behind,   ///< an amber triangle with an exclamation mark
    Missing,  ///< an empty grey ring
    Bad,      ///< a red square with a cross
};

/// The picture, sharp at any size and scale.
QIcon MarkIcon(StepMark mark);

/// Draws it into a square.
void DrawMark(QPainter& painter, const QRectF& place, StepMark mark);
