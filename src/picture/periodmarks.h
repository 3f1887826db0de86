#pragma once

#include "picture/plotdata.h"

namespace Plot {

/// Marks a period of a plot over periods, its half, double and triple, each with a line of its own
/// kind. Those beyond the periods are left out.
void markPeriods(PlotData &plot, double period);

} // namespace Plot
