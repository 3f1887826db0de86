#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>
#include <vector>

/// What a search will try, before any sample is touched: trial widths, checks of the
/// parameters, and the folds with the number of trial periods of each.
///
/// Periods and `tsamp` share one unit, usually seconds; a fold of b bins has b downsampled
/// samples per row.
namespace Ffa {

/// Longest list that trialWidths() makes.
inline constexpr int maxTrialWidths = 1 << 22;

/// Boxcar widths to try, in bins, ascending from 1: each is the one before times `wtsp`,
/// truncated, and at least one more, up to ducy_max x bins_min.
///
/// @param ducy_max  largest duty cycle, a fraction of the period
/// @param wtsp      growth factor; consecutive widths at 1 and below
/// @return at least the width 1; empty, after a debug line, when there would be more than
///         maxTrialWidths
std::vector<qint32> trialWidths(qint32 bins_min, double ducy_max, double wtsp);

/// Why a search is refused.
struct Refusal {
    QString parameter; ///< name of the one that fails; empty when all is well
    QString text;
};

/// Checks the parameters of a search; the first failure decides. What is not a number counts
/// as out of range. An infinite `period_max` is allowed: the search goes as far as the data.
///
/// @return the parameter that fails and the message; both empty when all is well
Refusal findRefusal(quint64 size, double tsamp, double period_min, double period_max,
                    qint32 bins_min, qint32 bins_max);

/// The message of findRefusal().
QString validateParameters(quint64 size, double tsamp, double period_min, double period_max,
                           qint32 bins_min, qint32 bins_max);

/// The same checks for callers inside the engine.
///
/// @throw std::invalid_argument with the message of the failure, the last one without numbers
void requireParameters(quint64 size, double tsamp, double period_min, double period_max,
                       qint32 bins_min, qint32 bins_max);

/// Number of trial periods a search writes. The time it takes grows with that number.
///
/// @return 0 for parameters that validateParameters() refuses
quint64 periodogramLength(quint64 size, double tsamp, double period_min, double period_max,
                          qint32 bins_min, qint32 bins_max);

/// Samples left after averaging `size` samples by a real factor: floor(size / factor).
quint64 downsampledLength(quint64 size, double factor);

/// One fold: `rows` whole periods of `bins` downsampled samples.
struct PlanFold {
    qint32 bins = 0;
    quint64 rows = 0;
    quint64 evaluated = 0; ///< leading transform rows kept, one trial period each
};

/// One downsampling of the series and the range of its folds.
struct PlanStep {
    double factor = 1;   ///< input samples per downsampled sample
    double tau = 0;      ///< interval of the downsampled series
    quint64 samples = 0; ///< length of the downsampled series
    double longest = 0;  ///< longest period, in downsampled samples
    qint32 binsLast = 0; ///< folds of two rows and more run from bins_min to this

    PlanFold fold(qint32 bins) const;
};

/// The steps of a search, in order of growing factor. Parameters must be valid.
class SearchPlan {
public:
    SearchPlan(quint64 size, double tsamp, double period_min, double period_max, qint32 bins_min,
               qint32 bins_max);

    /// Step `index`, from 0. Nothing once a step has no folds: every later one has none either.
    std::optional<PlanStep> step(qint64 index) const;

private:
    quint64 size;
    double tsamp;
    double period_max;
    qint32 bins_min;
    qint32 bins_max;
    double firstFactor;
    double growth;
    double steps;
};

/// By how much S/N comes out too low at a whole factor of 3 or more, where the variance that it is
/// computed with (downsampledVariance) is too large; 1 at other factors.
double snrFactor(quint64 size, double factor);

/// A step of a search with such a factor.
struct WholeFactorStep {
    double factor = 0;
    double shortest = 0; ///< trial periods of the step, in the unit of tsamp
    double longest = 0;
    quint64 firstTrial = 0; ///< their place in the periodogram
    quint64 trials = 0;
    double snrFactor = 1; ///< above 1
};

/// The whole factors among the steps of a search, in order. Parameters must be valid.
std::vector<WholeFactorStep> wholeFactorSteps(quint64 size, double tsamp, double period_min,
                                              double period_max, qint32 bins_min, qint32 bins_max);

/// The shortest period nearest to `period_min`, of 4 significant digits, with which a search has no
/// whole factors; the lower one of two that are equally near, for it leaves out nothing. A change
/// of 1 / size of the shortest period, which scales all factors, is enough for a whole one to count
/// as such no longer, whereas the bins would change every fold, and not the first factor.
///
/// @return period_min itself where it has none, or where none is found near it
double periodMinWithoutWholeFactors(quint64 size, double tsamp, double period_min,
                                    double period_max, qint32 bins_min, qint32 bins_max);

} // namespace Ffa
