#pragma once

#include "analyses/compare/comparedays.h"
#include "picture/plotdata.h"
#include "picture/rowpicture.h"

#include <QSize>
#include <utility>
#include <vector>

namespace Plot {

/// The mean day of compared days over sidereal time.
PlotData meanDayPlot(const Compare::ComparePlan &plan, const Compare::Comparison &comparison);

/// Values of the first and the last grey of such days: what 1 and 99.5 % lie below. The largest of
/// many values that a pixel stands for is high everywhere.
///
/// @param shown  values as pixels have them
std::pair<float, float> greyRange(std::vector<float> shown);

/// Date against sidereal time, a row for each day that counts.
RowPicture comparedDaysPicture(const Compare::CompareProducts &products,
                               const std::vector<bool> &counts, const QSize &size);

} // namespace Plot
