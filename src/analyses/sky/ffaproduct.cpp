#include "analyses/days/ffaday.h"
#include "analyses/days/ffastack.h"
#include "analyses/days/trialstack.h"
#include "analyses/sky/fourierproduct.h"
#include "analyses/sky/skysearch.h"
#include "calc/significance.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <mutex>
#include <tuple>

// Standardised S/N of fast folding over periods and widths as the product that is stacked. A
// position of a stack is width * trials + trial; that of a line is its trial.

namespace Sky {

namespace {

using Days::FfaTrials;
using Laws = std::vector<Tools::PhaseMaximum>;

// The Earth's motion moves a period by at most this part of it either way.
constexpr double earthMotion = 1.06e-4;
constexpr double leastTurn = 1.0 / 3; // bins of drift over the stretch
// In scatters: weak pulses are hardly cut, and what one day brings is little in the sum of many.
constexpr double clipHeight = 3;
constexpr int mostLines = 64;

int positions(const SkyPlan &plan)
{
    return plan.trials->count() * int(plan.trials->widths.size());
}

int columns(const SkyPlan &plan)
{
    return plan.trials->count();
}

bool isTurnedAxis(const SkyPlan &plan)
{
    if (!plan.parameters.earthMotion || !plan.knowsBeams())
        return false;
    double drift = 0;
    for (int i = 0; i < plan.trials->count(); ++i)
        drift = std::max(drift, plan.trials->driftBins(std::size_t(i),
                                                       2 * earthMotion * plan.trials->periodAt(i)));
    return drift > leastTurn;
}

double axisAt(const SkyPlan &plan, double position)
{
    return plan.trials->periodAt(position);
}

double frequencyAt(const SkyPlan &plan, double position)
{
    return 1 / plan.trials->periodAt(position);
}

QString axisName(const SkyPlan &plan)
{
    return isTurnedAxis(plan) ? "period at the barycentre, s" : "period at the telescope, s";
}

std::vector<float> turned(const std::vector<float> &snr, const FfaTrials &trials, double ratio)
{
    const std::vector<int> nearest = Days::nearestTrials(trials.periods, ratio);
    const std::size_t count = nearest.size();
    std::vector<float> values(snr.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = snr[i / count * count + std::size_t(nearest[i % count])];
    return values;
}

// Whether a stretch is disturbed, its spectrum tells, as for stacks of spectra.
CellProduct ofStretch(const CellStretch &stretch, const SkyPlan &plan)
{
    CellProduct product;
    const Days::PreparedSeries series = seriesOf(stretch, plan);
    product.problem = series.problem;
    if (!product.problem.isEmpty())
        return product;
    countHigh(Days::whitenedPowers(series.values, 0, plan.parameters.window), product);
    product.values = Days::searchedTrials(series.values, *plan.trials, product.problem);
    if (!product.values.empty() && isTurnedAxis(plan) && std::isfinite(stretch.ratio))
        product.values = turned(product.values, *plan.trials, stretch.ratio);
    return product;
}

// Making the laws takes longer than looking through a stack.
const Laws &lawsOf(const FfaTrials &trials, int days)
{
    static std::mutex mutex;
    static std::map<std::tuple<int, int, std::vector<int>, int>, Laws> known;
    const std::lock_guard lock(mutex);
    Laws &laws = known[{trials.ffa.bins_min, trials.ffa.bins_max, trials.widths, days}];
    if (laws.empty())
        laws = Days::lawsOfTrials(trials, days);
    return laws;
}

std::size_t widthIndex(const FfaTrials &trials, const CellLine &line)
{
    const auto place = std::lower_bound(trials.widths.begin(), trials.widths.end(), line.harmonics);
    return std::min(std::size_t(place - trials.widths.begin()), trials.widths.size() - 1);
}

int trialOf(const FfaTrials &trials, const CellLine &line)
{
    return std::clamp(int(std::lround(line.position)), 0, trials.count() - 1);
}

// The sums of a cell beside what noise makes of them.
class CellNoise {
public:
    CellNoise(std::vector<double> cellSums, int days, const FfaTrials &allTrials)
        : sums(std::move(cellSums)), trials(allTrials), laws(lawsOf(trials, days)),
          levels(Days::levelsOfTrials(sums, trials, laws))
    {}

    Days::TrialSignificance significance() const
    {
        return Days::bestSignificance(sums, trials.count(), levels, laws);
    }
    // Above the noise, in its scatters.
    double excess(std::size_t width, int trial) const
    {
        const std::size_t place = width * std::size_t(trials.count()) + std::size_t(trial);
        return (sums[place] - levels.level[place]) / levels.scatter[width];
    }
    // The sum as its law has it.
    double power(std::size_t width, int trial) const
    {
        return laws[width].median() + excess(width, trial) * laws[width].scatter();
    }
    const Tools::PhaseMaximum &law(std::size_t width) const { return laws[width]; }
    std::vector<double> excesses(std::size_t width) const
    {
        std::vector<double> all;
        for (int trial = 0; trial < trials.count(); ++trial)
            all.push_back(excess(width, trial));
        return all;
    }

private:
    const std::vector<double> sums;
    const FfaTrials &trials;
    const Laws &laws;
    const Days::TrialLevels levels;
};

double trialsOf(const SkyPlan &plan)
{
    return Days::countOfPeriodTrials(*plan.trials, double(plan.passages.size()));
}

// Significance of a trial: that of its best width, 0 where interference folds.
Days::TrialSignificance significanceOf(const CellNoise &noise, const SkyPlan &plan, double ratio)
{
    Days::TrialSignificance best = noise.significance();
    const double toTelescope = isTurnedAxis(plan) && std::isfinite(ratio) ? ratio : 1;
    for (std::size_t i = 0; i < best.sigma.size() && !plan.interference.empty(); ++i) {
        for (const Days::Interference &entry : plan.interference) {
            if (Days::foldsAt(entry, toTelescope / plan.trials->periods[i], plan.trials->length()))
                best.sigma[i] = 0;
        }
    }
    return best;
}

std::vector<CellLine> linesOf(const CellStack &cell, const SkyPlan &plan, double highestLogTail)
{
    if (cell.days == 0)
        return {};
    const FfaTrials &trials = *plan.trials;
    const CellNoise noise(cell.sums, cell.days, trials);
    const Days::TrialSignificance best = significanceOf(noise, plan, cell.ratio);
    const double lowest = Tools::sigmaOfTail(highestLogTail);
    std::vector<CellLine> lines;
    for (const Days::StackPeriod &period :
         Days::findPeriods(best.sigma, trials, lowest, mostLines)) {
        const auto width = std::size_t(best.width[std::size_t(period.trial)]);
        const double power = noise.power(width, period.trial);
        lines.push_back(
            {double(period.trial), trials.widths[width], power, noise.law(width).logTail(power)});
    }
    return lines;
}

std::vector<float> significance(const CellStack &cell, const SkyPlan &plan)
{
    const FfaTrials &trials = *plan.trials;
    if (cell.days == 0)
        return std::vector<float>(std::size_t(trials.count()),
                                  std::numeric_limits<float>::quiet_NaN());
    const CellNoise noise(cell.sums, cell.days, trials);
    std::vector<float> sigma = significanceOf(noise, plan, cell.ratio).sigma;
    const double ofWidths = trialsOf(plan) / trials.count();
    for (float &one : sigma)
        one = float(Tools::sigmaOfTail(
            Tools::logTailOfTrials(Tools::logNormalTail(double(one)), ofWidths)));
    return sigma;
}

double powerAt(const CellStack &cell, const SkyPlan &plan, const CellLine &line)
{
    const FfaTrials &trials = *plan.trials;
    return cell.days == 0 ? 0
                          : CellNoise(cell.sums, cell.days, trials)
                                .power(widthIndex(trials, line), trialOf(trials, line));
}

double logTail(const SkyPlan &plan, int days, const CellLine &line, double power)
{
    const FfaTrials &trials = *plan.trials;
    return days == 0 ? 0 : lawsOf(trials, days)[widthIndex(trials, line)].logTail(power);
}

// Sums of values that were cut off scatter less; brought to the scatter of the others, they have
// nearly the same law.
double clippedLogTail(const CellStack &cell, const SkyPlan &plan, const CellLine &line)
{
    if (cell.days == 0)
        return 0;
    const FfaTrials &trials = *plan.trials;
    std::vector<double> sums = cell.clipped;
    const Laws &ofDay = lawsOf(trials, 1);
    const auto count = std::size_t(trials.count());
    for (std::size_t width = 0; width < ofDay.size(); ++width) {
        const double share = std::exp(ofDay[width].logTail(clipHeight));
        const double scale =
            std::sqrt(ofDay[width].cut(0).variance / ofDay[width].cut(share).variance);
        for (std::size_t i = width * count; i < (width + 1) * count; ++i)
            sums[i] *= scale;
    }
    const CellNoise noise(std::move(sums), cell.days, trials);
    const std::size_t width = widthIndex(trials, line);
    return noise.law(width).logTail(noise.power(width, trialOf(trials, line)));
}

DayNoise noiseOfDay(const SkyPlan &plan, const CellLine &line)
{
    const Tools::PhaseMaximum::Cut whole =
        lawsOf(*plan.trials, 1)[widthIndex(*plan.trials, line)].cut(0);
    return {whole.mean, whole.variance};
}

double meanPower(const SkyPlan &plan, const CellLine &line, int days)
{
    return line.power / std::max(1, days) - noiseOfDay(plan, line).mean;
}

// A bin is half a turn over the stretch; a pulse drifts by its width.
double tolerance(const SkyPlan &plan, const CellLine &line)
{
    const FfaTrials &trials = *plan.trials;
    return 2.0 * line.harmonics / trials.foldBins[std::size_t(trialOf(trials, line))];
}

// Trials between which a pulse drifts by less than twice its width.
PositionRange sameLine(const SkyPlan &plan, const CellLine &line)
{
    const FfaTrials &trials = *plan.trials;
    const auto trial = std::size_t(trialOf(trials, line));
    const double period = trials.periods[trial];
    const double turns = 2.0 * line.harmonics / trials.foldBins[trial];
    const double off = turns * period * period / trials.length();
    const auto begin = trials.periods.begin();
    const auto end = trials.periods.end();
    return {double(std::lower_bound(begin, end, period - off) - begin),
            double(std::upper_bound(begin, end, period + off) - begin) - 1};
}

bool isHum(const CellStack & /*cell*/, const SkyPlan &plan, const CellLine &line, double telescope,
           const std::vector<Days::DayHum> &hum)
{
    const FfaTrials &trials = *plan.trials;
    return Days::isHumOfPulse(hum, telescope, line.harmonics,
                              trials.foldBins[std::size_t(trialOf(trials, line))], trials);
}

// Folds shift turns by whole bins, so that not always the nearest trial has the highest S/N: the
// scatter of simulated strong pulses around their best trials.
constexpr double ofTrials = 0.62;

// Those of the cell, without errors: the S/N of strong pulses is told in units of a scatter that
// they widen themselves, so that cells a little off may stand as high.
void measurePlace(const SkyPlan &plan, SkyCandidate &candidate)
{
    candidate.dispersion.value = plan.dispersions[std::size_t(candidate.dispersionIndex)];
    const SkyRay &ray = plan.rays[std::size_t(candidate.ray)];
    if (!ray.beam.isKnown() || plan.passages.empty())
        return;
    const Passage &passage = plan.passages[plan.passages.size() / 2];
    const Tools::SkyPosition position =
        plan.directionOf(ray, plan.middleOf(passage, candidate.start));
    candidate.alfa.value = position.alfa;
    candidate.delta.value = position.delta;
}

void measure(const SkyStack &stack, const SkyPlan &plan, const CellLine &line,
             SkyCandidate &candidate)
{
    const FfaTrials &trials = *plan.trials;
    const CellStack cell = stack.cell(candidate.ray, candidate.dispersionIndex, candidate.start);
    const std::size_t width = widthIndex(trials, line);
    const CellNoise noise(cell.sums, cell.days, trials);
    const PositionRange same = sameLine(plan, line);
    const Days::PlaceEstimate found =
        Days::placeOf(trials.periods, noise.excesses(width), std::size_t(same.first),
                      std::size_t(same.last) + 1, std::size_t(trialOf(trials, line)), ofTrials);
    const double frequency = 1 / found.value;
    const bool isTurned = isTurnedAxis(plan);
    candidate.barycentric = isTurned ? frequency : frequency / cell.ratio;
    candidate.telescope = isTurned ? frequency * cell.ratio : frequency;
    const double told = candidate.barycentric > 0 ? candidate.barycentric : candidate.telescope;
    candidate.period = {1 / told, found.error / found.value / told};
    measurePlace(plan, candidate);
}

} // namespace

const SkyMethod &ffaMethod()
{
    static const SkyMethod method = [] {
        SkyMethod made;
        made.product = Product::Ffa;
        made.positions = positions;
        made.clip = clipHeight;
        made.axisAt = axisAt;
        made.frequencyAt = frequencyAt;
        made.isTurned = isTurnedAxis;
        made.axisName = axisName;
        made.columns = columns;
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
        made.measure = measure;
        return made;
    }();
    return method;
}

} // namespace Sky
