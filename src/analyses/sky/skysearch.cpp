#include "analyses/sky/skysearch.h"

#include "analyses/days/stackevidence.h"
#include "analyses/sky/candidateorder.h"
#include "analyses/sky/fourierproduct.h"
#include "calc/pulsar/bandsum.h"
#include "calc/significance.h"
#include "coords/barycentre.h"
#include "jobs/items.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Sky {

namespace {

constexpr int mostLinesOfCell = 64;
constexpr double sameInRays = 1.5;   // bins
constexpr int fewestForTrimming = 5; // days
constexpr double lowestTold = -9;    // sigma: noise all over, for which there is no number

// A line of one cell.
struct Detection {
    int ray = 0;
    int dispersion = 0; // index among those that differ
    int start = 0;
    CellLine line;
    double telescope = 0; // Hz
};

// Indices of the dispersions whose sums are not those of the one before: where the steps of time
// are long, close dispersions shift all bands alike.
std::vector<int> differingDispersions(const SkyPlan &plan)
{
    std::vector<int> differing;
    std::vector<int> last;
    for (std::size_t i = 0; i < plan.dispersions.size(); ++i) {
        const Tools::BandDelays delays = Pulsar::bandDelays(plan.header, plan.dispersions[i]);
        std::vector<int> shifts;
        for (int band = 0; band < delays.bands(); ++band)
            shifts.push_back(delays.shift(band));
        if (shifts != last)
            differing.push_back(int(i));
        last = std::move(shifts);
    }
    return differing;
}

class Searcher {
public:
    Searcher(const SkyStack &skyStack, const SkyPlan &skyPlan, int threadCount,
             const Jobs::Control &runControl)
        : stack(skyStack), plan(skyPlan), threads(threadCount), control(runControl),
          method(methodOf(skyPlan.product)), dispersions(differingDispersions(skyPlan))
    {}

    SkySearch search()
    {
        countTrials();
        if (!result.problem.isEmpty())
            return std::move(result);
        detect();
        if (control.isStopped()) {
            result.problem = "Stopped.";
            return std::move(result);
        }
        join();
        for (SkyCandidate &candidate : result.candidates)
            describe(candidate);
        result.candidates = orderedCandidates(std::move(result.candidates), plan);
        return std::move(result);
    }

private:
    void countTrials()
    {
        for (int ray = 0; ray < plan.rayCount(); ++ray)
            for (int start = 0; start < plan.starts; ++start)
                result.searchedCells += stack.days(ray, start) > 0 ? int(dispersions.size()) : 0;
        if (result.searchedCells == 0) {
            result.problem = "No day was added to any stack: there is nothing to search.";
            return;
        }
        result.trials = method.trials(plan) * result.searchedCells;
        result.lowestLogTail = std::log(plan.parameters.falseAlarms / result.trials);
        if (dispersions.size() < plan.dispersions.size())
            result.remarks << QString("%1 of the %2 dispersions have sums of their own; the others "
                                      "shift all bands by the same steps.")
                                  .arg(dispersions.size())
                                  .arg(plan.dispersions.size());
        if (stack.cutOff > 0)
            result.remarks << QString("%1 values of single days above %2 count as that.")
                                  .arg(stack.cutOff)
                                  .arg(mostValue);
    }

    std::size_t cellOf(int ray, int dispersion, int start) const
    {
        return (std::size_t(ray) * dispersions.size() + std::size_t(dispersion)) *
                   std::size_t(plan.starts) +
               std::size_t(start);
    }

    void detect()
    {
        const int rows = plan.rayCount() * int(dispersions.size());
        ofCell.resize(std::size_t(rows) * std::size_t(plan.starts));
        const auto endings =
            Jobs::runItems(rows, threads, control, [this](int row, const Jobs::Control &own) {
                const int ray = row / int(dispersions.size());
                const int dispersion = row % int(dispersions.size());
                for (int start = 0; start < plan.starts && !own.isStopped(); ++start)
                    detectIn(ray, dispersion, start);
            });
        for (const Jobs::Ending &ending : endings) {
            if (ending.kind == Jobs::Ending::Failed)
                result.remarks << ending.problem;
        }
    }

    void detectIn(int ray, int dispersion, int start)
    {
        if (stack.days(ray, start) == 0)
            return;
        const CellStack cell = stack.cell(ray, dispersions[std::size_t(dispersion)], start);
        std::vector<CellLine> lines = method.linesOf(cell, plan, result.lowestLogTail);
        lines.resize(std::min<std::size_t>(lines.size(), mostLinesOfCell));
        std::vector<Detection> &found = ofCell[cellOf(ray, dispersion, start)];
        for (const CellLine &line : lines)
            found.push_back({ray, dispersion, start, line, telescopeOf(line, cell.ratio)});
        std::sort(found.begin(), found.end(), [](const Detection &a, const Detection &b) {
            return a.line.position < b.line.position;
        });
    }

    // Only to compare rays with: what turned axes differ by is less than a bin.
    double telescopeOf(const CellLine &line, double ratio) const
    {
        const double frequency = method.frequencyAt(plan, line.position);
        return method.isTurned(plan) && std::isfinite(ratio) ? frequency * ratio : frequency;
    }

    // Lines of neighbouring cells that agree in frequency are one candidate: from the strongest on,
    // which tells its place, whatever can be reached from neighbour to neighbour.
    void join()
    {
        std::vector<const Detection *> all;
        for (const std::vector<Detection> &cell : ofCell)
            for (const Detection &one : cell)
                all.push_back(&one);
        std::sort(all.begin(), all.end(), [](const Detection *a, const Detection *b) {
            return a->line.logTail != b->line.logTail ? a->line.logTail < b->line.logTail : a < b;
        });
        for (const std::vector<Detection> &cell : ofCell)
            taken.emplace_back(cell.size(), false);
        for (const Detection *const one : all) {
            if (int(result.candidates.size()) >= plan.parameters.most)
                break;
            if (!isTaken(*one))
                result.candidates.push_back(grown(*one));
        }
    }

    std::size_t cellOf(const Detection &one) const
    {
        return cellOf(one.ray, one.dispersion, one.start);
    }

    std::vector<bool>::reference takenOf(const Detection &one)
    {
        const std::size_t cell = cellOf(one);
        return taken[cell][std::size_t(&one - ofCell[cell].data())];
    }
    bool isTaken(const Detection &one) { return takenOf(one); }

    SkyCandidate grown(const Detection &seed)
    {
        SkyCandidate candidate;
        candidate.ray = seed.ray;
        candidate.dispersionIndex = dispersions[std::size_t(seed.dispersion)];
        candidate.start = seed.start;
        candidate.line = seed.line;
        candidate.telescope = seed.telescope;
        std::set<std::size_t> cells;
        std::vector<const Detection *> open = {&seed};
        takenOf(seed) = true;
        while (!open.empty()) {
            const Detection &one = *open.back();
            open.pop_back();
            cells.insert(cellOf(one));
            for (int ray = one.ray - 1; ray <= one.ray + 1; ++ray)
                for (int dispersion = one.dispersion - 1; dispersion <= one.dispersion + 1;
                     ++dispersion)
                    for (int start = one.start - 1; start <= one.start + 1; ++start)
                        addNear(one, ray, dispersion, start, open);
        }
        candidate.cells = int(cells.size());
        return candidate;
    }

    void addNear(const Detection &one, int ray, int dispersion, int start,
                 std::vector<const Detection *> &open)
    {
        if (ray < 0 || ray >= plan.rayCount() || dispersion < 0 ||
            dispersion >= int(dispersions.size()) || start < 0 || start >= plan.starts ||
            plan.rays[std::size_t(ray)].module != plan.rays[std::size_t(one.ray)].module)
            return;
        const PositionRange same = method.sameLine(plan, one.line);
        const std::vector<Detection> &cell = ofCell[cellOf(ray, dispersion, start)];
        const auto isBelow = [](const Detection &other, double position) {
            return other.line.position < position;
        };
        for (auto near = std::lower_bound(cell.begin(), cell.end(), same.first, isBelow);
             near != cell.end() && near->line.position <= same.last; ++near) {
            if (isTaken(*near))
                continue;
            takenOf(*near) = true;
            open.push_back(&*near);
        }
    }

    double sigmaOf(double logTail) const
    {
        return Tools::sigmaOfTail(Tools::logTailOfTrials(logTail, result.trials));
    }

    void describe(SkyCandidate &candidate) const
    {
        const CellLine &line = candidate.line;
        const CellStack cell =
            stack.cell(candidate.ray, candidate.dispersionIndex, candidate.start);
        candidate.days = cell.days;
        candidate.harmonics = line.harmonics;
        candidate.power = method.meanPower(plan, line, cell.days);
        candidate.sigma = sigmaOf(line.logTail);
        candidate.falseAlarms = std::exp(line.logTail) * result.trials;
        const double clipped = method.clippedLogTail(cell, plan, line);
        candidate.withoutStrongest = std::max(lowestTold, sigmaOf(clipped));
        candidate.isFewDays = isOfFewDays(cell.days, line.logTail, clipped);
        candidate.isInOtherRays = isInOtherRays(candidate);
        // A few days stand at some hour of the Sun whatever they are.
        candidate.isSolar = !candidate.isFewDays && keepsSolarTime(candidate);
        candidate.isHum = method.isHum(cell, plan, line, candidate.telescope, hum());
        method.measure(stack, plan, line, candidate);
        findPulsars(candidate);
    }

    // Below the threshold without its strongest days. The clipped sums of a steady signal have
    // 0.96 of its significance and scatter by 0.3 sigma around that, so that a signal hardly above
    // the threshold may fall as far below it. Those of a very strong one are limited, but far
    // above the threshold.
    bool isOfFewDays(int days, double logTail, double clipped) const
    {
        constexpr double share = 0.96;
        constexpr double scatter = 0.3; // sigma
        const double steady = share * Tools::sigmaOfTail(logTail) - 3 * scatter;
        const double needed = std::min(steady, Tools::sigmaOfTail(result.lowestLogTail));
        return days >= fewestForTrimming && Tools::sigmaOfTail(clipped) < needed;
    }

    // At any time of the day and any dispersion.
    bool isInOtherRays(const SkyCandidate &candidate) const
    {
        std::set<int> places;
        for (const std::vector<Detection> &cell : ofCell) {
            for (const Detection &one : cell) {
                if (std::abs(one.telescope - candidate.telescope) < sameInRays * binWidth(plan))
                    places.insert(placeOfRay(plan, one.ray));
            }
        }
        return Days::isInRaysApart(places, placeOfRay(plan, candidate.ray));
    }

    // A line of the sky is as strong at all hours of the Sun. One that comes in half of the solar
    // day, and hardly in the other, belongs to the Earth. The days themselves are not kept: their
    // scatter is taken as that of noise with a signal whose strength scatters by as much as it is.
    bool keepsSolarTime(const SkyCandidate &candidate) const
    {
        constexpr double fewestDays = 10;
        constexpr double leastDifference = 5; // sigma
        constexpr double mostLeft = 0.25;     // of the excess
        const DayNoise noise = method.noiseOfDay(plan, candidate.line);
        std::vector<double> excess;
        std::vector<double> days;
        for (int quarter = 0; quarter < sunQuarters; ++quarter) {
            const CellStack cell =
                stack.quarterOf(candidate.ray, candidate.dispersionIndex, candidate.start, quarter);
            days.push_back(cell.days);
            excess.push_back(cell.days == 0 ? 0
                                            : method.powerAt(cell, plan, candidate.line) -
                                                  double(cell.days) * noise.mean);
        }
        for (int first = 0; first < sunQuarters; ++first) {
            const int second = (first + 1) % sunQuarters;
            const double inDays = days[std::size_t(first)] + days[std::size_t(second)];
            const double outDays = std::accumulate(days.begin(), days.end(), 0.0) - inDays;
            if (std::min(inDays, outDays) < fewestDays)
                continue;
            const double sum = excess[std::size_t(first)] + excess[std::size_t(second)];
            const double in = sum / inDays;
            const double out = (std::accumulate(excess.begin(), excess.end(), 0.0) - sum) / outDays;
            const auto varianceOf = [&](double mean) {
                const double most = std::max(0.0, mean);
                return noise.variance + 2 * most + most * most;
            };
            const double error = std::sqrt(varianceOf(in) / inDays + varianceOf(out) / outDays);
            if (in - out > leastDifference * error && out < mostLeft * in)
                return true;
        }
        return false;
    }

    std::vector<Days::DayHum> hum() const
    {
        constexpr double perHertz = 1000;
        std::vector<Days::DayHum> all;
        for (const auto &[from, to] : stack.hum)
            all.push_back({from / perHertz, to / perHertz});
        return all;
    }

    void findPulsars(SkyCandidate &candidate) const
    {
        if (plan.passages.empty() || !(candidate.barycentric > 0))
            return;
        const SkyRay &ray = plan.rays[std::size_t(candidate.ray)];
        const QDateTime middle =
            plan.middleOf(plan.passages[plan.passages.size() / 2], candidate.start);
        const Tools::SkyPosition direction = plan.directionOf(ray, middle);
        candidate.pulsars = Days::matchesOf(
            Days::pulsarsInBeam(ray.beam, direction, middle.date(),
                                plan.parameters.points * plan.header.tresolution),
            direction, candidate.barycentric, binWidth(plan), Tools::modifiedJulianDay(middle));
    }

    const SkyStack &stack;
    const SkyPlan &plan;
    const int threads;
    const Jobs::Control &control;
    const SkyMethod &method;
    const std::vector<int> dispersions;         // indices of those that differ
    std::vector<std::vector<Detection>> ofCell; // by position
    std::vector<std::vector<bool>> taken;
    SkySearch result;
};

} // namespace

QString verdictName(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Accept:
        return "accept";
    case Verdict::Reject:
        return "reject";
    case Verdict::Unsure:
        return "unsure";
    case Verdict::None:
        break;
    }
    return "-";
}

Verdict verdictOf(const QString &name)
{
    for (const Verdict verdict : {Verdict::Accept, Verdict::Reject, Verdict::Unsure}) {
        if (name == verdictName(verdict))
            return verdict;
    }
    return Verdict::None;
}

SkySearch searchSky(const SkyStack &stack, const SkyPlan &plan, int threads,
                    const Jobs::Control &control)
{
    return Searcher(stack, plan, threads, control).search();
}

std::vector<double> sigmaOverDispersions(const SkyStack &stack, const SkyPlan &plan,
                                         const SkyCandidate &candidate)
{
    const SkyMethod &method = methodOf(plan.product);
    std::vector<double> sigmas;
    for (int i = 0; i < int(plan.dispersions.size()); ++i) {
        const CellStack cell = stack.cell(candidate.ray, i, candidate.start);
        const double power = method.powerAt(cell, plan, candidate.line);
        sigmas.push_back(
            Tools::sigmaOfTail(method.logTail(plan, cell.days, candidate.line, power)));
    }
    return sigmas;
}

} // namespace Sky
