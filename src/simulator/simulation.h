#pragma once

#include <QDateTime>
#include <QString>
#include <vector>

namespace Simulator {

/// A pulsar: one Gaussian pulse per period through the whole recording. Modules and rays
/// count from 1.
struct PulseTrain {
    int module = 1;
    int ray = 1;
    double period = 1;     ///< s, at least two steps
    double width = 0.05;   ///< s, full width at half maximum, at most one period
    double dispersion = 0; ///< pc/cm^3
    double strength = 1;   ///< peak height in units of the noise sigma of one band
    double phase = 0;      ///< part of a period from the begin to a peak in the last band
};

/// One Gaussian pulse.
struct SinglePulse {
    int module = 1;
    int ray = 1;
    double time = 0;       ///< s from the begin to the peak in the last band
    double width = 0.05;   ///< s, full width at half maximum
    double dispersion = 0; ///< pc/cm^3
    double strength = 1;   ///< peak height in units of the noise sigma of one band
    double scattering = 0; ///< s in which the tail falls by e in the last band; in others as f^-4
    double beam = 0; ///< rays, full width at half maximum of the beam: rays of the same module next
                     ///< to the own one have it too, weaker; 0: the own one alone
    double sweep = 0; ///< MHz/s by which a transmitter moves through the bands; 0: all at once, but
                      ///< for the dispersion
};

/// A rotating radio transient: a pulsar of which few turns give a pulse.
struct Rrat {
    SinglePulse pulse;    ///< of mean strength; its time is that of a turn
    double period = 4;    ///< s, at least two steps
    double share = 0.05;  ///< of the turns that have one
    double scatter = 0.5; ///< part of the strength by which pulses differ either way at most
};

/// Lightning, seen by all rays: pulses at dispersion 0 at random times.
struct Lightning {
    int module = 1; ///< not used, as the ray
    int ray = 1;
    int count = 0;
    double strength = 5; ///< of the strongest, units of the noise sigma; others from a third on
    double width = 0.02; ///< s
};

/// Pulses of one shape at given times.
struct PulseSeries {
    int module = 1;
    int ray = 1;
    double width = 0.05;           ///< s, full width at half maximum
    double dispersion = 0;         ///< pc/cm^3
    std::vector<double> times;     ///< s from the begin to the peaks in the last band, ascending
    std::vector<double> strengths; ///< peak heights, units of the noise sigma; one for each time
};

/// A transmitter in one band: the level is raised between two times.
struct NarrowBandLine {
    int module = 1;
    int ray = 1;
    int band = 1;        ///< from 1
    double strength = 1; ///< units of the noise sigma
    double begin = 0;    ///< s
    double end = 1e9;    ///< s
};

/// Lightning, sparks: points at random times raised in all bands at once.
struct Impulses {
    int module = 1;
    int ray = 1;
    int count = 0;
    double strength = 1; ///< units of the noise sigma
};

/// From one point on, everything the ray receives is multiplied.
struct GainStep {
    int module = 1;
    int ray = 1;
    int point = 0; ///< from 0
    double factor = 1;
};

/// `count` band centres in MHz from `first` on, `spacing` apart; empty for a count below 1
/// or above 100000.
std::vector<double> evenBands(double first, double spacing, int count);

/// Everything that determines a simulated recording. The same values give the same bytes on
/// every machine.
///
/// A band of frequency f receives a pulse 4148.8 DM (1/f^2 - 1/fref^2) seconds after the
/// last band, of frequency fref; nothing is rounded to whole points. A sample is the mean
/// over one step around its time, which is point x step after the begin: a pulse much
/// narrower than the step stays lower than its strength.
struct Simulation {
    int npoints = 40000;
    int modules = 1;
    int firstModule = 1; ///< its number in the passport
    int rays = 8;
    double msPerPoint = 12.4928;
    std::vector<double> fbands = evenBands(120.0, 0.078125, 32);   ///< MHz
    QDateTime beginTime{QDate(2015, 4, 1), QTime(12, 0), Qt::UTC}; ///< whole seconds
    quint32 seed = 1;
    int earlierPoints = 0; ///< of the same receiver before the begin: its noise and drift go on

    double level = 100;     ///< mean of the receiver noise, units of the file
    double sigma = 1;       ///< standard deviation of one sample, units of the file
    bool noise = true;      ///< false: level, drift and sources only
    double drift = 0;       ///< largest deviation of a ray's level, units of sigma
    double driftTime = 100; ///< s in which the level turns, at least 100 steps

    std::vector<PulseTrain> pulseTrains;
    /// The same in all bands of all rays; their module, ray and dispersion are not used.
    std::vector<PulseTrain> trainsEverywhere;
    std::vector<SinglePulse> pulses;
    std::vector<Rrat> rrats;
    std::vector<Lightning> lightning;
    std::vector<PulseSeries> pulseSeries;
    std::vector<NarrowBandLine> lines;
    std::vector<Impulses> impulses;
    std::vector<GainStep> gainSteps;
};

/// What is wrong with a simulation, in plain words for its author; empty when it can be made.
QString refusal(const Simulation &simulation);

/// Seconds by which a band receives a pulse after the last band.
double lag(const Simulation &simulation, int band, double dispersion);

/// Floats of one point: modules x rays x (bands + 1). Only of a simulation not refused.
qint64 floatsPerPoint(const Simulation &simulation);

/// Size of the samples in a file, bytes. Only of a simulation not refused.
qint64 sampleBytes(const Simulation &simulation);

/// The pulses that transients and lightning give, drawn with the simulation's seed. Pulses of
/// lightning reach all rays.
struct DrawnPulses {
    std::vector<SinglePulse> ofRays;
    std::vector<SinglePulse> everywhere;
};
DrawnPulses drawPulses(const Simulation &simulation);

/// The demonstration recording: 17 minutes of 8 rays, begun at 11:58:47 UTC. Ray 7 holds a
/// pulsar of period 3.032 s and dispersion 26.2 pc/cm^3, the presets of the pulsar form; ray 3 a
/// weaker one of 1.274 s and 15.5 pc/cm^3, ray 5 mild interference; the level of every ray drifts.
Simulation demonstration();

} // namespace Simulator
