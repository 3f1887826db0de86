#pragma once

#include "analyses/pulses/pulsetables.h"

#include <set>

/// Sources that repeat: pulses of several dates at one sidereal time and one dispersion.
namespace Pulses {

struct RepeatingParameters {
    double minutes = 4;         ///< of sidereal time by which pulses of one source may differ
    double dispersion = 1;      ///< pc/cm^3 by which they may, or three of their errors
    int dates = 2;              ///< fewest
    bool onlyCandidates = true; ///< pulses with a verdict against them do not count
};

struct RepeatingSource {
    std::vector<const TablePulse *> pulses; ///< the strongest first
    std::set<QString> dates;                ///< "yyyy-MM-dd", UTC
    double dispersion = unknown;            ///< weighted mean, pc/cm^3
    double dispersionError = unknown;
    double siderealTime = unknown; ///< hours, mean
    double hours = 0;           ///< that recordings of its rays spent within the minutes around it
    double rate = unknown;      ///< pulses an hour
    double rateError = unknown; ///< of Poisson's law
};

/// @param tables  outlive the result
/// @return the source with the most dates first, then with the most pulses
std::vector<RepeatingSource> repeatingSources(const std::vector<PulseTable> &tables,
                                              const RepeatingParameters &parameters);

std::vector<Results::Column> sourceColumns(const std::vector<RepeatingSource> &sources);

/// All pulses of all tables under each other, candidates first, the strongest first, each with its
/// file.
std::vector<Results::Column> joinedColumns(const std::vector<PulseTable> &tables);

} // namespace Pulses
