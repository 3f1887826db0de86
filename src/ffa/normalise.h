#pragma once

#include <QtGlobal>
#include <vector>

namespace Ffa {

/// Brings a series to mean 0 and standard deviation 1: every sample becomes
/// (x - mean) / sigma, sigma with the denominator size - 1. Mean and sigma are computed in
/// double. An empty series stays as it is; one of a single sample, or of equal samples,
/// becomes NaN.
void normalizeSeries(float *data, quint64 size);
void normalizeSeries(double *data, qint32 count);

/// The same on a series handed over: move it in to reuse its memory, pass a copy to keep it.
std::vector<float> normalizeSeries(std::vector<float> series);
std::vector<double> normalizeSeries(std::vector<double> series);

/// Standard deviation of a sample, denominator count - 1.
///
/// @return NaN below two values
double sampleDeviation(const double *data, qint32 count);

} // namespace Ffa
