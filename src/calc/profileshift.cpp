#include "calc/profileshift.h"

#include <algorithm>
#include <cmath>

namespace Tools {

namespace {

using Complex = std::complex<double>;

// The correlation of a profile with a template and its derivatives by the turn.
class Correlation {
public:
    Correlation(const Harmonics &profile, const ProfileNoise &noise, const Harmonics &pulse)
        : bins(2 * (int(profile.size()) - 1))
    {
        for (int k = 1; k < bins / 2; ++k) {
            const double weight = 2 / noise.harmonicVariance(k, bins);
            const auto at = std::size_t(k);
            terms.push_back(weight * profile[at] * std::conj(pulse[at]));
            const double power = weight * std::norm(pulse[at]);
            norm += power;
            curvature += power * std::pow(2 * M_PI * k, 2);
        }
    }

    double at(double turn) const { return sums(turn).value; }

    // The highest, refined by Newton's steps from the best place of a grid.
    double best() const
    {
        const int places = 2 * bins;
        double turn = 0;
        double highest = at(0);
        for (int i = 1; i < places; ++i) {
            const double value = at(double(i) / places);
            if (value > highest) {
                highest = value;
                turn = double(i) / places;
            }
        }
        constexpr int steps = 6;
        for (int i = 0; i < steps; ++i) {
            const Sums here = sums(turn);
            if (here.second < 0)
                turn -= std::clamp(here.first / here.second, -0.5 / places, 0.5 / places);
        }
        return turn;
    }

    double norm = 0;      // sum of the template's powers over their noise
    double curvature = 0; // the same times (2 pi k)^2

private:
    struct Sums {
        double value = 0;
        double first = 0;
        double second = 0;
    };

    Sums sums(double turn) const
    {
        const Complex step = std::polar(1.0, 2 * M_PI * turn);
        Complex factor = step;
        Sums all;
        for (std::size_t i = 0; i < terms.size(); ++i) {
            const double angular = 2 * M_PI * double(i + 1);
            const Complex term = terms[i] * factor;
            all.value += term.real();
            all.first -= angular * term.imag();
            all.second -= angular * angular * term.real();
            factor *= step;
        }
        return all;
    }

    int bins;
    std::vector<Complex> terms; // of harmonics 1 on
};

double sinc(double x)
{
    return x == 0 ? 1 : std::sin(x) / x;
}

constexpr double fwhmPerSigma = 2.3548200450309493; // 2 sqrt(2 ln 2)

TemplateMatch matchOf(const Correlation &correlation)
{
    TemplateMatch match;
    if (!(correlation.norm > 0))
        return match;
    const double turn = correlation.best();
    match.phase = turn - std::round(turn);
    match.height = correlation.at(turn) / correlation.norm;
    match.snr = match.height * std::sqrt(correlation.norm);
    if (!(match.height > 0))
        return {};
    match.phaseError = 1 / (match.height * std::sqrt(correlation.curvature));
    return match;
}

} // namespace

namespace {

// A template less its own noise: harmonics that do not stand out of it with their neighbours go,
// for noise in them would count as sharp features of the pulse.
Harmonics withoutNoise(const Harmonics &pulse, const ProfileNoise &noise)
{
    constexpr int neighbours = 2; // to either side
    constexpr double leastPower = 2.5;
    const int half = int(pulse.size()) - 1;
    Harmonics clean(pulse.size());
    for (int k = 1; k < half; ++k) {
        double power = 0;
        int count = 0;
        for (int i = std::max(1, k - neighbours); i <= std::min(half - 1, k + neighbours); ++i) {
            power += std::norm(pulse[std::size_t(i)]) / noise.harmonicVariance(i, 2 * half);
            ++count;
        }
        power /= count;
        if (power > leastPower)
            clean[std::size_t(k)] = (1 - 1 / power) * pulse[std::size_t(k)];
    }
    return clean;
}

} // namespace

TemplateMatch matchTemplate(const Harmonics &profile, const ProfileNoise &noise,
                            const Harmonics &pulse, double templateSigma)
{
    if (!(templateSigma > 0))
        return matchOf(Correlation(profile, noise, pulse));
    const Harmonics clean = withoutNoise(pulse, {templateSigma, noise.shared});
    TemplateMatch match = matchOf(Correlation(profile, noise, clean));
    const double ratio = match.height * templateSigma / noise.sigma;
    match.phaseError *= std::sqrt(1 + ratio * ratio);
    return match;
}

Harmonics gaussianTemplate(double width, int bins, double shared)
{
    Harmonics pulse;
    const double sigma = width / fwhmPerSigma;
    for (int k = 0; k <= bins / 2; ++k) {
        const double ofBin = M_PI * k / bins;
        // The mean over a sample, and the overlap of samples with bins.
        const double ofSample = sinc(3 * shared * ofBin);
        const double height = std::exp(-2 * std::pow(M_PI * k * sigma, 2)) * sinc(ofBin) *
                              ofSample * ofSample * bins * sigma * std::sqrt(2 * M_PI);
        // Bin i has its middle at i + 1/2.
        pulse.push_back(std::polar(height, ofBin));
    }
    return pulse;
}

namespace {

// Standard deviation of the width where height and width are fitted together: by the powers of the
// template and of its derivative by the width.
double widthErrorOf(double width, double height, const ProfileNoise &noise, int bins)
{
    const double step = width / 100;
    const Harmonics low = gaussianTemplate(width - step, bins, noise.shared);
    const Harmonics here = gaussianTemplate(width, bins, noise.shared);
    const Harmonics high = gaussianTemplate(width + step, bins, noise.shared);
    double ofHeight = 0;
    double ofWidth = 0;
    double both = 0;
    for (int k = 1; k < bins / 2; ++k) {
        const auto at = std::size_t(k);
        const double weight = 2 / noise.harmonicVariance(k, bins);
        const Complex slope = (high[at] - low[at]) / (2 * step);
        ofHeight += weight * std::norm(here[at]);
        ofWidth += weight * std::norm(slope);
        both += weight * (std::conj(here[at]) * slope).real();
    }
    const double information = ofWidth - both * both / ofHeight;
    return 1 / (height * std::sqrt(information));
}

} // namespace

GaussianPulse fitGaussian(const Harmonics &profile, const ProfileNoise &noise)
{
    const int bins = 2 * (int(profile.size()) - 1);
    const double least = 0.25 / bins;
    const double greatest = 0.5;
    if (!(noise.sigma > 0))
        return {};
    const auto matchAt = [&](double logWidth) {
        return matchOf(
            Correlation(profile, noise, gaussianTemplate(std::exp(logWidth), bins, noise.shared)));
    };
    constexpr int steps = 24;
    const double step = std::log(greatest / least) / steps;
    int best = 0;
    double snr = -1;
    for (int i = 0; i <= steps; ++i) {
        const double here = matchAt(std::log(least) + i * step).snr;
        if (here > snr) {
            snr = here;
            best = i;
        }
    }
    // The golden section keeps the highest between its ends.
    double low = std::log(least) + std::max(0, best - 1) * step;
    double high = std::log(least) + std::min(steps, best + 1) * step;
    const double section = (3 - std::sqrt(5.0)) / 2;
    constexpr int halvings = 20;
    for (int i = 0; i < halvings; ++i) {
        const double a = low + section * (high - low);
        const double b = high - section * (high - low);
        if (matchAt(a).snr > matchAt(b).snr)
            high = b;
        else
            low = a;
    }
    GaussianPulse pulse;
    pulse.width = std::exp((low + high) / 2);
    const TemplateMatch match = matchAt(std::log(pulse.width));
    pulse.phase = match.phase - std::floor(match.phase);
    pulse.phaseError = match.phaseError;
    pulse.snr = match.snr;
    pulse.isResolved = pulse.width > least * 1.01 && pulse.width < greatest * 0.99;
    if (match.height > 0)
        pulse.widthError = widthErrorOf(pulse.width, match.height, noise, bins);
    return pulse;
}

} // namespace Tools
