#pragma once

#include "analyses/days/fourierstack.h"
#include "picture/plotdata.h"

namespace Plot {

/// The significance of a stack over frequency, with periods below, or over the trial periods of the
/// FFA. Of a spectrum, what lies below the lowest bin that is ranked is grey.
///
/// @param source  lines that explain saved data
PlotData stackPlot(const Days::FourierStack &stack, const QStringList &source);

} // namespace Plot
