#pragma once

#include "calc/ffacandidates.h"

/// Peaks over trial periods.
namespace Tools {

/// Indices of the values above a threshold, the highest first.
std::vector<std::size_t> peaksAbove(const std::vector<float> &snr, double threshold);

/// Marks a peak and its neighbours in one direction as taken, as far as they reach without a gap of
/// more than one turn of drift over the series.
///
/// @param direction   1 or -1
/// @param lowest      value of a neighbour
/// @param turnLength  s, of the series
void takeNeighbours(const FfaSpectrum &spectrum, std::size_t peak, int direction, float lowest,
                    double turnLength, std::vector<bool> &taken);

} // namespace Tools
