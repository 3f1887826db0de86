#pragma once

#include "calc/pulsar/sumreach.h"

#include <vector>

/// What the reports of several actions say, the system's own texts and the remarks beside them.
namespace Pulsar {

/// What a report says of the base line that was taken off.
QString baselineText(const QString &noise);

/// Adds the first point, by number or by time as it was chosen.
void addStart(const PulsarParameters &parameters, Results::Report &report);

/// Where the recording has not all bands for a sum.
///
/// @param wholeBands  of the sum that has the fewest
/// @param starts      first points of all sums
std::vector<Results::Report> bandRemarks(const SumReach &sum, int wholeBands,
                                         const std::vector<int> &starts);
/// The same of one sum from the first point on.
std::vector<Results::Report> bandRemarks(const SumReach &sum, int wholeBands);

/// Which times and periods a report tells. A sum shows every pulse at the time of its arrival in
/// the reference band.
///
/// @param channel  from 1
QString timesText(const ObservationData &header, int channel);

/// Adds remarks behind others, without empty ones.
void append(const std::vector<Results::Report> &remarks, PulsarResult &result);

} // namespace Pulsar
