#pragma once

#include "calc/pulsar/bandfold.h"
#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"
#include "picture/plotdata.h"
#include "picture/rowpicture.h"
#include "results/resulttable.h"

#include <utility>
#include <vector>

/// What a plot shows of a result. Forms and the batch program take their plots from here, so that
/// a form and a file show the same.
namespace Plot {

/// Curves of one length over their axis, in the colours of the list from the given one on, with
/// the label rows of the axis and the range of the curves.
///
/// @param names      one per curve
/// @param markers    X indices; those beyond the curves are left out
/// @param recording  its sampling interval and begin time give seconds and UTC
PlotData curvePlot(const PulsarAxis &axis, std::vector<std::vector<float>> curves,
                   const QStringList &names, const std::vector<int> &markers,
                   const ObservationData &recording, int firstColour = 0);

/// The bands of a fold, the highest frequency first.
std::vector<int> bandsFromHighest(const BandFold &fold);

/// Values for the darkest and the lightest colour of folded bands: what 2 and 99.5 % lie below.
std::pair<float, float> bandRange(const BandFold &fold);

/// Phase against frequency, the highest frequency on top.
RowPicture bandPicture(const BandFold &fold);

/// S/N over period.
///
/// @param periods  s, ascending, one per value of each curve
PlotData periodPlot(std::vector<double> periods, std::vector<std::vector<float>> curves,
                    const QVector<QString> &names);

/// Whether a table holds curves or candidates, the two kinds that plotOf() shows.
bool canBeDrawn(const Results::ResultTable &table);

/// The columns of a table over its axis; or S/N over period of its candidates, those with a remark
/// (harmonics, hum) as a curve of their own.
PlotData plotOf(const Results::ResultTable &table);

} // namespace Plot
