#include "ffa/syntheticsignal.h"

#include "base/debugline.h"
#include "base/systemmemory.h"

#include <QTextStream>
#include <cmath>
#include <map>
#include <random>
#include <stdexcept>

namespace Ffa {

namespace {

// Pi and two pi as the stored test signals were made with.
constexpr double shortPi = 3.1415;
constexpr double shortTwoPi = 6.283;
constexpr double ln2 = 0.6931471805599453;

bool fitsInMemory(const char *operation, qint64 count, qint64 bytesPerValue)
{
    if (count >= 0 && count <= availableMemory() / bytesPerValue)
        return true;
    debugLine("Ffa::", operation, "(): bad count=", count);
    return false;
}

// The token asks for a generator instead of the hardware; libraries that have the hardware
// refuse it.
unsigned randomSeed()
{
    try {
        return std::random_device("mt19937")();
    } catch (const std::runtime_error &) {
        return std::random_device()();
    }
}

} // namespace

std::vector<float> syntheticPulseSignal(qint64 nsamp, double period, double phase, double ducy,
                                        double amplitude, double stdnoise)
{
    // The pulses in double, the noise in double and the result are alive together.
    constexpr qint64 bytesPerSample = 2 * sizeof(double) + sizeof(float);
    if (!fitsInMemory("syntheticPulseSignal", nsamp, bytesPerSample))
        return {};
    const double halfWidthSine = std::sin(shortPi * ducy * 0.5);
    const double kappa = ln2 / (2 * (halfWidthSine * halfWidthSine));
    std::vector<double> pulses(std::size_t(nsamp), 0.0);
    double squares = 0;
    for (qint64 i = 0; i < nsamp; ++i) {
        const double angle = shortTwoPi * (double(i) / period - phase);
        const double value = std::exp((std::cos(angle) - 1) * kappa);
        pulses[std::size_t(i)] = value;
        squares += value * value;
    }
    const double scale = amplitude / std::sqrt(squares);
    for (double &value : pulses)
        value *= scale;
    if (stdnoise > 0) {
        const std::vector<double> noise = gaussianSeries(nsamp, 0.0, stdnoise);
        for (std::size_t i = 0; i < noise.size(); ++i)
            pulses[i] += noise[i];
    }
    return {pulses.begin(), pulses.end()};
}

std::vector<double> gaussianSeries(qint64 count, double mean, double sigma)
{
    if (!fitsInMemory("gaussianSeries", count, sizeof(double)))
        return {};
    std::mt19937 generator(randomSeed());
    std::normal_distribution<double> normal(mean, sigma);
    std::vector<double> series;
    series.reserve(std::size_t(count));
    for (qint64 i = 0; i < count; ++i)
        series.push_back(normal(generator));
    return series;
}

void printGaussianCounts(qint64 count, double mean, double sigma)
{
    std::map<double, qint64> counts;
    for (const double value : gaussianSeries(count, mean, sigma))
        ++counts[std::round(value)];
    QTextStream out(stdout);
    out << "----------------------\n";
    for (const auto &[value, times] : counts)
        out << value << " " << times << "\n";
    out << "----------------------\n";
}

} // namespace Ffa
