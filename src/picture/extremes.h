#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace Plot {

struct Extremes {
    float low = 0;
    float high = 0;
    bool hasNan = false; ///< then low and high mean nothing

    /// Whether every sample was finite.
    bool finite() const { return !hasNan && std::isfinite(low) && std::isfinite(high); }
};

/// Extremes as integers in the order of the floats, which can be joined in any order: negative
/// ones count upwards from -NaN through -infinity, positive ones up to infinity and beyond it NaN.
struct ExtremeKeys {
    std::int32_t low = std::numeric_limits<std::int32_t>::max();
    std::int32_t high = std::numeric_limits<std::int32_t>::min();
};

std::int32_t orderedKey(float value);

/// The keys of the smallest and the largest of `count` samples.
ExtremeKeys extremeKeys(const float *samples, std::size_t count);

/// The values of keys that were made of at least one sample.
Extremes extremesOf(const ExtremeKeys &keys);

/// Smallest and largest of `count` samples, at least one; infinite ones count.
Extremes extremes(const float *samples, std::size_t count);

} // namespace Plot
