#pragma once

namespace Tools {

/// Largest power of two not above n, for n of at least 2; capped: anything above 2^20 gives
/// 2^19.
int powerOfTwoFloor(int n);

/// One-sided amplitude spectrum of a series: dataOut[k] = 2 |F_k| / countIn, F the forward
/// transform without scaling. Value k belongs to the frequency k / (countIn x step).
/// No checks; `PulsarCalculate::getFourier` makes them.
///
/// @param countIn   power of two
/// @param countOut  countIn / 2
void amplitudeSpectrum(const double *dataIn, double *dataOut, int countIn, int countOut);

/// Shortens a series by n halvings, each the mean of neighbouring pairs, as long as at
/// least 16 values remain. What dataOut holds beyond the means, up to averagedLength(), is
/// zero.
///
/// @param dataOut  room for count values, 2 x count with zeroPad
/// @return true
bool averagePairs(const double *dataIn, double *dataOut, int count, int n, bool zeroPad);

/// Length of the averaged series: npoints / 2^n, doubled with zeroPad; -1 below 64 points.
int averagedLength(int npoints, int n, bool zeroPad);

/// Factor from the step of the series to the step that belongs to its averaged spectrum:
/// 2^n, halved with zeroPad, so that value k of the spectrum of L averaged values stands for
/// k / (L x step x factor) with L as averagedLength() counts it.
double averagedStepFactor(int n, bool zeroPad);

} // namespace Tools
