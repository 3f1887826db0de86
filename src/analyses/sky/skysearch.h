#pragma once

#include "analyses/days/fourierstack.h"
#include "analyses/sky/skyrun.h"

#include <limits>

/// Candidates of all stacks.
namespace Sky {

/// What a person decided.
enum class Verdict { None, Accept, Reject, Unsure };

QString verdictName(Verdict verdict); ///< "accept", "reject", "unsure"; "-" for none
Verdict verdictOf(const QString &name); ///< the other way; none for any other text

struct Measured {
    double value = std::numeric_limits<double>::quiet_NaN();
    double error = std::numeric_limits<double>::quiet_NaN(); ///< NaN: it cannot be told
};

struct SkyCandidate : Days::LineMarks {
    double barycentric = 0;      ///< Hz; not a number where the direction is unknown
    double telescope = 0;        ///< Hz, mean of the days
    Measured period;             ///< s, at the barycentre where that is known
    Measured dispersion;         ///< pc/cm^3
    Measured alfa;               ///< of 2000, radians
    Measured delta;              ///< of 2000, radians
    double sigma = 0;            ///< after all trials of the search
    double falseAlarms = 0;      ///< as strong ones that noise is expected to show in the search
    double withoutStrongest = 0; ///< sigma of the clipped sums, after all trials
    double power = 0;            ///< mean per day and harmonic; noise has 1
    int harmonics = 1;
    int days = 0;
    int cells = 1;           ///< in which it stands above the threshold
    int ray = 0;             ///< indices in the plan of the best cell
    int dispersionIndex = 0; ///< the same
    int start = 0;           ///< the same
    CellLine line;           ///< in the stack of that cell
    Verdict verdict = Verdict::None;
    QString note;

    QStringList marks() const { return marksOf("candidate"); }
};

struct SkySearch {
    /// Bases by significance, those of few days and of interference behind the others, each
    /// followed by what belongs to it.
    std::vector<SkyCandidate> candidates;
    double trials = 1;        ///< of the whole search
    double lowestLogTail = 0; ///< of one trial, that a candidate must reach
    int searchedCells = 0;    ///< that have days
    QStringList remarks;
    QString problem; ///< why there is nothing; empty otherwise
};

/// The interference of the plan is left out.
///
/// @param threads  0: Jobs::threadCount()
SkySearch searchSky(const SkyStack &stack, const SkyPlan &plan, int threads = 0,
                    const Jobs::Control &control = {});

/// Significance of a candidate's harmonic sum at each dispersion, one trial.
std::vector<double> sigmaOverDispersions(const SkyStack &stack, const SkyPlan &plan,
                                         const SkyCandidate &candidate);

} // namespace Sky
