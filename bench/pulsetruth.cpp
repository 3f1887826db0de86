#include "analyses/pulses/pulsesearch.h"
#include "calc/boxcarsearch.h"
#include "calc/pulsetrials.h"
#include "simulator/recording.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

// Not a benchmark: whether the search for single pulses tells the truth, run by hand.
//
//   bench_pulsetruth noise HOURS [SEED]     pulses found in noise beside those expected
//   bench_pulsetruth bad HOURS [SEED]       the same with drift, steps, hum and radar
//   bench_pulsetruth found RECORDINGS [SEED]  injected pulses: found share, errors

namespace {

using namespace Pulses;
using Simulator::Simulation;
using Simulator::SinglePulse;

constexpr int points = 288000;
constexpr double step = 0.0124928; // s

Simulation hour(quint32 seed)
{
    Simulation s;
    s.npoints = points;
    s.rays = 1;
    s.seed = seed;
    return s;
}

// A telescope on the ground: drift, gain steps, hum of the mains, a radar.
void spoil(Simulation &s, std::mt19937 &random)
{
    s.drift = 3;
    for (int i = 0; i < 3; ++i)
        s.gainSteps.push_back({1, 1, int(random() % points), i % 2 == 0 ? 1.01 : 1 / 1.01});
    Simulator::PulseTrain hum;
    hum.period = 0.1607; // 50 Hz as the sampling folds it
    hum.width = 0.08;
    hum.strength = 0.15;
    s.trainsEverywhere.push_back(hum);
    Simulator::PulseTrain radar;
    radar.period = 9.87;
    radar.width = 0.02;
    radar.strength = 3;
    s.trainsEverywhere.push_back(radar);
}

struct Counts {
    int candidates = 0;
    int others = 0;
};

Counts countOf(const PulseResult &result, double threshold)
{
    Counts counts;
    for (const Pulse &pulse : result.pulses) {
        if (pulse.snr >= threshold)
            ++(pulse.verdict.isCandidate() ? counts.candidates : counts.others);
    }
    return counts;
}

void noise(int hours, quint32 seed, bool isBad)
{
    const double levels[] = {5.5, 5.75, 6, 6.25, 6.5, 6.75, 7};
    std::vector<Counts> counts(std::size(levels));
    std::vector<double> expected(std::size(levels));
    double ownThreshold = 0;
    for (int i = 0; i < hours; ++i) {
        std::mt19937 random(seed + quint32(i));
        Simulation s = hour(seed + quint32(i));
        if (isBad)
            spoil(s, random);
        PulseParameters parameters;
        ownThreshold = planPulses(Simulator::makeRecording(s), parameters).threshold;
        parameters.threshold = levels[0];
        const PulseResult result = search(Simulator::makeRecording(s), parameters);
        for (std::size_t k = 0; k < std::size(levels); ++k) {
            PulseParameters at = parameters;
            at.threshold = levels[k];
            expected[k] += planPulses(Simulator::makeRecording(hour(1)), at).expected;
            const Counts more = countOf(result, levels[k]);
            counts[k].candidates += more.candidates;
            counts[k].others += more.others;
        }
        if (isBad && i < 3)
            for (const Pulse &p : result.pulses)
                if (p.snr > 6.9)
                    std::printf("  %.2f at %d w %d dm %.1f+-%.1f zero %.1f: %s\n", p.snr,
                                p.firstPoint, p.width, p.dispersion.value, p.dispersion.error,
                                p.snrAtZero, qPrintable(nameOf(p.verdict.kind)));
    }
    std::printf("threshold of one false alarm in a recording: %.3f\n", ownThreshold);
    for (std::size_t k = 0; k < std::size(levels); ++k)
        std::printf("above %.2f: expected %.2f, candidates %d, with verdicts %d\n", levels[k],
                    expected[k], counts[k].candidates, counts[k].others);
}

// S/N of the best matched filter.
double matchedSnr(double fwhmPoints, double height, int bands)
{
    const double sigma = fwhmPoints / 2.3548200450309493;
    double squares = 0;
    const int reach = int(6 * sigma) + 2;
    for (int i = -reach; i <= reach; ++i) {
        const double mean =
            sigma * std::sqrt(M_PI / 2) *
            (std::erf((i + 0.5) / sigma / M_SQRT2) - std::erf((i - 0.5) / sigma / M_SQRT2));
        squares += mean * mean;
    }
    return height * std::sqrt(bands * squares);
}

struct Injected {
    double snr, fwhm, point, dispersion;
    double kept = 0; // share of the S/N that grid, widths and sampling leave
};

struct Case {
    Simulation simulation;
    std::vector<Injected> pulses;
};

Case injected(quint32 seed)
{
    std::mt19937 random(seed);
    const auto draw = [&](double from, double to) {
        return from + (to - from) * (random() + 0.5) / 4294967296.0;
    };
    Case c;
    c.simulation = hour(seed);
    for (int i = 0; i < 60; ++i) {
        Injected one;
        one.snr = draw(6, 20);
        one.fwhm = std::exp(draw(0, std::log(100.0)));
        one.dispersion = draw(2, 300);
        one.point = 3000 + i * 4600 + draw(0, 1500);
        SinglePulse pulse;
        pulse.time = one.point * step;
        pulse.width = one.fwhm * step;
        pulse.dispersion = one.dispersion;
        pulse.strength = one.snr / matchedSnr(one.fwhm, 1, 32);
        c.simulation.pulses.push_back(pulse);
        c.pulses.push_back(one);
    }
    return c;
}

// What the search makes of the pulses alone, without noise.
void measureLoss(Case &c, const PulsePlan &plan)
{
    Simulation s = c.simulation;
    s.noise = false;
    s.level = 0;
    const ObservationData data = Simulator::makeRecording(s);
    Tools::DispersionTree tree(data, 32, plan.dispersions);
    Tools::BandRows rows = Tools::rowsFor(tree, 32, points, plan.widths);
    for (int band = 0; band < 32; ++band)
        std::copy_n(data.samples[0][band][0], points, rows.row(band));
    std::vector<float> scales;
    for (std::size_t i = 0; i < plan.dispersions.size(); ++i)
        for (const int width : plan.widths)
            scales.push_back(float(1 / std::sqrt(32.0 * width)));
    for (const Tools::BoxcarEvent &peak : Tools::findBoxcars(rows, tree, plan.widths, scales, 3)) {
        for (Injected &one : c.pulses) {
            if (std::abs(peak.first - one.point) < 1500)
                one.kept = std::max(one.kept, double(peak.snr) / one.snr);
        }
    }
}

struct Shares {
    int all = 0, one = 0, two = 0;
    void add(double errors)
    {
        ++all;
        one += std::abs(errors) <= 1;
        two += std::abs(errors) <= 2;
    }
    void print(const char *what) const
    {
        std::printf("%s: within one error %.3f, two %.3f of %d\n", what, double(one) / all,
                    double(two) / all, all);
    }
};

void found(int recordings, quint32 seed)
{
    int hits[7] = {}, all[7] = {};
    double ideal[7] = {};
    double kept = 0;
    int number = 0;
    Shares dispersion[2], time[2], width[2], infinite[2]; // below S/N 10, and above
    for (int r = 0; r < recordings; ++r) {
        Case c = injected(seed + quint32(r));
        const ObservationData data = Simulator::makeRecording(c.simulation);
        const PulseResult result = search(data, {});
        measureLoss(c, result.plan);
        for (const Injected &one : c.pulses) {
            const Pulse *best = nullptr;
            for (const Pulse &pulse : result.pulses) {
                if (std::abs(pulse.point.value - one.point) < 3 * one.fwhm + 20 &&
                    std::abs(pulse.dispersion.value - one.dispersion) < 20 + 3 * one.fwhm &&
                    (!best || pulse.snr > best->snr))
                    best = &pulse;
            }
            const int bin = int((one.snr - 6) / 2);
            ++all[bin];
            hits[bin] += best != nullptr;
            ideal[bin] += std::erfc((result.plan.threshold - one.snr * one.kept) / M_SQRT2) / 2;
            kept += one.kept;
            ++number;
            if (!best)
                continue;
            const int strong = one.snr > 10;
            dispersion[strong].add((best->dispersion.value - one.dispersion) /
                                   best->dispersion.error);
            time[strong].add((best->point.value - one.point) / best->point.error);
            width[strong].add((best->fwhm.value - one.fwhm) / best->fwhm.error);
            const double trueInfinite =
                one.point - 4148.8 / std::pow(data.fbands.back(), 2) / step * one.dispersion;
            infinite[strong].add((best->infinitePoint - trueInfinite) * step / best->infiniteError);
        }
    }
    std::printf("%d pulses, S/N kept by grid, widths and sampling: %.4f\n", number, kept / number);
    for (int bin = 0; bin < 7; ++bin)
        std::printf("S/N %d to %d: found %.3f, ideal %.3f of %d\n", 6 + 2 * bin, 8 + 2 * bin,
                    double(hits[bin]) / all[bin], ideal[bin] / all[bin], all[bin]);
    for (int strong = 0; strong < 2; ++strong) {
        std::printf("%s S/N 10:\n", strong ? "above" : "below");
        dispersion[strong].print("dispersion");
        time[strong].print("time");
        width[strong].print("width");
        infinite[strong].print("time at infinite frequency");
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::printf("noise|bad|found NUMBER [SEED]\n");
        return 1;
    }
    const int number = std::atoi(argv[2]);
    const quint32 seed = argc > 3 ? quint32(std::atoi(argv[3])) : 1;
    if (std::strcmp(argv[1], "found") == 0)
        found(number, seed);
    else
        noise(number, seed, std::strcmp(argv[1], "bad") == 0);
    return 0;
}
