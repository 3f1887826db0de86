#pragma once

#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"

#include <QString>

/// Texts of the pulsar form to numbers and back, without widgets.
namespace FormTexts {

/// Label of the file: "File: " and the path with a blank after every slash, so that it can
/// wrap.
QString fileLabel(const QString &path);

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

} // namespace FormTexts
