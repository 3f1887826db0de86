#pragma once

#include "picture/plotdata.h"

namespace Plot {

/// The plot of a spectrum with every amplitude as power over the noise around it, see
/// Tools::Whitening: noise has mean 1 wherever it stands. Curves of one value, such as thresholds,
/// mean nothing then and are hidden.
PlotData whitened(const PlotData &spectrum);

/// A value that a logarithmic axis may begin with: half of what one sample in a hundred of the
/// curves does not exceed; 0 where none is above 0.
double logarithmicFloor(const PlotData &data);

} // namespace Plot
