#pragma once

#include <QString>

/// The sampling intervals that recordings may have: one range for all that reads, writes, imports
/// and exports them. It is far wider than any telescope needs, and times and frequencies computed
/// with it stay far from the ends of a double. A step of 0 says that none is known.

inline constexpr double shortestStep = 1e-9; ///< s
inline constexpr double longestStep = 1e5;   ///< s

/// The ends count, also with what a passport's milliseconds round off.
///
/// @param step  s
inline bool isStep(double step)
{
    constexpr double rounding = 1e-12;
    return step >= shortestStep * (1 - rounding) && step <= longestStep * (1 + rounding);
}

/// "1e-06 to 1e+08 ms", as a part of messages.
///
/// @param perSecond  units in a second
inline QString stepRangeText(const QString &unit, double perSecond)
{
    return QString("%1 to %2 %3")
        .arg(shortestStep * perSecond)
        .arg(longestStep * perSecond)
        .arg(unit);
}
