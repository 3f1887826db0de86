#pragma once

#include "data/numberfile.h"

#include <QImage>

class QProgressBar;

namespace ArrayReading {

/// Reads a text file of numbers with progress in the status bar; Esc stops it.
NumberFile readShowingProgress(const QString &path);

/// Whether the first of several columns can stand on the X axis: it rises all the way.
bool firstColumnRises(const NumberTable &table);

/// A small picture of a curve: in every column of pixels from its smallest to its largest value.
QImage smallPicture(const std::vector<double> &values, const QSize &size);

} // namespace ArrayReading
