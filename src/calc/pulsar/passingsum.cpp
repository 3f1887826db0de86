#include "calc/pulsar/passingsum.h"

#include "base/targetclones.h"
#include "calc/pulsar/bandsum.h"
#include "data/turnpoints.h"

#include <algorithm>

namespace Pulsar {

namespace {

// Points that are turned at once: the bands of so many fit into the nearest cache.
constexpr int turnedPoints = 8 * pointsPerLine;

// Adds the turned points of each band to the sums that they belong to.
//
// @param rows   of a band each, `points` values
// @param point  number of the first value
ZRT_TARGET_CLONES
void addRows(const float *const *rows, const qint64 *firsts, qint64 point, int points, double *sum,
             qint64 count)
{
    for (int band = sumBands - 1; band >= 0; --band) {
        const qint64 place = point - firsts[band];
        const qint64 begin = std::max<qint64>(0, -place);
        const qint64 end = std::min<qint64>(points, count - place);
        if (begin >= end)
            continue;
        const float *const row = rows[band] + begin;
        double *const target = sum + (place + begin);
        for (qint64 i = 0; i < end - begin; ++i)
            target[i] += double(row[i]);
    }
}

} // namespace

PassingSum::PassingSum(const Tools::BandDelays &delays, qint64 first, int count)
    : sum(std::size_t(std::max(0, count)))
{
    for (int band = 0; band + 1 < sumBands; ++band)
        firsts.push_back(first + delays.shift(band));
    firsts.push_back(first);
}

void PassingSum::add(const float *bands, qint64 stride, qint64 firstPoint, int points)
{
    alignas(64) float turned[sumBands][turnedPoints];
    float *rows[sumBands];
    for (int band = 0; band < sumBands; ++band)
        rows[band] = turned[band];
    for (int done = 0; done < points; done += turnedPoints) {
        const int some = std::min(turnedPoints, points - done);
        turnPoints(bands + done * stride, stride, sumBands, rows, 0, some, TurnedFor::Now);
        addRows(rows, firsts.data(), firstPoint + done, some, sum.data(), qint64(sum.size()));
    }
}

} // namespace Pulsar
