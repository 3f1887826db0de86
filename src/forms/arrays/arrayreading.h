#pragma once

#include "data/numberfile.h"

#include <QImage>

namespace ArrayReading {

/// The whole file, with progress in the status bar; Esc stops it.
NumberFile readShowingProgress(const QString &path);

/// A small picture of a curve: in every column of pixels from its smallest to its largest value.
QImage smallPicture(const std::vector<double> &values, const QSize &size);

} // namespace ArrayReading
