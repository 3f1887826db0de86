#pragma once

#include <array>
#include <cstdint>

namespace Plot {

constexpr int colourCount = 256;
using ColourMap = std::array<std::uint32_t, colourCount>; ///< 0xffRRGGBB

/// Colours from dark violet over blue and green to light yellow that the eye tells
/// apart in equal steps: in the Oklab space (B. Ottosson, "A perceptual color space for image
/// processing", 2020) colour i has, with t = i / 255, the lightness 0.22 + 0.73 t, the chroma
/// 0.092 and the hue 320 - 220 t degrees. All of them lie within sRGB.
const ColourMap &colourMap();

/// Greys from white to black in equal steps of the lightness L of Oklab: high values are dark, as
/// ink on paper.
const ColourMap &greyMap();

/// The colour of pixels without a value.
constexpr std::uint32_t noValueColour = 0xff9a9a9a;

/// Colour of a value on a scale from `low` to `high`. Values beyond an end have its colour; where
/// `high` is not above `low` every value has the first.
std::uint32_t colourOfValue(float value, float low, float high, const ColourMap &map = colourMap());

} // namespace Plot
