#pragma once

#include "ffa/foldtransform.h"

#include <QtGlobal>

namespace Ffa {

/// Running sums of a profile that is repeated without end: P[i] = x[0] + .. + x[i],
/// accumulated in double and stored as float; beyond n, P[k n + i] = P[i] + k P[n-1] in float.
///
/// @param n      values in x, at least 1
/// @param count  values to write; below n only the first count sums
void circularPrefixSum(const float *x, quint64 n, quint64 count, float *out);

/// Constants of one boxcar width for the profiles of one fold: a boxcar of `width` bins and
/// height h that stands on a baseline of -beta, so that it sums to 0 and its squares to 1
/// over `bins` bins (a matched filter, e.g. Turin 1960, IRE Trans. Inf. Theory 6, 311).
/// Not a number when the width is that of the profile or more.
struct BoxcarShape {
    float heightAndBase = 0; ///< h + beta
    float base = 0;          ///< beta
};

BoxcarShape boxcarShape(quint32 bins, quint64 width);

/// Signal-to-noise ratio of the best boxcar of each width in one folded profile, which is
/// read circularly. In single precision throughout; not a number for widths of `bins` and
/// more.
///
/// @param profile   bins values, at least 1
/// @param widths    nwidths widths in bins
/// @param stdnoise  standard deviation of one value of the profile
/// @param out       nwidths values
void boxcarSnr(const float *profile, quint32 bins, const quint64 *widths, quint64 nwidths,
               float stdnoise, float *out);

/// The same for each row of a block in turn.
///
/// @param sums  room for profiles.columns + the largest width
/// @param out   [row][width]
void boxcarSnr(ConstBlock profiles, const quint64 *widths, quint64 nwidths, float stdnoise,
               float *sums, float *out);
void boxcarSnr(ConstBlock profiles, const quint64 *widths, quint64 nwidths, float stdnoise,
               float *out);

/// 0 without widths.
quint64 widestOf(const quint64 *widths, quint64 nwidths);

/// @throw std::invalid_argument unless every width is above 0 and below `columns`
void checkTrialWidths(const quint64 *widths, quint64 nwidths, quint64 columns);

/// @throw std::invalid_argument unless stdnoise is above 0
void checkStdNoise(float stdnoise);

} // namespace Ffa
