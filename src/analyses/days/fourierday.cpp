#include "analyses/days/fourierday.h"

#include "analyses/days/fourierdays.h"
#include "calc/approximation.h"
#include "calc/baseline.h"
#include "calc/fourier.h"
#include "calc/mainshum.h"
#include "calc/pulsar/bandsum.h"
#include "calc/whitening.h"
#include "coords/barycentre.h"
#include "coords/site.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <numeric>

namespace Days {

namespace {

constexpr double msPerSecond = 1000;
constexpr double msPerHour = 3600000;
constexpr double highestOfHum = 60; // Hz; what lies above is the double of a base frequency

bool removeBaseline(std::vector<double> &series, const std::vector<float> &backSum,
                    const QString &noise)
{
    // The base line of the method "backSum" is drawn through the other sum.
    const std::vector<double> drawnThrough =
        noise == "backSum" ? std::vector<double>(backSum.begin(), backSum.end()) : series;
    std::vector<double> baseline(series.size());
    if (drawnThrough.size() != series.size() ||
        !Tools::findBaseline(noise, drawnThrough.data(), baseline.data(), int(series.size())))
        return false;
    Pulsar::removeBaseline(false, baseline, series);
    return true;
}

// The padding would spread the mean, which is no line, over the spectrum.
void removeMean(std::vector<double> &series)
{
    const double mean = std::accumulate(series.begin(), series.end(), 0.0) / double(series.size());
    for (double &value : series)
        value -= mean;
}

} // namespace

std::vector<DayHum> humOf(const std::vector<double> &series, double step)
{
    std::vector<DayHum> hum;
    for (const MainsLine &line : Tools::findMains(Tools::powerSpectrum(series, step))) {
        const double multiple = line.nominal > highestOfHum ? 2 : 1;
        hum.push_back({line.from / multiple, line.to / multiple});
    }
    return hum;
}

double solarHourAt(const QDateTime &utc)
{
    const double hours = utc.time().msecsSinceStartOfDay() / msPerHour + Tools::Site::eastLongitude;
    return std::fmod(hours, 24);
}

namespace {

// Making the table of a window takes longer than whitening many spectra with it.
const Tools::Whitening &whiteningOf(int window)
{
    static std::mutex mutex;
    static std::map<int, Tools::Whitening> known;
    const std::lock_guard lock(mutex);
    return known.try_emplace(window, window, Tools::Padding::Doubled).first->second;
}

} // namespace

std::vector<float> whitenedPowers(const std::vector<double> &series, int averageCount, int window)
{
    const int count = int(series.size());
    const int padded = Tools::averagedLength(count, averageCount, true);
    std::vector<double> averaged(2 * series.size());
    if (!Tools::averagePairs(series.data(), averaged.data(), count, averageCount, true))
        return {};
    std::vector<double> spectrum(std::size_t(padded) / 2);
    Tools::amplitudeSpectrum(averaged.data(), spectrum.data(), padded, padded / 2);
    return whiteningOf(window).powers(spectrum, std::size_t(lowestBin));
}

PreparedSeries preparedSeries(const std::vector<float> &sums, const std::vector<float> &backSums,
                              const QString &noise)
{
    PreparedSeries series;
    series.values.assign(sums.begin(), sums.end());
    if (!removeBaseline(series.values, backSums, noise)) {
        series.problem =
            "The noise base line cannot be computed. Take more points, or another one.";
        return series;
    }
    removeMean(series.values);
    series.sigma = Tools::sigma(series.values.data(), int(series.values.size()));
    if (!(series.sigma > 0))
        series.problem = "All sums of the bands are equal: the stretch holds no noise.";
    return series;
}

QDateTime DayStretch::middle() const
{
    const std::size_t points = series.empty() ? 0 : series.front().sums.size();
    const double toMiddle = double(points) * tresolution / 2 - clockOffset;
    return begin.addMSecs(qint64(std::llround(toMiddle * msPerSecond)));
}

double expectedAbove(int bins)
{
    return std::max(0, bins) * std::exp(-highPower);
}

FourierDay fourierOfDay(const DayStretch &stretch, const FourierDaysParameters &parameters,
                        const Jobs::Control &control)
{
    FourierDay day;
    day.begin = stretch.begin;
    for (const DaySeries &series : stretch.series) {
        day.wasStopped = day.wasStopped || series.wasStopped;
        if (day.problem.isEmpty())
            day.problem = series.problem;
    }
    if (stretch.series.empty() || day.wasStopped || !day.problem.isEmpty() || control.isStopped())
        return day;
    const std::vector<float> &sums = stretch.series.front().sums;
    day.remark = stretch.series.front().remark;
    day.binWidth = 1 / (2 * double(sums.size()) * stretch.tresolution);
    day.solarHour = solarHourAt(stretch.middle());
    day.ratio = Tools::barycentricView(Tools::ownSite(), stretch.middle(), stretch.direction)
                    .topocentric(1);

    PreparedSeries prepared = preparedSeries(sums, stretch.series.back().sums, parameters.noise);
    day.sigma = prepared.sigma;
    day.problem = prepared.problem;
    if (!day.problem.isEmpty())
        return day;
    std::vector<double> &series = prepared.values;
    day.hum = humOf(series, stretch.tresolution);
    if (parameters.normalise)
        Tools::normalise(series.data(), int(series.size()));
    day.powers = whitenedPowers(series, parameters.averageCount, parameters.window);
    day.above = int(std::count_if(
        day.powers.begin() + std::min<std::ptrdiff_t>(lowestBin, std::ptrdiff_t(day.powers.size())),
        day.powers.end(), [](float power) { return power > highPower; }));
    return day;
}

} // namespace Days
