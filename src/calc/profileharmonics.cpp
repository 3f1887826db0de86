#include "calc/profileharmonics.h"

#include "calc/fourier.h"

#include <cmath>

namespace Tools {

namespace {

// exp(2 pi i n / count) for n = 0 .. count - 1.
Harmonics unitCircle(int count)
{
    Harmonics circle;
    for (int n = 0; n < count; ++n)
        circle.push_back(std::polar(1.0, 2 * M_PI * n / count));
    return circle;
}

} // namespace

double ProfileNoise::harmonicVariance(int k, int bins) const
{
    return bins * sigma * sigma * (1 - shared * (1 - std::cos(2 * M_PI * k / bins)));
}

Harmonics harmonicsOf(const double *profile, int bins)
{
    Harmonics harmonics(std::size_t(bins) / 2 + 1);
    complexSpectrum(profile, harmonics.data(), bins, bins / 2);
    double alternating = 0;
    for (int i = 0; i < bins; i += 2)
        alternating += profile[i] - profile[i + 1];
    for (std::complex<double> &harmonic : harmonics)
        harmonic *= bins / 2.0;
    harmonics.back() = alternating;
    return harmonics;
}

Harmonics harmonicsOf(const std::vector<double> &profile)
{
    return harmonicsOf(profile.data(), int(profile.size()));
}

std::vector<double> profileOf(const Harmonics &harmonics)
{
    const std::size_t last = harmonics.size() - 1;
    const std::size_t bins = 2 * last;
    const Harmonics circle = unitCircle(int(bins));
    std::vector<double> profile(bins);
    for (std::size_t i = 0; i < bins; ++i) {
        double sum = harmonics[0].real();
        for (std::size_t k = 1; k < last; ++k)
            sum += 2 * (harmonics[k] * circle[i * k % bins]).real();
        sum += (i % 2 ? -1 : 1) * harmonics[last].real();
        profile[i] = sum / double(bins);
    }
    return profile;
}

void addTurned(const Harmonics &harmonics, double turns, double weight, Harmonics &sum)
{
    const std::complex<double> step = std::polar(1.0, -2 * M_PI * turns);
    const std::size_t last = harmonics.size() - 1;
    std::complex<double> factor = weight;
    for (std::size_t k = 0; k < last; ++k) {
        sum[k] += factor * harmonics[k];
        factor *= step;
    }
    sum[last] += factor.real() * harmonics[last].real();
}

std::vector<double> turnedProfile(const std::vector<double> &profile, double turns)
{
    Harmonics sum(profile.size() / 2 + 1);
    addTurned(harmonicsOf(profile), turns, 1, sum);
    return profileOf(sum);
}

} // namespace Tools
