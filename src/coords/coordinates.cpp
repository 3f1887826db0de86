#include "coords/coordinates.h"

#include "base/debugline.h"
#include "coords/angletext.h"
#include "coords/datetext.h"
#include "coords/filenames.h"
#include "coords/site.h"

#include <QRegularExpression>
#include <cmath>
#include <limits>

namespace Tools {

namespace {

using namespace Site;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double pi = 3.14159265358979;
constexpr double twoPi = 6.28318530717958;

constexpr double siderealPerUt = 1.002737909;          // of siderealTimeAt
constexpr double precessionN = 9.890199094634522e-05;  // rad/year
constexpr double precessionM = 0.00022349910699149587; // rad/year

// The roots that the inverse form has in place of lc^2, 4 A and 2 A.
constexpr double inverseLc = 0.7590222360008794;
constexpr double inverseFourA = 6.652362687160879;
constexpr double inverseTwoA = 3.3261813435804397;

constexpr double dayOf2000 = 36525;     // day number of 2000 January 1, 12h UT
constexpr double julianCentury = 36525; // days
constexpr double secondsPerDay = 86400;
// Day numbers count from 1899 December 31, 12h UT (JD 2415020.0); the Julian day of a date
// is that of its noon.
constexpr qint64 julianDayOfZero = 2415020;

constexpr double longestAngle = 1e6; // hours or degrees; the whole part must fit an integer

struct Radians {
    double alpha;
    double delta;
};

template <typename Value>
Value sexagesimal(double value)
{
    if (!(std::abs(value) < longestAngle))
        return {0, 0, notANumber};
    const double units = std::trunc(value);
    const double minutes = (value - units) * 60;
    return {int(units), int(std::trunc(minutes)), (minutes - std::trunc(minutes)) * 60};
}

double decimal(double units, double minutes, double seconds)
{
    return units + minutes / 60 + seconds / 3600;
}

double hoursOf(const HourAngleValue &value)
{
    return decimal(value.hours, value.minutes, value.seconds);
}

double radians(const HourAngleValue &value)
{
    return hoursOf(value) * 15 * pi / 180;
}

double radians(const AngleValue &value)
{
    return decimal(value.degrees, value.minutes, value.seconds) * pi / 180;
}

double positive(double value, double turn)
{
    return value < 0 ? value + turn : value;
}

double hoursOfRadians(double angle)
{
    return wrappedHours(angle * 180 / pi / 15);
}

HourAngleValue hourAngleOf(double angle)
{
    return sexagesimal<HourAngleValue>(hoursOfRadians(angle));
}

AngleValue angleOf(double angle)
{
    return sexagesimal<AngleValue>(angle * 180 / pi);
}

// Years since 2000. Months are taken as finished, on purpose: both directions do so.
double epoch(const CalendarDate &date)
{
    return (date.day / 365.0 + date.month / 12.0 + date.year) - 2000;
}

// Two passes of the midpoint rule, each with the mean of the start and the last result.
CoordinatePair precess(const CoordinatePair &position, double years)
{
    const Radians start = {radians(position.alfa), radians(position.delta)};
    Radians middle = start;
    Radians result = start;
    for (int pass = 0; pass < 2; ++pass) {
        const double alphaRate =
            precessionM + precessionN * std::sin(middle.alpha) * std::tan(middle.delta);
        const double deltaRate = precessionN * std::cos(middle.alpha);
        result = {start.alpha + alphaRate * years, start.delta + deltaRate * years};
        middle = {(start.alpha + result.alpha) / 2, (start.delta + result.delta) / 2};
    }
    return {hourAngleOf(result.alpha), angleOf(result.delta)};
}

// u is the part of the direction along the plane's own axis, x = sin H.
double hourAngleOfPlane(double u, double delta)
{
    if (!(std::cos(delta) > 0))
        return notANumber;
    const double x = u * ts / std::cos(delta);
    return std::atan(x / std::sqrt(1 - x * x));
}

// Sidereal time at the telescope, up to 48 hours. The way back of culminationHours: with the same
// constant, not with that of siderealTimeAt.
double unwrappedTimeOnSite(const CalendarDate &date, double ut)
{
    double siderealTime = siderealTimeAt(date) + positive(ut / utPerSidereal, 24);
    if (siderealTime > 24)
        siderealTime -= 24;
    return positive(siderealTime + eastLongitude, 24);
}

double secondsOfText(const QString &text)
{
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern("\\d{1,2}(\\.\\d*)?"));
    return pattern.match(text).hasMatch() ? text.toDouble() : notANumber;
}

} // namespace

HourAngleValue hourAngleFromText(const QString &text)
{
    return {text.left(2).toInt(), text.mid(3, 2).toInt(), secondsOfText(text.mid(6))};
}

AngleValue angleFromText(const QString &text)
{
    QString seconds = text.mid(6);
    if (seconds.endsWith(QStringLiteral("″")))
        seconds.chop(1);
    return {text.left(2).toInt(), text.mid(3, 2).toInt(), secondsOfText(seconds)};
}

QString hourAngleText(const HourAngleValue &value)
{
    return sexagesimalText("%1:%2:%3", value.hours, value.minutes, value.seconds);
}

QString angleText(const AngleValue &value)
{
    return sexagesimalText("%1°%2′%3″", value.degrees, value.minutes, value.seconds);
}

CoordinatePair precessFrom2000(const CoordinatePair &position, const CalendarDate &date)
{
    return precess(position, epoch(date));
}

CoordinatePair precessTo2000(const CoordinatePair &position, const CalendarDate &date)
{
    return precess(position, -epoch(date));
}

// The direction of hour angle -H lies in the plane where sin(delta) = ls tc u + lc sqrt(1 - u^2):
// A u^2 - B u + sin^2(delta) - lc^2 = 0 with A = ls^2 tc^2 + lc^2 and B = 2 ls tc sin(delta).
double beamPlaneHourAngle(double delta)
{
    const double sine = std::sin(delta);
    const double a = ls * ls * tc * tc + lc * lc;
    const double b = twoLsTc * sine;
    const double d = b * b - 4 * a * (sine * sine - lc * lc);
    return hourAngleOfPlane((b + std::sqrt(d)) / (2 * a), delta);
}

double inverseBeamPlaneHourAngle(double delta)
{
    const double sine = std::sin(delta);
    const double b = twoLsTc * sine;
    const double d = std::sqrt(b) - (std::sqrt(sine) - inverseLc) * inverseFourA;
    return hourAngleOfPlane((b + std::sqrt(d)) / inverseTwoA, delta);
}

double siderealTimeAt(const CalendarDate &date, double ut)
{
    const QDate day(date.year, date.month, date.day);
    if (!day.isValid())
        return notANumber;
    const double dayNumber = double(day.toJulianDay() - julianDayOfZero) - 0.5; // at 0h UT
    const double t = (dayNumber - dayOf2000) / julianCentury;
    const double seconds = 24110.54841 + 8640184.812866 * t + 0.093104 * t * t - 6.2e-6 * t * t * t;
    const double turns = ut / 24 * siderealPerUt + seconds / secondsPerDay;
    return positive(turns - std::trunc(turns), 1) * 24;
}

double siderealTimeOnSite(const CalendarDate &date, double ut)
{
    return wrappedHours(unwrappedTimeOnSite(date, ut));
}

double culminationHours(const CoordinatePair &of2000, const CalendarDate &date)
{
    const CoordinatePair position = precessFrom2000(of2000, date);
    const double before = beamPlaneHourAngle(radians(position.delta));
    const double alpha = positive(radians(position.alfa) - before, twoPi);
    if (!std::isfinite(alpha))
        return notANumber;
    const double siderealTime = positive(hoursOfRadians(alpha) - eastLongitude, 24);
    const double sinceMidnight = positive(siderealTime - siderealTimeAt(date), 24);
    return positive(sinceMidnight * utPerSidereal, 24);
}

CulminationResult culminationFromCatalog(const QString &alfa, const QString &delta,
                                         const QString &date, int plosh, double tres, int timeZone,
                                         int spanPoints)
{
    CulminationResult result;
    result.date = date;
    const QDate day = dateFromText(date);
    if (!day.isValid()) {
        debugLine("Tools::culminationFromCatalog(): bad date=", date);
        return result;
    }
    const CalendarDate calendarDate = {day.day(), day.month(), day.year()};
    const CoordinatePair of2000 = {hourAngleFromText(alfa.left(8)), angleFromText(delta.left(8))};
    if (!isNumber(of2000)) {
        debugLine("Tools::culminationFromCatalog(): bad position=", alfa, " ", delta);
        return result;
    }
    const double hours = culminationHours(of2000, calendarDate);
    if (!std::isfinite(hours)) {
        result.isReached = false;
        return result;
    }
    const auto ut = sexagesimal<HourAngleValue>(hours);

    const double point = std::trunc((ut.minutes * 60 + ut.seconds) / tres - spanPoints * 0.5);
    if (!(tres > 0 && std::abs(point) <= std::numeric_limits<int>::max())) {
        debugLine("Tools::culminationFromCatalog(): bad tres=", tres);
        return result;
    }
    result.culminationPoint = int(point);
    result.time = QString("%1:%2:%3")
                      .arg(ut.hours, 2, 10, QChar('0'))
                      .arg(ut.minutes, 2, 10, QChar('0'))
                      .arg(int(ut.seconds), 2, 10, QChar('0'));
    result.fileName = dataFileName(date, ut.hours, timeZone, plosh, tres);
    return result;
}

CoordinatePair catalogFromCulmination(const CalendarDate &date, const HourAngleValue &time,
                                      const AngleValue &delta)
{
    return catalogFromHourAngle(date, time, delta, inverseBeamPlaneHourAngle(radians(delta)));
}

CoordinatePair catalogFromHourAngle(const CalendarDate &date, const HourAngleValue &time,
                                    const AngleValue &delta, double hourAngle)
{
    const double onPlane = unwrappedTimeOnSite(date, hoursOf(time)) * 15 * pi / 180;
    const double alpha = positive(onPlane + hourAngle, twoPi);
    return precessTo2000({hourAngleOf(alpha), delta}, date);
}

bool isNumber(const CoordinatePair &position)
{
    return std::isfinite(position.alfa.seconds) && std::isfinite(position.delta.seconds);
}

} // namespace Tools
