#pragma once

#include <functional>
#include <vector>

/// Sums of the whitened powers of many days. A line that is too weak in every single transit adds
/// up; noise, which differs from day to day, averages out.
namespace Days {

/// The spectrum of one day as a stack takes it.
struct DayPowers {
    const float *powers = nullptr; ///< whitened, of the series padded to double its length
    double ratio = 1;              ///< frequency at the telescope over the one at the barycentre
    double weight = 1;
};

/// Positions of the fine stack per bin: harmonics up to the 16th of a trial frequency lie on it.
constexpr int finePerBin = 16;
constexpr int mostHarmonics = 16;

/// Sum over days at the frequency of each bin, taken from the nearest bin of each day.
///
/// @param bins  values that each day has
/// @return as many sums, in the order of days added in double
std::vector<double> stackDays(const std::vector<DayPowers> &days, int bins);

/// The same at bins * finePerBin frequencies, from 0 on, 1 / finePerBin of a bin apart. Where the
/// Earth's motion moves a line by parts of a bin, no rounding comes before that of the day.
///
/// @param isStopped  asked before each day; true ends the work, and the sums are useless
std::vector<double> stackDaysFinely(const std::vector<DayPowers> &days, int bins,
                                    const std::function<bool()> &isStopped = {});

/// What is left of the noise's level after each day was whitened: the local median of the stack
/// over the median that such a sum of noise has. Near 1 everywhere.
///
/// @param expected  Tools::medianPower() of the number of days, or that of their weights
/// @param window    odd, in bins
/// @param first     the lowest bin that is ranked; those before it do not count
std::vector<double> levelOfStack(const std::vector<double> &stack, double expected, int window,
                                 int first = 0);

/// A sum of harmonics.
struct StackLine {
    double bin = 0;    ///< of the fundamental, in bins of the padded spectrum; may be a fraction
    int harmonics = 1; ///< summed: 1, 2, 4, 8 or 16
    double power = 0;  ///< sum over days and harmonics, in units of the level
    double sigma = 0;  ///< after all trials
};

struct LineSearch {
    double shape = 1;              ///< number of days
    int lowestBin = 64;            ///< of the fundamental; below lie the baseline's leftovers
    int harmonics = mostHarmonics; ///< most of them
    double lowestSigma = 3;
};

/// Independent trials that a search of `bins` bins for sums of up to so many harmonics counts as:
/// with them a stack of noise has a line of probability p in a share p of all cases. Found by
/// simulation of 30 to 365 days, where it is right to 15 %; single days have a quarter less.
double countOfTrials(int bins, int harmonics);

/// The local maxima of the harmonic sums, strongest first; of lines closer than a bin and a half
/// only the strongest.
///
/// @param fine   of stackDaysFinely(); moved in, it takes no memory a second time
/// @param level  of levelOfStack(), one value per bin
std::vector<StackLine> findLines(std::vector<double> fine, const std::vector<double> &level,
                                 const LineSearch &search);

/// Significance of the best harmonic sum whose fundamental lies in each bin, sigma, after the
/// trials of one bin; NaN below the lowest bin. A row of a map.
///
/// @param fine    of stackDaysFinely(); moved in, it takes no memory a second time
/// @param search  shape, lowestBin and harmonics
std::vector<float> bestSigmas(std::vector<double> fine, const std::vector<double> &level,
                              const LineSearch &search);

} // namespace Days
