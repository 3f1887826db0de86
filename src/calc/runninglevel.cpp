#include "calc/runninglevel.h"

#include "base/targetclones.h"
#include "calc/blockline.h"
#include "calc/localmedian.h"

#include <algorithm>

namespace Tools {

namespace {

double meanOf(const float *samples, int count)
{
    float lanes[8] = {};
    int i = 0;
    for (; i + 8 <= count; i += 8)
        for (int k = 0; k < 8; ++k)
            lanes[k] += samples[i + k];
    double sum = 0;
    for (const float lane : lanes)
        sum += double(lane);
    for (; i < count; ++i)
        sum += double(samples[i]);
    return sum / count;
}

// Subtracts a line, `first` at the first sample and `step` more at each one after it.
ZRT_TARGET_CLONES
void subtractLine(float *samples, int count, float first, float step)
{
    for (int i = 0; i < count; ++i)
        samples[i] -= first + step * float(i);
}

} // namespace

void subtractRunningLevel(float *samples, int count, int window)
{
    if (count < 1)
        return;
    const SeriesBlocks blocks = {count, std::min(count, levelBlock)};
    const int number = int(blocks.number());
    std::vector<double> means;
    for (int k = 0; k < number; ++k) {
        const int begin = k * int(blocks.length);
        means.push_back(meanOf(samples + begin, int(blocks.endOf(k)) - begin));
    }
    const std::vector<double> level = localMedian(means, window / levelBlock | 1);
    int from = 0; // the samples before it have lost their level
    for (int k = 0; k + 1 < number; ++k) {
        const double centre = blocks.centreOf(k);
        const double slope =
            (level[std::size_t(k) + 1] - level[std::size_t(k)]) / (blocks.centreOf(k + 1) - centre);
        const int end = int(blocks.centreOf(k + 1));
        const double before = k == 0 ? centre : 0; // level before the first centre
        if (before > 0) {
            subtractLine(samples, int(centre), float(level[0]), 0);
            from = int(centre);
        }
        subtractLine(samples + from, end - from,
                     float(level[std::size_t(k)] + (from - centre) * slope), float(slope));
        from = end;
    }
    subtractLine(samples + from, count - from, float(level.back()), 0);
}

} // namespace Tools
