#pragma once

#include "calc/profileharmonics.h"

#include <vector>

/// Where a pulse stands in a profile, by comparing it with a template in all harmonics.
namespace Tools {

/// What a template has of a profile.
struct TemplateMatch {
    double phase = 0;      ///< turns by which the profile is later than the template, -0.5 to 0.5
    double phaseError = 0; ///< turns, one standard deviation
    double ownPhaseError = 0; ///< turns, by the noise of the profile alone
    double height = 0;        ///< factor of the template
    double snr = 0;           ///< height over its standard deviation; 0: there is nothing alike
};

/// A template made ready to be compared with many profiles of one noise; see matchTemplate().
class TemplateMatcher {
public:
    TemplateMatcher(const ProfileNoise &noise, const Harmonics &pulse);

    /// @param fitted  numbers that were fitted to the profile, height and phase among them
    TemplateMatch match(const Harmonics &profile, int fitted = 2) const;

private:
    Harmonics factors;    // of each harmonic of a profile, from the first on
    double norm = 0;      // sum of the template's powers over their noise
    double curvature = 0; // the same times (2 pi k)^2
};

/// Finds the turn and the height at which a template comes nearest to a profile:
///
///     chi^2 = sum over k = 1 .. N/2 - 1 of |P_k - b S_k exp(-2 pi i k phase)|^2 / var_k
///
/// (Taylor 1992, Phil. Trans. R. Soc. A 341, 117), whose curvature gives the error. A template that
/// is itself made of noisy profiles counts only in harmonics that stand out of its noise, by the
/// share that is not noise, and its noise is part of the error.
///
/// @param profile, pulse  harmonics of as many bins
/// @param templateSigma   noise of the template, as noise.sigma; 0: it has none
TemplateMatch matchTemplate(const Harmonics &profile, const ProfileNoise &noise,
                            const Harmonics &pulse, double templateSigma = 0);

/// What trial values tell by their S/N: each is exp(S/N^2 / 2) times as likely as noise alone, so
/// that S/N^2 is one lower a standard deviation away from the best.
struct LikelyValue {
    double best = 0;       ///< vertex of a parabola through the highest S/N^2 and its neighbours
    double error = 0;      ///< half of the distance between low and high
    double low = 0;        ///< a standard deviation before the best; the first value where S/N^2
    double high = 0;       ///< does not fall so far; the same behind it
    bool isInside = false; ///< S/N^2 falls so far to both sides
};

/// @param values  rising or falling by equal steps, at least three
/// @param snr     of each, at least 0
LikelyValue likelyValue(const std::vector<double> &values, const std::vector<double> &snr);

/// Values from `half` below to `half` above a centre, for a second and exact likelyValue().
std::vector<double> valuesRound(double centre, double half);

/// A Gaussian pulse as it stands in a profile.
struct GaussianPulse {
    double phase = 0;        ///< of its middle, 0 to 1
    double phaseError = 0;   ///< turns, where width, period and dispersion are fitted as well
    double width = 0;        ///< full width at half maximum, turns: middle of the standard
                             ///< deviation to either side of the likeliest; what the samples and
                             ///< the bins add is taken off
    double widthError = 0;   ///< turns
    double widthLimit = 0;   ///< turns: in one of 40 cases the width is above
    double snr = 0;          ///< of its height
    bool isResolved = false; ///< the width is known: two standard deviations less are above a
                             ///< quarter of a bin, one more is below three quarters of a turn

    double widthAtTenth() const { return width * 1.8226; } ///< root of ln 10 / ln 2
    double widthAtTenthError() const { return widthError * 1.8226; }
};

/// The Gaussian that a profile fits best, in the measure of matchTemplate().
GaussianPulse fitGaussian(const Harmonics &profile, const ProfileNoise &noise);

/// Harmonics of a Gaussian pulse of height 1 and phase 0 as it is seen in bins that share samples.
Harmonics gaussianTemplate(double width, int bins, double shared);

} // namespace Tools
