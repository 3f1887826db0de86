#pragma once

#include <vector>

/// How improbable a summed power is in noise, told as the Gaussian sigma that is as improbable.
/// Whitened powers of noise are exponential with mean 1, so the sum of n independent ones follows
/// the Gamma distribution of shape n. Probabilities are kept as natural logarithms: a bright pulsar
/// lies far below the smallest double.
namespace Tools {

/// Logarithm of the probability that a Gamma variable of scale 1 exceeds x.
///
/// @param shape  above 0, the number of summed exponentials
/// @param x      0 and below gives probability 1
double logGammaTail(double shape, double x);

/// Logarithm of the probability that a standard normal variable exceeds sigma.
double logNormalTail(double sigma);

/// The Gaussian sigma of an upper tail; negative above a half, infinite for probability 0.
///
/// @param logProbability  at most 0
double sigmaOfTail(double logProbability);

/// Logarithm of the probability that at least one of `trials` independent draws is as improbable:
/// 1 - (1 - p)^n.
///
/// @param trials  at least 1, need not be whole
double logTailOfTrials(double logProbability, double trials);

/// Sigma of a sum of `shape` whitened powers, the best of `trials` independent ones.
double sigmaOfPower(double shape, double power, double trials = 1);

/// The sum of `shape` whitened powers that has this sigma: the inverse of sigmaOfPower().
double powerAtSigma(double shape, double sigma, double trials = 1);

/// The sum of `shape` whitened powers that half of all noise exceeds.
double medianPower(double shape);

/// The same tail for powers that were weighted before they were summed.
///
/// Saddle point approximation of Lugannani & Rice 1980 (Adv. Appl. Prob. 12, 475) for the sum of
/// weight x (sum of `each` exponentials); right to a few per cent where ten or more powers count,
/// within a sixth for one alone.
///
/// @param weights  above 0
/// @param each     independent powers behind each weight
/// @param x        the weighted sum
double logWeightedTail(const std::vector<double> &weights, double each, double x);

/// The weighted sum that half of all noise exceeds, by that tail.
double medianWeightedPower(const std::vector<double> &weights, double each);

} // namespace Tools
