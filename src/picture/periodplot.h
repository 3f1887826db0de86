#pragma once

#include "analyses/timing/periodsearch.h"
#include "picture/plotdata.h"

namespace Plot {

/// How much better than chance the best period of each part of the range is, over period; the rank
/// above which a period is claimed, and the best period, are marked.
PlotData periodRanks(const Timing::PeriodSearch &search, double chance);

/// Phases of the pulses against those of the best period, one pulse after the other; lines at
/// their rms.
PlotData periodResiduals(const Timing::PeriodSearch &search);

} // namespace Plot
