#pragma once

#include "coords/skyposition.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

/// Arrival times of pulses, and the period that they tell.
namespace Timing {

struct ArrivalTime {
    qint64 day = 0;    ///< MJD, whole; 0 where times are plain seconds
    double second = 0; ///< of that day
    double error = 0;  ///< s, one sigma; 0: unknown

    /// "57113.1234567890123", or seconds.
    QString text() const;
};

enum class TimeScale {
    Seconds,     ///< from any moment
    Utc,         ///< at the telescope
    Barycentric, ///< TDB at the barycentre of the solar system
};

struct ArrivalTimes {
    std::vector<ArrivalTime> times; ///< rising, all different
    TimeScale scale = TimeScale::Seconds;
    double resolution = 0; ///< s: one in the last digit of a list; 0: of no account
    std::optional<Tools::SkyPosition> position; ///< of the source, where a table tells it
    QStringList remarks;                        ///< what a user should know
    QString problem;                            ///< why they cannot be used; empty: they can
};

/// Names of what plain numbers are: "auto", "mjd", "seconds".
inline constexpr char automatic[] = "auto";
inline constexpr char daysUnit[] = "mjd";
inline constexpr char secondsUnit[] = "seconds";

/// Reads times from any of
/// - a table of arrival times or of pulses, in any form (text, CSV, JSON): pulses with a verdict
///   against them are left out, barycentric times are preferred;
/// - a .tim file that begins with "FORMAT 1";
/// - a list with a time on each line and, behind it, its error in s: modified Julian days, seconds,
///   or "2015-04-01 12:00:00.5" with a blank or a T between date and time. "#" begins a comment.
///
/// @param unit  of plain numbers; automatic: days where all of them are of 1941 to 2132
/// @param mjd   is added to plain numbers, which then are days
ArrivalTimes parseTimes(const QByteArray &text, const QString &unit = automatic, double mjd = 0);

/// Times of UTC become those at which the same pulses pass the barycentre.
void turnToBarycentre(ArrivalTimes &times, const Tools::SkyPosition &position);

/// The mean direction; nothing where there is none, or one is not known.
std::optional<Tools::SkyPosition> meanPosition(const std::vector<Tools::SkyPosition> &places);

/// Brings times into their order, each once, and remarks on that.
void sortTimes(ArrivalTimes &times);

/// Seconds since the midnight before the first of the times.
std::vector<double> secondsOf(const ArrivalTimes &times);

} // namespace Timing
