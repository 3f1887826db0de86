#include "plot/extremes.h"

#include "base/targetclones.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Plot {

namespace {

constexpr std::int32_t magnitudeBits = std::numeric_limits<std::int32_t>::max();

// An integer in the order of the floats: negative ones count upwards from -NaN through
// -infinity, positive ones up to infinity and beyond it NaN. Minimum and maximum of integers
// are associative, so that the compiler may use vectors where it may not for floats.
std::int32_t orderedKey(float value)
{
    const auto bits = std::bit_cast<std::int32_t>(value);
    return bits ^ ((bits >> 31) & magnitudeBits);
}

// The mapping undoes itself.
float valueOfKey(std::int32_t key)
{
    return std::bit_cast<float>(key ^ ((key >> 31) & magnitudeBits));
}

} // namespace

bool Extremes::finite() const
{
    return !hasNan && std::isfinite(low) && std::isfinite(high);
}

ZRT_TARGET_CLONES
Extremes extremes(const float *samples, std::size_t count)
{
    std::int32_t low = std::numeric_limits<std::int32_t>::max();
    std::int32_t high = std::numeric_limits<std::int32_t>::min();
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t key = orderedKey(samples[i]);
        low = std::min(low, key);
        high = std::max(high, key);
    }
    const float lowest = valueOfKey(low);
    const float highest = valueOfKey(high);
    return {lowest, highest, std::isnan(lowest) || std::isnan(highest)};
}

} // namespace Plot
