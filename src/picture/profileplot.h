#pragma once

#include "analyses/profiles/profiletables.h"
#include "picture/plotdata.h"
#include "picture/rowpicture.h"

#include <QSize>

/// What plots and pictures show of the profiles of many days. Forms and the batch program take them
/// from here, so that a form and a file show the same. Where there is nothing to show, a sentence
/// says why.
namespace Plot {

/// The average profile over phase between the lines of its error, and the halves of the time.
PlotData averagePlot(const Profiles::ProfileOutcome &outcome);

/// S/N of each day over the days that have a profile, by time.
PlotData daysSnrPlot(const Profiles::ProfileOutcome &outcome);
/// The days of that plot: index of the product for each X position.
std::vector<int> daysWithProfile(const Profiles::ProfileOutcome &outcome);

/// S/N of the first days of the average over the root of their number, and what the last of them
/// leads to expect, a straight line.
PlotData growthPlot(const Profiles::ProfileStack &stack);
/// How many days an X position of that plot stands for, and where a number of days stands.
int daysAtGrowth(const Profiles::ProfileStack &stack, double index);
double growthIndexOf(const Profiles::ProfileStack &stack, int days);

enum class Scanned { Periods, Dispersions };
/// S/N over what was tried, the cubic with its extremes, and the best value.
PlotData scanPlot(const Profiles::ProfileScan &scan, Scanned what);

/// Days over phase, each in units of its noise, the first on top: those in the average, or all that
/// have a profile where there is no average.
RowPicture dayProfilesPicture(const Profiles::ProfileOutcome &outcome, const QSize &size);

/// From the left edge of the first cell to the right edge of the last one, where values that were
/// tried stand in the middles of equal cells.
Range scanEdges(const std::vector<double> &values);

/// S/N over period and dispersion, the highest dispersion on top.
RowPicture scanPicture(const Profiles::ProfileScan &scan, const QSize &size);

} // namespace Plot
