#pragma once

#include "support/recordings.h"

#include <QByteArray>
#include <QDateTime>
#include <cmath>
#include <numbers>
#include <random>

/// Recordings of some days with lines and pulses too weak for one of them.
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

/// The bytes of a recording that begins so many sidereal days later.
inline QByteArray siderealDaysLater(QByteArray bytes, int days)
{
    const QDateTime begin = QDateTime({2015, 4, 1}, {12, 0}, Qt::UTC).addSecs(qint64(days) * 86164);
    return bytes.replace("01.04.2015", begin.toString("dd.MM.yyyy").toLatin1())
        .replace("12:00:00", begin.toString("hh:mm:ss").toLatin1());
}

inline constexpr double stripFrequency = 6.3; ///< Hz, of the line in ray 2
inline constexpr double stripPeriod = 0.7;    ///< s, of the pulses there

/// A strip of the sky, so many sidereal days after the first: two rays of noise, of which the
/// second has a line and pulses besides.
///
/// @param line, pulse  heights in one band, sigma
inline QByteArray stripBytes(int day, int points, double line, double pulse)
{
    std::mt19937 random(unsigned(day + 1));
    std::normal_distribution<float> law(100, 1);
    const QByteArray bytes =
        recordingBytes({points, 1, 33, 2}, [&](int point, int, int channel, int ray) {
            const double time = point * dayStep;
            const double wave = line * std::sin(2 * std::numbers::pi * stripFrequency * time + day);
            const double high = std::fmod(time, stripPeriod) < 0.05 ? pulse : 0;
            return law(random) + float(ray == 1 && channel < 32 ? wave + high : 0);
        });
    return siderealDaysLater(bytes, day);
}

} // namespace TestSupport
