#pragma once

#include "calc/fourier.h"

#include <random>
#include <vector>

/// Amplitudes of white noise of so many points, padded with as many zeros.
inline std::vector<double> noiseSpectrum(int points, std::mt19937_64 &random)
{
    std::normal_distribution<double> law;
    std::vector<double> series(2 * std::size_t(points));
    for (std::size_t i = 0; i < std::size_t(points); ++i)
        series[i] = law(random);
    std::vector<double> amplitudes(static_cast<std::size_t>(points));
    Tools::amplitudeSpectrum(series.data(), amplitudes.data(), 2 * points, points);
    return amplitudes;
}
