#include "calc/profileshift.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

namespace Tools {

namespace {

using Complex = std::complex<double>;

// The correlation of a profile with a template: sum of the real parts of t_k exp(2 pi i k turn).
class Correlation {
public:
    // @param ofTemplate  what each harmonic of the profile is multiplied by, from the first on
    Correlation(const Harmonics &profile, const Harmonics &ofTemplate)
    {
        for (std::size_t i = 0; i < ofTemplate.size(); ++i)
            terms.push_back(profile[i + 1] * ofTemplate[i]);
    }

    double at(double turn) const { return sums(turn).value; }

    // The highest, refined by Newton's steps from the best place of a grid, which is that of the
    // profile with these harmonics.
    double best() const
    {
        const std::size_t places = std::bit_ceil(4 * (terms.size() + 1));
        Harmonics harmonics(places / 2 + 1);
        std::copy(terms.begin(), terms.end(), harmonics.begin() + 1);
        const std::vector<double> values = profileOf(harmonics);
        const auto highest = std::max_element(values.begin(), values.end());
        double turn = double(highest - values.begin()) / double(places);
        const double most = 0.5 / double(places);
        constexpr int steps = 6;
        for (int i = 0; i < steps; ++i) {
            const Sums here = sums(turn);
            if (here.second < 0)
                turn -= std::clamp(here.first / here.second, -most, most);
        }
        return turn;
    }

private:
    struct Sums {
        double value = 0;
        double first = 0; // derivatives by the turn
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

    Harmonics terms;
};

double sinc(double x)
{
    return x == 0 ? 1 : std::sin(x) / x;
}

constexpr double fwhmPerSigma = 2.3548200450309493; // 2 sqrt(2 ln 2)

// Errors follow from the highest S/N^2 of a noisy profile. It is higher by one for each number that
// is fitted, so that they are so much too small.
double excess(double square, int fitted)
{
    return 1 + fitted / square;
}

// Height, phase, width, period and dispersion; and as much as they scatter more than their bound at
// S/N 8 and 12, where it is near, in simulations.
constexpr int fittedTogether = 5 + 7;

} // namespace

TemplateMatcher::TemplateMatcher(const ProfileNoise &noise, const Harmonics &pulse)
{
    // Of all so far: harmonics beyond the last one that has so much tell nothing.
    constexpr double leastPower = 1e-9;
    const int bins = 2 * (int(pulse.size()) - 1);
    std::size_t needed = 0;
    for (int k = 1; k < bins / 2; ++k) {
        const double weight = 2 / noise.harmonicVariance(k, bins);
        factors.push_back(weight * std::conj(pulse[std::size_t(k)]));
        const double power = weight * std::norm(pulse[std::size_t(k)]);
        norm += power;
        curvature += power * std::pow(2 * M_PI * k, 2);
        if (power > leastPower * norm)
            needed = std::size_t(k);
    }
    factors.resize(needed);
}

TemplateMatch TemplateMatcher::match(const Harmonics &profile, int fitted) const
{
    if (!(norm > 0))
        return {};
    const Correlation correlation(profile, factors);
    const double turn = correlation.best();
    TemplateMatch match;
    match.phase = turn - std::round(turn);
    match.height = correlation.at(turn) / norm;
    if (!(match.height > 0))
        return {};
    match.snr = match.height * std::sqrt(norm);
    match.ownPhaseError =
        std::sqrt(excess(match.snr * match.snr, fitted)) / (match.height * std::sqrt(curvature));
    match.phaseError = match.ownPhaseError;
    return match;
}

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
    const Harmonics clean =
        templateSigma > 0 ? withoutNoise(pulse, {templateSigma, noise.shared}) : pulse;
    TemplateMatch match = TemplateMatcher(noise, clean).match(profile);
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

// S/N^2 of trial values and the parabola at their top.
class Likelihood {
public:
    Likelihood(const std::vector<double> &trialValues, const std::vector<double> &trialSnr)
        : values(trialValues), snr(trialSnr),
          top(int(std::max_element(snr.begin(), snr.end()) - snr.begin())), highest(square(top))
    {
        if (top == 0 || top == last())
            return;
        const double slope = (square(top + 1) - square(top - 1)) / 2;
        const double bend = (square(top + 1) + square(top - 1)) / 2 - highest;
        if (!(bend < 0))
            return;
        vertex = -slope / (2 * bend);
        highest -= slope * slope / (4 * bend);
    }

    double best() const { return valueAt(top + vertex); }

    // The value so many standard deviations away to one side, +1 or -1; none where S/N^2 does not
    // fall so far. Between trials, the root of what is missing grows evenly.
    std::optional<double> away(double deviations, int side) const
    {
        double place = top + vertex;
        double depth = 0;
        for (int i = side * vertex < 0 ? top : top + side; i >= 0 && i <= last(); i += side) {
            const double here =
                std::sqrt(std::max(0.0, highest - square(i)) / excess(highest, fittedTogether));
            if (here >= deviations)
                return valueAt(place + (i - place) * (deviations - depth) / (here - depth));
            place = i;
            depth = here;
        }
        return std::nullopt;
    }

private:
    int last() const { return int(values.size()) - 1; }
    double square(int i) const { return snr[std::size_t(i)] * snr[std::size_t(i)]; }
    double valueAt(double place) const
    {
        return values.front() + place * (values.back() - values.front()) / last();
    }

    const std::vector<double> &values;
    const std::vector<double> &snr;
    int top;
    double highest;
    double vertex = 0; // in steps from the top
};

} // namespace

LikelyValue likelyValue(const std::vector<double> &values, const std::vector<double> &snr)
{
    const Likelihood likelihood(values, snr);
    const std::optional<double> low = likelihood.away(1, -1);
    const std::optional<double> high = likelihood.away(1, 1);
    LikelyValue found;
    found.best = likelihood.best();
    found.low = low.value_or(values.front());
    found.high = high.value_or(values.back());
    found.error = std::abs(found.high - found.low) / 2;
    found.isInside = low && high;
    return found;
}

std::vector<double> valuesRound(double centre, double half)
{
    constexpr int steps = 8;
    std::vector<double> values;
    for (int i = -steps; i <= steps; ++i)
        values.push_back(centre + i * half / steps);
    return values;
}

GaussianPulse fitGaussian(const Harmonics &profile, const ProfileNoise &noise)
{
    if (!(noise.sigma > 0))
        return {};
    const int bins = 2 * (int(profile.size()) - 1);
    const auto matchAt = [&](double logWidth) {
        const Harmonics pulse = gaussianTemplate(std::exp(logWidth), bins, noise.shared);
        return TemplateMatcher(noise, pulse).match(profile, fittedTogether);
    };
    const auto snrAt = [&](const std::vector<double> &logWidths) {
        std::vector<double> snr;
        for (const double logWidth : logWidths)
            snr.push_back(matchAt(logWidth).snr);
        return snr;
    };
    const double least = std::log(0.25 / bins);
    const double greatest = std::log(0.75);
    constexpr int steps = 24;
    const double step = (greatest - least) / steps;
    std::vector<double> widths;
    for (int i = 0; i <= steps; ++i)
        widths.push_back(least + i * step);
    const std::vector<double> snr = snrAt(widths);
    const Likelihood coarse(widths, snr);
    const std::vector<double> near = valuesRound(coarse.best(), step);
    const LikelyValue nearer = likelyValue(near, snrAt(near));
    const std::vector<double> nearest = valuesRound(nearer.best, 2 * nearer.error);
    const LikelyValue found = likelyValue(nearest, snrAt(nearest));
    GaussianPulse pulse;
    pulse.width = (std::exp(found.low) + std::exp(found.high)) / 2;
    pulse.widthError = (std::exp(found.high) - std::exp(found.low)) / 2;
    pulse.widthLimit = std::exp(coarse.away(2, 1).value_or(greatest));
    pulse.isResolved = coarse.away(2, -1) && coarse.away(1, 1);
    const TemplateMatch match = matchAt(std::log(pulse.width));
    pulse.phase = match.phase - std::floor(match.phase);
    pulse.phaseError = match.phaseError;
    pulse.snr = match.snr;
    return pulse;
}

} // namespace Tools
