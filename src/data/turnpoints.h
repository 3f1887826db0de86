#pragma once

#include <QtGlobal>

/// Points that fill one cache line of a ray. Whoever turns long stretches starts every call
/// but the last on a multiple of it.
inline constexpr int pointsPerLine = 16;

/// Who reads the rays next: somebody later, so that they are written past the caches, or the caller
/// at once, for whom they stay there.
enum class TurnedFor { Later, Now };

/// Turns samples from the order of the file, point by point, to the order of the analyses,
/// ray by ray: rays[v][firstPoint + p] = points[p * stride + v]. Values are moved as bits.
///
/// @param points      first value of the first point
/// @param stride      values from one point to the next
/// @param values      values of each point to turn, at most `stride`
/// @param rays        `values` arrays, each beginning on a cache line
/// @param firstPoint  multiple of pointsPerLine
/// @param count       points
void turnPoints(const float *points, qint64 stride, qint64 values, float *const *rays,
                qint64 firstPoint, qint64 count, TurnedFor use = TurnedFor::Later);
