#pragma once

#include <QtGlobal>
#include <vector>

/// Period and its change by least squares over turns that are known.
namespace Tools {

/// A pulse of a train.
struct CountedTime {
    double time = 0;  ///< s
    qint64 turn = 0;  ///< since any of the same cluster
    int cluster = 0;  ///< from 0; pulses whose turns are counted through
    double error = 1; ///< s, or of any unit where only the ratios of errors are known
};

/// t = t_c + P N + P P' N^2 / 2, with a phase t_c for each cluster; N counted from the mean of all
/// turns. Errors count by their ratios: how large they are, the residuals tell.
struct TurnFit {
    double period = 0;             ///< s, at the middle of the turns
    double error = 0;              ///< s: the true period lies within in 68.3 % of cases
    double error95 = 0;            ///< s: in 95.4 % of cases
    double derivative = 0;         ///< s/s; 0 where it was not asked for
    double derivativeError = 0;    ///< of 68.3 %
    double squares = 0;            ///< weighted sum of squared residuals, s^2, weights of mean 1
    int freedom = 0;               ///< times less what was fitted; below 1 nothing is told
    std::vector<double> residuals; ///< s

    double rms() const; ///< s: root of the squares over the freedom
};

TurnFit fitTurns(const std::vector<CountedTime> &times, bool withDerivative);

/// The probability that the squares fall by as much as from the first to the second fit, which has
/// fewer degrees of freedom, where the first holds: that of the F-test.
double probabilityOfFall(const TurnFit &simple, const TurnFit &rich);

/// Factor on a standard error, told by the residuals alone, for an interval that holds the true
/// value in `share` of all cases: Student's t.
double studentFactor(double share, int freedom);

/// H, highest of Z^2_m - 4 m + 4 for m up to 20 (de Jager et al. 1989, A&A 221, 180). In noise it
/// exceeds H with the probability exp(-0.4 H) (de Jager & Buesching 2010, A&A 517, L9), for one
/// trial period and not too few events.
///
/// @param phases  of events, turns
double hOfPhases(const std::vector<double> &phases);

} // namespace Tools
