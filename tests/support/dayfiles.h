#pragma once

#include "support/recordings.h"

#include <QByteArray>
#include <cmath>
#include <random>

/// Recordings of some days with pulses too weak for one of them.
namespace TestSupport {

inline constexpr int dayPoints = 5000;
inline constexpr double dayStep = 12.4928e-3; ///< s
inline constexpr double dayPeriod = 0.5;      ///< s, of the pulses in ray 2

/// Noise in three rays; ray 2 has weak pulses besides.
///
/// @param day     of April 2015
/// @param height  of a pulse in one band, sigma
inline QByteArray dayBytes(int day, int points = dayPoints, double height = 0.12)
{
    std::minstd_rand random(unsigned(100 + day));
    QByteArray bytes = recordingBytes({points, 1, 33, 3}, [&](int point, int, int, int ray) {
        double noise = -6;
        for (int i = 0; i < 12; ++i)
            noise += double(random()) / double(std::minstd_rand::max());
        const bool isPulse = std::fmod(point * dayStep, dayPeriod) < 2 * dayStep;
        return float(100 + noise + (ray == 1 && isPulse ? height : 0));
    });
    return bytes.replace("01.04.2015", QByteArray::number(day).rightJustified(2, '0') + ".04.2015");
}

} // namespace TestSupport
