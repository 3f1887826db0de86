#pragma once

#include <QtGlobal>

namespace Ffa {

/// Averages a series by a real factor: every output sample is the sum of `factor` input
/// samples, the first and the last of them weighted by the part that lies inside. The last
/// output sample may take its last input sample with a weight above 1 where the interval
/// ends beyond the data.
///
/// The weights are computed in double and narrowed; the sum runs in float, from left to right.
///
/// @param out  floor(size / factor) values
/// @throw std::invalid_argument unless 1 < factor <= size
void downsample(const float *data, quint64 size, double factor, float *out);

/// Variance of a downsampled sample for white noise of unit variance: the mean, over the
/// phases that occur, of the sum of the squared weights. 1 for factor 1.
///
/// @param size  samples before downsampling
double downsampledVariance(quint64 size, double factor);

} // namespace Ffa
