#pragma once

#include "calc/dedispersion.h"

#include <functional>
#include <vector>

/// Boxcars in the sums of many dispersions: running sums of neighbouring points in units of their
/// own noise.
namespace Tools {

/// 1 over the standard deviation of each width's running sums.
///
/// A width's noise is that of its own series, from its samples within three sigmas, so that pulses
/// hardly count. Wide boxcars have few independent values; their noise is never taken below what
/// independent points of the narrowest one's noise would give.
///
/// @param series  level 0
/// @param widths  points, ascending
/// @return 0 for a width whose series is constant or as long as the series
std::vector<float> boxcarScales(const float *series, int count, const std::vector<int> &widths);

/// The same at every trial: measured at some of them, on lines between.
///
/// @param rows  see DispersionTree::sumBlock()
/// @return [trial][width]
std::vector<float> boxcarScales(const BandRows &rows, DispersionTree &tree,
                                const std::vector<int> &widths);

/// A boxcar above the threshold, the best of a run of neighbouring places.
struct BoxcarEvent {
    int trial = 0;
    int first = 0; ///< point
    int width = 1; ///< points
    float snr = 0;
};

/// Finds the boxcars above a threshold at all trials.
///
/// @param rows       with level 0; zeros around as latest() and earliest() of the tree and the
///                   widest boxcar ask for, see rowsFor()
/// @param scales     [trial][width], of boxcarScales()
/// @param isStopped  asked every block
/// @return by block of time, trial and place; none when stopped
std::vector<BoxcarEvent> findBoxcars(const BandRows &rows, DispersionTree &tree,
                                     const std::vector<int> &widths,
                                     const std::vector<float> &scales, float threshold,
                                     const std::function<bool()> &isStopped = {});

/// Rows of zeros with the room around that findBoxcars() needs.
BandRows rowsFor(const DispersionTree &tree, int bands, int count, const std::vector<int> &widths);

/// Bytes of the rows and of what findBoxcars() works with.
qint64 boxcarBytes(const DispersionTree &tree, int bands, int count,
                   const std::vector<int> &widths);

} // namespace Tools
