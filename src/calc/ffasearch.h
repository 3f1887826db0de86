#pragma once

#include "calc/fieldproblem.h"
#include "ffa/ffaplan.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <functional>
#include <vector>

/// What a fast folding search is asked for, as typed. Periods are topocentric.
struct FfaParameters {
    double period_min = 0.5; ///< s
    double period_max = 10;  ///< s
    int bins_min = 40;       ///< fewest phase bins of a fold
    int bins_max = 80;
    double ducy_max = 0.2;  ///< largest duty cycle, bounds the widths
    double wtsp = 1.5;      ///< growth factor of the widths
    int fpmin = 10;         ///< fewest periods in the series
    bool deredden = true;   ///< subtract a running median
    double rmed_width = 30; ///< s, its window
    int rmed_minpts = 101;  ///< points of the decimated series in a window
};

/// How large a search is, before any sample is touched.
struct FfaEstimate {
    quint64 trials = 0; ///< periods: rows of the periodogram
    int widths = 0;     ///< its columns
    double seconds = 0; ///< on one core of ordinary speed
    /// Highest S/N that noise alone is expected to reach, see Tools::estimateFfa.
    double noiseMaximum = 0;
    /// The same of true S/N, from which on candidates count: above noiseMaximum where a step gives
    /// too low an S/N (Ffa::WholeFactorStep).
    double noiseThreshold = 0;
};

namespace Tools {

/// A search that suits a series of so many points: 40 to 80 bins; from the shortest period that
/// has them, but 0.1 s at least, or the nearest without whole factors, to 30 s or what `fpmin`
/// periods leave room for; a running median of three of the longest periods.
///
/// @param ffa  bins and `fpmin`, where they are other ones
FfaParameters presetFfa(int points, double tsamp, FfaParameters ffa = {});

/// Width of the running median that goes with a longest period, s: three times it, but not more
/// than the series.
double presetMedianWidth(double period_max, int points, double tsamp);

/// Everything that forbids a search of a series, in the order of the fields; empty when it can
/// be made. Memory is not looked at.
///
/// @param tsamp  s, above 0
std::vector<FieldProblem> findFfaProblems(const FfaParameters &ffa, int points, double tsamp);

/// The steps of a search without problems that downsample by a whole factor: S/N comes out several
/// times too low there.
std::vector<Ffa::WholeFactorStep> wholeFactorSteps(const FfaParameters &ffa, int points,
                                                   double tsamp);

/// The shortest period nearest to that of a search without problems whose range has none of them;
/// its own where it has none already, or none is found.
double periodMinWithoutWholeFactors(const FfaParameters &ffa, int points, double tsamp);

/// "S/N comes out too low at periods of 0.1 to 0.2025 s (2.9 times), where the downsampling factor
/// is whole (10)."; empty without steps. Names three steps at most.
QString wholeFactorText(const std::vector<Ffa::WholeFactorStep> &steps);

/// Size of a search without problems, and what noise alone is expected to reach in it.
///
/// The highest of n independent values of unit Gaussian noise is expected where
/// (1 - Q(x))^n = 0.5264, with the Gaussian tail Q (Chen & Tyler 1999, Commun. Stat. Simul.
/// Comput. 28, 177). Trials are not independent: neighbouring periods, phases and widths share
/// most of their samples. Every period of b bins counts as b values for the width 1 and 1.5 b / w
/// for a width w above; simulated noise reaches that maximum on average within 0.1, and within 0.2
/// where the series holds some ten periods only.
///
/// S/N is told in units of a noise of the variance v (Ffa::downsampledVariance), and as if
/// downsampled values were independent. The best of w of b bins, less its share of the profile,
/// has the variance V - w^2 f / b at the factor f, V that of w values (Ffa::trueVariance), so that
/// noise has not 1 but sqrt((V - w^2 f / b) / (v w (1 - w / b))) for its standard deviation.
FfaEstimate estimateFfa(const FfaParameters &ffa, int points, double tsamp);

/// Memory of a search beside its series, the results included. Only where findFfaProblems() has
/// nothing against it.
double ffaBytes(const FfaParameters &ffa, int points, double tsamp);

/// Replaces each value by the median of the `window` values around it, of those that there are
/// at the ends; the lower one of two. Time grows with the logarithm of the window.
///
/// @param window  odd, at least 1
std::vector<double> runningMedian(const std::vector<double> &values, int window);

/// Subtracts what is slow in a series: the running median of block means, interpolated linearly
/// between the centres of the blocks and level outside them. Pulses much shorter than half of
/// the window stay.
///
/// @param width      window in samples; more than the series counts as the series
/// @param minPoints  block means in a window, at least 1; the blocks are as long as that allows
/// @return false, with the values untouched, when one of them is no finite number
bool deredden(std::vector<double> &values, double width, int minPoints);

} // namespace Tools
