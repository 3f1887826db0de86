#pragma once

#include "calc/fieldproblem.h"
#include "data/observationdata.h"

#include <QString>

/// Where a time of day lies in a recording.
struct StartPoint {
    int point = 0;
    FieldProblem problem; ///< why there is no such point, with the allowed times; empty on success
    bool isWithoutTimes = false; ///< no time can be found in this recording, only points
};

/// Point recorded at a UTC time of day "h:m:s" or "h:m:s.zzz"; a time of day before that of
/// the recording's begin belongs to the next day. Rounded down to whole points.
StartPoint pointAtUtc(const ObservationData &data, const QString &time);
