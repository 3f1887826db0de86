#include "data/turnpoints.h"

#include <algorithm>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

// Values turned together: a square of 4 x 4 floats fits into four vector registers.
constexpr qint64 tileValues = 4;

// Values that turnPlain() goes through before it starts with the first ray again: half of a
// usual first cache level, so that every line of the source is fetched once for all rays.
constexpr qint64 plainValues = 4096;

void turnPlain(const float *points, qint64 stride, qint64 values, float *const *rays,
               qint64 firstPoint, qint64 count)
{
    const qint64 step = std::max(qint64(pointsPerLine), plainValues / stride);
    for (qint64 begin = 0; begin < count; begin += step) {
        const qint64 end = std::min(begin + step, count);
        for (qint64 v = 0; v < values; ++v) {
            float *const ray = rays[v] + firstPoint;
            for (qint64 p = begin; p < end; ++p)
                ray[p] = points[p * stride + v];
        }
    }
}

#ifdef __SSE2__
// One line of points of four rays. Each ray's line is written whole, and past the caches where
// nobody reads it soon: thousands of rays are written in turn, so that a cached line would first
// have to be fetched and would be evicted again before anybody reads it.
template <TurnedFor use>
void turnTile(const float *points, qint64 stride, float *const *rays, qint64 firstPoint)
{
    __m128 lines[tileValues][4];
    for (int quarter = 0; quarter < 4; ++quarter) {
        const float *const first = points + 4 * quarter * stride;
        __m128 a = _mm_loadu_ps(first);
        __m128 b = _mm_loadu_ps(first + stride);
        __m128 c = _mm_loadu_ps(first + 2 * stride);
        __m128 d = _mm_loadu_ps(first + 3 * stride);
        _MM_TRANSPOSE4_PS(a, b, c, d);
        lines[0][quarter] = a;
        lines[1][quarter] = b;
        lines[2][quarter] = c;
        lines[3][quarter] = d;
    }
    for (int v = 0; v < tileValues; ++v) {
        for (int quarter = 0; quarter < 4; ++quarter) {
            float *const to = rays[v] + firstPoint + 4 * quarter;
            if constexpr (use == TurnedFor::Later)
                _mm_stream_ps(to, lines[v][quarter]);
            else
                _mm_store_ps(to, lines[v][quarter]);
        }
    }
}

// Whole lines of points; returns how many points that were.
template <TurnedFor use>
qint64 turnTiles(const float *points, qint64 stride, qint64 values, float *const *rays,
                 qint64 firstPoint, qint64 count)
{
    const qint64 whole = count - count % pointsPerLine;
    const qint64 lastTile = values - tileValues;
    for (qint64 p = 0; p < whole; p += pointsPerLine) {
        const float *const line = points + p * stride;
        for (qint64 v = 0; v < lastTile; v += tileValues)
            turnTile<use>(line + v, stride, rays + v, firstPoint + p);
        // The last tile overlaps the one before where the values are no multiple of it.
        turnTile<use>(line + lastTile, stride, rays + lastTile, firstPoint + p);
    }
    if constexpr (use == TurnedFor::Later)
        _mm_sfence();
    return whole;
}
#endif

} // namespace

void turnPoints(const float *points, qint64 stride, qint64 values, float *const *rays,
                qint64 firstPoint, qint64 count, TurnedFor use)
{
    qint64 done = 0;
#ifndef __SSE2__
    Q_UNUSED(use)
#else
    if (values >= tileValues)
        done = (use == TurnedFor::Now
                    ? turnTiles<TurnedFor::Now>
                    : turnTiles<TurnedFor::Later>)(points, stride, values, rays, firstPoint, count);
#endif
    turnPlain(points + done * stride, stride, values, rays, firstPoint + done, count - done);
}
