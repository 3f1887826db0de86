#pragma once

#include "coords/skyposition.h"

#include <QDateTime>

/// The Earth's motion as pulsar times and frequencies feel it. Positions and velocities are those
/// of the IAU's standard routines (liberfa): Earth's orbit after epv00, which keeps to some 10 km
/// and 5 mm/s of JPL's DE405 from 1900 to 2100; the Earth's turning after the IAU 2006
/// precession and 2000A nutation, with UT1 taken as UTC (at most 0.4 km at the equator) and
/// without polar motion. Together this is good to some 50 microseconds of arrival time. Pulsar
/// catalogues count their seconds in barycentric dynamical time (TDB), which runs at the mean rate
/// of the Earth's clocks, so that no slowing by motion and gravity enters the frequencies.
namespace Tools {

/// Where a telescope stands: geodetic, WGS84.
struct ObservingSite {
    double longitude = 0; ///< radians, east positive
    double latitude = 0;  ///< radians
    double height = 0;    ///< m above the ellipsoid
};

/// The telescope whose recordings the program is made for.
ObservingSite ownSite();

/// How a site moves against the barycentre of the solar system, seen along one direction.
struct BarycentricView {
    /// s to be added to the UTC of an arrival at the site, to get the barycentric dynamical time
    /// (TDB) at which the same wave passes the barycentre: Roemer's delay, and the steps from UTC
    /// to TDB. Dispersion and the Sun's gravity (at most 0.12 ms) are not in it.
    double delay = 0;
    /// Velocity of the site towards the source, in units of the speed of light.
    double velocity = 0;

    /// A barycentric frequency as the site sees it, and back: the delay grows by `velocity`
    /// seconds a second. A site that moves towards the source sees the higher frequency.
    double topocentric(double frequency) const { return frequency * (1 + velocity); }
    double barycentric(double frequency) const { return frequency / (1 + velocity); }
};

/// @param moment  UTC; between 1960 and some years after the last known leap second
/// @return NaN for an invalid moment or position
BarycentricView barycentricView(const ObservingSite &site, const QDateTime &moment,
                                const SkyPosition &position);

/// Modified Julian day of a UTC moment, in days; one with a leap second is not told apart.
double modifiedJulianDay(const QDateTime &moment);

} // namespace Tools
