#pragma once

#include <QtGlobal>

/// Plain operations on float arrays. Output arrays belong to the caller, have n values and
/// may not overlap the inputs unless said.
namespace Ffa {

/// out[i] = x[i] + y[i]; out may be x or y.
void addArrays(const float *x, const float *y, quint64 n, float *out);

/// out[i] = x[i] + c; out may be x.
void addConstant(const float *x, float c, quint64 n, float *out);

/// Largest x[i] - y[i]. A difference that is not a number is passed over unless it is the
/// first; of zeros with both signs the earlier one is returned.
///
/// @param n  at least 1
float largestDifference(const float *x, const float *y, quint64 n);

/// out = x[k mod n ..], then x[0 .. k mod n): element k comes first.
///
/// @param n  at least 1
void rotateArray(const float *x, quint64 n, quint64 k, float *out);

/// out[i] = x[i] + y[(i + shift) mod n].
///
/// @param n  at least 1
void rollAdd(const float *x, const float *y, quint64 n, quint64 shift, float *out);

} // namespace Ffa
