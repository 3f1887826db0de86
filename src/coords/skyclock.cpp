#include "coords/skyclock.h"

#include <cmath>
#include <limits>

namespace Tools {

namespace {

constexpr double millisecondsPerHour = 3600e3;
constexpr double hour = M_PI / 12; // radians
constexpr SkyPosition nowhere = {std::numeric_limits<double>::quiet_NaN(),
                                 std::numeric_limits<double>::quiet_NaN()};

CalendarDate calendarDate(const QDate &date)
{
    return {date.day(), date.month(), date.year()};
}

QDateTime moment(const QDate &date, double hours)
{
    return QDateTime(date, QTime(0, 0), Qt::UTC)
        .addMSecs(std::llround(hours * millisecondsPerHour));
}

// The place of 2000 that precession moves to `wanted`, by Newton's method: near the pole the plain
// way back misses it by seconds of time.
SkyPosition positionOf2000(const SkyPosition &wanted, const CalendarDate &date)
{
    constexpr int passes = 6;
    constexpr double tolerance = 1e-10; // radians, some microseconds of time
    constexpr double step = 1e-6;       // radians, of the derivatives
    const auto missed = [&](const SkyPosition &from) {
        const SkyPosition moved = skyPosition(precessFrom2000(coordinatePair(from), date));
        return SkyPosition{std::remainder(moved.alfa - wanted.alfa, 2 * M_PI),
                           moved.delta - wanted.delta};
    };
    SkyPosition found = skyPosition(precessTo2000(coordinatePair(wanted), date));
    for (int pass = 0; pass < passes; ++pass) {
        const SkyPosition error = missed(found);
        if (std::abs(error.alfa) < tolerance && std::abs(error.delta) < tolerance)
            break;
        const SkyPosition east = missed({found.alfa + step, found.delta});
        const SkyPosition north = missed({found.alfa, found.delta + step});
        const double aa = (east.alfa - error.alfa) / step;
        const double ad = (north.alfa - error.alfa) / step;
        const double da = (east.delta - error.delta) / step;
        const double dd = (north.delta - error.delta) / step;
        const double determinant = aa * dd - ad * da;
        found.alfa -= (error.alfa * dd - error.delta * ad) / determinant;
        found.delta -= (error.delta * aa - error.alfa * da) / determinant;
    }
    found.alfa = std::fmod(std::fmod(found.alfa, 2 * M_PI) + 2 * M_PI, 2 * M_PI);
    return found;
}

double hoursOfDay(const QDateTime &utc)
{
    return utc.time().msecsSinceStartOfDay() / millisecondsPerHour;
}

// The moments of something that comes once a sidereal day, first at `hoursOf(date)` of every date.
// The clocks of two dates differ by some tenths of a second at midnight, where both may show it:
// the first one counts.
template <typename HoursOf>
std::vector<QDateTime> momentsOfDates(const QDateTime &begin, const QDateTime &end,
                                      const HoursOf &hoursOf)
{
    constexpr qint64 apart = 60000; // ms
    std::vector<QDateTime> moments;
    if (!begin.isValid() || !end.isValid())
        return moments;
    const QDateTime from = begin.toUTC();
    const QDateTime to = end.toUTC();
    for (QDate date = from.date(); date <= to.date(); date = date.addDays(1)) {
        const double first = hoursOf(date);
        if (!std::isfinite(first))
            return {};
        for (double hours = first; hours < 24; hours += 24 * utPerSidereal) {
            const QDateTime found = moment(date, hours);
            const bool isNew = moments.empty() || moments.back().msecsTo(found) > apart;
            if (isNew && found >= from && found < to)
                moments.push_back(found);
        }
    }
    return moments;
}

} // namespace

double siderealDay()
{
    return 24 * utPerSidereal * 3600;
}

std::vector<QDateTime> culminations(const SkyPosition &position, const QDateTime &begin,
                                    const QDateTime &end)
{
    if (!position.isNumber())
        return {};
    const CoordinatePair of2000 = coordinatePair(position);
    return momentsOfDates(begin, end, [&of2000](const QDate &date) {
        return culminationHours(of2000, calendarDate(date));
    });
}

std::vector<QDateTime> siderealMoments(double siderealTime, const QDateTime &begin,
                                       const QDateTime &end)
{
    return momentsOfDates(begin, end, [siderealTime](const QDate &date) {
        const double atMidnight = siderealTimeOnSite(calendarDate(date), 0);
        const double wait = std::fmod(std::fmod(siderealTime - atMidnight, 24) + 24, 24);
        return wait * utPerSidereal;
    });
}

QDateTime nearestCulmination(const SkyPosition &position, const QDateTime &wanted)
{
    QDateTime nearest;
    for (const QDateTime &passage : culminations(position, wanted.addDays(-1), wanted.addDays(1))) {
        if (!nearest.isValid() ||
            std::abs(passage.msecsTo(wanted)) < std::abs(nearest.msecsTo(wanted)))
            nearest = passage;
    }
    return nearest;
}

SkyPosition positionInBeam(const QDateTime &wanted, double delta)
{
    const double before = beamPlaneHourAngle(delta);
    if (!wanted.isValid() || !std::isfinite(before))
        return nowhere;
    const double onPlane = localSiderealTime(wanted) * hour;
    const double alfa = std::fmod(onPlane + before + 2 * M_PI, 2 * M_PI);
    return positionOf2000({alfa, delta}, calendarDate(wanted.toUTC().date()));
}

double declinationOfDate(const SkyPosition &position, const QDate &date)
{
    return skyPosition(precessFrom2000(coordinatePair(position), calendarDate(date))).delta;
}

double localSiderealTime(const QDateTime &wanted)
{
    const QDateTime utc = wanted.toUTC();
    return siderealTimeOnSite(calendarDate(utc.date()), hoursOfDay(utc));
}

} // namespace Tools
