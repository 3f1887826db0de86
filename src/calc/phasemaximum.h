#pragma once

#include <vector>

/// How improbable a sum of S/N values is where each of them is the best of many phases, as a fast
/// folding search makes it.
namespace Tools {

/// The sum of `count` independent values, each the highest of `phases` Gaussian ones.
///
/// Phi(x)^n with n = 1.75 b / w phases, b for the width 1, has the shape of what a boxcar of w of b
/// bins finds in folds of noise; only the shape is taken from here, level and scatter are those of
/// the data. Tails by the saddle point approximation of Lugannani & Rice 1980 (Adv. Appl. Prob. 12,
/// 475), right to some per cent.
///
/// Values are told as a search standardises them: less the median of one value, in units of
/// 1.4826 times its median absolute deviation.
class PhaseMaximum {
public:
    PhaseMaximum(double phases, double count);

    double phases() const { return phaseCount; }

    /// Logarithm of the probability that the sum exceeds `sum`.
    double logTail(double sum) const;
    /// The same as the Gaussian sigma that is as improbable.
    double sigma(double sum) const;
    /// Median of the sum, and 1.4826 times its median absolute deviation.
    double median() const { return middle; }
    double scatter() const { return spread; }

    /// One value that is cut off at the quantile which a share of `above` exceeds.
    struct Cut {
        double quantile = 0;
        double mean = 0;
        double variance = 0;
    };
    Cut cut(double above) const;

private:
    double cdf(double x) const;
    double standardised(double x) const { return (x - unitMedian) / unitScatter; }
    double quantile(double logTail) const;

    double phaseCount;
    double unitMedian = 0; // of one value, as its scatter in sigma of the Gaussian ones
    double unitScatter = 1;
    std::vector<double> sums;  // rising
    std::vector<double> tails; // logarithms, falling
    double middle = 0;
    double spread = 1;
};

} // namespace Tools
