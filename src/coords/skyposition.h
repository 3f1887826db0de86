#pragma once

#include "coords/coordinates.h"

#include <QString>

/// Places on the sky as plain angles, for computing. The sexagesimal records of coordinates.h
/// stay what reports and the calculator show.
namespace Tools {

/// Catalogue coordinates of 2000.
struct SkyPosition {
    double alfa = 0;  ///< right ascension, radians, 0 to 2 pi
    double delta = 0; ///< declination, radians

    bool isNumber() const;
};

SkyPosition skyPosition(const CoordinatePair &position);
CoordinatePair coordinatePair(const SkyPosition &position);

/// Angle between two places, radians.
double separation(const SkyPosition &one, const SkyPosition &other);

/// Reads a right ascension: "hh", "hh:mm", "hh:mm:ss" or "hh:mm:ss.s". The parts stand between
/// colons, blanks or the letters h, m and s; the last one may have decimals.
///
/// @return radians; not a number for any other text and outside 0 to 24 hours
double rightAscensionOf(const QString &text);

/// Reads a declination in the same way, with a sign and with degree, minute and second marks as
/// well. The sign holds for all parts, "-00:30" is half a degree south.
///
/// @return radians; not a number for any other text and outside -90 to 90 degrees
double declinationOf(const QString &text);

/// "hh:mm:ss.s" and "+dd:mm:ss", rounded; "-" where it is no number.
QString rightAscensionText(double alfa);
QString declinationText(double delta);

} // namespace Tools
