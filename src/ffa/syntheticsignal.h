#pragma once

#include <QtGlobal>
#include <vector>

/// Known input for trying a search.
namespace Ffa {

/// A train of von Mises pulses, with white Gaussian noise where stdnoise is above 0.
///
/// @param nsamp     samples
/// @param period    samples
/// @param phase     of the first maximum, as a fraction of the period
/// @param ducy      full width of a pulse at half maximum, as a fraction of the period
/// @param amplitude square root of the sum of squares of the pulses: the S/N of a matched
///                  filter in noise of standard deviation 1
/// @return nsamp values; empty, after a debug line, when nsamp is negative or needs more
///         memory than there is
std::vector<float> syntheticPulseSignal(qint64 nsamp, double period, double phase, double ducy,
                                        double amplitude, double stdnoise);

/// Independent normal deviates from a 32-bit Mersenne Twister with a new seed at every call.
///
/// @return count values; empty, after a debug line, as above
std::vector<double> gaussianSeries(qint64 count, double mean, double sigma);

/// Draws a gaussianSeries() and prints to the standard output how many of its values round
/// to each integer, for a look at the generator.
void printGaussianCounts(qint64 count, double mean, double sigma);

} // namespace Ffa
