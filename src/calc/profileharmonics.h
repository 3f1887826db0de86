#pragma once

#include <complex>
#include <vector>

/// Profiles as sums of harmonics: so they are turned by any part of a bin, and so their noise,
/// which bins that share samples have in common, falls into independent numbers.
namespace Tools {

/// Noise of a profile whose bins share samples with their neighbours.
///
/// A mean over w bins has the variance sigma^2 / w (1 - shared / w). Where bin edges drift through
/// samples, a bin of L samples has shared = 1 / (3 L); where every edge falls between two samples
/// nothing is shared. Turning a profile and adding up profiles changes neither law nor `shared`.
struct ProfileNoise {
    double sigma = 0;  ///< of a bin, had it all of its samples for itself
    double shared = 0; ///< 0 to a third

    double binVariance() const { return sigma * sigma * (1 - shared); }
    /// Covariance of a bin with its neighbour.
    double covariance() const { return sigma * sigma * shared / 2; }
    /// Mean square of the noise of harmonic k of so many bins.
    double harmonicVariance(int k, int bins) const;
};

/// c_k = sum over i of p_i exp(-2 pi i k i / N), k = 0 .. N / 2 of N bins.
using Harmonics = std::vector<std::complex<double>>;

/// @param bins  a power of two, at least 4
Harmonics harmonicsOf(const double *profile, int bins);
Harmonics harmonicsOf(const std::vector<double> &profile);

/// The profile of harmonics: 2 (size - 1) bins.
std::vector<double> profileOf(const Harmonics &harmonics);

/// Adds `weight` times a profile that is moved later by so many turns. Of the highest harmonic,
/// whose phase no profile holds, the part along its own direction stays.
void addTurned(const Harmonics &harmonics, double turns, double weight, Harmonics &sum);

/// The same profile moved later by so many turns.
std::vector<double> turnedProfile(const std::vector<double> &profile, double turns);

} // namespace Tools
