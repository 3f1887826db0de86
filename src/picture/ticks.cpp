#include "picture/ticks.h"

#include <algorithm>
#include <cmath>

namespace Plot {

namespace {

constexpr double rounding = 1e-9; // of a step
constexpr int mostDigits = 15;

// Power of ten of the first digit.
int magnitudeOf(double value)
{
    return int(std::floor(std::log10(std::abs(value)) + rounding));
}

} // namespace

double roundStepAbove(double wanted)
{
    if (!(wanted > 0) || !std::isfinite(wanted))
        return 0;
    const double power = std::pow(10.0, std::floor(std::log10(wanted)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= wanted * (1 - rounding))
            return factor * power;
    return 10 * power;
}

Ticks roundTicks(double low, double high, double leastStep)
{
    constexpr double mostTicks = 1000;
    Ticks ticks;
    ticks.step = roundStepAbove(leastStep);
    if (ticks.step == 0 || !std::isfinite(low) || !std::isfinite(high) || high < low)
        return ticks;
    const double first = std::ceil(low / ticks.step - rounding);
    const double last = std::floor(high / ticks.step + rounding);
    if (!(last - first < mostTicks))
        return ticks;
    // Below 1 the step itself is not exact, but one over it is.
    const double inverse = std::round(1 / ticks.step);
    for (double number = first; number <= last; ++number)
        ticks.values.push_back(ticks.step < 1 ? number / inverse : number * ticks.step);
    return ticks;
}

QString tickText(double value, double step)
{
    constexpr int mostDecimals = 7;
    constexpr double mostFixed = 1e7;
    if (value == 0)
        return "0";
    if (!(step > 0))
        return QString::number(value, 'g', 6);
    const int decimals = std::max(0, -magnitudeOf(step));
    if (decimals > mostDecimals || std::abs(value) >= mostFixed)
        return exponentText(value, step);
    const QString text = QString::number(value, 'f', decimals);
    return text.toDouble() == 0 ? "0" : text;
}

QString exponentText(double value, double step)
{
    if (value == 0 || !std::isfinite(value))
        return QString::number(value);
    const int digits = step > 0 ? magnitudeOf(value) - magnitudeOf(step) : 5;
    if (digits < 0)
        return "0";
    const QString text = QString::number(value, 'e', std::min(digits, mostDigits));
    const QString mantissa = text.section('e', 0, 0);
    return mantissa + "e" + QString::number(text.section('e', 1).toInt());
}

} // namespace Plot
