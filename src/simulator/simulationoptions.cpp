#include "simulator/simulationoptions.h"

#include "simulator/optionreading.h"

#include <QStringList>

namespace Simulator {

namespace {

// The fields of one source, in the words of the command line.
QString readSource(const QString &text, PulseTrain &train)
{
    return readFields("pulsar", text,
                      {{"module", &train.module},
                       {"ray", &train.ray},
                       {"period", &train.period},
                       {"width", &train.width},
                       {"dm", &train.dispersion},
                       {"strength", &train.strength},
                       {"phase", &train.phase}});
}

QString readSource(const QString &text, SinglePulse &pulse)
{
    return readFields("pulse", text,
                      {{"module", &pulse.module},
                       {"ray", &pulse.ray},
                       {"time", &pulse.time},
                       {"width", &pulse.width},
                       {"dm", &pulse.dispersion},
                       {"strength", &pulse.strength},
                       {"scattering", &pulse.scattering},
                       {"beam", &pulse.beam},
                       {"sweep", &pulse.sweep}});
}

QString readSource(const QString &text, Rrat &rrat)
{
    return readFields("rrat", text,
                      {{"module", &rrat.pulse.module},
                       {"ray", &rrat.pulse.ray},
                       {"time", &rrat.pulse.time},
                       {"width", &rrat.pulse.width},
                       {"dm", &rrat.pulse.dispersion},
                       {"strength", &rrat.pulse.strength},
                       {"scattering", &rrat.pulse.scattering},
                       {"beam", &rrat.pulse.beam},
                       {"period", &rrat.period},
                       {"share", &rrat.share},
                       {"scatter", &rrat.scatter}});
}

QString readSource(const QString &text, Lightning &lightning)
{
    return readFields("lightning", text,
                      {{"count", &lightning.count},
                       {"strength", &lightning.strength},
                       {"width", &lightning.width}});
}

// A train in all rays; its module, ray and dispersion are not used.
QString readRadar(const QString &text, PulseTrain &train)
{
    return readFields("radar", text,
                      {{"period", &train.period},
                       {"width", &train.width},
                       {"strength", &train.strength},
                       {"phase", &train.phase}});
}

QString readSource(const QString &text, NarrowBandLine &line)
{
    return readFields("line", text,
                      {{"module", &line.module},
                       {"ray", &line.ray},
                       {"band", &line.band},
                       {"strength", &line.strength},
                       {"begin", &line.begin},
                       {"end", &line.end}});
}

QString readSource(const QString &text, Impulses &impulses)
{
    return readFields("impulses", text,
                      {{"module", &impulses.module},
                       {"ray", &impulses.ray},
                       {"count", &impulses.count},
                       {"strength", &impulses.strength}});
}

QString readSource(const QString &text, GainStep &step)
{
    return readFields("gain-step", text,
                      {{"module", &step.module},
                       {"ray", &step.ray},
                       {"point", &step.point},
                       {"factor", &step.factor}});
}

QString readBands(const QCommandLineParser &parser, Simulation &simulation)
{
    if (parser.isSet("band-list")) {
        std::vector<double> bands;
        for (const QString &item : parser.value("band-list").split(' ', Qt::SkipEmptyParts)) {
            bool good = false;
            const double frequency = item.toDouble(&good);
            if (!good)
                return QString("--band-list: \"%1\" is not a frequency.").arg(item);
            bands.push_back(frequency);
        }
        simulation.fbands = bands;
        return {};
    }
    if (!parser.isSet("bands") && !parser.isSet("first-band") && !parser.isSet("band-spacing"))
        return {};
    const std::vector<double> given = simulation.fbands;
    int count = int(given.size());
    double first = given.front();
    double spacing = count > 1 ? given[1] - first : 0;
    const QString problem =
        firstProblem({readOption(parser, "bands", &count), readOption(parser, "first-band", &first),
                      readOption(parser, "band-spacing", &spacing)});
    if (problem.isEmpty())
        simulation.fbands = evenBands(first, spacing, count);
    return problem;
}

QString readBegin(const QCommandLineParser &parser, Simulation &simulation)
{
    if (!parser.isSet("begin"))
        return {};
    QDateTime begin = QDateTime::fromString(parser.value("begin"), "yyyy-MM-ddTHH:mm:ss");
    begin.setTimeSpec(Qt::UTC);
    if (!begin.isValid())
        return QString("--begin: \"%1\" is not a time like 2015-04-01T11:58:47.")
            .arg(parser.value("begin"));
    simulation.beginTime = begin;
    return {};
}

} // namespace

void addOptions(QCommandLineParser &parser)
{
    parser.addOptions({
        {"points", "Samples per channel (40000).", "number"},
        {"modules", "Receiver modules (1).", "number"},
        {"first-module", "Number of the first module (1).", "number"},
        {"rays", "Rays per module (8).", "number"},
        {"bands", "Frequency bands (32).", "number"},
        {"first-band", "Centre of the first band (120).", "MHz"},
        {"band-spacing", "From one band to the next (0.078125); negative: descending.", "MHz"},
        {"band-list", "Centres of all bands, blanks between; instead of the three above.", "MHz"},
        {"step", "From one sample to the next (12.4928).", "ms"},
        {"begin", "Time of the first sample, UTC (2015-04-01T12:00:00).", "time"},
        {"seed", "Another number gives other noise, drift and impulses (1).", "number"},
        {"level", "Mean of the receiver noise, in units of the file (100).", "value"},
        {"sigma",
         "Standard deviation of one sample of one band (1). All strengths are "
         "multiples of it.",
         "value"},
        {"no-noise", "Leave out the receiver noise: level, drift and sources only."},
        {"drift", "Largest deviation of a ray's level, in sigmas (0).", "sigmas"},
        {"drift-time", "Time in which the level turns (100).", "s"},
        {"pulsar",
         "A pulsar: period (1 s), width (full width at half maximum, 0.05 s), dm (0 "
         "pc/cm^3), strength (peak height, 1 sigma), phase (part of a period from the "
         "begin to a peak in the last band, 0), module (1), ray (1). May be repeated.",
         "key=number,..."},
        {"pulse",
         "A single pulse: time (s from the begin to the peak in the last band, 0), width "
         "(0.05 s), dm (0), strength (1), scattering (s in the last band, 0), beam (full width in "
         "rays: the next ones have it too; 0), sweep (MHz/s, of a transmitter that moves through "
         "the bands; 0), module, ray. May be repeated.",
         "key=number,..."},
        {"rrat",
         "A rotating transient: period (4 s), share (of the turns that have a pulse, 0.05), "
         "scatter "
         "(part by which strengths differ, 0.5), and time, width, dm, strength, scattering, beam, "
         "module, ray as of a pulse. May be repeated.",
         "key=number,..."},
        {"lightning",
         "Pulses at random times in all bands of all rays: count (0), strength (of the strongest, "
         "5), width (0.02 s). May be repeated.",
         "key=number,..."},
        {"radar",
         "Pulses in all bands of all rays: period (1 s), width (0.05 s), strength (1), phase (0). "
         "May be repeated.",
         "key=number,..."},
        {"line",
         "A narrow-band transmitter: band (from 1), strength (1), begin and end (s; the "
         "whole recording), module, ray. May be repeated.",
         "key=number,..."},
        {"impulses",
         "Single samples at random times raised in all bands: count (0), strength "
         "(1), module, ray. May be repeated.",
         "key=number,..."},
        {"gain-step",
         "Everything from a point on is multiplied: point (from 0), factor (1), "
         "module, ray. May be repeated.",
         "key=number,..."},
    });
}

QString readOptions(const QCommandLineParser &parser, Simulation &s)
{
    const auto readOne = [](const QString &text, auto &source) { return readSource(text, source); };
    if (parser.isSet("no-noise"))
        s.noise = false;
    return firstProblem({
        readOption(parser, "points", &s.npoints),
        readOption(parser, "modules", &s.modules),
        readOption(parser, "first-module", &s.firstModule),
        readOption(parser, "rays", &s.rays),
        readBands(parser, s),
        readOption(parser, "step", &s.msPerPoint),
        readBegin(parser, s),
        readOption(parser, "seed", &s.seed),
        readOption(parser, "level", &s.level),
        readOption(parser, "sigma", &s.sigma),
        readOption(parser, "drift", &s.drift),
        readOption(parser, "drift-time", &s.driftTime),
        readSources(parser.values("pulsar"), s.pulseTrains, readOne),
        readSources(parser.values("pulse"), s.pulses, readOne),
        readSources(parser.values("rrat"), s.rrats, readOne),
        readSources(parser.values("lightning"), s.lightning, readOne),
        readSources(parser.values("radar"), s.trainsEverywhere, readRadar),
        readSources(parser.values("line"), s.lines, readOne),
        readSources(parser.values("impulses"), s.impulses, readOne),
        readSources(parser.values("gain-step"), s.gainSteps, readOne),
    });
}

} // namespace Simulator
