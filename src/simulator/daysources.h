#pragma once

#include "simulator/dayssimulation.h"

/// What one file of a day receives besides the receiver's noise.
namespace Simulator {

/// How a day differs from the mean of all.
struct DayGain {
    double gain = 1;  ///< of everything
    double noise = 1; ///< of the noise, besides
};
DayGain gainOf(const DaysSimulation &days, int day);

/// The pulsars of the sky, in all rays whose beams they cross.
///
/// @param simulation  the file's: its begin, points and receiver
void addSky(const DaysSimulation &days, int day, Simulation &simulation);

/// Hum, disturbance and storm.
///
/// @param file  whose recording `simulation` is
void addInterference(const DaysSimulation &days, const DayFile &file, Simulation &simulation);

} // namespace Simulator
