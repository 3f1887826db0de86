#include "calc/leveljumps.h"

#include "calc/robuststatistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Tools {

namespace {

constexpr int levelLength = 512;  // samples whose median is a level
constexpr int gridStep = 32;      // distance of the points that are tried at first
constexpr int edgeLength = 32;    // samples beside the jump that must show it already
constexpr double threshold = 8;   // robust sigmas
constexpr double edgeShare = 0.5; // of the height, seen in the edge samples
constexpr double clipSigmas = 3;  // impulses must not decide where a jump lies

float medianOf(const float *samples, int count, std::vector<float> &scratch)
{
    scratch.assign(samples, samples + count);
    const auto middle = scratch.begin() + count / 2;
    std::nth_element(scratch.begin(), middle, scratch.end());
    return *middle;
}

// The point that splits the samples around `guess` best into two levels (least squares,
// values clipped to the neighbourhood of the levels).
int refinedPoint(const std::vector<float> &series, int guess, double before, double after,
                 double sigma)
{
    const int begin = std::max(0, guess - levelLength / 2);
    const int end = std::min(int(series.size()), guess + levelLength / 2);
    const double low = std::min(before, after) - clipSigmas * sigma;
    const double high = std::max(before, after) + clipSigmas * sigma;
    const double middle = (before + after) / 2;
    const double sign = after > before ? 1 : -1;
    // With both levels known the best split is where the clipped samples, counted from the
    // middle of the levels, have fallen short of it the most.
    double sum = 0;
    double lowest = 0;
    int best = begin;
    for (int i = begin; i < end; ++i) {
        sum += sign * (std::clamp(double(series[std::size_t(i)]), low, high) - middle);
        if (sum < lowest) {
            lowest = sum;
            best = i + 1;
        }
    }
    return best;
}

// Medians of the windows that begin at every multiple of the grid step.
class LevelGrid {
public:
    explicit LevelGrid(std::vector<float> &searched) : series(searched) {}

    // False when goOn said so before all medians were there.
    bool fill(const std::function<bool()> &goOn)
    {
        constexpr std::size_t windowsBetweenQuestions = 2048;
        const int windows = (int(series.size()) - levelLength) / gridStep + 1;
        medians.resize(std::size_t(std::max(windows, 0)));
        for (std::size_t i = 0; i < medians.size(); ++i) {
            medians[i] = medianOf(series.data() + int(i) * gridStep, levelLength, scratch);
            if (goOn && i % windowsBetweenQuestions == 0 && !goOn())
                return false;
        }
        return true;
    }

    // Grid points, multiples of the grid step, across which the level changes by more than the
    // limit; largest first.
    std::vector<int> jumpsAbove(double limit) const
    {
        constexpr std::size_t windowsBetween = levelLength / gridStep;
        std::vector<std::pair<double, int>> jumps;
        for (std::size_t i = windowsBetween; i < medians.size(); ++i) {
            const double jump = std::abs(double(medians[i]) - medians[i - windowsBetween]);
            if (jump > limit)
                jumps.emplace_back(-jump, int(i) * gridStep);
        }
        std::sort(jumps.begin(), jumps.end());
        std::vector<int> points;
        points.reserve(jumps.size());
        for (const auto &[jump, point] : jumps)
            points.push_back(point);
        return points;
    }

    // Takes a jump out of the series and of the medians: windows behind it move as a whole,
    // only those across it are computed again.
    void remove(const LevelJump &jump)
    {
        for (std::size_t i = std::size_t(jump.point); i < series.size(); ++i)
            series[i] = float(series[i] - jump.height);
        for (std::size_t i = 0; i < medians.size(); ++i) {
            const int begin = int(i) * gridStep;
            if (begin >= jump.point)
                medians[i] = float(medians[i] - jump.height);
            else if (begin + levelLength > jump.point)
                medians[i] = medianOf(series.data() + begin, levelLength, scratch);
        }
    }

    double median(int begin, int length)
    {
        return medianOf(series.data() + begin, length, scratch);
    }

private:
    std::vector<float> &series;
    std::vector<float> medians;
    std::vector<float> scratch;
};

// The jump near a grid point; its height is 0 where the level only drifts.
LevelJump jumpNear(LevelGrid &grid, const std::vector<float> &series, int guess, double sigma)
{
    const double before = grid.median(guess - levelLength, levelLength);
    const double after = grid.median(guess, levelLength);
    const int point = refinedPoint(series, guess, before, after, sigma);
    if (point < levelLength || point > int(series.size()) - levelLength)
        return {};
    const double height =
        grid.median(point, levelLength) - grid.median(point - levelLength, levelLength);
    const double edge =
        grid.median(point, edgeLength) - grid.median(point - edgeLength, edgeLength);
    if (edge / height < edgeShare)
        return {};
    return {point, height};
}

// Median of the absolute values of some hundred samples from all over the series.
double typicalSize(const float *samples, int count)
{
    constexpr int looks = 500;
    std::vector<float> sizes;
    for (int i = 0; i < count; i += 1 + count / looks)
        sizes.push_back(std::isfinite(samples[i]) ? std::abs(samples[i]) : 0);
    std::nth_element(sizes.begin(), sizes.begin() + std::ptrdiff_t(sizes.size() / 2), sizes.end());
    return double(sizes[sizes.size() / 2]);
}

} // namespace

double robustSigma(const float *samples, int count)
{
    if (count < 2)
        return 0;
    std::vector<float> differences;
    differences.reserve(std::size_t(count - 1));
    for (int i = 1; i < count; ++i) {
        const float difference = samples[i] - samples[i - 1];
        if (std::isfinite(difference))
            differences.push_back(difference);
    }
    if (differences.empty())
        return 0;
    const auto middle = differences.begin() + std::ptrdiff_t(differences.size() / 2);
    std::nth_element(differences.begin(), middle, differences.end(),
                     [](float a, float b) { return std::abs(a) < std::abs(b); });
    const double deviation = std::abs(*middle);
    return noiseSigma(differences, 0, deviation, floatResolution(typicalSize(samples, count))) /
           std::sqrt(2.0);
}

std::vector<LevelJump> findLevelJumps(const float *samples, int count,
                                      const std::function<bool()> &goOn)
{
    std::vector<LevelJump> jumps;
    if (count < 2 * levelLength)
        return jumps;
    // Medians need numbers that can be ordered.
    std::vector<float> series(samples, samples + count);
    std::replace_if(
        series.begin(), series.end(), [](float value) { return !std::isfinite(value); }, 0.0f);
    const double sigma = robustSigma(samples, count);
    const double limit = threshold * sigma;
    if (!(limit > 0) || std::isinf(limit))
        return jumps;

    LevelGrid grid(series);
    if (!grid.fill(goOn))
        return jumps;
    std::vector<bool> refused(std::size_t(count / gridStep + 1), false);
    // A jump that is taken out changes the medians around it, so that they are ranked again. No
    // grid point is tried twice, so the loop ends.
    for (bool changed = true; changed;) {
        if (goOn && !goOn())
            return {};
        changed = false;
        for (const int guess : grid.jumpsAbove(limit)) {
            if (refused[std::size_t(guess / gridStep)])
                continue;
            refused[std::size_t(guess / gridStep)] = true;
            const LevelJump jump = jumpNear(grid, series, guess, sigma);
            if (std::abs(jump.height) <= limit)
                continue;
            grid.remove(jump);
            jumps.push_back(jump);
            changed = true;
            break;
        }
    }
    std::sort(jumps.begin(), jumps.end(),
              [](const LevelJump &a, const LevelJump &b) { return a.point < b.point; });
    return jumps;
}

void removeLevelJumps(float *samples, int count, const std::vector<LevelJump> &jumps)
{
    double shift = 0;
    auto next = jumps.begin();
    for (int i = 0; i < count; ++i) {
        for (; next != jumps.end() && next->point == i; ++next)
            shift += next->height;
        samples[i] = float(samples[i] - shift);
    }
}

} // namespace Tools
