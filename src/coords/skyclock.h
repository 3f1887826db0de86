#pragma once

#include "coords/skyposition.h"

#include <QDateTime>
#include <vector>

/// When a place of the sky stands in the beams, and what stands in them at a moment: the one
/// clock of everything that compares days. Both ways are the arithmetic of
/// culminationFromCatalog, in full digits and without texts, so that one is the inverse of the
/// other. Moments are UTC and kept to the millisecond.
namespace Tools {

/// UTC from one passage of a place to the next, s: a sidereal day.
double siderealDay();

/// The moments from `begin` on and before `end` at which a place crosses the beam plane. There
/// is one a sidereal day, so one date of a year has two.
///
/// @return rising; empty for a place that never crosses the plane, and without valid moments
std::vector<QDateTime> culminations(const SkyPosition &position, const QDateTime &begin,
                                    const QDateTime &end);

/// The moments from `begin` on and before `end` at which the telescope's sidereal clock shows a
/// time.
///
/// @param siderealTime  hours
/// @return rising; empty without valid moments or a number
std::vector<QDateTime> siderealMoments(double siderealTime, const QDateTime &begin,
                                       const QDateTime &end);

/// The passage nearest to a moment; invalid where there is none.
QDateTime nearestCulmination(const SkyPosition &position, const QDateTime &moment);

/// What crosses the beam plane at a moment.
///
/// @param delta  declination of the date, radians: that of the beam
/// @return place of 2000; no numbers for a declination that never crosses the plane
SkyPosition positionInBeam(const QDateTime &moment, double delta);

/// Declination of the date of a place of 2000, radians: what the declination of a beam is
/// compared with.
double declinationOfDate(const SkyPosition &position, const QDate &date);

/// Sidereal time at the telescope, hours, 0 to 24.
double localSiderealTime(const QDateTime &moment);

} // namespace Tools
