#pragma once

#include <cstdint>
#include <vector>

/// The search written down as plainly as possible: one row, one value at a time, every float
/// operation in the order that defines the results. It is what the fast search must equal to
/// the last bit, and what the benchmark times beside it. The variance that S/N is computed with is
/// the engine's own, which is compared with noise.
namespace StraightFfa {

struct Result {
    std::vector<double> periods;
    std::vector<std::uint32_t> foldbins;
    std::vector<float> snr; ///< [trial][width]
};

/// Seconds spent in each stage of a search.
struct Times {
    double downsampling = 0;
    double transform = 0;
    double boxcar = 0;
};

/// Whole search over valid parameters and at least one width.
///
/// @param times  where not null, the time of each stage is added to it
Result search(const std::vector<float> &data, double tsamp,
              const std::vector<std::uint64_t> &widths, double periodMin, double periodMax,
              int binsMin, int binsMax, Times *times = nullptr);

} // namespace StraightFfa
