#pragma once

#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"
#include "picture/plotdata.h"

#include <QString>
#include <functional>
#include <vector>

/// Texts of the pulsar form to numbers and back, without widgets.
namespace FormTexts {

/// Label of the file: "File: " and the path with a blank after every slash, so that it can
/// wrap.
QString fileLabel(const QString &path);

/// "hh:mm:ss.zzz" of a time in milliseconds since any midnight.
QString timeOfDay(qint64 ms);

/// Where a time of day lies in a recording.
struct StartPoint {
    int point = 0;
    QString error; ///< why there is no such point, with the allowed times; empty on success
};

/// Point recorded at a UTC time of day "h:m:s" or "h:m:s.zzz"; a time of day before that of
/// the recording's begin belongs to the next day. Rounded down to whole points.
StartPoint pointAtUtc(const ObservationData &data, const QString &time);

/// "Action:" and the other choices, one per line, with the number of points of the result.
/// Where the passport numbers the file's modules or rays otherwise, both are named.
QString selection(const QString &action, const ObservationData &data,
                  const PulsarParameters &parameters, int points);

/// What the label rows of a result show, with their units; row 2 may be empty.
struct AxisTitles {
    QString row1;
    QString row2;
};
AxisTitles axisTitles(const PulsarAxis &axis);

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

} // namespace FormTexts
