#pragma once

#include <initializer_list>
#include <vector>

namespace Plot {

/// The values below which such shares of all finite values lie, from 0 for the lowest to 1 for the
/// highest, in the order of the shares: limits of a colour scale that a few bright values do not
/// darken.
///
/// @return empty where no value is finite
std::vector<float> percentiles(std::vector<float> values, std::initializer_list<double> shares);

/// The same of every row of a picture, and for each share the median of the rows: a few stormy days
/// do not set the scale of all others.
///
/// @param values   row after row, as pixels have them
/// @param columns  values of a row, at least 1
/// @return empty where no value is finite
std::vector<float> percentilesOfRows(const std::vector<float> &values, int columns,
                                     std::initializer_list<double> shares);

} // namespace Plot
