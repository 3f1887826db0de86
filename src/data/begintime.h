#pragma once

#include "data/observationdata.h"

#include <QDateTime>

struct Passport;

/// When the first sample of a recording was taken, to the millisecond. ObservationData::beginTime
/// keeps whole seconds; this one keeps the fraction of "time_begin", where the passport has one,
/// and that of the shift by "point".
///
/// @param header  what recordingHeader() made of this passport
/// @return UTC; invalid where the passport has no readable time, or forbids one by "stairs_names"
QDateTime exactBegin(const Passport &passport, const ObservationData &header);
