#include "ffa/periodogram.h"

#include "base/debugline.h"
#include "base/systemmemory.h"
#include "base/targetclones.h"
#include "ffa/boxcar.h"
#include "ffa/downsample.h"
#include "ffa/ffaplan.h"
#include "ffa/foldsearch.h"
#include "ffa/normalise.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>

namespace Ffa {

namespace {

FoldLimits limitsOf(const SearchPlan &plan, qint32 bins_min)
{
    FoldLimits limits;
    limits.binsMin = bins_min;
    if (const auto first = plan.step(0)) {
        limits.samples = first->samples;
        limits.binsMax = first->binsLast;
    }
    return limits;
}

// Trial periods of a fold: a drift of s bins over all its rows makes b - s / (rows - 1) bins.
ZRT_TARGET_CLONES
void writePeriods(const PlanFold &fold, double tsamp, double factor, double *periods)
{
    const double bins = fold.bins;
    const double lastRow = double(fold.rows) - 1;
    for (quint64 s = 0; s < fold.evaluated; ++s)
        periods[s] = bins * tsamp * factor * bins / (bins - double(s) / lastRow);
}

int percentOf(quint64 done, quint64 length)
{
    return length == 0 ? 100 : int(100 * done / length);
}

// Everything a search takes, results included.
double bytesNeeded(const FoldLimits &limits, const std::vector<quint64> &widths, quint64 length)
{
    const double nwidths = double(widths.size());
    const double perTrial = sizeof(double) + sizeof(quint32) + nwidths * sizeof(float);
    return double(length) * perTrial + nwidths * sizeof(quint64) +
           (double(limits.samples) + 2 * FoldSearch::seriesSlack) * sizeof(float) +
           FoldSearch::bytesNeeded(limits, widths.data(), widths.size());
}

QString tooLarge(double bytes, quint64 length, std::size_t nwidths)
{
    constexpr int mebibyte = 1 << 20;
    return QStringLiteral("The search needs %1 MiB of memory for %2 trial periods at %3 widths, "
                          "%4 MiB are available")
        .arg(std::ceil(bytes / mebibyte), 0, 'f', 0)
        .arg(length)
        .arg(nwidths)
        .arg(availableMemory() / mebibyte);
}

} // namespace

bool runPeriodogram(const float *data, quint64 size, double tsamp, const quint64 *widths,
                    quint64 nwidths, double period_min, double period_max, qint32 bins_min,
                    qint32 bins_max, double *periods, quint32 *foldbins, float *snr,
                    const Progress &progress)
{
    requireParameters(size, tsamp, period_min, period_max, bins_min, bins_max);
    const SearchPlan plan(size, tsamp, period_min, period_max, bins_min, bins_max);
    const FoldLimits limits = limitsOf(plan, bins_min);
    constexpr double addressable = 1e18;
    if (FoldSearch::bytesNeeded(limits, widths, nwidths) > addressable)
        throw std::bad_array_new_length();
    const quint64 length =
        periodogramLength(size, tsamp, period_min, period_max, bins_min, bins_max);
    FoldSearch search(limits, widths, nwidths);
    std::vector<float> buffer(limits.samples + 2 * FoldSearch::seriesSlack);
    float *const series = buffer.data() + FoldSearch::seriesSlack;

    quint64 done = 0;
    for (qint64 i = 0; const auto step = plan.step(i); ++i) {
        if (step->factor == 1.0)
            std::copy_n(data, size, series);
        else
            downsample(data, size, step->factor, series);
        const double variance = downsampledVariance(size, step->factor);
        for (qint64 b = bins_min; b <= step->binsLast; ++b) {
            const PlanFold fold = step->fold(qint32(b));
            const float stdnoise = float(std::sqrt(double(fold.rows) * variance));
            search.run(series, fold, stdnoise, snr + done * nwidths);
            std::fill_n(foldbins + done, fold.evaluated, quint32(b));
            writePeriods(fold, tsamp, step->factor, periods + done);
            done += fold.evaluated;
            if (progress && !progress(percentOf(done, length)))
                return false;
        }
    }
    return true;
}

double searchBytes(quint64 size, double tsamp, double period_min, double period_max,
                   qint32 bins_min, qint32 bins_max, const std::vector<quint64> &widths)
{
    const SearchPlan plan(size, tsamp, period_min, period_max, bins_min, bins_max);
    return bytesNeeded(limitsOf(plan, bins_min), widths,
                       periodogramLength(size, tsamp, period_min, period_max, bins_min, bins_max));
}

void trialPeriods(quint64 size, double tsamp, double period_min, double period_max, qint32 bins_min,
                  qint32 bins_max, double *periods, quint32 *foldbins)
{
    const SearchPlan plan(size, tsamp, period_min, period_max, bins_min, bins_max);
    for (qint64 i = 0; const auto step = plan.step(i); ++i) {
        for (qint64 b = bins_min; b <= step->binsLast; ++b) {
            const PlanFold fold = step->fold(qint32(b));
            writePeriods(fold, tsamp, step->factor, periods);
            periods += fold.evaluated;
            foldbins = std::fill_n(foldbins, fold.evaluated, quint32(b));
        }
    }
}

} // namespace Ffa

Periodogram::Periodogram()
{
    debugLine("Periodogram::Periodogram()");
}

Periodogram::Periodogram(const float *data, quint64 size, double tsamp, double period_min,
                         double period_max, qint32 bins_min, qint32 bins_max, double ducy_max,
                         double wtsp, const Ffa::Progress &progress)
{
    search(data, size, tsamp, period_min, period_max, bins_min, bins_max, ducy_max, wtsp, progress);
}

Periodogram::Periodogram(float *data, quint64 size, double tsamp, double period_min,
                         double period_max, qint32 /*reserved*/, qint32 bins_min, qint32 bins_max,
                         double ducy_max, double wtsp, bool normalized,
                         const Ffa::Progress &progress)
{
    if (!normalized)
        Ffa::normalizeSeries(data, size);
    search(data, size, tsamp, period_min, period_max, bins_min, bins_max, ducy_max, wtsp, progress);
}

void Periodogram::search(const float *data, quint64 size, double tsamp, double period_min,
                         double period_max, qint32 bins_min, qint32 bins_max, double ducy_max,
                         double wtsp, const Ffa::Progress &progress)
{
    error = Ffa::validateParameters(size, tsamp, period_min, period_max, bins_min, bins_max);
    if (!error.isEmpty())
        return;
    const std::vector<qint32> trials = Ffa::trialWidths(bins_min, ducy_max, wtsp);
    if (trials.empty()) {
        error = QStringLiteral("More than %1 trial widths").arg(Ffa::maxTrialWidths);
        return;
    }
    widths.assign(trials.begin(), trials.end());
    const quint64 count =
        Ffa::periodogramLength(size, tsamp, period_min, period_max, bins_min, bins_max);
    const Ffa::SearchPlan plan(size, tsamp, period_min, period_max, bins_min, bins_max);
    const double bytes = Ffa::bytesNeeded(Ffa::limitsOf(plan, bins_min), widths, count);
    const bool fits = hasMemoryFor(bytes) && count <= quint64(std::numeric_limits<qint32>::max());
    try {
        if (fits) {
            periods.resize(count);
            foldbins.resize(count);
            snr.resize(count * widths.size());
            if (Ffa::runPeriodogram(data, size, tsamp, widths.data(), widths.size(), period_min,
                                    period_max, bins_min, bins_max, periods.data(), foldbins.data(),
                                    snr.data(), progress)) {
                length = qint32(count);
                nwidths = qint32(widths.size());
                return;
            }
            error = QStringLiteral("The search was cancelled");
        }
    } catch (const std::bad_alloc &) {
        // Memory can go to other programs between the check and its use.
    }
    if (error.isEmpty())
        error = Ffa::tooLarge(bytes, count, widths.size());
    widths = {};
    periods = {};
    foldbins = {};
    snr = {};
}
