#include "analyses/sky/fourierproduct.h"
#include "analyses/days/stackevidence.h"
#include "analyses/sky/linemeasure.h"
#include "calc/significance.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

// Whitened powers of the stretches as the product that is stacked.

namespace Sky {

namespace {

// The Earth's motion moves a frequency by at most this part of it either way.
constexpr double earthMotion = 1.06e-4;
// Below half a bin, turning would round more than it mends: nearest bins of days that are not
// turned lie off by at most that, and on the mean of the days by much less.
constexpr double leastTurn = 0.5; // bins
// On a turned axis the nearest position and the nearest bin of a day are both rounded; with two
// positions a bin 2 % of a line's power are lost by the first.
constexpr int turnedPerBin = 2;
// A level of so many windows scatters little; the days were whitened before.
constexpr int levelWindows = 4;
// One value in twenty of an exponential law of mean 1 exceeds it.
constexpr double clipHeight = 2.995732273553991;

int binsOf(const SkyPlan &plan)
{
    return plan.parameters.points >> std::clamp(plan.parameters.averageCount, 0, 30);
}

} // namespace

bool isTurned(const SkyPlan &plan)
{
    return plan.parameters.earthMotion && plan.knowsBeams() &&
           binsOf(plan) * earthMotion > leastTurn;
}

int perBin(const SkyPlan &plan)
{
    return isTurned(plan) ? turnedPerBin : 1;
}

double binWidth(const SkyPlan &plan)
{
    return 1 / (2 * double(plan.parameters.points) * plan.header.tresolution);
}

Days::PreparedSeries seriesOf(const CellStretch &stretch, const SkyPlan &plan)
{
    const std::vector<float> sums(stretch.sums, stretch.sums + stretch.points);
    std::vector<float> back;
    if (stretch.backSums)
        back.assign(stretch.backSums, stretch.backSums + stretch.points);
    return Days::preparedSeries(sums, back, plan.parameters.noise);
}

void countHigh(const std::vector<float> &powers, CellProduct &product)
{
    const auto first =
        powers.begin() + std::min<std::ptrdiff_t>(Days::lowestBin, std::ptrdiff_t(powers.size()));
    product.above = int(
        std::count_if(first, powers.end(), [](float power) { return power > Days::highPower; }));
    product.expectedAbove = Days::expectedAbove(int(powers.end() - first));
}

namespace {

int positions(const SkyPlan &plan)
{
    return binsOf(plan) * perBin(plan);
}

double axisAt(const SkyPlan &plan, double position)
{
    return position / perBin(plan) * binWidth(plan);
}

QString axisName(const SkyPlan &plan)
{
    return isTurned(plan) ? "frequency at the barycentre, Hz" : "frequency at the telescope, Hz";
}

std::vector<float> turned(const std::vector<float> &powers, double ratio, int each)
{
    std::vector<float> values(powers.size() * std::size_t(each));
    const double perPosition = ratio / each;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double bin = std::floor(double(i) * perPosition + 0.5);
        values[i] = powers[std::size_t(std::min(bin, double(powers.size() - 1)))];
    }
    return values;
}

CellProduct ofStretch(const CellStretch &stretch, const SkyPlan &plan)
{
    CellProduct product;
    const Days::PreparedSeries series = seriesOf(stretch, plan);
    product.problem = series.problem;
    if (!product.problem.isEmpty())
        return product;
    product.values =
        Days::whitenedPowers(series.values, plan.parameters.averageCount, plan.parameters.window);
    countHigh(product.values, product);
    if (isTurned(plan))
        product.values = turned(product.values, stretch.ratio, turnedPerBin);
    return product;
}

// Interference stands still at the telescope, so that on a turned axis it covers a range.
void leaveOut(const SkyPlan &plan, FineStack &stack)
{
    const double spread = isTurned(plan) ? earthMotion : 0;
    const auto bins = double(stack.level.size());
    for (const Days::Interference &entry : plan.interference) {
        for (int harmonic = 1; harmonic <= entry.harmonics; ++harmonic) {
            const double from = entry.from(harmonic) * (1 - spread) / binWidth(plan) - 1;
            const double to = entry.to(harmonic) * (1 + spread) / binWidth(plan) + 1;
            const double last = std::min(to, bins - 1) * Days::finePerBin;
            for (double i = std::max(0.0, std::ceil(from * Days::finePerBin)); i <= last; ++i) {
                const auto position = std::size_t(i);
                const std::size_t bin = std::min(
                    (position + Days::finePerBin / 2) / Days::finePerBin, stack.level.size() - 1);
                stack.fine[position] = stack.search.shape * stack.level[bin];
            }
        }
    }
}

} // namespace

FineStack fineStack(const std::vector<double> &sums, double shape, const SkyPlan &plan)
{
    const int bins = binsOf(plan);
    const int each = perBin(plan);
    FineStack stack;
    stack.fine.resize(std::size_t(bins) * Days::finePerBin);
    const std::size_t last = sums.size() - 1;
    for (std::size_t i = 0; i < stack.fine.size(); ++i) {
        const std::size_t position =
            (i * std::size_t(each) + Days::finePerBin / 2) / Days::finePerBin;
        stack.fine[i] = sums[std::min(position, last)];
    }
    std::vector<double> atBins(static_cast<std::size_t>(bins));
    for (std::size_t bin = 0; bin < atBins.size(); ++bin)
        atBins[bin] = sums[bin * std::size_t(each)];
    const int window = std::min(levelWindows * plan.parameters.window, bins - Days::lowestBin) - 1;
    stack.level =
        Days::levelOfStack(atBins, Tools::medianPower(shape), window | 1, Days::lowestBin);
    stack.search.shape = shape;
    stack.search.lowestBin = Days::lowestBin;
    stack.search.harmonics = plan.parameters.harmonics;
    leaveOut(plan, stack);
    return stack;
}

namespace {

double trialsOf(const SkyPlan &plan)
{
    return Days::countOfTrials(binsOf(plan) - Days::lowestBin, plan.parameters.harmonics);
}

std::vector<CellLine> linesOf(const CellStack &cell, const SkyPlan &plan, double highestLogTail)
{
    if (cell.days == 0)
        return {};
    FineStack stack = fineStack(cell.sums, cell.days, plan);
    stack.search.lowestSigma =
        Tools::sigmaOfTail(Tools::logTailOfTrials(highestLogTail, trialsOf(plan)));
    std::vector<CellLine> lines;
    for (const Days::StackLine &line :
         Days::findLines(std::move(stack.fine), stack.level, stack.search)) {
        const double tail = Tools::logGammaTail(stack.search.shape * line.harmonics, line.power);
        if (tail <= highestLogTail)
            lines.push_back({line.bin * perBin(plan), line.harmonics, line.power, tail});
    }
    return lines;
}

// Sum over the harmonics of a line of what the fine positions hold.
double harmonicSum(const FineStack &stack, const CellLine &line, int each)
{
    const int trial = int(std::lround(line.position / each * line.harmonics));
    double sum = 0;
    for (int harmonic = 1; harmonic <= line.harmonics; ++harmonic) {
        const auto position =
            std::size_t(trial) * std::size_t(harmonic * (Days::finePerBin / line.harmonics));
        const std::size_t bin =
            std::min((position + Days::finePerBin / 2) / Days::finePerBin, stack.level.size() - 1);
        sum += stack.fine[std::min(position, stack.fine.size() - 1)] / stack.level[bin];
    }
    return sum;
}

double powerAt(const CellStack &cell, const SkyPlan &plan, const CellLine &line)
{
    return cell.days == 0 ? 0
                          : harmonicSum(fineStack(cell.sums, cell.days, plan), line, perBin(plan));
}

double logTail(const SkyPlan & /*plan*/, int days, const CellLine &line, double power)
{
    return days == 0 ? 0 : Tools::logGammaTail(double(days) * line.harmonics, power);
}

// min(x, q) with x exponential of mean 1 has the mean 1 - exp(-q) and the mean square
// 2 (1 - exp(-q) (1 + q)). A Gamma law of the same mean and variance gives the tail of the sum.
double clippedLogTail(const CellStack &cell, const SkyPlan &plan, const CellLine &line)
{
    if (cell.days == 0)
        return 0;
    const double share = std::exp(-clipHeight);
    const double mean = 1 - share;
    const double variance = 2 * (1 - share * (1 + clipHeight)) - mean * mean;
    const double scale = variance / mean;
    const double shape = cell.days * mean / scale;
    std::vector<double> sums = cell.clipped;
    for (double &sum : sums)
        sum /= scale;
    return Tools::logGammaTail(shape * line.harmonics,
                               harmonicSum(fineStack(sums, shape, plan), line, perBin(plan)));
}

std::vector<float> significance(const CellStack &cell, const SkyPlan &plan)
{
    if (cell.days == 0)
        return std::vector<float>(std::size_t(binsOf(plan)),
                                  std::numeric_limits<float>::quiet_NaN());
    FineStack stack = fineStack(cell.sums, cell.days, plan);
    return Days::bestSigmas(std::move(stack.fine), stack.level, stack.search);
}

DayNoise noiseOfDay(const SkyPlan & /*plan*/, const CellLine &line)
{
    return {double(line.harmonics), double(line.harmonics)};
}

double meanPower(const SkyPlan & /*plan*/, const CellLine &line, int days)
{
    return line.power / (double(days) * line.harmonics);
}

double tolerance(const SkyPlan & /*plan*/, const CellLine &line)
{
    return 1.0 / line.harmonics;
}

PositionRange sameLine(const SkyPlan &plan, const CellLine &line)
{
    constexpr double within = 2; // bins of the padded spectrum, which is 1 / T
    const double apart = within * perBin(plan);
    return {line.position - apart, line.position + apart};
}

// The strongest of the harmonics tells.
bool isHum(const CellStack &cell, const SkyPlan &plan, const CellLine &line, double telescope,
           const std::vector<Days::DayHum> &hum)
{
    const FineStack stack = fineStack(cell.sums, cell.days, plan);
    int strongest = 1;
    double most = 0;
    for (int harmonic = 1; harmonic <= line.harmonics; ++harmonic) {
        const double power = harmonicSum(stack, {line.position * harmonic, 1, 0, 0}, perBin(plan));
        if (power > most) {
            most = power;
            strongest = harmonic;
        }
    }
    const double rate = 2 * axisAt(plan, positions(plan));
    return Days::isHumAt(hum, telescope * strongest, rate, binWidth(plan));
}

} // namespace

const SkyMethod &fourierMethod()
{
    static const SkyMethod method = [] {
        SkyMethod made;
        made.product = Product::Fourier;
        made.positions = positions;
        made.clip = clipHeight;
        made.axisAt = axisAt;
        made.axisName = axisName;
        made.columns = binsOf;
        made.frequencyAt = axisAt;
        made.isTurned = isTurned;
        made.ofStretch = ofStretch;
        made.trials = trialsOf;
        made.linesOf = linesOf;
        made.significance = significance;
        made.powerAt = powerAt;
        made.logTail = logTail;
        made.clippedLogTail = clippedLogTail;
        made.noiseOfDay = noiseOfDay;
        made.meanPower = meanPower;
        made.tolerance = tolerance;
        made.sameLine = sameLine;
        made.isHum = isHum;
        made.measure = measureLine;
        return made;
    }();
    return method;
}

} // namespace Sky
