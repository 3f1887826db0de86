#include "picture/extremes.h"

#include "base/targetclones.h"

#include <algorithm>
#include <bit>

namespace Plot {

namespace {

constexpr std::int32_t magnitudeBits = std::numeric_limits<std::int32_t>::max();

// Minimum and maximum of integers are associative, so that the compiler may use vectors where it
// may not for floats.
std::int32_t keyOf(float value)
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

std::int32_t orderedKey(float value)
{
    return keyOf(value);
}

ZRT_TARGET_CLONES
ExtremeKeys extremeKeys(const float *samples, std::size_t count)
{
    ExtremeKeys keys;
    std::int32_t low = keys.low;
    std::int32_t high = keys.high;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t key = keyOf(samples[i]);
        low = std::min(low, key);
        high = std::max(high, key);
    }
    keys.low = low;
    keys.high = high;
    return keys;
}

Extremes extremesOf(const ExtremeKeys &keys)
{
    const float lowest = valueOfKey(keys.low);
    const float highest = valueOfKey(keys.high);
    return {lowest, highest, std::isnan(lowest) || std::isnan(highest)};
}

Extremes extremes(const float *samples, std::size_t count)
{
    return extremesOf(extremeKeys(samples, count));
}

} // namespace Plot
