#include "analyses/profiles/profileparameters.h"

#include "analyses/days/fourierdays.h"
#include "coords/barycentre.h"
#include "coords/pulsarcatalogue.h"

#include <algorithm>
#include <cmath>

namespace Profiles {

namespace {

using P = ProfileParameters;

constexpr int fewestBins = 16;
constexpr int mostBins = 1024;
constexpr double hzPerMhz = 1e6;

const Tools::KnownPulsar *sourceIn(const P &parameters)
{
    return parameters.source.isEmpty()
               ? nullptr
               : Tools::findPulsar(Tools::knownPulsars(), parameters.source);
}

bool isTyped(const P &parameters)
{
    return parameters.period > 0 || parameters.frequency > 0;
}

} // namespace

std::vector<FieldProblem> problemsOf(const P &parameters)
{
    std::vector<FieldProblem> problems;
    const int bins = parameters.bins;
    if (bins < fewestBins || bins > mostBins || (bins & (bins - 1)) != 0)
        problems.push_back({"bins", QString("%1 bins cannot be taken. Allowed: 16, 32, 64, 128, "
                                            "256, 512 or 1024.")
                                        .arg(bins)});
    if (parameters.period > 0 && parameters.frequency > 0)
        problems.push_back({"period", "Give the period or the frequency, not both."});
    if (isTyped(parameters) && !parameters.parFile.isEmpty())
        problems.push_back({"parFile", "Give a period or a .par file, not both."});
    for (const auto &[name, value] :
         {std::pair("period", parameters.period), std::pair("frequency", parameters.frequency),
          std::pair("epoch", parameters.epoch), std::pair("sefd", parameters.sefd),
          std::pair("temperature", parameters.temperature), std::pair("gain", parameters.gain)}) {
        if (!(value >= 0) || !std::isfinite(value))
            problems.push_back({name, "This must be a number and not below 0."});
    }
    if ((parameters.temperature > 0) != (parameters.gain > 0))
        problems.push_back({"gain", "Temperature and gain are needed both, or neither."});
    const auto &choices = [] {
        for (const ProfileField &field : profileFields()) {
            if (field.option == "--align")
                return field.choices;
        }
        return std::vector<FieldChoice>();
    }();
    if (std::none_of(choices.begin(), choices.end(),
                     [&](const FieldChoice &choice) { return choice.value == parameters.align; }))
        problems.push_back(
            {"align", QString("Days cannot be aligned by \"%1\".").arg(parameters.align)});
    if (!isTyped(parameters) && parameters.parFile.isEmpty() && parameters.source.isEmpty())
        problems.push_back({"period", "Give the period, the frequency, a .par file, or a source of "
                                      "the catalogue."});
    return problems;
}

namespace {

// Reads the ephemeris that the parameters name.
void findEphemeris(const P &parameters, ProfilePlan &plan)
{
    Ephemeris &made = plan.ephemeris;
    if (!parameters.parFile.isEmpty()) {
        const ReadEphemeris read = readEphemeris(parameters.parFile);
        if (!read.problem.isEmpty())
            plan.problems.push_back({"parFile", read.problem});
        made = read.ephemeris;
        if (!made.ignored.isEmpty())
            plan.remarks << parameters.parFile + ": not used: " + made.ignored.join(", ") + ".";
        return;
    }
    if (isTyped(parameters)) {
        made.frequency = parameters.period > 0 ? 1 / parameters.period : parameters.frequency;
        made.derivative = parameters.derivative;
        made.epoch = parameters.epoch;
        return;
    }
    const Tools::KnownPulsar *const pulsar = sourceIn(parameters);
    if (!pulsar || !std::isfinite(pulsar->frequency)) {
        plan.problems.push_back(
            {"source",
             QString("The catalogue has no period of \"%1\". Give one.").arg(parameters.source)});
        return;
    }
    if (!pulsar->binary.isEmpty())
        plan.problems.push_back(
            {"source", QString("%1 is in an orbit (model %2), which changes its period by the day. "
                               "Give the period on the day.")
                           .arg(pulsar->name, pulsar->binary)});
    made.frequency = pulsar->frequency;
    made.derivative = pulsar->derivative;
    made.epoch = pulsar->epoch;
}

double dispersionOf(const P &parameters, const Ephemeris &ephemeris)
{
    if (parameters.dispersion >= 0)
        return parameters.dispersion;
    if (ephemeris.dispersion)
        return *ephemeris.dispersion;
    const Tools::KnownPulsar *const pulsar = sourceIn(parameters);
    return pulsar && std::isfinite(pulsar->dispersion) ? pulsar->dispersion : 0;
}

// The place that a file gives is that of the source where no start was asked for.
void takePlace(const Ephemeris &ephemeris, P &parameters)
{
    const bool hasStart = !parameters.source.isEmpty() || !parameters.alfa.isEmpty() ||
                          !parameters.siderealTime.isEmpty() || !parameters.utc.isEmpty();
    if (!ephemeris.position || hasStart || (parameters.module > 0 && parameters.ray > 0))
        return;
    parameters.alfa = Tools::rightAscensionText(ephemeris.position->alfa);
    parameters.delta = Tools::declinationText(ephemeris.position->delta);
}

// A period typed as so many samples is as long but for its last digit.
constexpr double rounding = 1e-9;

void checkPeriod(ProfilePlan &plan)
{
    const double samples = 1 / (plan.ephemeris.frequency * plan.days.header.tresolution);
    const QString told = QString("The period of %1 s is %2 samples long")
                             .arg(1 / plan.ephemeris.frequency, 0, 'g', 8)
                             .arg(samples, 0, 'g', 5);
    if (samples < 2 * (1 - rounding)) {
        plan.problems.push_back({"period", told + "; it must be two at least."});
    } else if (samples > plan.days.choice.points * (1 + rounding)) {
        plan.problems.push_back(
            {"period", told + QString(", the stretch %1: take more points, or a shorter period.")
                                  .arg(plan.days.choice.points)});
    } else if (samples < plan.folding.bins * (1 - rounding)) {
        int possible = mostBins;
        while (possible > samples * (1 + rounding))
            possible /= 2;
        plan.problems.push_back(
            {"bins", told + QString(", fewer than %1 bins. ").arg(plan.folding.bins) +
                         (possible >= fewestBins
                              ? QString("Take %1 bins or fewer.").arg(possible)
                              : QString("A profile has %1 at least: take a recording with shorter "
                                        "samples.")
                                    .arg(fewestBins))});
    }
}

// The begins of files in whole seconds are rounded down or not, which nobody tells.
double beginErrorOf(const P &parameters, const RecordingSet &set)
{
    if (parameters.beginError >= 0)
        return parameters.beginError;
    const bool areWhole =
        std::all_of(set.entries.begin(), set.entries.end(), [](const RecordingEntry &entry) {
            return !entry.begin.isValid() || entry.begin.time().msec() == 0;
        });
    return areWhole ? 1 / std::sqrt(12.0) : 0;
}

} // namespace

ProfilePlan planProfiles(const RecordingSet &set, const P &asked)
{
    ProfilePlan plan;
    plan.problems = problemsOf(asked);
    if (plan.problems.empty())
        findEphemeris(asked, plan);
    P &parameters = plan.parameters = asked;
    parameters.dispersion = dispersionOf(asked, plan.ephemeris);
    parameters.beginError = beginErrorOf(asked, set);
    P placed = parameters;
    takePlace(plan.ephemeris, placed);
    Days::FourierDaysParameters days;
    static_cast<Days::DayPlace &>(days) = placed;
    days.dispersion = parameters.dispersion;
    days.noise = parameters.noise;
    plan.days = Days::planDays(set, days);
    plan.problems.insert(plan.problems.end(), plan.days.problems.begin(), plan.days.problems.end());
    plan.remarks += plan.days.remarks;
    if (!plan.problems.empty() || plan.days.list.days.empty())
        return plan;
    if (plan.ephemeris.position && !plan.days.source)
        plan.days.source = plan.ephemeris.position;
    parameters.module = plan.days.choice.module;
    parameters.ray = plan.days.choice.ray;
    plan.folding = {parameters.dispersion, parameters.noise, parameters.removesJumps,
                    parameters.bins};
    checkPeriod(plan);
    if (plan.ephemeris.epoch == 0) {
        const QDateTime begin = plan.days.list.days.front().begin;
        plan.ephemeris.epoch =
            std::round(Tools::modifiedJulianDay(begin)); // any epoch does for one period
    }
    return plan;
}

StackChoice choiceOf(const P &parameters)
{
    StackChoice choice;
    choice.alignment = parameters.align == "template" ? Alignment::Template
                       : parameters.align == "none"   ? Alignment::None
                                                      : Alignment::Ephemeris;
    choice.normalises = parameters.normalise;
    choice.weights = parameters.weight;
    choice.leastSnr = parameters.leastSnr;
    choice.harmonics = parameters.harmonics;
    choice.beginError = parameters.beginError;
    return choice;
}

double sefdOf(const P &parameters)
{
    if (parameters.sefd > 0)
        return parameters.sefd;
    return parameters.gain > 0 ? parameters.temperature / parameters.gain : 0;
}

double fluxDensity(double snr, double sefd, double width, double bandwidth, double seconds,
                   int polarisations)
{
    return snr * sefd / std::sqrt(polarisations * seconds * bandwidth) *
           std::sqrt(width / (1 - width));
}

double bandwidthOf(const ProfileDay &day)
{
    const auto [low, high] = std::minmax_element(day.frequencies.begin(), day.frequencies.end());
    return day.bands() < 2 ? 0 : (*high - *low) / (day.bands() - 1) * day.usedBands() * hzPerMhz;
}

} // namespace Profiles
