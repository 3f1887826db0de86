#pragma once

#include "calc/banddelays.h"
#include "calc/pulsar/cutlines.h"
#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"

#include <vector>

/// The sums of the bands over a stretch of a recording, and the base lines under them. All read
/// the module, the ray and the first point from the parameters.
namespace Pulsar {

/// Length, in points, of the stretch that most actions which sum the bands work on.
inline constexpr int fixedPoints = 16384;
/// Bands that take part in a sum; the last of them is the reference.
inline constexpr int sumBands = 32;

/// The recording as one that ends where its samples are no longer whole.
ObservationData wholePointsOf(const ObservationData &recording);

/// The shifts by which a sum at `dispersion`, pc/cm^3, reads the bands.
Tools::BandDelays bandDelays(const ObservationData &header, double dispersion);

/// Samples of a channel of the selected module and ray, indexed as in the recording.
const float *channelSamples(const ObservationData &data, const PulsarParameters &selected,
                            int channel);

/// See PulsarCalculate::sumChannels.
///
/// @return bands that were added completely; 0, after a debug line, when the sum is refused
int sumChannels(const ObservationData &data, const PulsarParameters &selected, double *dataOut,
                int count, double dispersion, bool forward);

/// See PulsarCalculate::sumWithoutNoise.
///
/// @param wholeBands  receives what sumChannels() returns of the sum
bool sumWithoutNoise(const ObservationData &data, const PulsarParameters &selected, double *dataOut,
                     int count, double dispersion, int &wholeBands);

/// The chosen baseline of a sum, sum.size() values; zeros where none is chosen.
///
/// @param backSum  receives the sum with opposite delays that "backSum" is made from, may be null
/// @return false, after a debug line, when the baseline is refused
bool sumBaseline(const ObservationData &data, const PulsarParameters &selected,
                 const std::vector<double> &sum, double dispersion, double *baseline,
                 std::vector<double> *backSum = nullptr);

/// Subtracts a baseline, and divides the rest by its standard deviation where that is asked for.
///
/// @return what the rest was divided by; 1 where it was not
double removeBaseline(bool normalise, const std::vector<double> &baseline,
                      std::vector<double> &samples);

/// See PulsarCalculate::getFourier.
bool getFourier(const double *dataIn, double *dataOut, int countIn, int countOut);

/// What there is to tell of a sum that a spectrum was made of.
struct SumNotes {
    int wholeBands = 0;       ///< what sumChannels() returns of it
    std::vector<CutBand> cut; ///< hum and lines that were taken out
};

/// See PulsarCalculate::getFourierOfSum.
bool getFourierOfSum(const ObservationData &data, const PulsarParameters &selected, double *out,
                     int count, double dispersion, int averageCount, bool withNull,
                     SumNotes &notes);

/// See PulsarCalculate::harmonicOfPeriod.
double harmonicOfPeriod(const PulsarParameters &given, double tresolution);

} // namespace Pulsar
