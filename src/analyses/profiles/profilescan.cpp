#include "analyses/profiles/profilescan.h"

#include "calc/approximation.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Profiles {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double topShare = 0.9; // of the highest S/N, through which the cubic goes
constexpr double leastSnr = 5;   // of a maximum that is told with an error
// Periods of simulated pulses of S/N 8 to 20 scatter by so much more than the noise of their phase
// tells.
constexpr double periodScatter = 1.2;

// The days that take part and what the scan needs of each.
struct ScannedDay {
    const ProfileDay *product = nullptr;
    double weight = 0; // of the profile in units of its noise
    double turn = 0;   // by which it is moved earlier
};

class Scanner {
public:
    Scanner(const std::vector<ProfileDay> &products, const ProfileStack &stack,
            const StackChoice &stackChoice)
        : choice(stackChoice)
    {
        isCoherent = stack.inAverage > 0;
        for (std::size_t i = 0; i < products.size(); ++i) {
            const StackedDay &day = stack.days[i];
            const bool takesPart =
                isCoherent ? day.use != DayUse::Out
                           : products[i].isWhole() && (choice.days.empty() || choice.days[i]);
            if (!takesPart)
                continue;
            // Products are in units of a sample's noise.
            const double unit = choice.normalises ? 1 / products[i].noise.sigma : products[i].unit;
            days.push_back({&products[i], isCoherent ? day.weight * unit : 1,
                            std::isfinite(day.shift) ? day.shift : 0});
        }
        if (days.empty())
            return;
        bins = days.front().product->bins;
        if (isCoherent)
            shareNoise();
        else
            noise = {1, days.front().product->noise.shared};
        const bool isSeen = stack.pulse.snr >= leastSnr && stack.pulse.isResolved;
        width = isSeen ? stack.pulse.width : 2.0 / bins;
        pulse = Tools::gaussianTemplate(width, bins, noise.shared);
    }

    bool isEmpty() const { return days.empty(); }
    bool coherent() const { return isCoherent; }
    double pulseWidth() const { return width; }
    const ProfileDay &example() const { return *days.front().product; }

    // Sums the bands of all days at a dispersion.
    //
    // @return false when stopped
    bool takeDispersion(double more, const Jobs::Control &control)
    {
        parts.clear();
        for (const ScannedDay &day : days) {
            if (control.isStopped())
                return false;
            parts.push_back(partHarmonics(*day.product, choice.moreDispersion + more));
        }
        return true;
    }

    double snrAt(double moreFrequency)
    {
        return isCoherent ? matchOfSum(moreFrequency).snr : sumOfDays(moreFrequency).snr;
    }

    // Standard error, turns, of the common phase of all days: what the slopes of phase over time
    // and over frequency follow from.
    double phaseError(double moreFrequency)
    {
        return isCoherent ? matchOfSum(moreFrequency).phaseError
                          : sumOfDays(moreFrequency).phaseError;
    }

private:
    void shareNoise()
    {
        double variances = 0;
        double shared = 0;
        for (const ScannedDay &day : days) {
            const double variance = std::pow(day.weight * day.product->noise.sigma, 2);
            variances += variance;
            shared += variance * day.product->noise.shared;
        }
        noise = {std::sqrt(variances), shared / variances};
    }

    Tools::Harmonics harmonicsAt(std::size_t i, double moreFrequency) const
    {
        return dayHarmonics(*days[i].product, parts[i], choice.moreFrequency + moreFrequency);
    }

    Tools::TemplateMatch matchOfSum(double moreFrequency) const
    {
        Tools::Harmonics sum(pulse.size());
        for (std::size_t i = 0; i < days.size(); ++i)
            Tools::addTurned(harmonicsAt(i, moreFrequency), -days[i].turn, days[i].weight, sum);
        return Tools::matchTemplate(sum, noise, pulse);
    }

    Tools::TemplateMatch sumOfDays(double moreFrequency) const
    {
        double squares = 0;
        double information = 0;
        for (std::size_t i = 0; i < days.size(); ++i) {
            const Tools::TemplateMatch match =
                Tools::matchTemplate(harmonicsAt(i, moreFrequency), days[i].product->noise, pulse);
            squares += match.snr * match.snr;
            if (match.phaseError > 0)
                information += 1 / (match.phaseError * match.phaseError);
        }
        Tools::TemplateMatch all;
        all.snr = std::sqrt(squares);
        all.phaseError = information > 0 ? 1 / std::sqrt(information) : 0;
        return all;
    }

    const StackChoice &choice;
    std::vector<ScannedDay> days;
    std::vector<std::vector<Tools::Harmonics>> parts; // of each day
    bool isCoherent = true;
    int bins = 0;
    double width = 0;
    Tools::ProfileNoise noise;
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

// Between the values of a scan.
double valueAt(const std::vector<double> &values, double place)
{
    const auto node = std::min(values.size() - 2, std::size_t(place));
    return values[node] + (place - double(node)) * (values[node + 1] - values[node]);
}

// Fits the cubic to the top of a curve and takes its maximum.
void findBest(ScanCurve &curve)
{
    const auto highest = std::max_element(curve.snr.begin(), curve.snr.end());
    const auto best = std::size_t(highest - curve.snr.begin());
    curve.best = curve.values[best];
    curve.isInside = best > 0 && best + 1 < curve.snr.size() && *highest >= leastSnr;
    const auto [begin, end] = topOf(curve.snr);
    constexpr int fewest = 5;
    if (end - begin < fewest)
        return;
    const std::vector<double> top(curve.snr.begin() + begin, curve.snr.begin() + end);
    std::vector<double> fitted(top.size());
    Approximation cubic(top.data(), fitted.data(), int(top.size()));
    if (!cubic.polynomial(3, true))
        return;
    curve.cubic.assign(curve.snr.size(), notANumber);
    std::copy(fitted.begin(), fitted.end(), curve.cubic.begin() + begin);
    const Approximation::Extrema &extrema = cubic.extrema();
    double highestOfCubic = -std::numeric_limits<double>::infinity();
    for (const auto &[position, value] : {std::pair(extrema.firstPosition, extrema.firstValue),
                                          std::pair(extrema.secondPosition, extrema.secondValue)}) {
        if (!(position > 0 && position < double(top.size() - 1)))
            continue;
        curve.extremes.push_back(valueAt(curve.values, begin + position));
        if (value >= highestOfCubic) {
            curve.best = curve.extremes.back();
            highestOfCubic = value;
        }
    }
}

// Root of the mean square of how far the sub-integrations lie from the middle, s.
double spreadOfTimes(const ProfileDay &day)
{
    const double parts = day.parts();
    return day.seconds / parts * std::sqrt((parts * parts - 1) / 12);
}

// The same of the delays of the bands for a unit of dispersion, s.
double spreadOfDelays(const ProfileDay &day)
{
    double sum = 0;
    double squares = 0;
    for (int band = 0; band < day.bands(); ++band) {
        if (!day.used[std::size_t(band)])
            continue;
        const double delay = delayPerDispersion(day, band);
        sum += delay;
        squares += delay * delay;
    }
    const double count = day.usedBands();
    return std::sqrt(std::max(0.0, squares / count - sum / count * sum / count));
}

// Steps of a scan: a drift between both ends of the stretch, or of the bands, for each.
struct Steps {
    double frequency = 0;  // Hz
    double dispersion = 0; // pc/cm^3
};

Steps stepsOf(const ProfileDay &day, double pulseWidth, double widths, int steps)
{
    const double drift = widths * std::max(pulseWidth, 1.0 / day.bins) + 1.0 / day.bins;
    const double delay = std::abs(delayPerDispersion(day, 0)) * day.phase.frequency;
    return {drift / day.seconds / steps, delay > 0 ? drift / delay / steps : 0};
}

class ScanRun {
public:
    ScanRun(const std::vector<ProfileDay> &products, const StackChoice &stackChoice,
            const ProfileStack &stack, const ScanRequest &scanRequest, const Jobs::Control &asked)
        : choice(stackChoice), request(scanRequest), control(asked),
          scanner(products, stack, stackChoice)
    {}

    ProfileScan run()
    {
        if (scanner.isEmpty())
            return {};
        scan.isCoherent = scanner.coherent();
        scanPeriods();
        scanDispersions();
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

    void scanPeriods()
    {
        const Steps steps =
            stepsOf(scanner.example(), scanner.pulseWidth(), request.widths, request.steps);
        if (!scanner.takeDispersion(0, control))
            return;
        for (int i = request.steps; i >= -request.steps && !control.isStopped(); --i) {
            scan.periods.values.push_back(periodAt(i * steps.frequency));
            scan.periods.snr.push_back(scanner.snrAt(i * steps.frequency));
            control.progress(20 * (request.steps - i) / (2 * request.steps));
        }
        if (control.isStopped())
            return;
        findBest(scan.periods);
        const double telescope = scanner.example().phase.frequency;
        const double offset =
            telescope * (request.period / scan.periods.best - 1) - choice.moreFrequency;
        const double spread = spreadOfTimes(scanner.example());
        const double error = spread > 0 ? scanner.phaseError(offset) / spread : 0; // Hz
        scan.periods.error = periodScatter * error / telescope * scan.periods.best;
        scan.periods.isInside = scan.periods.isInside && error > 0;
    }

    void scanDispersions()
    {
        const Steps steps =
            stepsOf(scanner.example(), scanner.pulseWidth(), request.widths, request.steps);
        for (int i = -request.steps; i <= request.steps && !control.isStopped(); ++i) {
            if (!scanner.takeDispersion(i * steps.dispersion, control))
                return;
            scan.dispersions.values.push_back(dispersionAt(i * steps.dispersion));
            scan.dispersions.snr.push_back(scanner.snrAt(0));
            control.progress(20 + 40 * (i + request.steps) / (2 * request.steps));
        }
        if (control.isStopped())
            return;
        findBest(scan.dispersions);
        if (!scanner.takeDispersion(scan.dispersions.best - dispersionAt(0), control))
            return;
        const double spread = spreadOfDelays(scanner.example()) * scanner.example().phase.frequency;
        scan.dispersions.error = spread > 0 ? scanner.phaseError(0) / spread : 0;
        scan.dispersions.isInside = scan.dispersions.isInside && spread > 0;
    }

    void scanBoth()
    {
        const int half = request.mapSteps;
        const Steps steps = stepsOf(scanner.example(), scanner.pulseWidth(), request.widths, half);
        for (int column = half; column >= -half; --column)
            scan.mapPeriods.push_back(periodAt(column * steps.frequency));
        for (int row = -half; row <= half && !control.isStopped(); ++row) {
            scan.mapDispersions.push_back(dispersionAt(row * steps.dispersion));
            if (!scanner.takeDispersion(row * steps.dispersion, control))
                return;
            for (int column = half; column >= -half; --column)
                scan.both.push_back(float(scanner.snrAt(column * steps.frequency)));
            control.progress(60 + 40 * (row + half) / std::max(1, 2 * half));
        }
    }

    const StackChoice &choice;
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
