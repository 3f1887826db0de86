#pragma once

#include "data/observationdata.h"

#include <vector>

namespace Tools {

/// Dispersion constant, s MHz^2 cm^3/pc: one unit in the last place below the double
/// nearest to 4148.8. Stored sums were made with these bits.
inline constexpr double dispersionConstant = 0x1.034ccccccccccp+12;

/// Delay, in samples, of a band against the reference band: positive when the band is the
/// lower of the two and its signal arrives later.
///
/// @param frequency, reference  MHz
/// @param dispersion            pc/cm^3
/// @param tresolution           s
double dispersionDelay(double frequency, double reference, double dispersion, double tresolution);

/// True when the first `bands` values are there and each is a frequency (at least 0.0001 MHz).
bool areFrequencies(const std::vector<double> &fbands, int bands);

/// True when the delay, in samples, is a number that a whole shift can hold: at most 2^31 - 1
/// either way. The two roundings below trust that it is.
bool isShift(double delay);

/// The delay as a shift of whole samples for sums over a whole recording: truncated toward
/// zero, then one more when the rest exceeds a half. Halves of positive delays go down;
/// for negative delays the correction goes toward plus (-2.7 gives -1). Every caller relies
/// on these shifts.
int wholeRecordingShift(double delay);

/// The delay as a shift of whole samples for sums over a stretch: nearest, halves away from
/// zero.
int stretchShift(double delay);

/// Sums the frequency bands of one module and ray, each band shifted back by the
/// delay `dispersion` gives it against the last band. Shifts wrap round the end
/// of the recording, so every sum has a term from every band.
///
/// Element i is, in double and in this order, sample i of the last band (channel
/// channels - 2) plus the shifted samples of the bands below it, down to channel 0.
///
/// @param data        whole recording; fbands in MHz, tresolution in s, at least 1e-05;
///                    only read
/// @param dispersion  pc/cm^3
/// @param module      index from 0, below data.modules
/// @param ray         index from 0, below data.rays
/// @return data.npoints sums in the samples' units; empty, after one debug line
///         naming the bad value, when the recording or an index is refused, a frequency is
///         missing or below 0.0001, or a delay does not fit an int
std::vector<double> sumChannels(const ObservationData &data, double dispersion, int module,
                                int ray);

} // namespace Tools
