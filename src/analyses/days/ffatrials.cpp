#include "analyses/days/ffatrials.h"

#include "calc/significance.h"
#include "ffa/downsample.h"
#include "ffa/ffaplan.h"
#include "ffa/periodogram.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Days {

namespace {

// Where a whole number of samples is nearly a whole number of turns, each phase always gets the
// same parts of samples, and the noise of the phases differs. The best of phases whose variances
// scatter by the share h is higher by 1 + h (x^2 - 3) / 8, x the height that one of all phases
// exceeds: the mean of Gaussian tails to second order.
class PhaseScatter {
public:
    PhaseScatter(const Ffa::PlanStep &step, const Ffa::PlanFold &wanted) : fold(wanted)
    {
        constexpr double mostFactor = 4;  // above, parts of samples are a small share
        constexpr quint64 mostRows = 256; // of more, hardly any keep their phase
        if (step.factor > mostFactor || fold.rows > mostRows)
            return;
        const auto rounded = [](double place) {
            const double part = place - std::floor(place);
            return part * (1 - part);
        };
        for (quint64 i = 0; i < fold.rows * quint64(fold.bins); ++i)
            variances.push_back(step.factor - rounded(double(i) * step.factor) -
                                rounded(double(i + 1) * step.factor));
    }

    // Variance of the variances of the phases over the square of their mean.
    double at(quint64 trial) const
    {
        if (variances.empty())
            return 0;
        const auto bins = std::size_t(fold.bins);
        std::vector<double> ofPhase(bins);
        for (quint64 row = 0; row < fold.rows; ++row) {
            const auto shift =
                std::size_t(std::llround(double(trial * row) / double(fold.rows - 1))) % bins;
            const double *const values = variances.data() + row * bins;
            for (std::size_t i = 0; i < bins - shift; ++i)
                ofPhase[i] += values[i + shift];
            for (std::size_t i = bins - shift; i < bins; ++i)
                ofPhase[i] += values[i + shift - bins];
        }
        double sum = 0;
        double squares = 0;
        for (const double value : ofPhase) {
            sum += value;
            squares += value * value;
        }
        const double mean = sum / double(bins);
        return squares / double(bins) / (mean * mean) - 1;
    }

private:
    Ffa::PlanFold fold;
    std::vector<double> variances; // of downsampled samples; empty: taken as equal
};

// The noise of one downsampling, and the scatter of the phases, of a place of a Periodogram.
struct PlaceNoise {
    double factor = 1;
    double told = 1;  // variance of one value as S/N takes it
    double value = 1; // its true variance
    double scatter = 0;
};
std::vector<PlaceNoise> noiseOfPlaces(const FfaTrials &trials)
{
    const FfaParameters &ffa = trials.ffa;
    const auto size = quint64(trials.points);
    const Ffa::SearchPlan plan(size, trials.tsamp, ffa.period_min, ffa.period_max, ffa.bins_min,
                               ffa.bins_max);
    std::vector<PlaceNoise> places;
    for (qint64 i = 0; const auto step = plan.step(i); ++i) {
        PlaceNoise place;
        place.factor = step->factor;
        place.told = Ffa::downsampledVariance(size, step->factor);
        place.value = Ffa::trueVariance(size, step->factor);
        for (int bins = ffa.bins_min; bins <= step->binsLast; ++bins) {
            const Ffa::PlanFold fold = step->fold(bins);
            const PhaseScatter scatter(*step, fold);
            for (quint64 trial = 0; trial < fold.evaluated; ++trial) {
                place.scatter = scatter.at(trial);
                places.push_back(place);
            }
        }
    }
    return places;
}

// Sigma of the best boxcar of white noise in units of the S/N as it is told: see
// Tools::estimateFfa().
double noiseOf(const PlaceNoise &place, double width, double bins)
{
    const double f = place.factor;
    const double variance = (width - 1) * f + place.value - width * width * f / bins;
    return std::sqrt(std::max(0.0, variance) / (place.told * width * (1 - width / bins)));
}

// Height that noise exceeds at one of so many phases.
double heightOf(double phases)
{
    return Tools::sigmaOfTail(-std::log(phases));
}

} // namespace

FfaParameters ffaOfDays(FfaParameters ffa, int points, double tsamp)
{
    // Presets have few digits, and not what rounding adds to them.
    const auto plain = [](double value) { return QString::number(value, 'g', 12).toDouble(); };
    const FfaParameters preset = Tools::presetFfa(points, tsamp, ffa);
    if (ffa.period_min == 0)
        ffa.period_min = plain(preset.period_min);
    if (ffa.period_max == 0)
        ffa.period_max = plain(preset.period_max);
    if (ffa.rmed_width == 0)
        ffa.rmed_width = plain(Tools::presetMedianWidth(ffa.period_max, points, tsamp));
    if (Tools::findFfaProblems(ffa, points, tsamp).empty())
        ffa.period_min = Tools::periodMinWithoutWholeFactors(ffa, points, tsamp);
    return ffa;
}

std::vector<FieldProblem> problemsOfTrials(const FfaParameters &ffa, int points, double tsamp)
{
    std::vector<FieldProblem> problems = Tools::findFfaProblems(ffa, points, tsamp);
    if (!problems.empty())
        return problems;
    const quint64 trials = Ffa::periodogramLength(quint64(points), tsamp, ffa.period_min,
                                                  ffa.period_max, ffa.bins_min, ffa.bins_max);
    if (trials < fewestTrials)
        problems.push_back(
            {"period_max", QString("These periods are %1 trials. What noise does is told by the "
                                   "trials themselves, at least %2: take a wider range of periods "
                                   "or more points.")
                               .arg(trials)
                               .arg(fewestTrials)});
    return problems;
}

std::shared_ptr<const FfaTrials> ffaTrials(const FfaParameters &ffa, int points, double tsamp)
{
    const auto trials = std::make_shared<FfaTrials>();
    trials->ffa = ffa;
    trials->tsamp = tsamp;
    trials->points = points;
    trials->widths = Ffa::trialWidths(ffa.bins_min, ffa.ducy_max, ffa.wtsp);
    const quint64 count = Ffa::periodogramLength(quint64(points), tsamp, ffa.period_min,
                                                 ffa.period_max, ffa.bins_min, ffa.bins_max);
    std::vector<double> periods(count);
    std::vector<quint32> foldBins(count);
    Ffa::trialPeriods(quint64(points), tsamp, ffa.period_min, ffa.period_max, ffa.bins_min,
                      ffa.bins_max, periods.data(), foldBins.data());
    trials->places.resize(count);
    std::iota(trials->places.begin(), trials->places.end(), 0);
    std::stable_sort(trials->places.begin(), trials->places.end(), [&periods](int a, int b) {
        return periods[std::size_t(a)] < periods[std::size_t(b)];
    });
    for (const int place : trials->places) {
        trials->periods.push_back(periods[std::size_t(place)]);
        trials->foldBins.push_back(int(foldBins[std::size_t(place)]));
    }
    const std::vector<PlaceNoise> places = noiseOfPlaces(*trials);
    for (const int width : trials->widths) {
        for (std::size_t i = 0; i < count; ++i) {
            const PlaceNoise &place = places[std::size_t(trials->places[i])];
            const double bins = trials->foldBins[i];
            const double height = heightOf(bins / width);
            const double raised = 1 + place.scatter / (width * width) * (height * height - 3) / 8;
            trials->noise.push_back(float(noiseOf(place, width, bins) * raised));
        }
    }
    return trials;
}

std::vector<int> nearestTrials(const std::vector<double> &periods, double ratio)
{
    const int count = int(periods.size());
    std::vector<int> nearest(periods.size());
    int near = 0;
    for (int i = 0; i < count; ++i) {
        const double wanted = periods[std::size_t(i)] / ratio;
        while (near + 1 < count && std::abs(periods[std::size_t(near) + 1] - wanted) <=
                                       std::abs(periods[std::size_t(near)] - wanted))
            ++near;
        nearest[std::size_t(i)] = near;
    }
    return nearest;
}

} // namespace Days
