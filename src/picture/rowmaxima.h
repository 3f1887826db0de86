#pragma once

#include "picture/zoom.h"

#include <vector>

namespace Plot {

/// A row of a picture whose values are not equally far apart from row to row: at the place x of
/// the common axis stands value x * ratio.
struct PictureRow {
    const float *values = nullptr;
    int count = 0;
    double ratio = 1;
};

/// The largest values of a part of many rows for a picture with fewer pixels: a narrow line stays
/// in sight however many values a pixel stands for.
///
/// @param x        part of the common axis, from its left to its right edge
/// @param columns  pixels across, at least 1; one that lies between two values has the nearest
/// @param lines    pixels down, 1 to the number of rows; each has the largest values of its rows
/// @return lines x columns values, line by line; NaN where no row has any
std::vector<float> rowMaxima(const std::vector<PictureRow> &rows, const Range &x, int columns,
                             int lines);

} // namespace Plot
