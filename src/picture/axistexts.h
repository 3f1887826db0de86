#pragma once

#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"
#include "picture/plotdata.h"

#include <QString>
#include <QStringList>
#include <functional>

/// The axes of results as texts and as axes of a plot.
namespace Plot {

/// "hh:mm:ss.zzz" of a time in milliseconds since any midnight.
QString timeOfDay(qint64 ms);

/// What the label rows of a result show, with their units; row 2 may be empty.
struct AxisTitles {
    QString row1;
    QString row2;
};
AxisTitles axisTitles(const PulsarAxis &axis);

/// Short names of the label rows, which stand beside them.
QStringList rowNames(const PulsarAxis &axis);

/// The texts of the label rows of a result, made for one point at a time: point numbers and UTC
/// for time series, frequencies and periods for spectra, dispersions for scans, phases and
/// seconds for profiles. A row without function has no texts.
struct AxisTexts {
    std::function<QString(int index)> row1;
    std::function<QString(int index)> row2;
};
AxisTexts axisTexts(const PulsarAxis &axis, int count, const ObservationData &data);

/// The X values of a result: seconds since the begin of the recording, Hz, pc/cm^3 or phase.
///
/// @param tresolution  s; without one, time series keep their point numbers
PlotAxis plotAxis(const PulsarAxis &axis, double tresolution);

/// Decimals that tell labels 50 pixels apart from each other on an axis of that range.
int labelDecimals(double range);

} // namespace Plot
