#pragma once

#include "data/numberfile.h"

#include <QImage>
#include <QPixmap>

namespace ArrayReading {

/// The whole file, with progress in the status bar; Esc stops it.
NumberFile readShowingProgress(const QString &path);

/// A small picture of a curve: in every column of pixels from its smallest to its largest value.
QImage smallPicture(const std::vector<double> &values, const QSize &size);

/// A square in the colour of a curve, as high as a letter.
QPixmap colourSquare(int curve);

} // namespace ArrayReading
