#pragma once

#include <cstddef>

namespace Plot {

struct Extremes {
    float low = 0;
    float high = 0;
    bool hasNan = false; ///< then low and high mean nothing

    /// Whether every sample was finite.
    bool finite() const;
};

/// Smallest and largest of `count` samples, at least one; infinite ones count.
Extremes extremes(const float *samples, std::size_t count);

} // namespace Plot
