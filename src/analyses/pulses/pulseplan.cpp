#include "analyses/pulses/pulseparameters.h"
#include "base/systemmemory.h"
#include "calc/banddelays.h"
#include "calc/boxcarsearch.h"
#include "calc/dispersiongrid.h"
#include "calc/pulsar/channelsoff.h"
#include "calc/pulsetrials.h"
#include "data/truenumbers.h"

#include <algorithm>
#include <cmath>

namespace Pulses {

namespace {

constexpr int fewestPoints = 64;
constexpr double mostDispersions = 20000;
constexpr double mostRays = 100000;
// Measured: what a sample of a band takes at each dispersion, and what each boxcar takes beside.
constexpr double secondsPerBand = 1.2e-11;
constexpr double secondsPerWidth = 9e-11;
constexpr double secondsPerSample = 1.2e-8; // preparing it

std::optional<QString> headerProblem(const ObservationData &header)
{
    const int bands = header.channels - 1;
    if (header.npoints < 1 || header.modules < 1 || header.rays < 1 || bands < 1)
        return "The recording holds no samples.";
    if (double(header.modules) * header.rays > mostRays)
        return QString("The passport announces %1 modules of %2 rays, too many to search.")
            .arg(header.modules)
            .arg(header.rays);
    if (!(header.tresolution > 0) || !std::isfinite(header.tresolution))
        return "The recording tells no time from one point to the next.";
    if (!Tools::areFrequencies(header.fbands, bands))
        return "The recording does not tell the frequencies of all bands.";
    return std::nullopt;
}

void chooseRays(const ObservationData &header, const PulseParameters &parameters, PulsePlan &plan)
{
    const auto isChosen = [](const std::vector<int> &chosen, int number) {
        return chosen.empty() || std::binary_search(chosen.begin(), chosen.end(), number);
    };
    const std::vector<int> modules = *numbersOf(parameters.modules);
    const std::vector<int> rays = *numbersOf(parameters.rays);
    for (int module = 0; module < header.modules; ++module) {
        for (int ray = 0; ray < header.rays; ++ray) {
            const RayPlace place = {module, ray, moduleNumber(header, module),
                                    rayNumber(header, ray)};
            if (isChosen(modules, place.moduleNumber) && isChosen(rays, place.rayNumber))
                plan.rays.push_back(place);
        }
    }
    if (plan.rays.empty())
        plan.problems.push_back(
            {"rays",
             QString("The recording has none of these rays. Its modules are %1, its rays %2.")
                 .arg(moduleNumbersText(header), rayNumbersText(header))});
}

void chooseStretch(const ObservationData &header, const PulseParameters &parameters,
                   PulsePlan &plan)
{
    const int complete = completePoints(header);
    plan.firstPoint = parameters.firstPoint;
    plan.points = std::max(0, complete - parameters.firstPoint);
    if (parameters.points > 0)
        plan.points = std::min(plan.points, parameters.points);
    if (plan.points < fewestPoints)
        plan.problems.push_back({"firstPoint", QString("From point %1 on there are %2 points. At "
                                                       "least %3 are needed.")
                                                   .arg(parameters.firstPoint)
                                                   .arg(plan.points)
                                                   .arg(fewestPoints)});
    plan.widths = widthsOf(parameters);
    const auto tooWide = std::upper_bound(plan.widths.begin(), plan.widths.end(), plan.points / 8);
    if (tooWide != plan.widths.end() && plan.points >= fewestPoints) {
        plan.remarks << QString("Boxcars from %1 points on are left out: the stretch is shorter "
                                "than 8 of them.")
                            .arg(*tooWide);
        plan.widths.erase(tooWide, plan.widths.end());
        if (plan.widths.empty())
            plan.problems.push_back({"widths", "All widths are longer than an eighth of the "
                                               "stretch."});
    }
}

void chooseDispersions(const ObservationData &header, const PulseParameters &parameters,
                       PulsePlan &plan)
{
    const double spread = Tools::delaySpread(header, plan.bands);
    plan.isDispersionKnown = spread > 0;
    if (!plan.isDispersionKnown) {
        plan.dispersions = {parameters.dispersionMin};
        plan.remarks << QString(plan.bands == 1 ? "One band" : "All bands have one frequency") +
                            ": dispersion cannot be measured; the search runs at one.";
        return;
    }
    const double longest = plan.points / 2.0 / spread; // whose delay takes half of the stretch
    double most = parameters.dispersionMax;
    if (parameters.dispersionMin > longest) {
        plan.problems.push_back(
            {"dispersionMin",
             QString("At %1 pc/cm^3 the bands are %2 points apart, the stretch has "
                     "%3.")
                 .arg(parameters.dispersionMin)
                 .arg(parameters.dispersionMin * spread, 0, 'f', 0)
                 .arg(plan.points)});
        return;
    }
    if (most > longest) {
        most = longest;
        plan.remarks << QString("Dispersions above %1 pc/cm^3 are left out: their delays over the "
                                "bands take more than half of the stretch.")
                            .arg(longest, 0, 'f', 1);
    }
    const double step = parameters.dispersionStep > 0
                            ? parameters.dispersionStep
                            : Tools::dispersionStep(header, plan.bands, plan.widths.front());
    if ((most - parameters.dispersionMin) / step > mostDispersions) {
        plan.problems.push_back(
            {"dispersionStep", QString("More than %1 dispersions. Take a larger "
                                       "step or a narrower range.")
                                   .arg(mostDispersions)});
        return;
    }
    plan.dispersions = Tools::dispersionGrid(parameters.dispersionMin, most, step);
    plan.longestDelay = int(std::ceil(plan.dispersions.back() * spread));
}

void estimate(const ObservationData &header, const PulseParameters &parameters, PulsePlan &plan)
{
    const double step = plan.dispersions.size() > 1 ? plan.dispersions[1] - plan.dispersions[0] : 0;
    const Tools::PulseTrials trials = {double(plan.points) * double(plan.rays.size()), plan.widths,
                                       int(plan.dispersions.size()),
                                       step * Tools::delaySpread(header, plan.bands)};
    plan.threshold = parameters.threshold > 0
                         ? parameters.threshold
                         : Tools::pulseThreshold(trials, parameters.falseAlarms);
    plan.expected = Tools::expectedPulses(trials, plan.threshold);
    plan.trials = Tools::pulseTrials(trials, plan.threshold);
    const double sums = double(plan.points) * double(plan.dispersions.size());
    plan.seconds =
        double(plan.rays.size()) *
        (sums * (plan.bands * secondsPerBand + double(plan.widths.size()) * secondsPerWidth) +
         double(plan.points) * plan.bands * secondsPerSample);
    const Tools::DispersionTree tree(header, plan.bands, plan.dispersions);
    // Beside the rows that are searched there is the record in which S/N is told again.
    plan.bytes = 2 * Tools::boxcarBytes(tree, plan.bands, plan.points, plan.widths);
}

} // namespace

PulsePlan planPulses(const ObservationData &header, const PulseParameters &parameters)
{
    PulsePlan plan;
    plan.problems = problemsOf(parameters);
    if (const auto problem = headerProblem(header))
        plan.problems.push_back({{}, *problem});
    if (!plan.problems.empty())
        return plan;
    plan.bands = header.channels - 1;
    if (!parameters.channelsOff.isEmpty()) {
        const auto off = channelsOff(parameters.channelsOff, plan.bands);
        if (!off)
            plan.problems.push_back(
                {"leaveOutChannels", QString("\"%1\" is no list of channels from 1 "
                                             "to %2, as 4,21.")
                                         .arg(parameters.channelsOff)
                                         .arg(plan.bands)});
        else if (std::all_of(off->begin(), off->end(), [](bool is) { return is; }))
            plan.problems.push_back({"leaveOutChannels", "All channels are off."});
    }
    chooseRays(header, parameters, plan);
    chooseStretch(header, parameters, plan);
    if (!plan.problems.empty())
        return plan;
    chooseDispersions(header, parameters, plan);
    if (!plan.problems.empty())
        return plan;
    estimate(header, parameters, plan);
    if (parameters.zeroDm)
        plan.remarks << "The mean over the bands is subtracted: pulses whose delay over the bands "
                        "is shorter than they are wide lose most of their S/N.";
    return plan;
}

QString planText(const PulsePlan &plan)
{
    const auto counted = [](std::size_t count, const QString &what) {
        return QString("%1 %2%3").arg(count).arg(what, count == 1 ? "" : "s");
    };
    return QString("%1 x %2 in %3, threshold %4, %5 of noise expected, about %6 s, %7")
        .arg(counted(plan.dispersions.size(), "dispersion"), counted(plan.widths.size(), "width"),
             counted(plan.rays.size(), "ray"))
        .arg(plan.threshold, 0, 'f', 2)
        .arg(plan.expected, 0, 'g', 2)
        .arg(plan.seconds, 0, 'g', 2)
        .arg(sizeText(plan.bytes));
}

} // namespace Pulses
