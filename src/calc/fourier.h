#pragma once

#include <complex>

namespace Tools {

/// Largest power of two not above n, for n of at least 2; capped: anything above 2^20 gives
/// 2^19.
int powerOfTwoFloor(int n);

/// One-sided amplitude spectrum of a series: dataOut[k] = 2 |F_k| / countIn, F the forward
/// transform without scaling. Value k belongs to the frequency k / (countIn x step).
/// No checks; `PulsarCalculate::getFourier` makes them.
///
/// Radix-2 butterflies in double, decimation in time, on samples in the imaginary parts; the
/// twiddle factors of each stage by the recurrence w += w (exp(i theta) - 1) from
/// exp(i theta) - 1 = -2 sin^2(theta/2) + i sin(theta), theta = -2 pi / length of the stage.
/// The order of the work is free, so the result equals that of the plain loops over stages,
/// factors and butterflies to the last bit.
///
/// @param dataIn   countIn values; only read
/// @param dataOut  room for countOut values, apart from dataIn
/// @param countIn  power of two, at least 2
/// @param countOut countIn / 2
void amplitudeSpectrum(const double *dataIn, double *dataOut, int countIn, int countOut);

/// The same spectrum with its phases: dataOut[k] = 2 F_k / countIn, F_k the sum of
/// dataIn[i] exp(-2 pi i k i / countIn); |dataOut[k]| is the amplitude above but for rounding.
void complexSpectrum(const double *dataIn, std::complex<double> *dataOut, int countIn,
                     int countOut);

/// Shortens a series by n halvings, each the mean of neighbouring pairs (a last odd value is
/// dropped). Beyond the first, a halving takes place only while at least 16 values remain.
/// What dataOut holds beyond the means, up to averagedLength(), is zero.
///
/// @param dataIn   count values; may be dataOut
/// @param dataOut  room for count values, 2 x count with zeroPad
/// @return false, after a debug line, without an array, below one value or one halving less
///         than none; dataOut is then untouched
bool averagePairs(const double *dataIn, double *dataOut, int count, int n, bool zeroPad);

/// Length of the averaged series: npoints / 2^n, doubled with zeroPad; -1 below 64 points or
/// when the doubled length is beyond an int.
int averagedLength(int npoints, int n, bool zeroPad);

/// The factor that averaging and padding bring into the step: 2^n, halved with zeroPad, so
/// that averagedLength() x factor = npoints for every npoints that 2^n divides.
///
/// The values themselves are 2^n steps apart with or without padding: value k of a spectrum
/// over L = averagedLength() values belongs to the frequency k / (L x 2^n x step), with
/// zeroPad therefore to k / (2 x L x factor x step).
double averagedStepFactor(int n, bool zeroPad);

} // namespace Tools
