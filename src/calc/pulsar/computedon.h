#pragma once

#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"

#include <QStringList>

/// What a result of the pulsar form was computed on, for the information panel, saved tables and
/// pictures alike: lines "key: value" with the file, module and ray, the channel or the dispersions
/// and bands, the points and their UTC, the base line, the normalisation, the averaging and the
/// steps taken out. An action's line is missing where it makes no use of it.
///
/// @param path    of the recording
/// @param action  of PulsarCalculate, but for "createFFA"
QStringList computedOn(const QString &path, const QString &action, const ObservationData &data,
                       const PulsarParameters &parameters, const PulsarResult &result);

/// A module or a ray by its place in the file, from 1, with the number that the passport gives it
/// where that differs: "1 (number 3)".
QString moduleText(const ObservationData &data, int module);
QString rayText(const ObservationData &data, int ray);

/// "Action:" and the other choices, one per line, with the number of points of the result.
Results::Report choicesReport(const QString &action, const ObservationData &data,
                              const PulsarParameters &parameters, int points);

/// UTC of the first and of the last of so many points from `firstPoint` on, "yyyy-MM-dd
/// hh:mm:ss.zzz to hh:mm:ss.zzz", both rounded down; empty without a begin time or a step.
QString utcRange(const ObservationData &data, int firstPoint, int points);

/// Whether the curves of a result are in units of their standard deviation.
bool isNormalised(const QString &action, const PulsarParameters &parameters);

/// Whether an action works on one channel instead of on the sum of the bands.
bool worksOnChannel(const QString &action);
