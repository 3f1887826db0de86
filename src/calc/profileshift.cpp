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
    {
        const int bins = 2 * (int(profile.size()) - 1);
        std::size_t needed = 0;
        for (int k = 1; k < bins / 2; ++k) {
            const double weight = 2 / noise.harmonicVariance(k, bins);
            const auto at = std::size_t(k);
            terms.push_back(weight * profile[at] * std::conj(pulse[at]));
            const double power = weight * std::norm(pulse[at]);
            norm += power;
            curvature += power * std::pow(2 * M_PI * k, 2);
            if (power > leastPower * norm)
                needed = at;
        }
        terms.resize(needed);
    }

    double at(double turn) const { return sums(turn).value; }

    // The highest, refined by Newton's steps from the best place of a grid.
    double best() const
    {
        const int places = 4 * (int(terms.size()) + 1);
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

    // Of all so far: harmonics beyond the last one that has so much tell nothing.
    static constexpr double leastPower = 1e-9;

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
    match.ownPhaseError = 1 / (match.height * std::sqrt(correlation.curvature));
    match.phaseError = match.ownPhaseError;
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

    // The value so many standard deviations away to one side, +1 or -1; the last one there where
    // S/N^2 does not fall so far. Between trials, the root of what is missing grows evenly.
    double away(double deviations, int side) const
    {
        double place = top + vertex;
        double depth = 0;
        for (int i = side * vertex < 0 ? top : top + side; i >= 0 && i <= last(); i += side) {
            const double here = std::sqrt(std::max(0.0, highest - square(i)));
            if (here >= deviations)
                return valueAt(place + (i - place) * (deviations - depth) / (here - depth));
            place = i;
            depth = here;
        }
        return valueAt(place);
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
    LikelyValue found;
    found.best = likelihood.best();
    found.low = likelihood.away(1, -1);
    found.high = likelihood.away(1, 1);
    found.error = std::abs(found.high - found.low) / 2;
    found.isInside = found.low != values.front() && found.high != values.back();
    return found;
}

std::vector<double> valuesRound(const LikelyValue &coarse)
{
    constexpr int half = 8;
    constexpr double deviations = 2;
    std::vector<double> values;
    const double step = (coarse.high - coarse.low) / 2 * deviations / half;
    for (int i = -half; i <= half; ++i)
        values.push_back(coarse.best + i * step);
    return values;
}

GaussianPulse fitGaussian(const Harmonics &profile, const ProfileNoise &noise)
{
    if (!(noise.sigma > 0))
        return {};
    const int bins = 2 * (int(profile.size()) - 1);
    const double least = std::log(0.25 / bins);
    const double greatest = std::log(0.5);
    const auto matchAt = [&](double logWidth) {
        return matchOf(
            Correlation(profile, noise, gaussianTemplate(std::exp(logWidth), bins, noise.shared)));
    };
    const auto snrAt = [&](const std::vector<double> &logWidths) {
        std::vector<double> snr;
        for (const double logWidth : logWidths)
            snr.push_back(matchAt(logWidth).snr);
        return snr;
    };
    constexpr int steps = 24;
    std::vector<double> coarse;
    for (int i = 0; i <= steps; ++i)
        coarse.push_back(least + i * (greatest - least) / steps);
    const std::vector<double> coarseSnr = snrAt(coarse);
    const LikelyValue first = likelyValue(coarse, coarseSnr);
    const std::vector<double> fine = valuesRound(first);
    const LikelyValue found = likelyValue(fine, snrAt(fine));
    GaussianPulse pulse;
    pulse.width = std::exp(found.best);
    pulse.widthError = (std::exp(found.high) - std::exp(found.low)) / 2;
    pulse.widthLimit = std::exp(Likelihood(coarse, coarseSnr).away(2, 1));
    pulse.isResolved = Likelihood(coarse, coarseSnr).away(2, -1) > least &&
                       Likelihood(coarse, coarseSnr).away(2, 1) < greatest;
    const TemplateMatch match = matchAt(found.best);
    pulse.phase = match.phase - std::floor(match.phase);
    pulse.phaseError = match.phaseError;
    pulse.snr = match.snr;
    return pulse;
}

} // namespace Tools
