#pragma once

#include "data/observationdata.h"

#include <QStringList>

/// What a recording is, in some lines: points, sampling interval and length; the begin; modules and
/// rays by the telescope's numbers; bands and their frequencies. What the passport does not tell is
/// left out.
QStringList recordingSummary(const ObservationData &header);
