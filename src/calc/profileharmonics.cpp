#include "calc/profileharmonics.h"

#include "calc/fourier.h"

#include <cmath>

namespace Tools {

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

// By the Hartley transform, which of real numbers is its own inverse: with R and I the parts of the
// harmonics of r_k = Re c_k - Im c_k, p_i = (R_i - I_i) / N.
std::vector<double> profileOf(const Harmonics &harmonics)
{
    const std::size_t last = harmonics.size() - 1;
    const std::size_t bins = 2 * last;
    std::vector<double> profile(bins);
    for (std::size_t k = 0; k <= last; ++k)
        profile[k] = harmonics[k].real();
    for (std::size_t k = 1; k < last; ++k) {
        profile[k] -= harmonics[k].imag();
        profile[bins - k] = harmonics[k].real() + harmonics[k].imag();
    }
    const Harmonics turned = harmonicsOf(profile);
    for (std::size_t i = 0; i <= last; ++i)
        profile[i] = (turned[i].real() - turned[i].imag()) / double(bins);
    for (std::size_t i = 1; i < last; ++i)
        profile[bins - i] = (turned[i].real() + turned[i].imag()) / double(bins);
    return profile;
}

void addTurned(const Harmonics &harmonics, double turns, double weight, Harmonics &sum)
{
    // In parts, for products of complex numbers look for infinite ones.
    const double stepRe = std::cos(2 * M_PI * turns);
    const double stepIm = -std::sin(2 * M_PI * turns);
    const std::size_t last = harmonics.size() - 1;
    double re = weight;
    double im = 0;
    for (std::size_t k = 0; k < last; ++k) {
        const double a = harmonics[k].real();
        const double b = harmonics[k].imag();
        sum[k] += std::complex<double>(re * a - im * b, re * b + im * a);
        const double nextRe = re * stepRe - im * stepIm;
        im = re * stepIm + im * stepRe;
        re = nextRe;
    }
    sum[last] += re * harmonics[last].real();
}

std::vector<double> turnedProfile(const std::vector<double> &profile, double turns)
{
    Harmonics sum(profile.size() / 2 + 1);
    addTurned(harmonicsOf(profile), turns, 1, sum);
    return profileOf(sum);
}

} // namespace Tools
