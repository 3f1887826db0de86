#pragma once

#include "analyses/profiles/profilestack.h"

/// How the S/N of the days changes with the trial period and the dispersion.
namespace Profiles {

/// S/N of the pulse against one of both.
struct ScanCurve {
    std::vector<double> values; ///< s at the barycentre, or pc/cm^3
    std::vector<double> snr;    ///< see ProfileScan
    /// Cubic through the values above nine tenths of the highest S/N; of the same size, not a
    /// number elsewhere. Empty where there are too few of them.
    std::vector<double> cubic;
    std::vector<double> extremes; ///< values where the cubic has extremes, those within its run
    double best = 0;              ///< the likeliest value, see Tools::LikelyValue
    double error = 0;             ///< one standard deviation
    bool isInside = false; ///< the highest lies between the ends, and the pulse is strong enough
};

/// All S/N are those of a pulse of the width that the average has, fitted to phase and height.
/// Where days were aligned it is that of their sum; else the root of the sum of the squares of all
/// days, each at its own phase: a sum of day statistics, in which noise has a part too.
struct ProfileScan {
    bool isCoherent = true;
    ScanCurve periods;
    ScanCurve dispersions;
    std::vector<float>
        both; ///< [dispersion][period] over the values of mapPeriods x mapDispersions
    std::vector<double> mapPeriods;
    std::vector<double> mapDispersions;
};

struct ScanRequest {
    double period = 0;     ///< s, barycentric, that the days were folded at
    double dispersion = 0; ///< pc/cm^3, of the fold
    int steps = 32;        ///< to either side of a curve
    int mapSteps = 12;     ///< to either side of the picture
    double widths = 3;     ///< of the pulse, three bins at least, that the ends drift apart
};

/// @param stack  of the products by the same choice
ProfileScan scanDays(const std::vector<ProfileDay> &products, const StackChoice &choice,
                     const ProfileStack &stack, const ScanRequest &request,
                     const Jobs::Control &control = {});

} // namespace Profiles
