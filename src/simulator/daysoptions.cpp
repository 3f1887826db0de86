#include "simulator/daysoptions.h"

#include "simulator/optionreading.h"
#include "simulator/simulationoptions.h"

namespace Simulator {

namespace {

QString readSource(const QString &text, SkyPulsar &pulsar)
{
    return readFields("sky-pulsar", text,
                      {{"alfa", RightAscension{&pulsar.position.alfa}},
                       {"delta", Declination{&pulsar.position.delta}},
                       {"period", &pulsar.period},
                       {"width", &pulsar.width},
                       {"dm", &pulsar.dispersion},
                       {"strength", &pulsar.strength},
                       {"phase", &pulsar.phase},
                       {"scintillation", &pulsar.scintillation}});
}

QString readSource(const QString &text, Hum &hum)
{
    return readFields(
        "hum", text,
        {{"frequency", &hum.frequency}, {"strength", &hum.strength}, {"share", &hum.share}});
}

QString readStrip(const QCommandLineParser &parser, DaysSimulation &days)
{
    if (!parser.isSet("strip"))
        return {};
    Tools::SkyPosition middle;
    const QString problem =
        readFields("strip", parser.value("strip"),
                   {{"alfa", RightAscension{&middle.alfa}}, {"delta", Declination{&middle.delta}}});
    days.strip = middle;
    return problem;
}

QString readInterference(const QCommandLineParser &parser, DaysSimulation &days)
{
    return firstProblem(
        {readFields("beam", parser.value("beam"),
                    {{"ra", &days.beam.ra}, {"dec", &days.beam.delta}}),
         readFields("disturbed", parser.value("disturbed"),
                    {{"share", &days.disturbance.share}, {"strength", &days.disturbance.strength}}),
         readFields("storms", parser.value("storms"),
                    {{"share", &days.storm.share},
                     {"count", &days.storm.count},
                     {"strength", &days.storm.strength}})});
}

const QList<QCommandLineOption> &options()
{
    static const QList<QCommandLineOption> list = {
        {"site", "Number of the site, N0, N1, N2 or N4: names of files, and beams (2).", "number"},
        {"whole-hours", "Record from a full hour to a full hour; without it --points around the "
                        "passage, cut at full hours."},
        {"strip",
         "Place of the sky (alfa, delta, of 2000) that crosses the beams in the middle of each "
         "recording; without it the first sky pulsar.",
         "alfa=hh:mm:ss,delta=dd:mm:ss"},
        {"slide", "Largest time by which a day begins earlier or later (5).", "s"},
        {"missing", "Share of the days that have no recording (0).", "share"},
        {"gain-scatter", "Largest part by which a day's gain differs from the mean (0).", "part"},
        {"noise-scatter", "Largest part by which a day's noise differs from the mean (0).", "part"},
        {"beam",
         "Full width at half maximum of the beams, degrees on the sky: ra (0.8), dec (0.6).",
         "ra=number,dec=number"},
        {"sky-pulsar",
         "A pulsar at alfa and delta (of 2000) that drifts through the beams: period (0.7 s at "
         "the barycentre of the solar system), width (0.03 s), dm (0 pc/cm^3), strength (mean "
         "peak height in the middle of a beam, 0.05 sigma), phase (0), scintillation (standard "
         "deviation of the strength from day to day over its mean, 0). May be repeated.",
         "key=value,..."},
        {"hum",
         "A line in all rays: frequency (10 Hz at the telescope), strength (peak height, 0.1 "
         "sigma), share (of the days that have it, 1). May be repeated.",
         "key=number,..."},
        {"disturbed",
         "Days with a pulsed transmitter in all rays and a steady one in a band: share (0), "
         "strength (1 sigma).",
         "key=number,..."},
        {"storms", "Days with lightning: share (0), count (200), strength (the largest, 10 sigma).",
         "key=number,..."},
    };
    return list;
}

} // namespace

void addDaysOptions(QCommandLineParser &parser)
{
    parser.addOption({"days",
                      "Write so many days, each passage of a strip of the sky one day, into the "
                      "folder FILE. Other defaults then: --points 18000, --rays 1, --first-band "
                      "109.4, --begin 2015-04-01T00:00:00. The options from here "
                      "on need it.",
                      "number"});
    parser.addOptions(options());
}

QString readDaysOptions(const QCommandLineParser &parser, DaysSimulation &days)
{
    const auto readOne = [](const QString &text, auto &source) { return readSource(text, source); };
    days.wholeHours = days.wholeHours || parser.isSet("whole-hours");
    return firstProblem({
        readOptions(parser, days.recording),
        readOption(parser, "days", &days.days),
        readOption(parser, "site", &days.site),
        readStrip(parser, days),
        readOption(parser, "slide", &days.slide),
        readOption(parser, "missing", &days.missing),
        readOption(parser, "gain-scatter", &days.gainScatter),
        readOption(parser, "noise-scatter", &days.noiseScatter),
        readSources(parser.values("sky-pulsar"), days.pulsars, readOne),
        readSources(parser.values("hum"), days.hums, readOne),
        readInterference(parser, days),
    });
}

QString daysOptionGiven(const QCommandLineParser &parser)
{
    for (const QCommandLineOption &option : options()) {
        if (parser.isSet(option))
            return "--" + option.names().constFirst();
    }
    return {};
}

} // namespace Simulator
