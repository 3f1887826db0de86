#include "calc/pulsetrials.h"

#include <algorithm>
#include <cmath>

namespace Tools {

namespace {

// Pulses that the search finds in white noise, over what the product of the directions expects.
constexpr double expectedFactor = 1;

double tail(double x)
{
    return std::erfc(x / std::sqrt(2.0)) / 2;
}

// Probability that a value of correlation r with one above the threshold lies below it.
double followedBelow(double r, double threshold)
{
    if (r <= 0)
        return 1 - tail(threshold);
    // Simpson's rule over the value above the threshold, in steps of its decay.
    constexpr int cells = 200;
    constexpr double reach = 12; // decays
    const double scatter = std::sqrt(std::max(1e-12, 1 - r * r));
    double sum = 0;
    double weights = 0;
    for (int i = 0; i <= cells; ++i) {
        const double above = reach * i / cells / threshold;
        const double weight = (i == 0 || i == cells ? 1
                               : i % 2 == 1         ? 4
                                                    : 2) *
                              std::exp(-above * (threshold + above / 2));
        weights += weight;
        sum += weight * tail((r * (threshold + above) - threshold) / scatter);
    }
    return sum / weights;
}

} // namespace

double expectedPulses(const PulseTrials &trials, double threshold)
{
    double sum = 0;
    int narrower = 0;
    for (const int width : trials.widths) {
        const double inTime = followedBelow(1 - 1.0 / width, threshold);
        // A step of dispersion shifts the bands by up to its delay, on average by half of it.
        const double alike = std::max(0.0, 1 - trials.delayOfStep / 2 / width);
        const double inDispersion = 1 + (trials.dispersions - 1) * followedBelow(alike, threshold);
        const double inWidth =
            narrower > 0 ? followedBelow(std::sqrt(double(narrower) / width), threshold) : 1;
        sum += inTime * inDispersion * inWidth;
        narrower = width;
    }
    return expectedFactor * trials.points * sum * tail(threshold);
}

double pulseThreshold(const PulseTrials &trials, double expected)
{
    double low = 1;
    double high = 30;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (expectedPulses(trials, middle) > expected ? low : high) = middle;
    }
    return high;
}

double pulseTrials(const PulseTrials &trials, double threshold)
{
    return expectedPulses(trials, threshold) / tail(threshold);
}

} // namespace Tools
