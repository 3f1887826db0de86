#pragma once

#include "analyses/pulses/pulsesearch.h"

/// What pictures of a pulse show.
namespace Pulses {

/// Time against something else: row r begins at r x columns.
struct PulseRows {
    std::vector<float> values; ///< units of the noise of a value
    int columns = 0;
    double firstTime = 0;     ///< s from the pulse's centre to the begin of the first column
    double timeStep = 0;      ///< s
    std::vector<double> rows; ///< what the rows are of: MHz or pc/cm^3, rising

    bool isEmpty() const { return columns == 0; }
    double lastTime() const { return firstTime + columns * timeStep; }
};

struct PulsePicture {
    PulseRows dispersed;          ///< bands as recorded, as long as the pulse takes to cross them
    PulseRows dedispersed;        ///< bands less their delays, round the pulse
    PulseRows overTime;           ///< dispersions against time; empty where none can be measured
    std::vector<double> arrival;  ///< s, in `dispersed`: when the pulse comes in each of its rows
    std::vector<double> profile;  ///< sum of the bands in the columns of `dedispersed`
    std::vector<double> channels; ///< S/N of each row of `dedispersed` within the pulse's boxcar
    DispersionCurve curve;        ///< S/N over dispersion
};

/// @param ray    where the pulse is strongest
/// @param plan   of the search that found it
/// @param pulse  of that ray
PulsePicture pictureOf(const PreparedRay &ray, const PulsePlan &plan, const Pulse &pulse);

} // namespace Pulses
