#pragma once

#include "coords/skyposition.h"
#include "simulator/simulation.h"

#include <QDateTime>
#include <QString>
#include <optional>
#include <vector>

/// Recordings of many days of one strip of the sky, as the telescope makes them: the sky turns
/// through the fixed beams once a sidereal day.
namespace Simulator {

/// A pulsar on the sky. The rays near its declination receive it while it crosses their beams.
struct SkyPulsar {
    Tools::SkyPosition position; ///< of 2000
    double period = 0.7;         ///< s at the barycentre of the solar system
    double width = 0.03;         ///< s, full width at half maximum
    double dispersion = 0;       ///< pc/cm^3
    double strength = 0.05;   ///< peak height in the middle of a beam, mean of the days, in units
                              ///< of the noise sigma of one band on an average day
    double phase = 0;         ///< part of a period from 0h TDB of the first date to a peak at
                              ///< the barycentre, in the last band
    double scintillation = 0; ///< standard deviation of the strength from day to day, over its
                              ///< mean; 0, or from 0.01 to the root of 2
};

/// A beam is a Gaussian in both directions.
struct BeamShape {
    double ra = 0.8;    ///< degrees on the sky, full width at half maximum
    double delta = 0.6; ///< the same
};

/// A line at the same frequency in all rays: power supplies, radars.
struct Hum {
    double frequency = 10; ///< Hz at the telescope
    double strength = 0.1; ///< peak height in units of the noise sigma of one band
    double share = 1;      ///< of the days that have it
};

/// Days with a pulsed transmitter, of another period each day, in all rays, and one of constant
/// power in one band.
struct Disturbance {
    double share = 0;    ///< of the days
    double strength = 1; ///< peak height in units of the noise sigma of one band
};

/// Days with lightning: single pulses, the same in all bands and rays.
struct Storm {
    double share = 0;     ///< of the days
    int count = 200;      ///< strokes a day
    double strength = 10; ///< the largest peak height in units of the noise sigma of one band
};

/// Everything that determines the recordings. The same values give the same bytes on every
/// machine.
struct DaysSimulation {
    DaysSimulation();

    /// What all days share. Its points are those around the passage of the strip's middle, its
    /// begin is that before the first passage, and its sources, which have no place on the sky,
    /// are in each file anew.
    Simulation recording;
    int days = 1;
    int site = 2;            ///< number of N0, N1, N2 or N4
    bool wholeHours = false; ///< record from a full hour to a full hour instead of the points alone
    double slide = 5; ///< s; largest time by which a day begins earlier or later than the sky asks
    std::optional<Tools::SkyPosition> strip; ///< its middle, of 2000; none: the first pulsar, or
                                             ///< alfa 0h in the middle ray

    double missing = 0;      ///< share of the days without a recording
    double gainScatter = 0;  ///< largest part by which a day's gain differs from the mean
    double noiseScatter = 0; ///< the same of its noise, level apart
    BeamShape beam;
    std::vector<SkyPulsar> pulsars;
    std::vector<Hum> hums;
    Disturbance disturbance;
    Storm storm;
};

/// One file of one day.
struct DayFile {
    int day = 0;     ///< passage of the strip, from 0
    QString name;    ///< as the telescope names it, by the hour it ends in
    QDateTime begin; ///< UTC, whole seconds
    int points = 0;
    int earlierPoints = 0; ///< of that day in files before
    int dayPoints = 0;     ///< of that day in all files
};

/// What is wrong with it, in plain words for its author; empty when it can be made.
QString refusal(const DaysSimulation &days);

/// Declination of a beam by the nominal table, degrees; Tools::noDeclination where there is none. A
/// table of the user's own does not count, for it would change the bytes.
///
/// @param module, ray  from 1 in the file
double beamDeclination(const DaysSimulation &days, int module, int ray);

/// UTC at which the middle of the strip crosses the beams. Only of a simulation not refused, as
/// all that follows.
QDateTime passage(const DaysSimulation &days, int day);

/// All files, day by day. A missing day has none; a recording is cut at full hours, so a day may
/// have more.
std::vector<DayFile> dayFiles(const DaysSimulation &days);

/// What one file holds.
Simulation simulationOf(const DaysSimulation &days, const DayFile &file);

/// The demonstration: a year's beginning of a strip with a pulsar of 0.7145 s that no single day
/// shows, lines in all rays, and days that are missing, stormy or disturbed.
DaysSimulation demonstrationDays();

} // namespace Simulator
