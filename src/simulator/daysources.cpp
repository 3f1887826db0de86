#include "simulator/daysources.h"

#include "coords/skyclock.h"
#include "simulator/arrivals.h"
#include "simulator/daydraws.h"
#include "simulator/normalcurve.h"

#include <algorithm>
#include <cmath>

namespace Simulator {

namespace {

constexpr double degree = M_PI / 180;
constexpr double weakestGain = 1e-4; // of a beam's middle; what is weaker is left out

double stepOf(const Simulation &simulation)
{
    return simulation.msPerPoint / 1000;
}

// In whole 1/2^24, so that no math library's last digits are in it.
double rounded(double value)
{
    constexpr double grid = 1 << 24;
    return std::floor(value * grid + 0.5) / grid;
}

// A beam's response so many degrees from its middle.
double response(double offset, double width)
{
    constexpr double fourLn2 = 2.772588722239781;
    const double y = fourLn2 * (offset / width) * (offset / width);
    return y < 32 ? rounded(expOfMinus(y)) : 0;
}

// Strength of a day: its mean is 1, its standard deviation `scintillation`. The mean of nu squares
// of normal numbers has the variance 2 / nu.
double scintillationFactor(double scintillation, DayDraws draws)
{
    if (!(scintillation > 0))
        return 1;
    const int count = std::max(1, int(2 / (scintillation * scintillation) + 0.5));
    double sum = 0;
    for (int i = 0; i < count; ++i) {
        const double value = draws.normal();
        sum += value * value;
    }
    return sum / count;
}

// Times and strengths of the pulses in the middle of the beams in declination.
PulseSeries pulsesOf(const DaysSimulation &days, const SkyPulsar &pulsar, double strength,
                     const Simulation &file)
{
    const double length = file.npoints * stepOf(file);
    double earliest = 0;
    double latest = 0;
    for (int band = 0; band < int(file.fbands.size()); ++band) {
        earliest = std::min(earliest, -lag(file, band, pulsar.dispersion));
        latest = std::max(latest, -lag(file, band, pulsar.dispersion));
    }
    const QDateTime passage = Tools::nearestCulmination(
        pulsar.position, file.beginTime.addMSecs(qint64(length * 1000 / 2)));
    const double crossing = double(file.beginTime.msecsTo(passage)) / 1000; // s
    const double delta = Tools::declinationOfDate(pulsar.position, passage.date());
    const double degreesPerSecond = 360 / Tools::siderealDay() * std::cos(delta);

    PulseSeries series;
    series.width = pulsar.width;
    series.dispersion = pulsar.dispersion;
    const double reach = 3 * pulsar.width;
    for (const double time :
         arrivals(pulsar.position, pulsar.period, pulsar.phase, days.recording.beginTime.date(),
                  file.beginTime, earliest - reach, length + latest + reach)) {
        const double gain = response((time - crossing) * degreesPerSecond, days.beam.ra);
        if (gain < weakestGain)
            continue;
        series.times.push_back(time);
        series.strengths.push_back(gain * strength);
    }
    return series;
}

double wrapped(double phase)
{
    return phase - std::floor(phase);
}

bool isAmong(double share, DayDraws &draws)
{
    return draws.share() < share;
}

// A train in all rays. Its phase is that at the begin of the day.
void addEverywhere(PulseTrain train, Simulation &file)
{
    train.phase = wrapped(train.phase - file.earlierPoints * stepOf(file) / train.period);
    file.trainsEverywhere.push_back(train);
}

void addHum(const Hum &hum, double noise, DayDraws draws, Simulation &file)
{
    if (!isAmong(hum.share, draws))
        return;
    PulseTrain train;
    train.period = 1 / hum.frequency;
    train.width = train.period / 2; // nearly a sine
    train.strength = hum.strength / noise;
    train.phase = draws.share();
    addEverywhere(train, file);
}

void addDisturbance(const DaysSimulation &days, int day, int dayPoints, double noise,
                    Simulation &file)
{
    constexpr double shortest = 10; // steps
    constexpr double longest = 200;
    DayDraws draws(days.recording.seed, Lot::Disturbance, day);
    if (!isAmong(days.disturbance.share, draws))
        return;
    PulseTrain train;
    train.period = (shortest + (longest - shortest) * draws.share()) * stepOf(file);
    train.width = 0.3 * train.period;
    train.strength = days.disturbance.strength / noise;
    train.phase = draws.share();
    addEverywhere(train, file);

    const double earlier = file.earlierPoints * stepOf(file);
    const double length = dayPoints * stepOf(file);
    NarrowBandLine line;
    line.band = 1 + int(draws.share() * double(file.fbands.size()));
    line.strength = days.disturbance.strength / noise;
    line.begin = draws.share() * length - earlier;
    line.end = line.begin + draws.share() * length / 2;
    for (line.module = 1; line.module <= file.modules; ++line.module)
        for (line.ray = 1; line.ray <= file.rays; ++line.ray)
            file.lines.push_back(line);
}

void addStorm(const DaysSimulation &days, int day, int dayPoints, double noise, Simulation &file)
{
    DayDraws draws(days.recording.seed, Lot::Storm, day);
    if (!isAmong(days.storm.share, draws))
        return;
    PulseSeries strokes;
    strokes.width = 2 * stepOf(file);
    for (int i = 0; i < days.storm.count; ++i)
        strokes.times.push_back((draws.share() * dayPoints - file.earlierPoints) * stepOf(file));
    std::sort(strokes.times.begin(), strokes.times.end());
    for (int i = 0; i < days.storm.count; ++i)
        strokes.strengths.push_back(draws.share() * days.storm.strength / noise);
    for (strokes.module = 1; strokes.module <= file.modules; ++strokes.module)
        for (strokes.ray = 1; strokes.ray <= file.rays; ++strokes.ray)
            file.pulseSeries.push_back(strokes);
}

} // namespace

DayGain gainOf(const DaysSimulation &days, int day)
{
    DayDraws draws(days.recording.seed, Lot::Gain, day);
    DayGain gain;
    gain.gain = 1 + days.gainScatter * draws.symmetric();
    gain.noise = 1 + days.noiseScatter * draws.symmetric();
    return gain;
}

void addSky(const DaysSimulation &days, int day, Simulation &file)
{
    const double noise = gainOf(days, day).noise;
    for (std::size_t i = 0; i < days.pulsars.size(); ++i) {
        const SkyPulsar &pulsar = days.pulsars[i];
        const DayDraws draws(days.recording.seed, Lot::Scintillation, day, unsigned(i));
        const double strength =
            pulsar.strength * scintillationFactor(pulsar.scintillation, draws) / noise;
        const PulseSeries middle = pulsesOf(days, pulsar, strength, file);
        const double delta = Tools::declinationOfDate(pulsar.position, file.beginTime.date());
        for (int module = 1; module <= file.modules; ++module) {
            for (int ray = 1; ray <= file.rays; ++ray) {
                const double beam = beamDeclination(days, module, ray);
                const double gain = response(delta / degree - beam, days.beam.delta);
                if (gain < weakestGain || middle.times.empty())
                    continue;
                PulseSeries series = middle;
                series.module = module;
                series.ray = ray;
                for (double &height : series.strengths)
                    height *= gain;
                file.pulseSeries.push_back(series);
            }
        }
    }
}

void addInterference(const DaysSimulation &days, const DayFile &file, Simulation &simulation)
{
    const double noise = gainOf(days, file.day).noise;
    for (std::size_t i = 0; i < days.hums.size(); ++i)
        addHum(days.hums[i], noise, DayDraws(days.recording.seed, Lot::Hum, file.day, unsigned(i)),
               simulation);
    addDisturbance(days, file.day, file.dayPoints, noise, simulation);
    addStorm(days, file.day, file.dayPoints, noise, simulation);
}

} // namespace Simulator
