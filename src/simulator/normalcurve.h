#pragma once

#include <vector>

namespace Simulator {

/// e^-y for y from 0 to 32, with the four operations alone.
double expOfMinus(double y);

/// Share of a normal distribution (mean 0, sigma 1) that lies below x. Computed with the four
/// operations alone, so that every machine gets the same bits; absolute error below 1e-13.
double normalDistribution(double x);

/// 65536 equally likely values whose distribution is normal with mean 0; the sum of two of
/// them, drawn independently, has variance 1. Made once per process.
///
/// One 32-bit random number draws two of them, which gives 2^32 different sums out to 6.1
/// sigma. The sum rather than one value, because the table alone ends at 4.3 sigma in coarse
/// steps.
const std::vector<float> &noiseTable();

} // namespace Simulator
