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

/// Variance of a downsampled sample for white noise of unit variance, as every S/N of a search
/// takes it: with F = floor(factor), x = N (factor - F) and N downsampled samples, factor - 1/3
/// for x > 1, else (F - 1)^2 + 2/3 x^2 - x + 1. The second, of whole factors, is far above the
/// true variance from F = 3 on: compare trueVariance().
///
/// @param size  samples before downsampling
double downsampledVariance(quint64 size, double factor);

/// True variance of such a sample, the mean of the sum of the squared weights over all of them: an
/// interval that begins x and ends y behind the begin of a sample has factor - x (1 - x) - y (1 -
/// y). The sum of w neighbouring samples has (w - 1) factor more.
///
/// @param size  samples before downsampling
double trueVariance(quint64 size, double factor);

} // namespace Ffa
