#pragma once

#include <QString>
#include <vector>

/// Round values of an axis and their texts, as plain arithmetic.
namespace Plot {

/// Multiples of a step that is 1, 2 or 5 times a power of ten, ascending.
struct Ticks {
    double step = 0;
    std::vector<double> values;
};

/// The smallest 1, 2 or 5 times a power of ten that is not below `wanted`; 0 unless that is
/// positive and finite.
double roundStepAbove(double wanted);

/// The round values from `low` to `high`, both included, in the smallest round step that is not
/// below `leastStep`. None where an end is no number, `high` is below `low`, or there would be more
/// than a thousand.
Ticks roundTicks(double low, double high, double leastStep);

/// A value with the digits that a change by `step` makes: fixed notation, or beyond seven digits
/// on either side of the point an exponent, "2.4e7".
///
/// @param step  0: six significant digits
QString tickText(double value, double step);

/// The same always with an exponent.
QString exponentText(double value, double step);

} // namespace Plot
