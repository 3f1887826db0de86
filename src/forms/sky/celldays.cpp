#include "forms/sky/celldays.h"

#include "analyses/days/ffastack.h"
#include "analyses/sky/fourierproduct.h"
#include "analyses/sky/skyproduct.h"
#include "calc/fold.h"
#include "calc/significance.h"
#include "jobs/items.h"
#include "picture/plotgeometry.h"
#include "picture/resultplot.h"
#include "picture/stackplot.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double msPerSecond = 1000;
constexpr double lineThreshold = 4; // sigma, of listed lines of one cell

// The points of a passage from one index on, as parts of its files.
std::vector<Days::DayPart> partsOf(const Sky::Passage &passage, int first, int count)
{
    std::vector<Days::DayPart> parts;
    for (const Days::DayPart &part : passage.parts) {
        const int from = std::max(0, first);
        const int to = std::min(part.count, first + count);
        if (to > from)
            parts.push_back({part.recording, part.first + from, to - from});
        first -= part.count;
    }
    return parts;
}

Days::FourierDaysParameters parametersOf(const Sky::SkyPlan &plan, const SkyPlace &place)
{
    const Sky::SkyParameters &sky = plan.parameters;
    Days::FourierDaysParameters parameters;
    static_cast<Days::DayPlace &>(parameters) = sky;
    parameters.module = plan.rays[std::size_t(place.ray)].module;
    parameters.ray = plan.rays[std::size_t(place.ray)].ray;
    parameters.dispersion = plan.dispersions[std::size_t(place.dispersion)];
    parameters.noise = sky.noise;
    parameters.averageCount = sky.averageCount;
    parameters.window = sky.window;
    parameters.harmonics = sky.harmonics;
    parameters.earthMotion = sky.earthMotion;
    parameters.threshold = lineThreshold;
    parameters.isFfa = plan.trials != nullptr;
    if (plan.trials)
        parameters.ffa = plan.trials->ffa;
    return parameters;
}

Days::DayPlan dayPlanOf(const Sky::SkyPlan &plan, const SkyPlace &place,
                        const Days::FourierDaysParameters &parameters)
{
    Days::DayPlan made;
    made.beam = plan.rays[std::size_t(place.ray)].beam;
    made.header = plan.header;
    made.list.tresolution = plan.header.tresolution;
    made.list.fbands = plan.header.fbands;
    made.choice.module = parameters.module;
    made.choice.ray = parameters.ray;
    made.choice.points = parameters.points;
    made.choice.start.clockOffset = parameters.clockOffset;
    const Days::DayNeeds needs = Days::needsOf(parameters, made.choice, plan.header);
    made.choice = needs.choice;
    made.series = needs.series;
    const double seconds = double(place.start) * plan.startStep * plan.header.tresolution;
    for (const Sky::Passage &passage : plan.passages) {
        const int first = passage.firstPoints[std::size_t(place.start)];
        if (first < 0)
            continue;
        Days::Day day;
        day.begin = passage.begin.addMSecs(qint64(std::llround(seconds * msPerSecond)));
        day.before = made.choice.pointsBefore;
        day.parts = partsOf(passage, first - day.before,
                            day.before + parameters.points + made.choice.pointsAfter);
        made.list.days.push_back(day);
    }
    return made;
}

// A peak of a stack as the list of lines has it.
Days::FourierLine lineOf(const Sky::CellLine &line, const Sky::CellStack &stack,
                         const Sky::SkyPlan &plan)
{
    const Sky::SkyMethod &method = Sky::methodOf(plan.product);
    const double frequency = method.frequencyAt(plan, line.position);
    Days::FourierLine made;
    made.bin = line.position;
    made.power = method.meanPower(plan, line, stack.days);
    if (plan.trials) {
        made.width = line.harmonics;
        made.foldBins = plan.trials->foldBins[std::size_t(std::lround(line.position))];
    } else {
        made.bin /= Sky::perBin(plan);
        made.harmonics = line.harmonics;
    }
    made.sigma = made.sigmaAll =
        Tools::sigmaOfTail(Tools::logTailOfTrials(line.logTail, method.trials(plan)));
    const bool isTurned = method.isTurned(plan);
    made.barycentric = isTurned ? frequency : frequency / stack.ratio;
    made.telescope = isTurned ? frequency * stack.ratio : frequency;
    return made;
}

PlotData plotOf(const std::vector<float> &sigma, const Sky::SkyPlan &plan, int days,
                const QStringList &source)
{
    if (plan.trials) {
        PlotData plot = Plot::periodPlot(plan.trials->periods, {sigma},
                                         {"stack of " + ReportText::counted(days, "day")});
        plot.yName = "significance";
        plot.yUnit = "sigma";
        plot.source = source;
        return plot;
    }
    const Sky::SkyMethod &method = Sky::methodOf(plan.product);
    const double perColumn = double(method.positions(plan)) / double(sigma.size());
    Days::FourierStack stack;
    stack.binWidth = method.axisAt(plan, perColumn) - method.axisAt(plan, 0);
    stack.sigma = sigma;
    stack.days = stack.allDays = days;
    PlotData plot = Plot::stackPlot(stack, source);
    plot.yName = "significance of the best harmonic sum";
    return plot;
}

// What a day shows at a frequency, by which days are compared.
double strengthOf(const Days::FourierDay &day, double frequency, int harmonics)
{
    if (const Days::FfaTrials *const trials = day.periodogram.trials.get())
        return double(day.periodogram.best[trials->nearestTo(1 / frequency)]);
    double sum = 0;
    for (int harmonic = 1; harmonic <= harmonics; ++harmonic) {
        const double bin = std::round(harmonic * frequency / day.binWidth);
        if (bin < double(day.powers.size()))
            sum += double(day.powers[std::size_t(bin)]);
    }
    return sum;
}

// Frequency on one day of what has another one on the mean of the days.
double frequencyOn(const Days::FourierDay &day, const CellDays &days, double telescope)
{
    const double mean = days.stacked->stack.ratio;
    const bool isKnown = std::isfinite(mean) && std::isfinite(day.ratio);
    return isKnown ? telescope / mean * day.ratio : telescope;
}

DayProfile profileOf(const RecordingSet &set, const DaySpectra &spectra, std::size_t number,
                     double frequency, const Jobs::Control &control)
{
    const Days::Day &day = spectra.plan.list.days[number];
    DayProfile profile;
    profile.begin = day.begin;
    const std::vector<Days::DaySeries> series =
        Days::seriesOfDay(set, day, spectra.parameters.points, spectra.plan.series, {}, control);
    const Days::PreparedSeries prepared =
        Days::preparedSeries(series.front().sums, series.back().sums, spectra.parameters.noise);
    const double period = 1 / (frequency * spectra.plan.list.tresolution); // samples
    if (!prepared.problem.isEmpty() || !(period >= 2))
        return profile;
    constexpr double fewest = 2;
    constexpr double most = 64;
    const int bins = int(std::clamp(std::floor(period), fewest, most));
    const Tools::FoldedProfile folded =
        Tools::fold(prepared.values.data(), int(prepared.values.size()), period, bins);
    for (std::size_t bin = 0; bin < folded.bins.size(); ++bin)
        profile.bins.push_back(folded.bins[bin] /
                               (prepared.sigma * std::sqrt(folded.variances[bin])));
    profile.snr = Tools::bestBoxcar(folded, prepared.sigma).snr;
    return profile;
}

} // namespace

QString placeText(const Sky::SkyPlan &plan, const SkyPlace &place)
{
    const Sky::SkyRay &ray = plan.rays[std::size_t(place.ray)];
    QString text = QString("Module %1, ray %2\nDispersion %3 pc/cm^3\nStretch %4 of %5")
                       .arg(ray.module)
                       .arg(ray.ray)
                       .arg(plan.dispersions[std::size_t(place.dispersion)])
                       .arg(place.start + 1)
                       .arg(plan.starts);
    if (ray.beam.isKnown() && !plan.passages.empty()) {
        const Sky::Passage &passage = plan.passages[plan.passages.size() / 2];
        const Tools::SkyPosition middle =
            plan.directionOf(ray, plan.middleOf(passage, place.start));
        text +=
            QString("\nRA %1, Dec %2")
                .arg(Tools::rightAscensionText(middle.alfa), Tools::declinationText(middle.delta));
    }
    return text;
}

ShownCell cellOf(const Sky::SkyStack &stack, const Sky::SkyPlan &plan, const SkyPlace &place,
                 const QStringList &source)
{
    const Sky::SkyMethod &method = Sky::methodOf(plan.product);
    const Sky::CellStack cell = stack.cell(place.ray, place.dispersion, place.start);
    ShownCell shown;
    shown.days = cell.days;
    if (cell.days == 0) {
        shown.plot.messageMode = true;
        shown.plot.message = "No day was added to this stack";
        return shown;
    }
    shown.plot = plotOf(method.significance(cell, plan), plan, cell.days,
                        source + placeText(plan, place).split('\n'));
    // Noise of many bins shows lines of less.
    const double highest = Tools::logNormalTail(lineThreshold) - std::log(method.trials(plan));
    for (const Sky::CellLine &line : method.linesOf(cell, plan, highest))
        shown.lines.push_back(lineOf(line, cell, plan));
    return shown;
}

double axisOf(const Sky::SkyPlan &plan, const Sky::SkyCandidate &candidate)
{
    const Sky::SkyMethod &method = Sky::methodOf(plan.product);
    const double frequency = method.isTurned(plan) ? candidate.barycentric : candidate.telescope;
    return plan.trials ? 1 / frequency : frequency;
}

Plot::Range rangeAround(const PlotAxis &axis, double value)
{
    constexpr double fewestColumns = 256;
    constexpr double shownHarmonics = 4.8;
    constexpr double shortestPeriod = 0.45; // so that half and triple are in sight
    constexpr double longestPeriod = 3.2;
    if (axis.values.empty())
        return {0, std::max(fewestColumns, shownHarmonics * Plot::axisIndex(axis, value))};
    return {Plot::axisIndex(axis, shortestPeriod * value),
            Plot::axisIndex(axis, longestPeriod * value)};
}

CellDays readCellDays(const RecordingSet &set, const Sky::SkyPlan &plan, const SkyPlace &place,
                      const std::vector<Days::Interference> &leftOut, const Jobs::Control &control)
{
    const auto spectra = std::make_shared<DaySpectra>();
    spectra->parameters = parametersOf(plan, place);
    spectra->plan = dayPlanOf(plan, place, spectra->parameters);
    const std::vector<Days::Day> &days = spectra->plan.list.days;
    checkMemory(*spectra);
    spectra->rays.assign(1, std::vector<Days::FourierDay>(days.size()));
    Jobs::runItems(int(days.size()), 0, control, [&](int item, const Jobs::Control &own) {
        Days::FourierDay &day = spectra->rays[0][std::size_t(item)];
        const Jobs::Ending ending = Jobs::runGuarded([&] {
            day = Days::readDay(set, spectra->plan, days[std::size_t(item)], spectra->parameters,
                                {}, own);
        });
        if (ending.kind == Jobs::Ending::Failed)
            day.problem = ending.problem;
    });
    if (control.isStopped() || days.empty())
        return {spectra, nullptr};
    StackRequest request;
    request.spectra = spectra;
    request.parameters = spectra->parameters;
    request.decided.assign(days.size(), {});
    request.leftOut = leftOut;
    return {spectra, stackSpectra(request)};
}

std::vector<Days::GrowthPoint> growthOf(const CellDays &days, double telescope, int harmonics)
{
    constexpr std::size_t most = 32; // points
    if (!days.stacked)
        return {};
    const std::vector<Days::FourierDay> &all = days.spectra->days();
    if (days.stacked->stack.ffa)
        return Days::foldedLine(all, days.stacked->choice, telescope).growth;
    std::vector<double> powers;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (days.stacked->choice.days[i])
            powers.push_back(strengthOf(all[i], frequencyOn(all[i], days, telescope), harmonics));
    }
    const std::size_t every = std::max<std::size_t>(1, powers.size() / most);
    std::vector<Days::GrowthPoint> growth;
    double sum = 0;
    for (std::size_t i = 0; i < powers.size(); ++i) {
        sum += powers[i];
        const std::size_t count = i + 1;
        if (count % every == 0 || count == powers.size())
            growth.push_back({int(count), Tools::sigmaOfPower(double(count) * harmonics, sum), 0});
    }
    for (Days::GrowthPoint &point : growth)
        point.expected = growth.back().sigma * std::sqrt(double(point.days) / growth.back().days);
    return growth;
}

std::vector<DayProfile> bestProfiles(const RecordingSet &set, const CellDays &days,
                                     double telescope, int harmonics, int most,
                                     const Jobs::Control &control)
{
    if (!days.stacked)
        return {};
    const std::vector<Days::FourierDay> &all = days.spectra->days();
    std::vector<std::pair<double, std::size_t>> order;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i].isWhole())
            order.emplace_back(strengthOf(all[i], frequencyOn(all[i], days, telescope), harmonics),
                               i);
    }
    std::sort(order.begin(), order.end(), std::greater<>());
    std::vector<DayProfile> profiles;
    for (const auto &[power, number] : order) {
        if (int(profiles.size()) >= most || control.isStopped())
            break;
        DayProfile profile = profileOf(set, *days.spectra, number,
                                       frequencyOn(all[number], days, telescope), control);
        if (!profile.bins.empty())
            profiles.push_back(std::move(profile));
    }
    return profiles;
}
