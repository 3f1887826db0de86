#pragma once

#include <array>

/// What the maxima of noise profiles are; the numbers are written by bench/profilemaxima.cpp.
namespace Tools::Maxima {

/// ln of the number of independent places that a maximum x of noise counts as: at + slope (x - 4).
struct Places {
    double at = 0;
    double slope = 0;
};

/// For 16, 32 .. 1024 bins.
using PlacesOfBins = std::array<Places, 7>;

// Apart: bins share no sample. Sharing: bins of one sample, whose edges drift.
// clang-format off
inline constexpr PlacesOfBins peaksApart = {{
    {2.643, -0.103},
    {3.397, -0.068},
    {4.146, -0.032},
    {4.854, -0.016},
    {5.522, -0.031},
    {6.225, -0.021},
    {6.940, 0.006}}};
inline constexpr PlacesOfBins boxcarsApart = {{
    {4.371, 0.375},
    {5.237, 0.469},
    {6.012, 0.549},
    {6.671, 0.547},
    {7.338, 0.548},
    {8.018, 0.547},
    {8.703, 0.543}}};
inline constexpr PlacesOfBins peaksSharing = {{
    {2.646, -0.093},
    {3.390, -0.063},
    {4.118, -0.039},
    {4.834, -0.018},
    {5.557, 0.005},
    {6.222, -0.019},
    {6.929, -0.006}}};
inline constexpr PlacesOfBins boxcarsSharing = {{
    {4.147, 0.351},
    {5.053, 0.468},
    {5.787, 0.520},
    {6.475, 0.539},
    {7.166, 0.547},
    {7.828, 0.530},
    {8.526, 0.551}}};
// clang-format on

} // namespace Tools::Maxima
