#pragma once

#include "analyses/days/powerstack.h"
#include "analyses/sky/skyproduct.h"

/// How the stack of a cell holds spectra: for what looks into it.
namespace Sky {

/// Whether the axis is that of the barycentre. Otherwise it is the telescope's, and a stack's mean
/// ratio leads to the barycentre.
bool isTurned(const SkyPlan &plan);
/// Positions of a stack for each bin of the padded spectrum.
int perBin(const SkyPlan &plan);
double binWidth(const SkyPlan &plan); ///< Hz

/// A stretch less its base line; every product begins with it.
Days::PreparedSeries seriesOf(const CellStretch &stretch, const SkyPlan &plan);
/// Fills in the numbers of high powers, which tell of a product whether it is disturbed.
void countHigh(const std::vector<float> &powers, CellProduct &product);

/// A stack on the fine positions of harmonic sums, with its level. Left out interference counts as
/// noise without scatter.
struct FineStack {
    std::vector<double> fine;
    std::vector<double> level; ///< one per bin
    Days::LineSearch search;   ///< all but its threshold
};

/// @param shape  of the Gamma law of a sum: the number of days
FineStack fineStack(const std::vector<double> &sums, double shape, const SkyPlan &plan);

} // namespace Sky
