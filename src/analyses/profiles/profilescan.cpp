#include "analyses/profiles/profilescan.h"

#include "calc/approximation.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Profiles {

namespace {

constexpr double topShare = 0.9; // of the highest S/N, through which the cubic goes
constexpr double leastSnr = 5;   // of a maximum that is told with an error

// Harmonics of the sub-integrations and bands of a day, or of the sum of days.
struct BandSum {
    std::vector<Tools::Harmonics> rows;
    double variances = 0;
    double shared = 0; // weighted by variance

    // Adds a day that is moved earlier by so many turns.
    void add(const ProfileDay &day, const StackChoice &choice, double turn, double weight)
    {
        rows.resize(std::size_t(day.parts() * day.bands()),
                    Tools::Harmonics(std::size_t(day.bins) / 2 + 1));
        addRows(day, {choice.moreFrequency, choice.moreDispersion, -turn}, weight, rows);
        const double variance = std::pow(weight * day.noise.sigma, 2);
        variances += variance;
        shared += variance * day.noise.shared;
    }

    Tools::ProfileNoise noise() const { return {std::sqrt(variances), shared / variances}; }
};

// What is tried, beside what the choice has.
struct Trial {
    double frequency = 0;  // Hz
    double dispersion = 0; // pc/cm^3
};

class Scanner {
public:
    Scanner(const std::vector<ProfileDay> &products, const ProfileStack &stack,
            const StackChoice &stackChoice, const Jobs::Control &control)
        : choice(stackChoice), isCoherent(stack.inAverage > 0)
    {
        for (std::size_t i = 0; i < products.size() && !control.isStopped(); ++i) {
            const StackedDay &day = stack.days[i];
            if (isCoherent ? day.use == DayUse::Out : !day.counts)
                continue;
            days.push_back(&products[i]);
            // Products are in units of a sample's noise.
            const double unit = choice.normalises ? 1 / products[i].noise.sigma : products[i].unit;
            if (isCoherent)
                sumOfAll.add(products[i], choice, day.use == DayUse::ByTemplate ? day.shift : 0,
                             day.weight * unit);
        }
        if (days.empty())
            return;
        const double least = 0.5 / example().bins;
        width = stack.pulse.snr >= leastSnr ? std::max(stack.pulse.width, least) : 4 * least;
        pulse = Tools::gaussianTemplate(width, example().bins, example().noise.shared);
    }

    bool isEmpty() const { return days.empty(); }
    bool coherent() const { return isCoherent; }
    double pulseWidth() const { return width; }
    const ProfileDay &example() const { return *days.front(); }

    // S/N of the trials; those of one dispersion one after the other. Empty where it was stopped.
    std::vector<double> snrAt(const std::vector<Trial> &trials, const Jobs::Control &control) const
    {
        std::vector<double> squares(trials.size());
        if (isCoherent)
            addSquares(trials, sumOfAll, squares);
        for (std::size_t day = 0; day < days.size() && !isCoherent; ++day) {
            if (control.isStopped())
                return {};
            BandSum sum;
            sum.add(*days[day], choice, 0, 1);
            addSquares(trials, sum, squares);
            control.progress(int(100 * day / days.size()));
        }
        for (double &square : squares)
            square = std::sqrt(square);
        return squares;
    }

private:
    void addSquares(const std::vector<Trial> &trials, const BandSum &sum,
                    std::vector<double> &squares) const
    {
        const Tools::TemplateMatcher matcher(sum.noise(), pulse);
        std::vector<Tools::Harmonics> parts;
        for (std::size_t i = 0; i < trials.size(); ++i) {
            if (i == 0 || trials[i].dispersion != trials[i - 1].dispersion)
                parts = partHarmonics(example(), sum.rows, trials[i].dispersion);
            const Tools::Harmonics mean = dayHarmonics(example(), parts, trials[i].frequency);
            squares[i] += std::pow(matcher.match(mean).snr, 2);
        }
    }

    const StackChoice &choice;
    const bool isCoherent;
    std::vector<const ProfileDay *> days;
    BandSum sumOfAll;
    double width = 0;
    Tools::Harmonics pulse;
};

// The run of values round the highest that exceed a share of it.
std::pair<int, int> topOf(const std::vector<double> &snr)
{
    const int best = int(std::max_element(snr.begin(), snr.end()) - snr.begin());
    const double least = topShare * snr[std::size_t(best)];
    int begin = best;
    int end = best + 1;
    while (begin > 0 && snr[std::size_t(begin) - 1] >= least)
        --begin;
    while (end < int(snr.size()) && snr[std::size_t(end)] >= least)
        ++end;
    return {begin, end};
}

// Fits the cubic to the top of a curve.
//
// @return indices of its extremes within that, with a fraction
std::vector<double> fitCubic(ScanCurve &curve)
{
    const auto [begin, end] = topOf(curve.snr);
    constexpr int fewest = 5;
    if (end - begin < fewest)
        return {};
    const std::vector<double> top(curve.snr.begin() + begin, curve.snr.begin() + end);
    std::vector<double> fitted(top.size());
    Approximation cubic(top.data(), fitted.data(), int(top.size()));
    if (!cubic.polynomial(3, true))
        return {};
    curve.cubic.assign(curve.snr.size(), std::numeric_limits<double>::quiet_NaN());
    std::copy(fitted.begin(), fitted.end(), curve.cubic.begin() + begin);
    std::vector<double> extremes;
    for (const double position : {cubic.extrema().firstPosition, cubic.extrema().secondPosition}) {
        if (position > 0 && position < double(top.size() - 1))
            extremes.push_back(begin + position);
    }
    return extremes;
}

// Steps of a scan: a drift between both ends of the stretch, or of the bands, for each. Trials of
// rising periods have falling frequencies.
struct Steps {
    Trial period;
    Trial dispersion;
};

Steps stepsOf(const ProfileDay &day, double pulseWidth, double widths, int steps)
{
    const double drift = (widths * std::max(pulseWidth, 1.0 / day.bins) + 1.0 / day.bins) / steps;
    const double delay = std::abs(delayPerDispersion(day, 0)) * day.phase.frequency;
    return {{-drift / day.seconds, 0}, {0, delay > 0 ? drift / delay : 0}};
}

std::vector<Trial> trialsOf(const Trial &step, const std::vector<double> &places)
{
    std::vector<Trial> trials;
    for (const double place : places)
        trials.push_back({place * step.frequency, place * step.dispersion});
    return trials;
}

// -half .. half
std::vector<double> placesOf(int half)
{
    std::vector<double> places;
    for (int i = -half; i <= half; ++i)
        places.push_back(i);
    return places;
}

class ScanRun {
public:
    ScanRun(const std::vector<ProfileDay> &products, const StackChoice &stackChoice,
            const ProfileStack &dayStack, const ScanRequest &scanRequest,
            const Jobs::Control &asked)
        : choice(stackChoice), stack(dayStack), request(scanRequest), control(asked),
          scanner(products, dayStack, stackChoice, asked)
    {}

    ProfileScan run()
    {
        if (scanner.isEmpty())
            return {};
        scan.isCoherent = scanner.coherent();
        const Steps steps =
            stepsOf(scanner.example(), scanner.pulseWidth(), request.widths, request.steps);
        const auto period = [&](double place) { return periodAt(place * steps.period.frequency); };
        const auto dispersion = [&](double place) {
            return dispersionAt(place * steps.dispersion.dispersion);
        };
        scanCurve(steps.period, period, 0, scan.periods);
        scanCurve(steps.dispersion, dispersion, 25, scan.dispersions);
        scanBoth();
        return control.isStopped() ? ProfileScan() : std::move(scan);
    }

private:
    // The Earth's motion stretches the period by one factor.
    double periodAt(double moreFrequency) const
    {
        const double telescope = scanner.example().phase.frequency;
        return request.period / (1 + (choice.moreFrequency + moreFrequency) / telescope);
    }
    double dispersionAt(double more) const
    {
        return request.dispersion + choice.moreDispersion + more;
    }

    // Without stops, and with the progress of one of its parts.
    std::vector<double> snrAt(const std::vector<Trial> &trials, int begin, int end) const
    {
        Jobs::Control part = control;
        part.progress = [&](int percent) {
            control.progress(begin + (end - begin) * percent / 100);
        };
        return scanner.snrAt(trials, part);
    }

    template <typename ValueAt>
    void scanCurve(const Trial &step, ValueAt valueAt, int done, ScanCurve &curve)
    {
        const std::vector<double> places = placesOf(request.steps);
        curve.snr = snrAt(trialsOf(step, places), done, done + 20);
        if (control.isStopped())
            return;
        for (const double place : places)
            curve.values.push_back(valueAt(place));
        for (const double place : fitCubic(curve))
            curve.extremes.push_back(valueAt(places.front() + place));
        Tools::LikelyValue found = Tools::likelyValue(places, curve.snr);
        const bool isSeen = scan.isCoherent
                                ? *std::max_element(curve.snr.begin(), curve.snr.end()) >= leastSnr
                                : stack.incoherentSigma >= leastSnr;
        curve.isInside = isSeen && found.isInside;
        if (curve.isInside) {
            const std::vector<double> near = Tools::valuesRound(found.best, 2 * found.error);
            const std::vector<double> snr = snrAt(trialsOf(step, near), done + 20, done + 25);
            if (control.isStopped())
                return;
            found = Tools::likelyValue(near, snr);
        }
        curve.best = valueAt(found.best);
        curve.error = std::abs(valueAt(found.high) - valueAt(found.low)) / 2;
    }

    void scanBoth()
    {
        const std::vector<double> places = placesOf(request.mapSteps);
        const Steps steps = stepsOf(scanner.example(), scanner.pulseWidth(), request.widths,
                                    std::max(1, request.mapSteps));
        std::vector<Trial> trials;
        for (const double row : places) {
            scan.mapPeriods.push_back(periodAt(row * steps.period.frequency));
            scan.mapDispersions.push_back(dispersionAt(row * steps.dispersion.dispersion));
            for (const double column : places)
                trials.push_back(
                    {column * steps.period.frequency, row * steps.dispersion.dispersion});
        }
        const std::vector<double> snr = snrAt(trials, 50, 100);
        scan.both.assign(snr.begin(), snr.end());
    }

    const StackChoice &choice;
    const ProfileStack &stack;
    const ScanRequest &request;
    const Jobs::Control &control;
    Scanner scanner;
    ProfileScan scan;
};

} // namespace

ProfileScan scanDays(const std::vector<ProfileDay> &products, const StackChoice &choice,
                     const ProfileStack &stack, const ScanRequest &request,
                     const Jobs::Control &control)
{
    return ScanRun(products, choice, stack, request, control).run();
}

} // namespace Profiles
