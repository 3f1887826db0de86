#include "analyses/days/stackevidence.h"

#include "calc/significance.h"
#include "coords/skyclock.h"

#include <algorithm>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

namespace Days {

namespace {

constexpr double strongestShare = 0.05;
constexpr int fewestForTrimming = 5;
constexpr int mostGrowthPoints = 40;
constexpr int hoursOfDay = 24;

double sigmaOfDays(const LineLaw &law, const std::vector<std::size_t> &days, double trials)
{
    return days.empty() ? 0 : Tools::sigmaOfTail(Tools::logTailOfTrials(law.logTail(days), trials));
}

// Chosen days by their begin.
std::vector<std::size_t> chosenByTime(const StackDays &stack)
{
    std::vector<std::size_t> days;
    for (std::size_t i = 0; i < stack.days.size(); ++i) {
        if (stack.chosen[i])
            days.push_back(i);
    }
    std::sort(days.begin(), days.end(), [&stack](std::size_t a, std::size_t b) {
        return stack.days[a]->begin < stack.days[b]->begin;
    });
    return days;
}

struct Moments {
    double count = 0;
    double mean = 0;
    double varianceOfMean = 0;
};

Moments momentsOf(const std::vector<double> &values)
{
    Moments moments;
    moments.count = double(values.size());
    if (values.size() < 2)
        return moments;
    moments.mean = std::accumulate(values.begin(), values.end(), 0.0) / moments.count;
    double squares = 0;
    for (const double value : values)
        squares += (value - moments.mean) * (value - moments.mean);
    moments.varianceOfMean = squares / (moments.count - 1) / moments.count;
    return moments;
}

// A line of the sky is as strong at all solar hours. One that comes in some half of the solar day
// only, and hardly in the other, belongs to the Earth.
bool keepsSolarTime(const StackDays &stack, const std::vector<std::size_t> &days,
                    const std::vector<double> &ofDay, double noise)
{
    constexpr double fewestDays = 10;     // in either half
    constexpr double leastDifference = 5; // sigma
    constexpr double mostLeft = 0.25;     // of the excess
    for (int from = 0; from < hoursOfDay; ++from) {
        std::vector<double> inside;
        std::vector<double> outside;
        for (const std::size_t day : days) {
            const double hour = std::fmod(stack.days[day]->solarHour - from + hoursOfDay, 24);
            (hour < hoursOfDay / 2 ? inside : outside).push_back(ofDay[day] - noise);
        }
        const Moments in = momentsOf(inside);
        const Moments out = momentsOf(outside);
        if (std::min(in.count, out.count) < fewestDays)
            continue;
        const double difference =
            (in.mean - out.mean) / std::sqrt(in.varianceOfMean + out.varianceOfMean);
        if (difference > leastDifference && out.mean < mostLeft * in.mean)
            return true;
    }
    return false;
}

std::vector<double> meansBySolarHour(const StackDays &stack, const std::vector<std::size_t> &days,
                                     const std::vector<double> &ofDay, double unit)
{
    std::vector<double> sums(hoursOfDay);
    std::vector<int> counts(hoursOfDay);
    for (const std::size_t day : days) {
        const auto hour =
            std::size_t(std::clamp(int(stack.days[day]->solarHour), 0, hoursOfDay - 1));
        sums[hour] += ofDay[day] / unit;
        ++counts[hour];
    }
    for (std::size_t hour = 0; hour < sums.size(); ++hour)
        sums[hour] =
            counts[hour] > 0 ? sums[hour] / counts[hour] : std::numeric_limits<double>::quiet_NaN();
    return sums;
}

std::vector<GrowthPoint> growthOf(const LineLaw &law, const std::vector<std::size_t> &days)
{
    const double all = sigmaOfDays(law, days, 1);
    const int count = int(days.size());
    const int points = std::min(count, mostGrowthPoints);
    std::vector<GrowthPoint> growth;
    for (int i = 1; i <= points; ++i) {
        const int first = int(qint64(count) * i / points);
        const std::vector<std::size_t> part(days.begin(), days.begin() + first);
        growth.push_back(
            {first, sigmaOfDays(law, part, 1), all * std::sqrt(double(first) / count)});
    }
    return growth;
}

} // namespace

LinePowers powersOfLine(const StackDays &stack, const StackLine &line)
{
    LinePowers powers;
    powers.ofDay.assign(stack.days.size(), 0);
    powers.ofHarmonic.assign(std::size_t(line.harmonics), 0);
    const int bins = int(stack.level.size());
    const int trial = int(std::lround(line.bin * line.harmonics));
    const auto chosen = std::count(stack.chosen.begin(), stack.chosen.end(), true);
    for (int harmonic = 1; harmonic <= line.harmonics; ++harmonic) {
        const int position = trial * harmonic * (finePerBin / line.harmonics);
        const auto levelBin =
            std::size_t(std::min((position + finePerBin / 2) / finePerBin, bins - 1));
        double sum = 0;
        for (std::size_t day = 0; day < stack.days.size(); ++day) {
            const double bin = std::floor(position * (stack.ratios[day] / finePerBin) + 0.5);
            const auto dayBin = std::size_t(std::clamp(int(bin), 0, bins - 1));
            const double power = stack.leftOut[levelBin] ? 1
                                                         : double(stack.days[day]->powers[dayBin]) /
                                                               stack.level[levelBin];
            powers.ofDay[day] += power;
            sum += stack.chosen[day] ? power : 0;
        }
        powers.ofHarmonic[std::size_t(harmonic - 1)] = sum / double(chosen);
    }
    return powers;
}

double logTailWithoutStrongest(std::vector<double> powers, int leftOut, int harmonics)
{
    const auto count = double(powers.size());
    if (leftOut <= 0)
        return Tools::logGammaTail(count * harmonics,
                                   std::accumulate(powers.begin(), powers.end(), 0.0));
    const auto kept = powers.end() - leftOut;
    std::nth_element(powers.begin(), kept, powers.end());
    const double sum = std::accumulate(powers.begin(), kept, 0.0);
    namespace math = boost::math;
    const double h = harmonics;
    const double share = leftOut / count;
    const double q = math::gamma_q_inv(h, share);
    const double mean = h * math::gamma_p(h + 1, q) + q * share;
    const double square = h * (h + 1) * math::gamma_p(h + 2, q) + q * q * share;
    const double meanOfSum = count * mean - leftOut * q;
    const double variance = count * (square - mean * mean);
    const double scale = variance / meanOfSum;
    return Tools::logGammaTail(meanOfSum / scale, sum / scale);
}

LineLaw lawOfPowers(const StackDays &stack, const LinePowers &powers, int harmonics)
{
    const auto logTail = [&stack, &powers, harmonics](const std::vector<std::size_t> &days) {
        double sum = 0;
        std::vector<double> weights;
        for (const std::size_t day : days) {
            if (!stack.weights.empty())
                weights.push_back(stack.weights[day]);
            sum += powers.ofDay[day] * (weights.empty() ? 1 : weights.back());
        }
        return weights.empty() ? Tools::logGammaTail(double(days.size()) * harmonics, sum)
                               : Tools::logWeightedTail(weights, harmonics, sum);
    };
    const auto trimmed = [harmonics](const std::vector<double> &values, int leftOut) {
        return logTailWithoutStrongest(values, leftOut, harmonics);
    };
    return {double(harmonics), double(harmonics), logTail, trimmed};
}

void addEvidence(const StackDays &stack, const std::vector<double> &ofDay, const LineLaw &law,
                 const FourierDaysChoice &choice, double trials, FourierLine &line)
{
    const std::vector<std::size_t> days = chosenByTime(stack);
    std::vector<std::size_t> all(stack.days.size());
    std::iota(all.begin(), all.end(), std::size_t(0));
    line.sigma = sigmaOfDays(law, days, trials);
    line.sigmaAll = sigmaOfDays(law, all, trials);

    const int leftOut = int(days.size()) < fewestForTrimming
                            ? 0
                            : int(std::ceil(strongestShare * double(days.size())));
    std::vector<double> values;
    for (const std::size_t day : days)
        values.push_back(ofDay[day]);
    line.withoutStrongest = Tools::sigmaOfTail(
        Tools::logTailOfTrials(law.logTailWithoutStrongest(values, leftOut), trials));
    line.isFewDays = leftOut > 0 && line.withoutStrongest < choice.threshold;

    const QDateTime first = stack.days[days.front()]->begin;
    const qint64 half = first.msecsTo(stack.days[days.back()]->begin) / 2;
    const auto second = std::find_if(days.begin(), days.end(), [&](std::size_t day) {
        return first.msecsTo(stack.days[day]->begin) > half;
    });
    line.firstHalf = sigmaOfDays(law, {days.begin(), second}, 1);
    line.secondHalf = sigmaOfDays(law, {second, days.end()}, 1);
    line.bySolarHour = meansBySolarHour(stack, days, ofDay, law.unit);
    line.isSolar = keepsSolarTime(stack, days, ofDay, law.noise);
    line.growth = growthOf(law, days);
}

bool isHumAt(const std::vector<DayHum> &hum, double frequency, double rate, double tolerance,
             int multiples)
{
    for (const DayHum &one : hum) {
        for (int multiple = 1; multiple <= multiples; ++multiple) {
            const double from = multiple * one.from - tolerance;
            const double to = multiple * one.to + tolerance;
            // The frequencies that the sampling shows at the same place: n rate +- frequency.
            for (double folds = 0; folds <= to + rate; folds += rate) {
                for (const double seen : {folds + frequency, folds - frequency}) {
                    if (seen >= from && seen <= to)
                        return true;
                }
            }
        }
    }
    return false;
}

bool isInRaysApart(const std::set<int> &places, int own)
{
    constexpr int enough = 3;
    int apart = 0;
    int last = -2;
    for (const int place : places) {
        if (std::abs(place - own) <= 1 || place <= last + 1)
            continue;
        ++apart;
        last = place;
    }
    return apart >= enough;
}

std::vector<const Tools::KnownPulsar *> pulsarsInBeam(const Beam &beam,
                                                      const Tools::SkyPosition &direction,
                                                      const QDate &date, double stretchSeconds)
{
    std::vector<const Tools::KnownPulsar *> pulsars;
    if (!beam.isKnown() || !direction.isNumber())
        return pulsars;
    constexpr double radiansPerSecond = std::numbers::pi / 43200;
    const double span = stretchSeconds / 2 * radiansPerSecond + beam.reach / std::cos(beam.delta);
    for (const Tools::KnownPulsar &pulsar : Tools::knownPulsars()) {
        const double alfa =
            std::remainder(pulsar.position.alfa - direction.alfa, 2 * std::numbers::pi);
        if (std::abs(alfa) > span)
            continue;
        const double delta = Tools::declinationOfDate(pulsar.position, date);
        if (std::abs(delta - beam.delta) <= beam.reach && std::isfinite(pulsar.frequency))
            pulsars.push_back(&pulsar);
    }
    return pulsars;
}

std::vector<PulsarMatch> matchesOf(const std::vector<const Tools::KnownPulsar *> &pulsars,
                                   const Tools::SkyPosition &direction, double barycentric,
                                   double binWidth, double mjd)
{
    constexpr int highestMultiple = 16;
    constexpr int highestDivisor = 3;
    constexpr double tolerance = 1; // bins
    std::vector<PulsarMatch> matches;
    for (const Tools::KnownPulsar *pulsar : pulsars) {
        PulsarMatch best;
        best.bins = tolerance;
        for (int q = 1; q <= highestDivisor; ++q) {
            for (int p = 1; p <= highestMultiple; ++p) {
                const double expected = pulsar->frequencyAt(mjd) * p / q;
                const double bins = (barycentric - expected) / binWidth;
                if (std::gcd(p, q) != 1 || !(std::abs(bins) < std::abs(best.bins)))
                    continue;
                best = {pulsar->name, p, q, bins, Tools::separation(pulsar->position, direction)};
            }
        }
        if (!best.name.isEmpty())
            matches.push_back(best);
    }
    std::sort(matches.begin(), matches.end(), [](const PulsarMatch &a, const PulsarMatch &b) {
        return std::abs(a.bins) < std::abs(b.bins);
    });
    return matches;
}

QString PulsarMatch::text() const
{
    constexpr double degreesPerRadian = 180 / std::numbers::pi;
    const QString multiple = p == 1 && q == 1 ? QString()
                             : q == 1         ? QString(", %1 times its frequency").arg(p)
                                              : QString(", %1/%2 of its frequency").arg(p).arg(q);
    return QString("%1%2, %3 bins and %4 degrees off")
        .arg(name, multiple)
        .arg(bins, 0, 'f', 2)
        .arg(separation * degreesPerRadian, 0, 'f', 2);
}

} // namespace Days
