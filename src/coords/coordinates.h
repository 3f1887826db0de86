#pragma once

#include <QString>

/// From catalogue coordinates (of 2000) to the telescope and back.
///
/// The beams lie in a plane through the horizon's north and south points, tilted a little from
/// the meridian towards east: a source is seen when it crosses this plane, earlier than the
/// meridian by its beam plane hour angle. Precession is the only motion of the sky that is
/// taken into account; nutation and aberration are not.
namespace Tools {

/// A right ascension or a time of day.
struct HourAngleValue {
    int hours = 0;
    int minutes = 0;
    double seconds = 0; ///< not a number: the whole value is none
};

/// A declination; all parts of a negative one are negative or zero.
struct AngleValue {
    int degrees = 0;
    int minutes = 0;
    double seconds = 0; ///< not a number: the whole value is none
};

struct CoordinatePair {
    HourAngleValue alfa;
    AngleValue delta;
};

struct CalendarDate {
    int day = 1;
    int month = 1;
    int year = 2000;
};

/// Where the culmination of a source is found.
struct CulminationResult {
    int culminationPoint = 0; ///< sample within the file
    QString fileName;         ///< of the hourly recording; empty: refused
    QString date;             ///< "yyyy.MM.dd", as given
    QString time;             ///< "hh:mm:ss", UTC
    bool isReached = true;    ///< false: refused, the declination never crosses the beam plane
};

/// Reads "hh:mm:ss" by position, with any separators; the seconds may have decimals.
///
/// @return seconds that are not a number where the text ends in anything else
HourAngleValue hourAngleFromText(const QString &text);

/// Reads "dd:mm:ss" or "dd°mm′ss″" in the same way; a last ″ is not part of the number.
AngleValue angleFromText(const QString &text);

/// "hh:mm:ss.ss", or "nan".
QString hourAngleText(const HourAngleValue &value);

/// "dd°mm′ss.ss″", or "nan".
QString angleText(const AngleValue &value);

/// Moves a position of 2000 to the epoch of a date.
CoordinatePair precessFrom2000(const CoordinatePair &position, const CalendarDate &date);

/// Moves a position of the epoch of a date to 2000.
CoordinatePair precessTo2000(const CoordinatePair &position, const CalendarDate &date);

/// How far before the meridian a source crosses the beam plane.
///
/// @param delta  declination of the date, radians
/// @return radians; not a number for a declination that never crosses the plane (within half
///         a degree of the pole) or lies beyond the pole
double beamPlaneHourAngle(double delta);

/// The same for the way from the telescope to the catalogue. It takes square roots where the
/// other form has squares, and the two give different angles.
///
/// @return radians; not a number below 0 and above about 62 degrees
double inverseBeamPlaneHourAngle(double delta);

/// Sidereal time in Greenwich.
///
/// @param ut  hours of universal time on that date
/// @return hours, 0 to 24; not a number where the date does not exist
double siderealTimeAt(const CalendarDate &date, double ut = 0);

/// Hours of universal time in an hour of sidereal time.
inline constexpr double utPerSidereal = 0.9972621527777777;

/// Sidereal time at the telescope.
///
/// @param ut  hours of universal time on that date
/// @return hours, 0 to 24; not a number where the date does not exist
double siderealTimeOnSite(const CalendarDate &date, double ut);

/// When a source crosses the beam plane: the first time on that date.
///
/// @param position  of 2000
/// @return hours of universal time, 0 to 24 x utPerSidereal; not a number where it never does or
///         the date does not exist
double culminationHours(const CoordinatePair &position, const CalendarDate &date);

/// When and in which file a source crosses the beam plane.
///
/// @param alfa, delta  of 2000; "hh:mm:ss" and "dd:mm:ss" with any separators, whole seconds
/// @param date         "yyyy.MM.dd", UTC
/// @param plosh        number of the site
/// @param tres         s between samples
/// @param timeZone     hours ahead of UTC in which files are named
/// @param spanPoints   points around the culmination; the point returned begins them
/// @return without a file name where refused: after one debug line for texts that cannot be
///         read and a tres that gives no point; without one where isReached is false
CulminationResult culminationFromCatalog(const QString &alfa, const QString &delta,
                                         const QString &date, int plosh, double tres, int timeZone,
                                         int spanPoints);

/// Coordinates of 2000 of what crosses the beam plane at a moment.
///
/// @param time   UTC
/// @param delta  declination of the date
/// @return not numbers where inverseBeamPlaneHourAngle gives none, see isNumber
CoordinatePair catalogFromCulmination(const CalendarDate &date, const HourAngleValue &time,
                                      const AngleValue &delta);

/// The same for a source that stands `hourAngle` radians before the meridian.
CoordinatePair catalogFromHourAngle(const CalendarDate &date, const HourAngleValue &time,
                                    const AngleValue &delta, double hourAngle);

/// Whether both coordinates are numbers.
bool isNumber(const CoordinatePair &position);

} // namespace Tools
