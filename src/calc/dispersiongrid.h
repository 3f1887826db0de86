#pragma once

#include "data/observationdata.h"

#include <vector>

/// Trial dispersions of a search for single pulses.
namespace Tools {

/// Samples, with their fraction, between the earliest and the latest band at dispersion 1.
double delaySpread(const ObservationData &header, int bands);

/// Extra delay over the band from one trial to the next, in widths of the narrowest pulse. A pulse
/// halfway between two trials is then smeared by 0.6 widths W; with zeta = 0.8326 times that, as
/// Cordes & McLaughlin 2003 (ApJ 596, 1142, eq. 12) have it for a Gaussian, it keeps
/// sqrt(pi) / 2 erf(zeta) / zeta = 0.923 of its S/N: 8 % are lost at most.
inline constexpr double delayOfStep = 1.2;

/// The step of dispersion, pc/cm^3, that loses at most 8 % of pulses of so many samples.
///
/// @return infinite where all bands have one frequency
double dispersionStep(const ObservationData &header, int bands, double width);

/// From `least` on in equal steps, the first one at or beyond `most` the last.
///
/// @param step  above 0; infinite: `least` alone
std::vector<double> dispersionGrid(double least, double most, double step);

} // namespace Tools
