#pragma once

#include "coords/skyposition.h"

#include <QDateTime>
#include <vector>

namespace Simulator {

/// When the pulses of a pulsar reach the telescope, by the Earth's motion.
///
/// @param position  of 2000
/// @param period    s at the barycentre
/// @param phase     part of a period from 0h TDB of `date` to a peak at the barycentre
/// @param begin     UTC
/// @param from, to  s from the begin
/// @return s from the begin, ascending, in whole 1/2^20 s: what a math library makes of the last
///         digits is not in them
std::vector<double> arrivals(const Tools::SkyPosition &position, double period, double phase,
                             const QDate &date, const QDateTime &begin, double from, double to);

} // namespace Simulator
