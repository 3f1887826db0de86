#pragma once

#include "ffa/syntheticsignal.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace TestSupport {

using Series = std::vector<double>;
using Operation = std::function<bool()>;

} // namespace TestSupport

Q_DECLARE_METATYPE(TestSupport::Operation)

namespace TestSupport {

constexpr double guard = -12345.5;

/// What operation(double *out) writes to `count` values; empty when it returns false or
/// writes beyond them.
template <typename Writer>
Series guarded(int count, Writer operation)
{
    Series out(std::size_t(count) + 2, guard);
    if (!operation(out.data() + 1) || out.front() != guard || out.back() != guard)
        return {};
    return Series(out.begin() + 1, out.end() - 1);
}

/// Room for results that must not come.
inline Series untouched(256, guard);

/// A row of a table of refusals: the debug line that is expected and the call it comes from.
template <typename Function, typename... Arguments>
void refusalRow(const QString &line, Function function, Arguments... arguments)
{
    QTest::newRow(qPrintable(line))
        << Operation([=]() mutable { return std::invoke(function, arguments...); });
}

/// Checks that the call of the row returns false after its line and writes no value.
inline void checkRefusal()
{
    QFETCH(Operation, operation);
    std::fill(untouched.begin(), untouched.end(), guard);
    QTest::ignoreMessage(QtDebugMsg, QTest::currentDataTag());
    QVERIFY(!operation());
    QCOMPARE(untouched, Series(256, guard));
}

inline Series noise(int count, unsigned seed = 7, double sigma = 3)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(0, sigma);
    Series series(static_cast<std::size_t>(count));
    for (double &value : series)
        value = normal(random);
    return series;
}

/// A train of pulses; all times in seconds, `ducy` and `amplitude` as in
/// Ffa::syntheticPulseSignal().
inline Series pulses(int count, double tsamp, double period, double ducy, double amplitude)
{
    const double turns = 6.283 / (2 * M_PI); // the generator's two pi is short
    const auto train =
        Ffa::syntheticPulseSignal(count, turns * period / tsamp, 0.3, ducy, amplitude, 0);
    return {train.begin(), train.end()};
}

/// Adds a sine whose frequency rises evenly by `drift`, with `frequency` in the middle.
inline void addSine(Series &series, double tsamp, double frequency, double amplitude,
                    double drift = 0, double phase = 1)
{
    const double length = double(series.size()) * tsamp;
    for (std::size_t i = 0; i < series.size(); ++i) {
        const double t = double(i) * tsamp;
        const double turns = (frequency - drift / 2) * t + drift * t * t / (2 * length);
        series[i] += amplitude * std::cos(phase + 2 * M_PI * turns);
    }
}

/// Counts how many results lie within one and two of their error bars.
struct Coverage {
    int all = 0, one = 0, two = 0;

    void add(double errors) // between result and truth
    {
        ++all;
        one += std::abs(errors) <= 1 ? 1 : 0;
        two += std::abs(errors) <= 2 ? 1 : 0;
    }

    /// Whether 68 and 95 % do, within three times what chance scatters.
    bool isTrue() const
    {
        const auto isNear = [this](int within, double share) {
            return std::abs(within - share * all) < 3 * std::sqrt(share * (1 - share) * all);
        };
        return isNear(one, 0.683) && isNear(two, 0.954);
    }

    QString text() const { return QString("%1 and %2 of %3").arg(one).arg(two).arg(all); }
};

/// Noise whose sums over channels depend on the order of the additions.
inline float roughSample(int point, int module, int channel, int ray)
{
    const unsigned key =
        (unsigned(point) * 64 + unsigned(channel)) * 8 + unsigned(module * 4 + ray);
    const unsigned bits = key * 2654435761U;
    return std::ldexp(float(bits >> 8), int(bits % 37)); // no double holds a sum of these
}

/// Changes the frequencies so that each of 32 bands is `lag` samples later than the next one
/// at this dispersion.
inline void spreadBands(ObservationData &data, double dispersion, double lag)
{
    const double perSample = data.tresolution / (0x1.034ccccccccccp+12 * dispersion);
    for (int c = 0; c < int(data.fbands.size()); ++c)
        data.fbands[std::size_t(c)] =
            1 / std::sqrt(1 / (111.5 * 111.5) + (31 - c) * lag * perSample);
}

} // namespace TestSupport
