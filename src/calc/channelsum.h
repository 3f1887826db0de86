#pragma once

#include "data/observationdata.h"

#include <vector>

namespace Tools {

/// Sums the frequency bands of one module and ray, each band shifted back by the
/// delay `dispersion` gives it against the last band. Shifts wrap round the end
/// of the recording, so every sum has a term from every band.
///
/// Element i is, in double and in this order, sample i of the last band (channel
/// channels - 2) plus the shifted samples of the bands below it, down to channel 0.
///
/// @param data        whole recording; fbands in MHz, tresolution in s, at least 1e-05;
///                    only read
/// @param dispersion  pc/cm^3
/// @param module      index from 0, below data.modules
/// @param ray         index from 0, below data.rays
/// @return data.npoints sums in the samples' units; empty, after one debug line
///         naming the bad value, when the recording or an index is refused, a frequency is
///         missing or below 0.0001, or a delay does not fit an int
std::vector<double> sumChannels(const ObservationData &data, double dispersion, int module,
                                int ray);

} // namespace Tools
