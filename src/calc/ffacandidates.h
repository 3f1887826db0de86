#pragma once

#include "calc/ffaresult.h"
#include "results/candidates.h"

#include <QString>
#include <functional>
#include <vector>

/// S/N over period, periods rising.
struct FfaSpectrum {
    std::vector<double> periods; ///< s
    std::vector<float> snr;
    std::vector<int> trials; ///< index of each in the periodogram
};

/// One peak of a search, its neighbours merged into it.
struct FfaCandidate : Results::Peak {
    int base = -1;    ///< index of the stronger candidate that it is a harmonic of; -1: none
    int multiple = 1; ///< its period is multiple / divisor of that of the base
    int divisor = 1;
    double mains = 0; ///< Hz, frequency of the mains hum that it consists of; 0: none
};

namespace Tools {

/// The periods of a search in rising order with their S/N.
///
/// @param width  index of the width to show; below 0: the best of each period
FfaSpectrum sortedSpectrum(const Periodogram &periodogram, int width = -1);

/// By how much the S/N of each period is too low: 1 but at whole downsampling factors.
std::vector<float> snrFactors(const FfaSpectrum &spectrum,
                              const std::vector<Ffa::WholeFactorStep> &steps);

/// Peaks above a threshold, the strongest first. Where the search gives too low an S/N
/// (Ffa::WholeFactorStep), the true one counts.
///
/// A peak takes in its neighbours on both sides as long as they stay above the threshold and
/// above a fifth of it without a gap of more than one turn of drift over the series (1/T in
/// frequency, T the length). A peak whose period is p/q times that of a stronger one, p and q
/// up to 16, within what the widths of the two pulses tell apart, is named as its harmonic:
/// there the pulses fall on p phases, and the S/N is 1/sqrt(p q) of the stronger one's, the
/// double at most.
///
/// A peak is marked as mains hum when the series without its hum folds to less than half of the
/// power, S/N squared, and to less than the threshold, or than S/N 5 where that is higher. The line
/// named is the strongest that runs through a whole number of cycles in the period within three
/// turns over the series, or the strongest of all.
///
/// @param most      candidates to find
/// @param progress  called with 0 to 100 before every candidate; false ends the list there
std::vector<FfaCandidate> findCandidates(const FfaResult &result, double threshold, int most,
                                         const std::function<bool(int percent)> &progress = {});

/// Makes the period of a candidate more precise and folds there, see refinePeriod().
///
/// @return false, with the candidate as it was, when `progress` ended it
bool refineCandidate(const FfaResult &result, FfaCandidate &candidate,
                     const std::function<bool(int percent)> &progress = {});

/// "2 x no. 1", "3/2 x no. 1", "50.02 Hz mains", "folds to 3.1" where the folded series has less
/// than two thirds of the true S/N; empty where there is nothing to remark.
///
/// @param base  what to call the candidate that it is a harmonic of, where its number in the
///              search would tell nothing
QString candidateRemark(const FfaCandidate &candidate, const QString &base = {});

/// The candidate with its remark, as tables take it. Module, ray, dispersion and file are left to
/// the caller.
Results::Candidate tableCandidate(const FfaCandidate &candidate, const QString &base = {});

} // namespace Tools
