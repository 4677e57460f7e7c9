#pragma once

#include "tickets/LogoCells.h"

#include <QImage>

/// How the grey of a picture becomes the two levels of a logo.
enum class LogoLevels {
    Threshold,      ///< what is darker than a limit is dark
    FloydSteinberg, ///< dots as dense as the picture is dark
};

/// Makes a logo of a picture: scaled down to fit 576 x 128 pixels in its proportions, never up; what is transparent is
/// white.
/// @param threshold 0 to 255: grey values below it are dark; with Floyd-Steinberg it shifts the brightness, 128 being
///                  neutral.
LogoCells LogoFromPicture(const QImage& picture, LogoLevels levels, int threshold);

/// The logo as a picture of dark grey and white, one pixel a cell.
QImage PictureOf(const LogoCells& logo);
