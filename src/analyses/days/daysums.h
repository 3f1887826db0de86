#pragma once

#include "analyses/days/dayseries.h"
#include "data/stretchresult.h"

namespace Days {

/// The sums that are asked for of one day, made of its recordings; the points of each file are read
/// once for all of them, and only where some are no finite numbers once more.
///
/// @param day  one that can be used: it has parts
/// @return one per request, in their order
std::vector<DaySeries> sumsOfDay(const RecordingSet &set, const Day &day, int points,
                                 const std::vector<SeriesRequest> &requests,
                                 const Jobs::Control &control);

/// The samples of a day, all of its points, for the modules and rays of some requests: each module
/// and ray that one of them names, in the order of the files.
StretchResult<ObservationData> samplesOfDay(const RecordingSet &set, const Day &day,
                                            const std::vector<SeriesRequest> &requests,
                                            const Jobs::Control &control);

/// The samples of a day for one module and ray, those that are no finite numbers replaced by the
/// median of their channel.
struct FiniteDay {
    ObservationData data;
    QString remark;  ///< what was replaced
    QString problem; ///< why it is not whole
    bool wasStopped = false;
    bool isWhole = false;
};
FiniteDay finiteSamplesOfDay(const RecordingSet &set, const Day &day, const SeriesRequest &request,
                             const Jobs::Control &control);

} // namespace Days
