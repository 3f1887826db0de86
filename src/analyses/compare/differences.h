#pragma once

#include "jobs/control.h"

#include <algorithm>
#include <vector>

/// Where days differ most from the others.
namespace Compare {

/// A run of points of one day that lies above or below the other days.
struct Difference {
    int day = 0;
    int first = 0;       ///< point
    int width = 1;       ///< points
    double snr = 0;      ///< below 0 where the day lies below the others
    double byChance = 0; ///< how many such or stronger ones noise has in all days at most
};

/// Sums of neighbouring points, "boxcars", of 1, 2, 4, ... points up to a 32nd of the day, each in
/// units of what they scatter: 1.4826 times their median absolute value, but not below what
/// independent points give. Slow waves that all days have thereby widen the noise.
class DayBoxcars {
public:
    DayBoxcars() = default;
    /// @param differences  of medianDay(); boxcars with a point that is no number do not count
    explicit DayBoxcars(const std::vector<float> &differences);

    static constexpr int fewestInDay = 32;
    int points() const { return std::max(0, int(sums.size()) - 1); }
    int widths() const { return int(scatters.size()); } ///< index k stands for 2^k points
    /// Boxcars of a width, at every point.
    int count(int widthIndex) const { return counts[std::size_t(widthIndex)]; }
    /// NaN where the boxcar does not count or reaches beyond the day.
    double snr(int first, int widthIndex) const;

    /// Gives all days the median of their scatters, so that a day that scatters more than the
    /// others is one that differs.
    static void shareScatters(std::vector<DayBoxcars> &days);

private:
    std::vector<double> sums;     // of all points before
    std::vector<int> missing;     // points without a number before
    std::vector<double> scatters; // of a boxcar over the root of its width
    std::vector<int> counts;
};

/// How many boxcars above such an S/N, or below its opposite, noise is expected to have in all
/// days: of each width the mean number of times that neighbouring boxcars cross the limit upwards,
/// which bounds the probability that any does. Boxcars of n points share all but one with the next
/// one, so that their correlation is 1 - 1 / n.
double expectedByChance(const std::vector<DayBoxcars> &days, double snr);

/// The S/N above which noise is expected to have so many.
double limitFor(const std::vector<DayBoxcars> &days, double byChance);

/// The differences above a limit, strongest first; those that touch a stronger one of the same day
/// belong to it.
///
/// @return empty when stopped
std::vector<Difference> findDifferences(const std::vector<DayBoxcars> &days, double limit,
                                        const Jobs::Control &control = {});

} // namespace Compare
