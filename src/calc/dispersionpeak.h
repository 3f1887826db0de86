#pragma once

#include <QString>
#include <vector>

namespace Tools {

/// What limits how well a harmonic tells the dispersion.
struct HarmonicScale {
    double period = 0;    ///< of the harmonic, s
    double bandDelay = 0; ///< s of delay between the outer bands, per unit of dispersion
    double noise = 0;     ///< Rayleigh scale of the amplitudes around the harmonic
    double rounding = 0;  ///< pc/cm^3: error from delays rounded to whole samples
};

/// The dispersion at which a harmonic is strongest.
struct DispersionPeak {
    double dispersion = 0; ///< pc/cm^3
    double error = 0;      ///< pc/cm^3, one standard deviation
    QString unconstrained; ///< why there is no such number; empty when there is one
};

/// Finds the dispersion of the strongest amplitude by a parabola through the squared
/// amplitudes around the maximum. The log-likelihood of a sinusoid in Gaussian noise is
/// A^2 / (2 s^2), so that a peak A^2 = p - q (DM - DM0)^2 has the error s / sqrt(q)
/// (Ransom, Eikenberry & Middleditch 2002, AJ 124, 1788, use the same for frequencies);
/// the rounding error is added in quadrature.
///
/// @param dispersions  ascending, equally spaced, at least 5
/// @param amplitudes   one per dispersion
DispersionPeak findDispersionPeak(const std::vector<double> &dispersions,
                                  const std::vector<double> &amplitudes,
                                  const HarmonicScale &scale);

/// Rayleigh scale of the noise around one value of an amplitude spectrum: the median of its
/// 200 neighbours on each side / sqrt(ln 4).
double noiseScaleAround(const std::vector<double> &spectrum, int index);

} // namespace Tools
