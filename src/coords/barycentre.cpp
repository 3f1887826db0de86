#include "coords/barycentre.h"

#include "coords/site.h"

#include <array>
#include <cmath>
#include <erfa.h>
#include <erfam.h>
#include <limits>

namespace Tools {

namespace {

constexpr double secondsPerDay = 86400;
constexpr double millisecondsPerDay = 86400e3;
constexpr qint64 mjdOfUnixEpoch = 40587; // 1970 January 1
constexpr double speedOfLight = ERFA_CMPS;
constexpr double ttLessTai = 32.184; // s

// A date as the routines take it: the large part first, so that milliseconds survive.
struct JulianDate {
    double whole = 0;
    double part = 0;
};

struct Vectors {
    std::array<double, 3> position = {}; // m
    std::array<double, 3> velocity = {}; // m/s
};

JulianDate utcOf(const QDateTime &moment)
{
    const qint64 milliseconds = moment.toMSecsSinceEpoch();
    qint64 day = milliseconds / qint64(millisecondsPerDay);
    if (milliseconds % qint64(millisecondsPerDay) < 0)
        --day;
    return {ERFA_DJM0 + double(mjdOfUnixEpoch + day),
            double(milliseconds - day * qint64(millisecondsPerDay)) / millisecondsPerDay};
}

// s from UTC to TAI; a date beyond the known leap seconds has the last of them.
double leapSeconds(const JulianDate &utc)
{
    int year = 0;
    int month = 0;
    int day = 0;
    double fraction = 0;
    eraJd2cal(utc.whole, utc.part, &year, &month, &day, &fraction);
    double seconds = 0;
    eraDat(year, month, day, fraction, &seconds);
    return seconds;
}

Vectors earthOf(const JulianDate &tdb)
{
    double heliocentric[2][3];
    double barycentric[2][3];
    eraEpv00(tdb.whole, tdb.part, heliocentric, barycentric);
    Vectors earth;
    for (std::size_t i = 0; i < 3; ++i) {
        earth.position[i] = barycentric[0][i] * ERFA_DAU;
        earth.velocity[i] = barycentric[1][i] * ERFA_DAU / secondsPerDay;
    }
    return earth;
}

// The site against the Earth's centre, in the celestial frame.
Vectors siteOf(const ObservingSite &site, const JulianDate &utc, const JulianDate &tt)
{
    double turning[2][3];
    eraPvtob(site.longitude, site.latitude, site.height, 0, 0, eraSp00(tt.whole, tt.part),
             eraEra00(utc.whole, utc.part), turning);
    double celestialToIntermediate[3][3];
    eraC2i06a(tt.whole, tt.part, celestialToIntermediate);
    double celestial[2][3];
    eraTrxpv(celestialToIntermediate, turning, celestial);
    Vectors place;
    for (std::size_t i = 0; i < 3; ++i) {
        place.position[i] = celestial[0][i];
        place.velocity[i] = celestial[1][i];
    }
    return place;
}

} // namespace

ObservingSite ownSite()
{
    return {Site::eastLongitude * 15 * M_PI / 180, std::asin(Site::ls), 0};
}

BarycentricView barycentricView(const ObservingSite &site, const QDateTime &moment,
                                const SkyPosition &source)
{
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    if (!moment.isValid() || !source.isNumber())
        return {notANumber, notANumber};
    const JulianDate utc = utcOf(moment);
    const double toTt = leapSeconds(utc) + ttLessTai;
    const JulianDate tt = {utc.whole, utc.part + toTt / secondsPerDay};
    // TDB less TT as at the Earth's centre: the site adds two microseconds at most.
    const double toTdb = toTt + eraDtdb(tt.whole, tt.part, utc.part, site.longitude, 0, 0);
    const Vectors earth = earthOf({utc.whole, utc.part + toTdb / secondsPerDay});
    const Vectors place = siteOf(site, utc, tt);

    const std::array<double, 3> direction = {std::cos(source.delta) * std::cos(source.alfa),
                                             std::cos(source.delta) * std::sin(source.alfa),
                                             std::sin(source.delta)};
    BarycentricView view;
    double along = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        along += (earth.position[i] + place.position[i]) * direction[i];
        view.velocity += (earth.velocity[i] + place.velocity[i]) * direction[i] / speedOfLight;
    }
    view.delay = along / speedOfLight + toTdb;
    return view;
}

double modifiedJulianDay(const QDateTime &moment)
{
    if (!moment.isValid())
        return std::numeric_limits<double>::quiet_NaN();
    const JulianDate utc = utcOf(moment);
    return utc.whole - ERFA_DJM0 + utc.part;
}

} // namespace Tools
