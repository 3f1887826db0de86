#include "calc/ffapeaks.h"

#include <algorithm>
#include <cmath>

namespace Tools {

namespace {

constexpr double gapTurns = 1; // that ends the neighbourhood of a peak

} // namespace

std::vector<std::size_t> peaksAbove(const std::vector<float> &snr, double threshold)
{
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < snr.size(); ++i) {
        if (double(snr[i]) > threshold)
            order.push_back(i);
    }
    std::stable_sort(order.begin(), order.end(),
                     [&snr](std::size_t a, std::size_t b) { return snr[a] > snr[b]; });
    return order;
}

void takeNeighbours(const FfaSpectrum &spectrum, std::size_t peak, int direction, float lowest,
                    double turnLength, std::vector<bool> &taken)
{
    double lastAbove = 1 / spectrum.periods[peak];
    const auto end = direction > 0 ? spectrum.periods.size() : std::size_t(-1);
    for (std::size_t i = peak; i != end; i += std::size_t(direction)) {
        const double frequency = 1 / spectrum.periods[i];
        if (std::abs(frequency - lastAbove) * turnLength > gapTurns)
            return;
        taken[i] = true;
        if (spectrum.snr[i] >= lowest)
            lastAbove = frequency;
    }
}

} // namespace Tools
