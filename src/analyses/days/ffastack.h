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

/// What the days say of one place, however significant it is there: the line that combineFfaDays()
/// would tell of the trial nearest to it.
///
/// @param telescope  Hz, mean of the days
/// @return no days in its growth where there is no stack, or it was stopped
FourierLine foldedLine(const std::vector<FourierDay> &products, const FourierDaysChoice &choice,
                       double telescope, const Jobs::Control &control = {});

/// Interference folds at every period that is a whole number of its own, of which so many are left
/// out.
inline constexpr int mostTurns = 16;

/// Whether it folds at the period of a frequency at the telescope, in a stretch of so many seconds.
bool foldsAt(const Interference &entry, double frequency, double length);

/// Whether the pulses of a frequency at the telescope are mains hum.
///
/// @param width  of the pulse, phase bins of which a fold has foldBins
bool isHumOfPulse(const std::vector<DayHum> &hum, double frequency, int width, int foldBins,
                  const FfaTrials &trials);

/// The share of its S/N that a pulse loses because a day has the nearest trial and not its own
/// period: a boxcar of w bins that drifts by d of them keeps 1 - d / (4 w) where d is below w.
///
/// @param drift  bins over the series, at most half of one
double lossOfDrift(double drift, int width);

} // namespace Days
