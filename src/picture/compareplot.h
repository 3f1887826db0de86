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

/// Values of the first and the last grey of such days: 1 % of a usual day lies below the first, and
/// the last is above its noise. The largest of many values that a pixel stands for is high
/// everywhere.
///
/// @param shown    values as pixels have them, day after day
/// @param columns  values of a day
std::pair<float, float> greyRange(const std::vector<float> &shown, int columns);

/// Date against sidereal time, a row for each day that counts.
RowPicture comparedDaysPicture(const Compare::CompareProducts &products,
                               const std::vector<bool> &counts, const QSize &size);

} // namespace Plot
