#pragma once

#include "data/numberfile.h"
#include "forms/arrays/arrayplot.h"

#include <QImage>

class QProgressBar;

namespace ArrayReading {

/// Reads a text file of numbers, or a table of this system that was written as JSON.
///
/// @param limit      bytes after which the reading stops
/// @param progress   percent; may be empty
/// @param cancelled  asked every few milliseconds; may be empty
NumberFile read(const QString &path, qint64 limit, const std::function<void(int)> &progress = {},
                const std::function<bool()> &cancelled = {});

/// The whole file, with progress in the status bar; Esc stops it.
NumberFile readShowingProgress(const QString &path);

/// The column that can stand on the X axis, for it rises all the way: the first of several; or the
/// second, where the first one only counts and is named "index".
///
/// @return below 0: none
int xColumn(const NumberFile &file);

/// Columns of numbers behind that of X, if there is one.
std::vector<int> curveColumns(const NumberFile &file, int xColumn);

/// A column as X, and what the header says of X along the rows; the index where there is none
/// of it.
ArrayPlot::XAxis axisOf(const NumberFile &file, int column);
ArrayPlot::XAxis axisOfRows(const NumberFile &file);

/// Name of a column, from 0, in the file or else by its number.
QString columnName(const NumberFile &file, int column);

/// A small picture of a curve: in every column of pixels from its smallest to its largest value.
QImage smallPicture(const std::vector<double> &values, const QSize &size);

} // namespace ArrayReading
