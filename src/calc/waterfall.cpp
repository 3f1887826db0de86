#include "calc/waterfall.h"

#include "base/targetclones.h"
#include "calc/banddelays.h"
#include "calc/robuststatistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace Tools {

namespace {

// Eight running sums: one alone would wait for each addition to end.
double sumOf(const float *samples, int count)
{
    constexpr int lanes = 8;
    std::array<double, lanes> sums = {};
    int i = 0;
    for (; i + lanes <= count; i += lanes)
        for (int lane = 0; lane < lanes; ++lane)
            sums[std::size_t(lane)] += samples[i + lane];
    double sum = 0;
    for (; i < count; ++i)
        sum += samples[i];
    for (const double lane : sums)
        sum += lane;
    return sum;
}

// Mean of the finite samples of a run that goes round the end of the band; NaN of none.
float meanOfFinite(const float *band, int npoints, int begin, int points)
{
    double sum = 0;
    int count = 0;
    for (int i = 0; i < points; ++i) {
        const float sample = band[(qint64(begin) + i) % npoints];
        if (!std::isfinite(sample))
            continue;
        sum += double(sample);
        ++count;
    }
    return count > 0 ? float(sum / count) : NAN;
}

// Means of one band; the part begins at the point `begin` of it and goes round its end.
ZRT_TARGET_CLONES
void averageRow(const float *band, int npoints, int begin, const WaterfallPart &part, float *row)
{
    int done = 0;
    for (int column = 0; column < part.columns; ++column) {
        const int end = int(qint64(column + 1) * part.count / part.columns);
        const int points = end - done;
        const int first = begin;
        double sum = 0;
        for (int left = points; left > 0;) {
            const int run = std::min(left, npoints - begin);
            sum += sumOf(band + begin, run);
            left -= run;
            begin = begin + run == npoints ? 0 : begin + run;
        }
        row[column] =
            std::isfinite(sum) ? float(sum / points) : meanOfFinite(band, npoints, first, points);
        done = end;
    }
}

// Mean of the finite samples of the bands at each point; 0 of none.
std::vector<float> meanOfBands(const ObservationData &data, const WaterfallPart &part)
{
    const auto points = std::size_t(data.npoints);
    std::vector<double> sums(points, 0.0);
    std::vector<int> counts(points, 0);
    for (int band = 0; band < data.channels - 1; ++band) {
        if (std::size_t(band) < part.channelsOff.size() && part.channelsOff[std::size_t(band)])
            continue;
        const float *const samples = data.samples[part.module][band][part.ray];
        for (std::size_t i = 0; i < points; ++i) {
            const bool isNumber = std::isfinite(samples[i]);
            sums[i] += isNumber ? double(samples[i]) : 0;
            counts[i] += isNumber ? 1 : 0;
        }
    }
    std::vector<float> means(points);
    for (std::size_t i = 0; i < points; ++i)
        means[i] = counts[i] > 0 ? float(sums[i] / counts[i]) : 0;
    return means;
}

bool isWithin(const ObservationData &data, const WaterfallPart &part)
{
    return data.samples && part.module >= 0 && part.module < data.modules && part.ray >= 0 &&
           part.ray < data.rays && part.first >= 0 && part.count >= 1 &&
           qint64(part.first) + part.count <= data.npoints && part.columns >= 1 &&
           part.columns <= part.count;
}

} // namespace

std::vector<float> waterfall(const ObservationData &data, const WaterfallPart &part)
{
    const int bands = data.channels - 1;
    // Without a dispersion the frequencies do not matter.
    const bool isShifted = part.dispersion != 0;
    if (!isWithin(data, part) || (isShifted && !areFrequencies(data.fbands, bands)))
        return {};
    std::vector<float> picture(std::size_t(bands) * std::size_t(part.columns));
    const std::vector<float> common =
        part.isZeroDm ? meanOfBands(data, part) : std::vector<float>();
    std::vector<float> commonRow(common.empty() ? 0 : std::size_t(part.columns));
    std::optional<BandDelays> delays;
    if (isShifted)
        delays.emplace(data, bands, part.dispersion, ShiftRounding::WholeRecording);
    for (int band = 0; band < bands; ++band) {
        if (delays && !delays->isShift(band))
            return {};
        const int shift = delays ? delays->shift(band) : 0;
        const qint64 begin = (qint64(part.first) + shift) % data.npoints;
        const int start = int(begin < 0 ? begin + data.npoints : begin);
        float *const row = picture.data() + qint64(band) * part.columns;
        averageRow(data.samples[part.module][band][part.ray], data.npoints, start, part, row);
        if (common.empty())
            continue;
        averageRow(common.data(), data.npoints, start, part, commonRow.data());
        for (int i = 0; i < part.columns; ++i)
            row[i] -= commonRow[std::size_t(i)];
    }
    return picture;
}

void normaliseRows(std::vector<float> &picture, int rows, int columns)
{
    std::vector<float> scratch;
    for (int r = 0; r < rows; ++r) {
        float *const row = picture.data() + qint64(r) * columns;
        const RobustLevel level = robustLevel(row, columns, scratch);
        const double scale = level.spread > 0 ? 1 / level.spread : 1;
        for (int i = 0; i < columns; ++i)
            row[i] = float((row[i] - level.median) * scale);
    }
}

} // namespace Tools
