#include "analyses/days/dayplace.h"
#include "analyses/timing/periodparameters.h"
#include "base/shellword.h"

#include <cmath>

// The parameters of the search for a period as forms, options and headers have them.

namespace Timing {

namespace {

using P = PeriodParameters;

constexpr char manual[] =
    "The period of pulses from their arrival times, though most turns bring none: \"Period from\n"
    "arrival times\" of the workbench. Times come from a table that pulses or profile wrote, from "
    "a\n"
    ".tim file, from a list (modified Julian days, seconds, or date and time, with an error in\n"
    "seconds behind it) or from --times. UTC is turned to the barycentre where a table or an "
    "option\n"
    "tells the direction. For every period the times get whole turns and least squares the rest;\n"
    "the scatter over the period is compared with what random times of the same spread give, and "
    "a\n"
    "period is claimed only where those give one as good in less than --chance of all cases. "
    "Turns\n"
    "are counted within a day; days are connected where the error of the period stays below a "
    "tenth\n"
    "of a turn, and it is said where not.";

constexpr char examples[] =
    "Examples: times that are typed, of a day and in seconds; the pulses of a source:\n"
    "  zrt-batch period --mjd 59607 --times .3866952756,.3930600505,.4015472327,.4185223751,"
    ".4286862792,.4470411329,.4591301745,.4689014586\n"
    "  zrt-batch period --period-min 1 --tag s --times 12.58,20.09,30.08,57.61,82.60,112.62\n"
    "  zrt-batch period --source B0329+54 --plot png demo.pnt.pulses.txt";

PeriodField field(const FieldText &text, FieldRef (*of)(P &))
{
    PeriodField made{text, of};
    made.recorded = Recorded::Always;
    return made;
}

std::vector<PeriodField> timeFields()
{
    PeriodField unit = field({"unit", "--unit", "UNIT",
                              "What plain numbers are; by itself days where all are of 1941 to "
                              "2132.",
                              "unit"},
                             refOf<&P::unit>);
    unit.choices = {{automatic, "unitAuto", "By itself"},
                    {daysUnit, "unitMjd", "MJD"},
                    {secondsUnit, "unitSeconds", "Seconds"}};
    return {
        field({"times", "--times", "LIST",
               "Times in place of a file, with commas or semicolons between them.", "times"},
              refOf<&P::times>),
        unit,
        field(ranged({"mjd", "--mjd", "MJD", "Day that plain numbers count from; 0: none.", "mjd"},
                     0, 100000),
              refOf<&P::mjd>),
        field({"source", "--source", "NAME",
               "Known pulsar in whose direction times are turned to the barycentre.", "source"},
              refOf<&P::source>),
        field({"alfa", "--ra", "RA", "Right ascension of 2000 of the direction, with --dec.", "ra"},
              refOf<&P::alfa>),
        field({"delta", "--dec", "DEC", "Declination of 2000, with --ra.", "dec"},
              refOf<&P::delta>),
        field({"earthMotion", "--no-earth-motion", "", "Leave the times as they stand.",
               "earth_motion"},
              refOf<&P::earthMotion>),
    };
}

std::vector<PeriodField> searchFields()
{
    return {
        field(
            ranged({"periodMin", "--period-min", "SECONDS", "Shortest period.", "period_min", "s"},
                   0.0001, 10000),
            refOf<&P::periodMin>),
        field(ranged({"periodMax", "--period-max", "SECONDS",
                      "Longest period; at most half of the time from first to last of a day.",
                      "period_max", "s"},
                     0.0001, 100000),
              refOf<&P::periodMax>),
        field(ranged({"chance", "--chance", "SHARE",
                      "Share of sets of random times of which a period may be claimed.", "chance"},
                     1e-9, 0.5),
              refOf<&P::chance>),
        field(ranged({"simulated", "--simulated", "N",
                      "Sets of random times of the same spread that are searched as well.",
                      "simulated"},
                     20, 100000),
              refOf<&P::simulated>),
        field(ranged({"dayGap", "--day-gap", "HOURS",
                      "Times farther apart are of different days, between which turns are not "
                      "counted at first.",
                      "day_gap", "h"},
                     0.01, 1e6),
              refOf<&P::dayGap>),
    };
}

Days::DayPlace placeOf(const P &parameters)
{
    Days::DayPlace place;
    place.module = 1;
    place.ray = 1;
    place.source = parameters.source;
    place.alfa = parameters.alfa;
    place.delta = parameters.delta;
    return place;
}

} // namespace

const std::vector<PeriodField> &periodFields()
{
    static const std::vector<PeriodField> all = [] {
        std::vector<PeriodField> fields = timeFields();
        const std::vector<PeriodField> more = searchFields();
        fields.insert(fields.end(), more.begin(), more.end());
        return fields;
    }();
    return all;
}

const PeriodAnalysis &periodAnalysis()
{
    static const PeriodAnalysis analysis = [] {
        PeriodAnalysis made;
        made.name = "periodFromArrivalTimes";
        made.label = "Period from arrival times";
        made.command = "period";
        made.manual = manual;
        made.examples = examples;
        for (const PeriodField &field : periodFields())
            made.fields.push_back(&field);
        return made;
    }();
    return analysis;
}

std::vector<FieldProblem> problemsOf(const P &parameters)
{
    std::vector<FieldProblem> problems = Days::problemsOf(placeOf(parameters));
    for (const PeriodField &field : searchFields()) {
        const FieldValue value = field.valueIn(parameters);
        const double number =
            std::holds_alternative<int>(value) ? std::get<int>(value) : std::get<double>(value);
        if (!(number >= field.least && number <= field.most))
            problems.push_back({field.name, QString("%1 is outside of %2 to %3.")
                                                .arg(number)
                                                .arg(field.least)
                                                .arg(field.most)});
    }
    if (problems.empty() && !(parameters.periodMin < parameters.periodMax))
        problems.push_back({"periodMax", "The longest period must be above the shortest one."});
    if (!(parameters.mjd >= 0) || !std::isfinite(parameters.mjd))
        problems.push_back({"mjd", "The day must be a number and not below 0."});
    return problems;
}

std::optional<Tools::SkyPosition> directionOf(const P &parameters)
{
    return Days::sourceOf(placeOf(parameters));
}

ArrivalTimes turnedTimes(ArrivalTimes times, const P &parameters)
{
    if (!times.problem.isEmpty() || times.scale != TimeScale::Utc || !parameters.earthMotion)
        return times;
    std::optional<Tools::SkyPosition> direction = directionOf(parameters);
    if (!direction)
        direction = times.position;
    if (direction)
        turnToBarycentre(times, *direction);
    else
        times.remarks << "The direction is not known: times and period are those at the telescope.";
    return times;
}

ArrivalTimes timesFor(const P &parameters, const QByteArray &file)
{
    const QByteArray typed = parameters.times.toUtf8().replace(',', '\n').replace(';', '\n');
    return turnedTimes(parseTimes(typed.isEmpty() ? file : typed, parameters.unit, parameters.mjd),
                       parameters);
}

QString periodCommand(const P &parameters, const QString &file)
{
    QStringList words = {"zrt-batch", periodAnalysis().command};
    words += Tools::optionWords(periodAnalysis(), parameters);
    if (parameters.times.isEmpty())
        words << shellWord(file);
    return words.join(' ');
}

} // namespace Timing
