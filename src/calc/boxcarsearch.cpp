#include "calc/boxcarsearch.h"

#include "base/targetclones.h"
#include "calc/robuststatistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace Tools {

namespace {

constexpr int chunkPoints = 64; // places whose best boxcars are found at once
constexpr int chains = 4;       // running sums that are made side by side
constexpr int noiseSamples = 16384;
constexpr int centreSamples = 4096; // of these, whose median absolute deviation is the first guess
constexpr int noiseTrials = 6;
constexpr double clipSigmas = 3;
// Standard deviation of a normal variable within three sigmas, over that of all.
constexpr double clippedShare = 0.98658;

// Sums of all samples before each, one more than samples. A sum waits for the one before; four
// quarters side by side wait for nobody.
ZRT_TARGET_CLONES
void runningSums(const float *samples, int count, float *sums)
{
    const int length = count / chains;
    std::array<float, chains> sum = {};
    float *const out = sums + 1;
    for (int i = 0; i < length; ++i) {
        for (int c = 0; c < chains; ++c) {
            sum[std::size_t(c)] += samples[c * length + i];
            out[c * length + i] = sum[std::size_t(c)];
        }
    }
    sums[0] = 0;
    for (int c = 1; c < chains; ++c) {
        const float before = out[c * length - 1];
        for (int i = 0; i < length; ++i)
            out[c * length + i] += before;
    }
    for (int i = chains * length; i < count; ++i)
        sums[i + 1] = sums[i] + samples[i];
}

// Sixteen values side by side; the compiler cuts them to what the processor has.
typedef float Floats __attribute__((vector_size(64)));
constexpr int lanes = 16;
constexpr int groups = chunkPoints / lanes;

// The best S/N at each place of a chunk, and the highest of them all.
ZRT_TARGET_CLONES
float bestOfChunk(const float *sums, const int *widths, const float *scales, int count, float *best)
{
    Floats begins[groups];
    Floats tops[groups];
    for (int g = 0; g < groups; ++g) {
        std::memcpy(&begins[g], sums + g * lanes, sizeof begins[g]);
        std::memcpy(&tops[g], sums + widths[0] + g * lanes, sizeof tops[g]);
        tops[g] = (tops[g] - begins[g]) * scales[0];
    }
    for (int w = 1; w < count; ++w) {
        const float *const ends = sums + widths[w];
        const float scale = scales[w];
        for (int g = 0; g < groups; ++g) {
            Floats snr;
            std::memcpy(&snr, ends + g * lanes, sizeof snr);
            snr = (snr - begins[g]) * scale;
            tops[g] = snr > tops[g] ? snr : tops[g];
        }
    }
    std::memcpy(best, tops, sizeof tops);
    Floats highest = tops[0];
    for (int g = 1; g < groups; ++g)
        highest = tops[g] > highest ? tops[g] : highest;
    float top = highest[0];
    for (int i = 1; i < lanes; ++i)
        top = highest[i] > top ? highest[i] : top;
    return top;
}

// Root of the mean square of the values within a limit.
ZRT_TARGET_CLONES
double clippedRoot(const float *values, int count, float limit)
{
    float squares[16] = {};
    float inside[16] = {};
    for (int i = 0; i + 16 <= count; i += 16) {
        for (int k = 0; k < 16; ++k) {
            const float value = values[i + k];
            const float counts = value <= limit && value >= -limit ? 1.0F : 0.0F;
            squares[k] += counts * value * value;
            inside[k] += counts;
        }
    }
    double sum = 0;
    double number = 0;
    for (int k = 0; k < 16; ++k) {
        sum += double(squares[k]);
        number += double(inside[k]);
    }
    return number > 0 ? std::sqrt(sum / number) : 0;
}

double clippedSigma(const std::vector<float> &values, std::vector<float> &scratch)
{
    const std::size_t stride = std::max<std::size_t>(1, values.size() / centreSamples);
    scratch.clear();
    for (std::size_t i = 0; i < values.size(); i += stride)
        scratch.push_back(std::abs(values[i]));
    const auto middle = scratch.begin() + std::ptrdiff_t(scratch.size() / 2);
    std::nth_element(scratch.begin(), middle, scratch.end());
    double sigma = madToSigma * double(*middle);
    for (int round = 0; round < 2; ++round)
        sigma = clippedRoot(values.data(), int(values.size()), float(clipSigmas * sigma)) /
                clippedShare;
    return sigma;
}

// The sums at one trial, block by block.
void sumAt(const BandRows &rows, const DispersionTree &tree, int trial, std::vector<float> &series)
{
    for (int first = 0; first < rows.count(); first += DispersionTree::blockPoints) {
        const int count = std::min(DispersionTree::blockPoints, rows.count() - first);
        float *const sums = series.data() + first;
        std::fill_n(sums, count, 0.0F);
        for (int band = 0; band < rows.bands(); ++band) {
            const float *const row = rows.row(band) + first + tree.shift(trial, band);
            for (int i = 0; i < count; ++i)
                sums[i] += row[i];
        }
    }
}

// What findBoxcars() keeps of each trial from block to block.
class BoxcarBlocks {
public:
    BoxcarBlocks(const DispersionTree &tree, const std::vector<int> &boxcarWidths,
                 const std::vector<float> &boxcarScales, float snrThreshold)
        : widths(boxcarWidths), scales(boxcarScales), threshold(snrThreshold),
          widest(boxcarWidths.back()),
          tails(std::size_t(tree.trials()) * std::size_t(widest), 0.0F),
          samples(std::size_t(widest) + DispersionTree::blockPoints + chunkPoints, 0.0F),
          sums(samples.size() + std::size_t(widest) + 1, 0.0F)
    {}

    // Takes the sums of the points `first` on; boxcars begin up to the widest one earlier.
    void take(int trial, const float *block, int first, int count, int last,
              std::vector<BoxcarEvent> &peaks)
    {
        float *const tail = tails.data() + std::ptrdiff_t(trial) * widest;
        std::copy_n(tail, widest, samples.begin());
        std::copy_n(block, count, samples.begin() + widest);
        std::copy_n(samples.begin() + count, widest, tail);
        runningSums(samples.data(), widest + count, sums.data());
        const float *const ofTrial = scales.data() + std::size_t(trial) * widths.size();
        // What begins before the recording is not whole.
        for (int place = std::max(0, widest - first); place < count; place += chunkPoints) {
            const int begin = first - widest + place;
            const int places = std::min({chunkPoints, count - place, last - begin});
            if (places <= 0)
                break;
            if (bestOfChunk(sums.data() + place, widths.data(), ofTrial, int(widths.size()),
                            best.data()) >= threshold)
                addPeaks(trial, begin, place, places, ofTrial, peaks);
        }
    }

private:
    void addPeaks(int trial, int begin, int place, int places, const float *ofTrial,
                  std::vector<BoxcarEvent> &peaks) const
    {
        for (int i = 0; i < places; ++i) {
            if (best[std::size_t(i)] < threshold)
                continue;
            int top = i;
            for (; i < places && best[std::size_t(i)] >= threshold; ++i)
                top = best[std::size_t(i)] > best[std::size_t(top)] ? i : top;
            const float *const at = sums.data() + place + top;
            std::size_t width = 0;
            while ((at[widths[width]] - at[0]) * ofTrial[width] < best[std::size_t(top)])
                ++width;
            peaks.push_back({trial, begin + top, widths[width], best[std::size_t(top)]});
        }
    }

    const std::vector<int> &widths;
    const std::vector<float> &scales;
    const float threshold;
    const int widest;
    std::vector<float> tails; // the last sums of each trial, as many as the widest boxcar takes
    std::vector<float> samples;
    std::vector<float> sums;
    std::array<float, chunkPoints> best = {};
};

} // namespace

std::vector<float> boxcarScales(const float *series, int count, const std::vector<int> &widths)
{
    std::vector<double> sums(std::size_t(count) + 1, 0.0);
    for (int i = 0; i < count; ++i)
        sums[std::size_t(i) + 1] = sums[std::size_t(i)] + double(series[i]);
    std::vector<float> values;
    std::vector<float> scratch;
    std::vector<float> scales;
    double narrowest = 0; // noise of one point, from the narrowest boxcar
    for (const int width : widths) {
        const int places = count - width + 1;
        if (places < 2 || (narrowest == 0 && !scales.empty())) {
            scales.push_back(0);
            continue;
        }
        const int stride = std::max(1, places / noiseSamples);
        values.clear();
        for (int i = 0; i < places; i += stride)
            values.push_back(float(sums[std::size_t(i + width)] - sums[std::size_t(i)]));
        double sigma = clippedSigma(values, scratch);
        if (scales.empty())
            narrowest = sigma / std::sqrt(double(width));
        sigma = std::max(sigma, narrowest * std::sqrt(double(width)));
        scales.push_back(sigma > 0 ? float(1 / sigma) : 0);
    }
    return scales;
}

std::vector<float> boxcarScales(const BandRows &rows, DispersionTree &tree,
                                const std::vector<int> &widths)
{
    const int trials = tree.trials();
    const int measured = std::min(trials, noiseTrials);
    // What all bands have at once widens the noise at low dispersions only.
    const auto trialOf = [&](int i) {
        const double part = measured < 2 ? 0 : double(i) / (measured - 1);
        return int(std::lround(part * part * (trials - 1)));
    };
    std::vector<std::vector<float>> at;
    std::vector<float> series(std::size_t(rows.count()));
    for (int i = 0; i < measured; ++i) {
        sumAt(rows, tree, trialOf(i), series);
        // Points whose bands are not all there have less noise.
        const int begin = std::min(tree.earliest(), rows.count() / 2);
        const int end = std::max(rows.count() - tree.latest(), rows.count() / 2);
        at.push_back(boxcarScales(series.data() + begin, end - begin, widths));
    }
    std::vector<float> scales;
    scales.reserve(std::size_t(trials) * widths.size());
    for (int trial = 0, i = 0; trial < trials; ++trial) {
        while (i + 2 < measured && trialOf(i + 1) <= trial)
            ++i;
        const std::size_t next = std::size_t(std::min(i + 1, measured - 1));
        const int span = trialOf(int(next)) - trialOf(i);
        const float part = span > 0 ? float(trial - trialOf(i)) / float(span) : 0;
        for (std::size_t w = 0; w < widths.size(); ++w)
            scales.push_back(at[std::size_t(i)][w] + part * (at[next][w] - at[std::size_t(i)][w]));
    }
    return scales;
}

std::vector<BoxcarEvent> findBoxcars(const BandRows &rows, DispersionTree &tree,
                                     const std::vector<int> &widths,
                                     const std::vector<float> &scales, float threshold,
                                     const std::function<bool()> &isStopped)
{
    std::vector<BoxcarEvent> peaks;
    BoxcarBlocks blocks(tree, widths, scales, threshold);
    const int count = rows.count();
    // Behind the last point there are zeros, so that boxcars that begin near it are looked at.
    for (qint64 first = 0; first < qint64(count) + widths.back();
         first += DispersionTree::blockPoints) {
        if (isStopped && isStopped())
            return {};
        tree.sumBlock(
            rows, int(first), DispersionTree::blockPoints, [&](int trial, const float *sums) {
                blocks.take(trial, sums, int(first), DispersionTree::blockPoints, count, peaks);
            });
    }
    return peaks;
}

BandRows rowsFor(const DispersionTree &tree, int bands, int count, const std::vector<int> &widths)
{
    return BandRows(bands, count, tree.earliest(),
                    tree.latest() + widths.back() + DispersionTree::blockPoints);
}

qint64 boxcarBytes(const DispersionTree &tree, int bands, int count, const std::vector<int> &widths)
{
    const qint64 row = qint64(count) + tree.earliest() + tree.latest() + widths.back() +
                       DispersionTree::blockPoints;
    const qint64 ofTrial = qint64(widths.back()) + qint64(widths.size());
    return tree.bytes() + (row * bands + ofTrial * tree.trials()) * qint64(sizeof(float));
}

} // namespace Tools
