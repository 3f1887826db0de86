#include "analyses/days/fourierday.h"

#include "calc/mainshum.h"
#include "calc/robuststatistics.h"

#include <algorithm>
#include <boost/math/statistics/univariate_statistics.hpp>
#include <cmath>

// Which days a stack is proposed to be made of.

namespace Days {

namespace {

constexpr double mostSigmas = 5;
constexpr double leastDifference = 0.1; // of the sigma
constexpr double mostAbove = 2;         // times what is expected
constexpr double earthMotion = 1e-4;    // share of a frequency, at most

// What the logarithms of the sigmas of all days lie around, and how far off a good day may be.
struct SigmaRange {
    double centre = 0;
    double above = 0;
    double below = 0;
};

SigmaRange rangeOf(const std::vector<FourierDay> &days)
{
    std::vector<double> logarithms;
    for (const FourierDay &day : days) {
        if (day.isWhole())
            logarithms.push_back(std::log(day.sigma));
    }
    if (logarithms.empty())
        return {};
    SigmaRange range;
    range.centre = boost::math::statistics::median(logarithms);
    const double scatter =
        mostSigmas * Tools::madToSigma * Tools::medianAbsoluteDeviation(logarithms, range.centre);
    range.above = std::max(scatter, std::log1p(leastDifference));
    range.below = std::max(scatter, -std::log1p(-leastDifference));
    return range;
}

// Bins that do not count: below the lowest, interference, and harmonics of the rule's frequency.
std::vector<bool> ignoredBins(const FourierDay &day, const DayRule &rule)
{
    const int bins = int(day.powers.size());
    std::vector<bool> ignored(day.powers.size());
    const auto ignore = [&](double from, double to) {
        const double last = std::min(std::ceil(to / day.binWidth), bins - 1.0);
        for (double bin = std::max(0.0, std::floor(from / day.binWidth)); bin <= last; ++bin)
            ignored[std::size_t(bin)] = true;
    };
    for (const Interference &entry : rule.leftOut) {
        for (int harmonic = 1; harmonic <= entry.harmonics; ++harmonic)
            ignore(entry.from(harmonic), entry.to(harmonic));
    }
    if (rule.frequency >= lowestBin * day.binWidth) {
        for (double f = rule.frequency; f < bins * day.binWidth; f += rule.frequency)
            ignore(f * (1 - earthMotion), f * (1 + earthMotion));
    }
    std::fill_n(ignored.begin(), std::min(bins, lowestBin), true);
    return ignored;
}

// The day's own mains hum does not count either.
void ignoreHum(const FourierDay &day, std::vector<bool> &ignored)
{
    const double rate = 2 * double(day.powers.size()) * day.binWidth;
    for (const DayHum &hum : day.hum) {
        for (int multiple = 1; multiple <= highestHumMultiple; ++multiple) {
            // A list, for references to the two values would outlive them.
            const auto [least, most] =
                std::minmax({Tools::foldedFrequency(multiple * hum.from, rate),
                             Tools::foldedFrequency(multiple * hum.to, rate)});
            const double last = std::ceil(most / day.binWidth);
            for (double bin = std::max(0.0, std::floor(least / day.binWidth));
                 bin <= last && bin < double(ignored.size()); ++bin)
                ignored[std::size_t(bin)] = true;
        }
    }
}

DayVerdict verdictOf(const FourierDay &day, const SigmaRange &range, std::vector<bool> ignored)
{
    DayVerdict verdict;
    ignoreHum(day, ignored);
    int counted = 0;
    for (std::size_t bin = 0; bin < day.powers.size(); ++bin) {
        if (ignored[bin])
            continue;
        ++counted;
        verdict.above += day.powers[bin] > highPower;
    }
    verdict.expected = expectedAbove(counted);
    QStringList reasons;
    const double distance = std::log(day.sigma) - range.centre;
    if (distance > range.above || -distance > range.below)
        reasons << QString("sigma is %1 times that of the other days")
                       .arg(std::exp(distance), 0, 'g', 3);
    if (verdict.above > mostAbove * verdict.expected)
        reasons << QString("%1 powers above %2, of noise %3 are expected")
                       .arg(verdict.above)
                       .arg(highPower)
                       .arg(verdict.expected, 0, 'f', 0);
    verdict.isGood = reasons.isEmpty();
    verdict.reason = reasons.join("; ");
    return verdict;
}

} // namespace

std::vector<DayVerdict> proposeDays(const std::vector<FourierDay> &days, const DayRule &rule)
{
    const SigmaRange range = rangeOf(days);
    std::vector<DayVerdict> verdicts;
    std::vector<bool> ignored;
    double binWidth = 0; // that the ignored bins were found for
    for (const FourierDay &day : days) {
        if (!day.isWhole()) {
            verdicts.push_back({false, day.problem});
            continue;
        }
        if (ignored.size() != day.powers.size() || binWidth != day.binWidth) {
            ignored = ignoredBins(day, rule);
            binWidth = day.binWidth;
        }
        verdicts.push_back(verdictOf(day, range, ignored));
    }
    return verdicts;
}

} // namespace Days
