#pragma once

#include "calc/pulsar/sumreach.h"

#include <QStringList>
#include <vector>

/// What the reports of several actions say, the system's own texts and the remarks beside them.
namespace Pulsar {

/// What a report says of the base line that was taken off, as a line of its own.
QString baselineText(const QString &noise);

/// "First point" as a line of a report, by number or by time as it was chosen.
QString startText(const PulsarParameters &parameters);

/// Where the recording has not all bands for a sum.
///
/// @param wholeBands  of the sum that has the fewest
/// @param starts      first points of all sums
QStringList bandRemarks(const SumReach &sum, int wholeBands, const std::vector<int> &starts);
/// The same of one sum from the first point on.
QStringList bandRemarks(const SumReach &sum, int wholeBands);

/// Which times and periods a report tells. A sum shows every pulse at the time of its arrival in
/// the reference band.
///
/// @param channel  from 1
QString timesText(const ObservationData &header, int channel);

} // namespace Pulsar
