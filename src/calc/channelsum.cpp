#include "calc/channelsum.h"

#include "base/debugline.h"
#include "base/targetclones.h"
#include "calc/banddelays.h"

#include <algorithm>
#include <array>

namespace Tools {

namespace {

constexpr double minTimeResolution = 0.00001; // s

// Points summed over all bands before the next points are touched: the sums stay in the
// cache, and a band is still read in runs long enough for the processor's prefetcher.
constexpr int blockPoints = 4096;
// Bands added in one pass over the sums of a block.
constexpr int bandsPerPass = 8;

// One band and the point of it that belongs to the first sum.
struct ShiftedBand {
    const float *samples = nullptr;
    int start = 0;
};

// Adds the bands in steps of some cache lines. The prefetcher stops at every page, so each
// band is asked for a kilobyte ahead.
template <int bandCount>
[[gnu::always_inline]] inline void addFixedBands(const float *const *bands, double *sums, int count)
{
    constexpr int line = 16;
    constexpr int step = 4 * line;
    constexpr int ahead = 256;
    const auto addPoint = [bands, sums](int i) {
        double sum = sums[i];
        for (int b = 0; b < bandCount; ++b)
            sum += bands[b][i];
        sums[i] = sum;
    };
    int first = 0;
    for (; first + step <= count; first += step) {
        for (int b = 0; b < bandCount; ++b)
            for (int i = 0; i < step; i += line)
                __builtin_prefetch(bands[b] + first + ahead + i);
        for (int i = 0; i < step; ++i)
            addPoint(first + i);
    }
    for (; first < count; ++first)
        addPoint(first);
}

// Adds `bandCount` bands, 1 to 8, to the sums. Every element receives them in the order given,
// whatever the instruction set.
ZRT_TARGET_CLONES
void addBands(const float *const *bands, int bandCount, double *sums, int count)
{
    switch (bandCount) {
    case 1:
        return addFixedBands<1>(bands, sums, count);
    case 2:
        return addFixedBands<2>(bands, sums, count);
    case 3:
        return addFixedBands<3>(bands, sums, count);
    case 4:
        return addFixedBands<4>(bands, sums, count);
    case 5:
        return addFixedBands<5>(bands, sums, count);
    case 6:
        return addFixedBands<6>(bands, sums, count);
    case 7:
        return addFixedBands<7>(bands, sums, count);
    default:
        return addFixedBands<bandsPerPass>(bands, sums, count);
    }
}

// Adds bands to the sums of the points `first` .. `first + count - 1` of a recording of
// `npoints`. The stretch is cut where one of the bands wraps round, so that the inner loops
// run straight through.
void addCircular(const ShiftedBand *bands, int bandCount, int first, double *sums, int count,
                 int npoints)
{
    std::array<const float *, bandsPerPass> from = {};
    for (int done = 0; done < count;) {
        int run = count - done;
        for (int b = 0; b < bandCount; ++b) {
            const int untilWrap = npoints - bands[b].start;
            const int point = first + done;
            const int source = point < untilWrap ? bands[b].start + point : point - untilWrap;
            from[std::size_t(b)] = bands[b].samples + source;
            run = std::min(run, npoints - source);
        }
        addBands(from.data(), bandCount, sums + done, run);
        done += run;
    }
}

bool isRefused(const ObservationData &data, int module, int ray)
{
    if (data.npoints < 1)
        debugLine("Tools::sumChannels(): bad npoints=", data.npoints);
    else if (!(data.tresolution >= minTimeResolution))
        debugLine("Tools::sumChannels(): bad step=", data.tresolution);
    else if (module < 0 || module >= data.modules)
        debugLine("Tools::sumChannels(): bad module=", module, " data->modules=", data.modules);
    else if (ray < 0 || ray >= data.rays)
        debugLine("Tools::sumChannels(): bad ray=", ray, " data->rays=", data.rays);
    else if (data.channels < 2)
        debugLine("Tools::sumChannels(): bad channels=", data.channels);
    else if (!areFrequencies(data.fbands, data.channels - 1))
        debugLine("Tools::sumChannels(): error freq");
    else if (data.samples == nullptr)
        debugLine("Tools::sumChannels(): no samples");
    else
        return false;
    return true;
}

} // namespace

std::vector<double> sumChannels(const ObservationData &data, double dispersion, int module, int ray)
{
    if (isRefused(data, module, ray))
        return {};

    const int reference = data.channels - 2;
    const BandDelays delays(data, reference + 1, dispersion, ShiftRounding::WholeRecording);
    if (const int bad = delays.highestWithoutShift(); bad >= 0) {
        debugLine("Tools::sumChannels(): bad delay=", delays.delay(bad), " channel=", bad);
        return {};
    }
    std::vector<ShiftedBand> bands; // in the order of their addition
    bands.reserve(std::size_t(reference));
    for (int c = reference - 1; c >= 0; --c)
        bands.push_back({data.samples[module][c][ray], delays.wrapped(c, data.npoints)});

    const float *const unshifted = data.samples[module][reference][ray];
    std::vector<double> sums;
    sums.reserve(std::size_t(data.npoints));
    std::array<double, blockPoints> block;
    for (int first = 0; first < data.npoints;) {
        const int count = std::min(blockPoints, data.npoints - first);
        std::copy_n(unshifted + first, count, block.begin());
        for (std::size_t b = 0; b < bands.size(); b += bandsPerPass) {
            const int pass = int(std::min<std::size_t>(bandsPerPass, bands.size() - b));
            addCircular(&bands[b], pass, first, block.data(), count, data.npoints);
        }
        sums.insert(sums.end(), block.begin(), block.begin() + count);
        first += count;
    }
    return sums;
}

} // namespace Tools
