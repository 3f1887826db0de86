#pragma once

#include <QString>

/// Base lines by their names: "polinom5", the polynomial of degree 5; "median", the line through
/// medians of 256 points; "backSum", the line through means of 128 points. Every other name stands
/// for none.
namespace Tools {

bool isBaseline(const QString &noise);

/// The base line of a series; zeros where the name stands for none. Sums hand in their sum with
/// opposite delays for "backSum".
///
/// @param in, out  count values each, may be one array
/// @return false, after a debug line, when the series is too short for it
bool findBaseline(const QString &noise, const double *in, double *out, int count);

/// What the curve of a base line is called; empty where the name stands for none.
QString baselineCurveName(const QString &noise);

} // namespace Tools
