#include "analyses/pulses/pulseparameters.h"
#include "calc/pulsar/pulsarfields.h"

#include <cmath>
#include <set>

// The parameters of a search for single pulses as forms, options and headers have them.

namespace Pulses {

namespace {

using P = PulseParameters;

constexpr char manual[] =
    "Searches recordings for single dispersed pulses: RRATs, bursts, the bright pulses of\n"
    "pulsars. Every band loses its level and is told in units of its noise; interference in\n"
    "single channels is masked and listed. The sums of the bands at all dispersions are searched\n"
    "with boxcars, each in units of the noise of its own series. What lies above the threshold,\n"
    "which follows from the allowed false alarms, is joined to pulses over time, dispersion, "
    "width\n"
    "and rays. Of each are told: dispersion, time, width with errors, position, the known pulsar\n"
    "if any, and a verdict with its reason; nothing is left out. A table of each recording. For\n"
    "pulses of many dates under each other, and sources that repeat, see repeats.";

constexpr char examples[] =
    "Examples: all rays of a recording; two rays up to 100 pc/cm^3, as CSV:\n"
    "  zrt-batch pulses demo.pnt\n"
    "  zrt-batch pulses --rays 3,7 --dm-max 100 --format csv -o results demo.pnt";

constexpr double mostDispersion = 100000; // pc/cm^3

PulseField field(const FieldText &text, FieldRef (*of)(P &))
{
    PulseField made{text, of};
    made.recorded = Recorded::Always;
    return made;
}

std::vector<PulseField> placeFields()
{
    return {field({"modules", "--modules", "LIST", "Numbers of the modules, as 1,3. Default: all.",
                   "modules"},
                  refOf<&P::modules>),
            field({"rays", "--rays", "LIST", "Numbers of the rays, as 1,7. Default: all.", "rays"},
                  refOf<&P::rays>),
            field(ranged({"firstPoint", "--point", "POINT", "First point that is searched.",
                          "first_point"},
                         0, 2147483647),
                  refOf<&P::firstPoint>),
            field(ranged({"points", "--count", "N", "Points that are searched; 0: all.", "count"},
                         0, 2147483647),
                  refOf<&P::points>)};
}

std::vector<PulseField> trialFields()
{
    return {field(ranged({"dispersionMin", "--dm-min", "DM", "Lowest dispersion, pc/cm^3.",
                          "dispersion_min", "pc/cm^3"},
                         0, mostDispersion),
                  refOf<&P::dispersionMin>),
            field(ranged({"dispersionMax", "--dm-max", "DM", "Highest dispersion, pc/cm^3.",
                          "dispersion_max", "pc/cm^3"},
                         0, mostDispersion),
                  refOf<&P::dispersionMax>),
            field(ranged({"dispersionStep", "--dm-step", "DM",
                          "Step of dispersion, pc/cm^3; 0: that loses at most 8 % of the narrowest "
                          "width.",
                          "dispersion_step", "pc/cm^3"},
                         0, mostDispersion),
                  refOf<&P::dispersionStep>),
            field({"widths", "--widths", "LIST", "Boxcars, points.", "widths"}, refOf<&P::widths>),
            field(ranged({"falseAlarms", "--false-alarms", "N",
                          "Pulses that noise is expected to give in a recording.", "false_alarms"},
                         1e-9, 1e6),
                  refOf<&P::falseAlarms>),
            field(ranged({"threshold", "--threshold", "SNR",
                          "S/N in place of the one that follows from the false alarms; 0: that.",
                          "threshold"},
                         0, 1000),
                  refOf<&P::threshold>)};
}

std::vector<PulseField> interferenceFields()
{
    return {field(pulsarField("--channels-off"), refOf<&P::channelsOff>),
            field({"mask", "--no-mask", "", "Do not mask interference in single channels.", "mask"},
                  refOf<&P::mask>),
            field({"zeroDm", "--zero-dm", "",
                   "Subtract the mean over the bands from every point; this takes from pulses of "
                   "low dispersion too.",
                   "zero_dm"},
                  refOf<&P::zeroDm>),
            field({"clockOffset", "--clock-offset", "SECONDS",
                   "Seconds by which the recordings' clock is ahead of UTC.", "clock_offset", "s"},
                  refOf<&P::clockOffset>)};
}

const std::vector<PulseField> &pulseFields()
{
    static const std::vector<PulseField> all = [] {
        std::vector<PulseField> fields = placeFields();
        for (const std::vector<PulseField> &more : {trialFields(), interferenceFields()})
            fields.insert(fields.end(), more.begin(), more.end());
        return fields;
    }();
    return all;
}

void addRangeProblems(const PulseParameters &parameters, std::vector<FieldProblem> &problems)
{
    for (const PulseField &one : pulseFields()) {
        const FieldValue value = one.valueIn(parameters);
        const double number = std::holds_alternative<int>(value)      ? std::get<int>(value)
                              : std::holds_alternative<double>(value) ? std::get<double>(value)
                                                                      : 0;
        const bool hasNumber =
            std::holds_alternative<int>(value) || std::holds_alternative<double>(value);
        if (hasNumber && (!std::isfinite(number) || number < one.least || number > one.most))
            problems.push_back({one.name, QString("%1 cannot be taken. Allowed: %2 to %3.")
                                              .arg(number)
                                              .arg(one.least)
                                              .arg(one.most)});
    }
}

} // namespace

const PulseAnalysis &pulseAnalysis()
{
    static const PulseAnalysis only = [] {
        PulseAnalysis analysis;
        analysis.name = "singlePulses";
        analysis.label = "Single pulses";
        analysis.command = "pulses";
        analysis.manual = manual;
        analysis.examples = examples;
        for (const PulseField &one : pulseFields())
            analysis.fields.push_back(&one);
        return analysis;
    }();
    return only;
}

std::optional<std::vector<int>> numbersOf(const QString &text)
{
    std::set<int> numbers;
    for (const QString &item : text.split(',', Qt::SkipEmptyParts)) {
        bool isNumber = false;
        const int number = item.trimmed().toInt(&isNumber);
        if (!isNumber || number < 1)
            return std::nullopt;
        numbers.insert(number);
    }
    return std::vector<int>(numbers.begin(), numbers.end());
}

std::vector<int> widthsOf(const PulseParameters &parameters)
{
    return numbersOf(parameters.widths).value_or(std::vector<int>());
}

std::vector<FieldProblem> problemsOf(const PulseParameters &parameters)
{
    std::vector<FieldProblem> problems;
    addRangeProblems(parameters, problems);
    if (parameters.dispersionMax < parameters.dispersionMin)
        problems.push_back(
            {"dispersionMax", "The highest dispersion cannot lie below the lowest one."});
    const auto checkList = [&](const QString &name, const QString &text) {
        if (!numbersOf(text))
            problems.push_back(
                {name, QString("\"%1\" is no list of numbers from 1 on, as 1,3,7.").arg(text)});
    };
    checkList("modules", parameters.modules);
    checkList("rays", parameters.rays);
    checkList("widths", parameters.widths);
    const std::vector<int> widths = widthsOf(parameters);
    if (widths.empty() || widths.size() > mostWidths || widths.back() > widestBoxcar)
        problems.push_back({"widths", QString("Give 1 to %1 widths of at most %2 points.")
                                          .arg(mostWidths)
                                          .arg(widestBoxcar)});
    return problems;
}

} // namespace Pulses
