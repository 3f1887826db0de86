#include "simulator/simulation.h"

#include "calc/banddelays.h"
#include "calc/pulsar/pulsarcommand.h"
#include "data/samplingstep.h"

#include <cmath>
#include <limits>

namespace Simulator {

namespace {

constexpr qint64 mostFloatsPerPoint = qint64(1) << 24;
constexpr int mostModuleNumber = 1 << 28;
constexpr int mostBands = 100000;
constexpr double longestLag = 1e6;       // s
constexpr double longestRecording = 1e8; // s
constexpr double largestValue = 1e12;    // products of three still fit a float

bool isPositive(double value)
{
    return std::isfinite(value) && value > 0;
}

QString refusedSize(const QString &name, double value)
{
    if (std::abs(value) <= largestValue)
        return {};
    return QString("%1 must lie between -%2 and %2, but is %3.")
        .arg(name)
        .arg(largestValue)
        .arg(value);
}

QString refusedCounts(const Simulation &s)
{
    if (s.npoints < 1)
        return QString("The number of points must be at least 1, not %1.").arg(s.npoints);
    if (s.modules < 1)
        return QString("The number of modules must be at least 1, not %1.").arg(s.modules);
    if (s.rays < 1)
        return QString("The number of rays must be at least 1, not %1.").arg(s.rays);
    if (s.fbands.empty() || s.fbands.size() > mostBands)
        return QString("A recording needs between 1 and %1 bands.").arg(mostBands);
    qint64 floats = qint64(s.fbands.size()) + 1;
    for (const int count : {s.modules, s.rays}) {
        if (floats > mostFloatsPerPoint / count)
            return QString("%1 modules x %2 rays x %3 bands are more than one point may hold "
                           "(%4 values).")
                .arg(s.modules)
                .arg(s.rays)
                .arg(s.fbands.size())
                .arg(mostFloatsPerPoint);
        floats *= count;
    }
    if (s.firstModule < 1 || s.firstModule > mostModuleNumber)
        return QString("The first module must have a number from 1 to %1, not %2.")
            .arg(mostModuleNumber)
            .arg(s.firstModule);
    return {};
}

QString refusedReceiver(const Simulation &s)
{
    if (!isStep(s.msPerPoint / 1000))
        return QString("The step must be %1, not %2 ms.")
            .arg(stepRangeText("ms", 1000))
            .arg(s.msPerPoint);
    if (s.earlierPoints < 0 || s.earlierPoints > std::numeric_limits<int>::max() - s.npoints)
        return QString("There cannot be %1 points before %2.").arg(s.earlierPoints).arg(s.npoints);
    if (!(s.npoints * s.msPerPoint / 1000 <= longestRecording))
        return QString("%1 points of %2 ms are longer than %3 s.")
            .arg(s.npoints)
            .arg(s.msPerPoint)
            .arg(longestRecording);
    for (const double frequency : s.fbands) {
        if (!isPositive(frequency))
            return QString("Every band must lie above 0 MHz; %1 does not.").arg(frequency);
    }
    if (!s.beginTime.isValid() || s.beginTime.timeSpec() != Qt::UTC)
        return "The begin must be a date and time in UTC.";
    if (s.beginTime.time().msec() != 0)
        return "The begin must be a whole second: the passport holds no fractions.";
    if (s.beginTime.date().year() < 1000 || s.beginTime.date().year() > 9999)
        return "The year of the begin must have four digits.";
    if (QString text = refusedSize("The level", s.level); !text.isEmpty())
        return text;
    if (!isPositive(s.sigma))
        return QString("Sigma must be above 0, not %1; strengths are measured with it.")
            .arg(s.sigma);
    if (QString text = refusedSize("Sigma", s.sigma); !text.isEmpty())
        return text;
    if (!(s.drift >= 0))
        return QString("The drift must not be below 0, but is %1.").arg(s.drift);
    if (QString text = refusedSize("The drift", s.drift); !text.isEmpty())
        return text;
    if (!(s.driftTime >= 100 * s.msPerPoint / 1000) || !std::isfinite(s.driftTime))
        return QString("The drift time must be at least 100 steps (%1 s), not %2 s.")
            .arg(100 * s.msPerPoint / 1000)
            .arg(s.driftTime);
    return {};
}

// What every source has; `what` begins the message.
template <typename Source>
QString refusedPlace(const Simulation &s, const Source &source, const QString &what)
{
    if (source.module < 1 || source.module > s.modules)
        return QString("%1: module %2 is not among 1 to %3.")
            .arg(what)
            .arg(source.module)
            .arg(s.modules);
    if (source.ray < 1 || source.ray > s.rays)
        return QString("%1: ray %2 is not among 1 to %3.").arg(what).arg(source.ray).arg(s.rays);
    return {};
}

template <typename Pulse>
QString refusedShape(const Simulation &s, const Pulse &pulse, const QString &what)
{
    if (!isPositive(pulse.width) || pulse.width > longestLag)
        return QString("%1: the width must be above 0 and at most %2 s, not %3 s.")
            .arg(what)
            .arg(longestLag)
            .arg(pulse.width);
    if (QString text = refusedSize(what + ": the strength", pulse.strength); !text.isEmpty())
        return text;
    if (!std::isfinite(pulse.dispersion) || pulse.dispersion < 0)
        return QString("%1: the dispersion must not be below 0, but is %2.")
            .arg(what)
            .arg(pulse.dispersion);
    for (int band = 0; band < int(s.fbands.size()); ++band) {
        if (!(std::abs(lag(s, band, pulse.dispersion)) <= longestLag))
            return QString("%1: at dispersion %2 the band of %3 MHz would be more than %4 s away "
                           "from the last one.")
                .arg(what)
                .arg(pulse.dispersion)
                .arg(s.fbands[std::size_t(band)])
                .arg(longestLag);
    }
    return {};
}

QString refusedSource(const Simulation &s, const PulseTrain &train)
{
    const QString what = "Pulsar";
    if (QString text = refusedShape(s, train, what); !text.isEmpty())
        return text;
    if (!std::isfinite(train.period) || !(train.period >= 2 * s.msPerPoint / 1000))
        return QString("%1: the period must be at least two steps (%2 s), not %3 s.")
            .arg(what)
            .arg(2 * s.msPerPoint / 1000)
            .arg(train.period);
    if (train.width > train.period)
        return QString("%1: the width of %2 s is longer than the period of %3 s.")
            .arg(what)
            .arg(train.width)
            .arg(train.period);
    if (!std::isfinite(train.phase) || std::abs(train.phase) > 1)
        return QString("%1: the phase must lie between -1 and 1, but is %2.")
            .arg(what)
            .arg(train.phase);
    return {};
}

QString refusedSource(const Simulation &s, const SinglePulse &pulse)
{
    if (!std::isfinite(pulse.time))
        return "Pulse: the time must be a number.";
    const QString what = "Pulse";
    if (!(pulse.scattering >= 0) || pulse.scattering > longestLag)
        return QString("%1: the scattering must lie between 0 and %2 s, but is %3 s.")
            .arg(what)
            .arg(longestLag)
            .arg(pulse.scattering);
    if (!(pulse.beam >= 0) || !std::isfinite(pulse.sweep))
        return what + ": beam and sweep must be numbers, the beam not below 0.";
    return refusedShape(s, pulse, what);
}

QString refusedSource(const Simulation &s, const Rrat &rrat)
{
    const double step = s.msPerPoint / 1000;
    if (!(rrat.period >= 2 * step) || !std::isfinite(rrat.period))
        return QString("Transient: the period must be at least two steps (%1 s), not %2 s.")
            .arg(2 * step)
            .arg(rrat.period);
    if (!(rrat.share >= 0 && rrat.share <= 1 && rrat.scatter >= 0 && rrat.scatter <= 1))
        return "Transient: share and scatter must lie between 0 and 1.";
    if (QString text = refusedPlace(s, rrat.pulse, "Transient"); !text.isEmpty())
        return text;
    return refusedSource(s, rrat.pulse);
}

QString refusedSource(const Simulation &s, const Lightning &lightning)
{
    if (lightning.count < 0 || lightning.count > s.npoints)
        return QString("Lightning: its number must lie between 0 and the %1 points, but is %2.")
            .arg(s.npoints)
            .arg(lightning.count);
    SinglePulse pulse;
    pulse.width = lightning.width;
    pulse.strength = lightning.strength;
    return refusedShape(s, pulse, "Lightning");
}

QString refusedSource(const Simulation &s, const PulseSeries &series)
{
    const QString what = "Pulses";
    if (series.times.size() != series.strengths.size())
        return QString("%1: there are %2 times and %3 strengths.")
            .arg(what)
            .arg(series.times.size())
            .arg(series.strengths.size());
    SinglePulse pulse;
    pulse.width = series.width;
    pulse.dispersion = series.dispersion;
    if (QString text = refusedShape(s, pulse, what); !text.isEmpty())
        return text;
    for (const double time : series.times) {
        if (!std::isfinite(time))
            return what + ": the times must be numbers.";
    }
    for (const double strength : series.strengths) {
        if (QString text = refusedSize(what + ": the strength", strength); !text.isEmpty())
            return text;
    }
    return {};
}

QString refusedSource(const Simulation &s, const NarrowBandLine &line)
{
    if (line.band < 1 || line.band > int(s.fbands.size()))
        return QString("Line: band %1 is not among 1 to %2.").arg(line.band).arg(s.fbands.size());
    if (std::isnan(line.begin) || std::isnan(line.end))
        return "Line: begin and end must be numbers.";
    return refusedSize("Line: the strength", line.strength);
}

QString refusedSource(const Simulation &s, const Impulses &impulses)
{
    if (impulses.count < 0 || impulses.count > s.npoints)
        return QString("Impulses: their number must lie between 0 and the %1 points, but is %2.")
            .arg(s.npoints)
            .arg(impulses.count);
    return refusedSize("Impulses: the strength", impulses.strength);
}

QString refusedSource(const Simulation &s, const GainStep &step)
{
    if (step.point < 0 || step.point >= s.npoints)
        return QString("Gain step: point %1 is not among 0 to %2.")
            .arg(step.point)
            .arg(s.npoints - 1);
    return refusedSize("Gain step: the factor", step.factor);
}

template <typename Source>
QString refusedAmong(const Simulation &s, const std::vector<Source> &sources, const QString &what)
{
    for (const Source &source : sources) {
        if (QString text = refusedPlace(s, source, what); !text.isEmpty())
            return text;
        if (QString text = refusedSource(s, source); !text.isEmpty())
            return text;
    }
    return {};
}

} // namespace

std::vector<double> evenBands(double first, double spacing, int count)
{
    std::vector<double> bands;
    if (count < 1 || count > mostBands)
        return bands;
    for (int i = 0; i < count; ++i)
        bands.push_back(first + i * spacing);
    return bands;
}

QString refusal(const Simulation &s)
{
    for (const QString &text :
         {refusedCounts(s), refusedReceiver(s), refusedAmong(s, s.pulseTrains, "Pulsar"),
          refusedAmong(s, s.trainsEverywhere, "Pulses in all rays"),
          refusedAmong(s, s.pulses, "Pulse"), refusedAmong(s, s.lightning, "Lightning"),
          refusedAmong(s, s.pulseSeries, "Pulses"), refusedAmong(s, s.lines, "Line"),
          refusedAmong(s, s.impulses, "Impulses"), refusedAmong(s, s.gainSteps, "Gain step")}) {
        if (!text.isEmpty())
            return text;
    }
    for (const Rrat &rrat : s.rrats) {
        if (QString text = refusedSource(s, rrat); !text.isEmpty())
            return text;
    }
    return {};
}

double lag(const Simulation &simulation, int band, double dispersion)
{
    const double f = simulation.fbands[std::size_t(band)];
    const double reference = simulation.fbands.back();
    return Tools::dispersionConstant * dispersion * Tools::inverseSquares(f, reference);
}

qint64 floatsPerPoint(const Simulation &simulation)
{
    return qint64(simulation.modules) * simulation.rays * (qint64(simulation.fbands.size()) + 1);
}

qint64 sampleBytes(const Simulation &simulation)
{
    return floatsPerPoint(simulation) * simulation.npoints * qint64(sizeof(float));
}

Simulation demonstration()
{
    Simulation s;
    s.npoints = 80000;
    s.beginTime = QDateTime(QDate(2015, 4, 1), QTime(11, 58, 47), Qt::UTC);
    s.level = 100;
    s.sigma = 2;
    s.drift = 3;
    s.driftTime = 90;

    // The form shows it before anything is typed.
    const PulsarParameters presets = pulsarPresets();
    PulseTrain pulsar;
    pulsar.ray = presets.ray;
    pulsar.period = presets.period;
    pulsar.width = 0.06;
    pulsar.dispersion = presets.dispersion;
    pulsar.strength = 1.2;
    pulsar.phase = 0.4;
    PulseTrain weak;
    weak.ray = 3;
    weak.period = 1.274;
    weak.width = 0.03;
    weak.dispersion = 15.5;
    weak.strength = 0.4;
    s.pulseTrains = {pulsar, weak};

    NarrowBandLine line;
    line.ray = 5;
    line.band = 12;
    line.strength = 4;
    line.begin = 760;
    line.end = 840;
    s.lines = {line};
    Impulses sparks;
    sparks.ray = 5;
    sparks.count = 60;
    sparks.strength = 1.5;
    s.impulses = {sparks};
    GainStep step;
    step.ray = 5;
    step.point = 70000;
    step.factor = 1.01;
    s.gainSteps = {step};
    return s;
}

} // namespace Simulator
