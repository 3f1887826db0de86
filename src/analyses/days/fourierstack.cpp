#include "analyses/days/fourierstack.h"

#include "analyses/days/daystacker.h"
#include "analyses/days/sigmatable.h"
#include "calc/significance.h"
#include "coords/barycentre.h"

#include <algorithm>
#include <cmath>

namespace Days {

namespace {

constexpr double leastTurn = 1.0 / 3; // bins
// A level scatters, and lifts the tail of noise: at 1e-4 by a fifth with one window of the days, by
// some per cent with that many. The days were whitened before, so that little is left to follow.
constexpr int levelWindows = 4;

class FourierStacker : private DayStacker {
public:
    FourierStacker(const std::vector<FourierDay> &allProducts, const FourierDaysChoice &wanted,
                   const Jobs::Control &asked)
        : DayStacker(allProducts, wanted, asked)
    {}

    FourierStack stack()
    {
        selectDays([](const FourierDay &day) { return Shape(day.powers.size(), day.binWidth); });
        if (result.problem.isEmpty() && days.days.front()->powers.size() <= 2 * lowestBin)
            result.problem = "The spectra are too short. Take more points.";
        if (!result.problem.isEmpty())
            return std::move(result);
        bins = int(days.days.front()->powers.size());
        result.binWidth = days.days.front()->binWidth;
        turnFrequencies();
        weighDays();
        for (void (FourierStacker::*const part)() :
             {&FourierStacker::sumDays, &FourierStacker::levelDays, &FourierStacker::describeBins,
              &FourierStacker::describeLines}) {
            if (!control.isStopped())
                (this->*part)();
        }
        if (control.isStopped())
            result.problem = "Stopped.";
        return std::move(result);
    }

private:
    // Where all days have the same bins at the barycentre as well, turning would only round.
    void turnFrequencies()
    {
        const auto [least, most] = findRatios();
        if (!std::isfinite(result.ratio))
            return;
        result.isTurned = choice.earthMotion && bins * (most - least) > leastTurn;
        if (result.isTurned)
            turnDays();
        leastRatio = result.isTurned ? least : 1;
        mostRatio = result.isTurned ? most : 1;
    }

    // A power's excess goes with 1 / sigma^2 where the gain is the same. The weights are scaled so
    // that the sum of noise has the mean and the variance of a Gamma law of scale 1.
    void weighDays()
    {
        shape = result.days;
        if (!choice.equalGains)
            return;
        double sum = 0;
        double squares = 0;
        for (std::size_t i = 0; i < days.days.size(); ++i) {
            const double weight = std::pow(days.days[i]->sigma, -2);
            days.weights.push_back(weight);
            sum += days.chosen[i] ? weight : 0;
            squares += days.chosen[i] ? weight * weight : 0;
        }
        for (double &weight : days.weights)
            weight *= sum / squares;
        shape = sum * sum / squares;
    }

    void sumDays()
    {
        std::vector<DayPowers> summed;
        for (std::size_t i = 0; i < days.days.size(); ++i) {
            if (days.chosen[i])
                summed.push_back({days.days[i]->powers.data(), days.ratios[i],
                                  days.weights.empty() ? 1 : days.weights[i]});
        }
        fine = stackDaysFinely(summed, bins, control.isStopped);
        sums.resize(std::size_t(bins));
        for (std::size_t bin = 0; bin < sums.size(); ++bin)
            sums[bin] = fine[bin * finePerBin];
    }

    // None where all are equal.
    std::vector<double> weightsOfChosen() const
    {
        std::vector<double> weights;
        for (std::size_t i = 0; i < days.weights.size(); ++i) {
            if (days.chosen[i])
                weights.push_back(days.weights[i]);
        }
        return weights;
    }

    void levelDays()
    {
        const std::vector<double> weights = weightsOfChosen();
        const double expected = weights.empty() ? Tools::medianPower(shape)
                                                : Tools::medianWeightedPower(weights, 1);
        const int window = std::min(levelWindows * choice.window, bins - lowestBin) - 1;
        days.level = levelOfStack(sums, expected, window | 1, lowestBin);
        leaveOut();
    }

    // Interference stands still at the telescope, so that on a turned axis it covers a range.
    void leaveOut()
    {
        days.leftOut.assign(std::size_t(bins), false);
        for (const Interference &entry : choice.leftOut) {
            for (int harmonic = 1; harmonic <= entry.harmonics; ++harmonic) {
                const double from = entry.from(harmonic) / mostRatio / result.binWidth - 1;
                const double to = entry.to(harmonic) / leastRatio / result.binWidth + 1;
                for (double bin = std::max(0.0, std::ceil(from)); bin <= to && bin < bins; ++bin)
                    days.leftOut[std::size_t(bin)] = true;
            }
        }
        for (std::size_t i = 0; i < fine.size(); ++i) {
            const std::size_t bin = binOf(i);
            if (days.leftOut[bin])
                fine[i] = shape * days.level[bin];
        }
        result.leftOut = days.leftOut;
        const auto count = std::count(days.leftOut.begin(), days.leftOut.end(), true);
        if (count > 0)
            result.remarks
                << QString("%1 of %2 bins are left out as interference.").arg(count).arg(bins);
    }

    std::size_t binOf(std::size_t position) const
    {
        return std::min((position + finePerBin / 2) / finePerBin, std::size_t(bins) - 1);
    }

    void describeBins()
    {
        const SigmaTable table(shape, weightsOfChosen());
        result.powers.resize(std::size_t(bins));
        result.sigma.resize(std::size_t(bins));
        for (std::size_t bin = 0; bin < std::size_t(bins); ++bin) {
            const double power = days.leftOut[bin] ? shape : sums[bin] / days.level[bin];
            result.powers[bin] = float(power / shape);
            result.sigma[bin] = float(table.at(power));
        }
    }

    void describeLines()
    {
        LineSearch search;
        search.shape = shape;
        search.lowestBin = lowestBin;
        search.harmonics = choice.harmonics;
        search.lowestSigma = choice.threshold;
        result.trials = countOfTrials(bins - lowestBin, choice.harmonics);
        std::vector<StackLine> lines = findLines(std::move(fine), days.level, search);
        lines.resize(std::min(lines.size(), std::size_t(std::max(0, choice.most))));
        const double seconds = bins > 0 ? 1 / (2 * result.binWidth) : 0;
        if (!lines.empty())
            findPulsars(seconds);
        for (const StackLine &line : lines) {
            if (control.isStopped())
                return;
            result.lines.push_back(described(line));
        }
        if (!days.weights.empty())
            rankAnew();
        // A signal of the sky comes back; what a few days show waits behind.
        std::stable_partition(result.lines.begin(), result.lines.end(),
                              [](const FourierLine &line) { return !line.isFewDays; });
        for (int i = 1; i < int(result.lines.size()); ++i)
            relate(i);
    }

    // Lines were found by a Gamma law of the same variance, which promises too much in the tail.
    void rankAnew()
    {
        std::vector<FourierLine> &lines = result.lines;
        const auto isBelow = [this](const FourierLine &line) {
            return line.sigma < choice.threshold;
        };
        lines.erase(std::remove_if(lines.begin(), lines.end(), isBelow), lines.end());
        std::stable_sort(
            lines.begin(), lines.end(),
            [](const FourierLine &a, const FourierLine &b) { return a.sigma > b.sigma; });
    }

    // Harmonic sums of one signal come at many fractions of its frequency.
    void relate(int index)
    {
        constexpr int highest = 16;
        FourierLine &line = result.lines[std::size_t(index)];
        for (int other = 0; other < index; ++other) {
            const FourierLine &stronger = result.lines[std::size_t(other)];
            if (stronger.relatedTo >= 0)
                continue;
            for (int q = 1; q <= highest; ++q) {
                const int p = int(std::lround(line.bin * q / stronger.bin));
                // Either frequency is right to a bin over its number of harmonics.
                const double tolerance = 1.0 / line.harmonics + double(p) / q / stronger.harmonics;
                if (p < 1 || p > highest ||
                    std::abs(line.bin - stronger.bin * p / q) > std::min(1.0, tolerance))
                    continue;
                line.relatedTo = other;
                line.relatedP = p;
                line.relatedQ = q;
                return;
            }
        }
    }

    FourierLine described(const StackLine &found)
    {
        FourierLine line;
        line.bin = found.bin;
        line.harmonics = found.harmonics;
        line.sigma = found.sigma;
        findFrequencies(line);
        const LinePowers powers = powersOfLine(days, found);
        line.power = found.power / (shape * found.harmonics);
        addEvidence(days, powers.ofDay, lawOfPowers(days, powers, found.harmonics), choice,
                    result.trials, line);

        const auto strongest = std::max_element(powers.ofHarmonic.begin(), powers.ofHarmonic.end());
        const int harmonic = 1 + int(strongest - powers.ofHarmonic.begin());
        line.isHum =
            isHumAt(hum(), line.telescope * harmonic, 2 * bins * result.binWidth, result.binWidth);
        markSky(line);
        return line;
    }

    int bins = 0;
    double shape = 1; // days, or their effective number where they have weights
    double leastRatio = 1;
    double mostRatio = 1;
    std::vector<double> fine; // sums at the fine positions
    std::vector<double> sums; // at the bins
};

} // namespace

QStringList LineMarks::marksOf(const QString &kind) const
{
    QStringList words;
    if (relatedTo >= 0)
        words << QString("%1/%2 of %3 %4").arg(relatedP).arg(relatedQ).arg(kind).arg(relatedTo + 1);
    if (isHum)
        words << "mains hum";
    if (isInOtherRays)
        words << "in other rays";
    if (isSolar)
        words << "interference: keeps solar time";
    if (isFewDays)
        words << "few days";
    for (const PulsarMatch &pulsar : pulsars)
        words << pulsar.text();
    return words;
}

FourierStack combineDays(const std::vector<FourierDay> &products, const FourierDaysChoice &choice,
                         const Jobs::Control &control)
{
    return FourierStacker(products, choice, control).stack();
}

} // namespace Days
