#pragma once

#include "analyses/days/fourierstack.h"

namespace Days {

/// Stack of periodograms: the standardised S/N of each period and width summed over the days, which
/// are brought to the barycentric period by their nearest trials. A bin of the result is a trial;
/// its significance is that of the best width.
///
/// @param control  asked between parts of the work; a stopped stack has a problem and no lines
FourierStack combineFfaDays(const std::vector<FourierDay> &products,
                            const FourierDaysChoice &choice, const Jobs::Control &control = {});

/// Interference folds at every period that is a whole number of its own, of which so many are left
/// out.
inline constexpr int mostTurns = 16;

/// The share of its S/N that a pulse loses because a day has the nearest trial and not its own
/// period: a boxcar of w bins that drifts by d of them keeps 1 - d / (4 w) where d is below w.
///
/// @param drift  bins over the series, at most half of one
double lossOfDrift(double drift, int width);

} // namespace Days
