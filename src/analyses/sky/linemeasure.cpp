#include "analyses/sky/linemeasure.h"

#include "analyses/sky/fourierproduct.h"
#include "analyses/sky/located.h"
#include "calc/pulsar/bandsum.h"
#include "coords/skyclock.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>

namespace Sky {

namespace {

constexpr double pi = std::numbers::pi;
constexpr double degree = pi / 180;
using Complex = std::complex<double>;

constexpr int binsAround = 3;
constexpr int startsAround = 2;
constexpr double leastOfHarmonic = 3; // sigma, to be measured with

// Gaussian of that full width at half maximum.
double response(double distance, double width)
{
    return std::exp(-4 * std::numbers::ln2 * (distance / width) * (distance / width));
}

class Measurer {
public:
    Measurer(const SkyStack &skyStack, const SkyPlan &skyPlan, const CellLine &cellLine,
             SkyCandidate &skyCandidate)
        : stack(skyStack), plan(skyPlan), line(cellLine), candidate(skyCandidate),
          ray(plan.rays[std::size_t(candidate.ray)])
    {
        stretch = plan.parameters.points * plan.header.tresolution;
        if (ray.beam.isKnown())
            transitWidth = plan.parameters.beamAlfa * degree / std::cos(ray.beam.delta) *
                           Tools::siderealDay() / (2 * pi);
        bin = line.position / perBin(plan);
    }

    void measure()
    {
        chooseHarmonics();
        findFrequency();
        findTransit();
        const double frequencyError = findFrequency();
        ratio = stack.cell(candidate.ray, candidate.dispersionIndex, candidate.start).ratio;
        const double frequency = bin * binWidth(plan);
        candidate.barycentric = isTurned(plan) ? frequency : frequency / ratio;
        candidate.telescope = isTurned(plan) ? frequency * ratio : frequency;
        const double told = candidate.barycentric > 0 ? candidate.barycentric : candidate.telescope;
        candidate.period = {1 / told, frequencyError * binWidth(plan) / frequency / told};
        findDispersion();
        findPosition();
    }

private:
    // Mean of the days at a bin of a cell.
    double meanAt(int rayIndex, int dispersion, int start, int binIndex)
    {
        const auto key = std::tuple(rayIndex, dispersion, start);
        auto known = cells.find(key);
        if (known == cells.end()) {
            const CellStack cell = stack.cell(rayIndex, dispersion, start);
            known = cells.emplace(key, fineStack(cell.sums, cell.days, plan)).first;
        }
        const FineStack &fine = known->second;
        const auto place = std::size_t(std::clamp(binIndex, 0, int(fine.level.size()) - 1));
        return fine.fine[place * Days::finePerBin] / fine.level[place] / fine.search.shape;
    }

    double ownMeanAt(int binIndex)
    {
        return meanAt(candidate.ray, candidate.dispersionIndex, candidate.start, binIndex);
    }

    int binOf(int harmonic) const { return int(std::lround(bin * harmonic)); }
    // Bins from the nearest bin to the harmonic.
    double offsetOf(int harmonic) const { return bin * harmonic - binOf(harmonic); }
    double days() const { return stack.days(candidate.ray, candidate.start); }

    void chooseHarmonics()
    {
        int strongest = 1;
        double most = -1;
        const int bins = stack.shape().positions / perBin(plan);
        for (int harmonic = 1; harmonic <= line.harmonics; ++harmonic) {
            if (binOf(harmonic) + binsAround >= bins)
                break;
            const double excess = ownMeanAt(binOf(harmonic)) - 1;
            if (excess * std::sqrt(days()) > leastOfHarmonic)
                harmonics.push_back(harmonic);
            if (excess > most) {
                most = excess;
                strongest = harmonic;
            }
        }
        if (harmonics.empty())
            harmonics = {strongest};
    }

    // Amplitude of a tone that crosses the beam at `transit`, s from the middle of the candidate's
    // stretch, in a stretch that begins so many steps later, at a bin `offset` bins below it. Twice
    // as many bins as the stretch has: a bin is half a turn over it.
    Complex toneAmplitude(double offset, double transit, int startsLater) const
    {
        constexpr int steps = 24;
        Complex sum = 0;
        for (int i = 0; i < steps; ++i) {
            const double time = ((i + 0.5) / steps - 0.5 + startsLater * 0.5) * stretch;
            const double gain = transitWidth > 0 ? response(time - transit, transitWidth) : 1;
            sum += std::polar(gain, pi * offset * time / stretch);
        }
        return sum / double(steps);
    }

    double findFrequency()
    {
        std::vector<PowerSamples> sets;
        for (const int harmonic : harmonics) {
            PowerSamples set;
            const int middle = binOf(harmonic);
            for (int i = -binsAround; i <= binsAround; ++i) {
                set.powers.push_back(ownMeanAt(middle + i));
                set.days.push_back(days());
                for (int j = -binsAround; j <= binsAround; ++j) {
                    const double turn = pi * (i - j) / 2;
                    set.noise.emplace_back(i == j ? 1 : std::sin(turn) / turn);
                }
            }
            set.amplitudes = [this, harmonic, middle](double place) {
                std::vector<Complex> amplitudes;
                for (int i = -binsAround; i <= binsAround; ++i)
                    amplitudes.push_back(
                        toneAmplitude(place * harmonic - middle - i, transitOffset, 0));
                return amplitudes;
            };
            sets.push_back(set);
        }
        const double range = 1.0 / harmonics.front();
        constexpr double share = 0.05; // of a bin
        const Located found = locate(sets, bin - range, bin + range, share / harmonics.back());
        bin = found.value;
        return found.error;
    }

    // Over rays and starts all harmonics of a signal go the same way. Their mean needs no choice of
    // harmonics, which would prefer those that noise has raised in the candidate's own cell.
    double meanOfHarmonics(int rayIndex, int start)
    {
        double sum = 0;
        for (int harmonic = 1; harmonic <= line.harmonics; ++harmonic)
            sum += meanAt(rayIndex, candidate.dispersionIndex, start, binOf(harmonic));
        return sum / line.harmonics;
    }

    // How far the harmonics lie off their bins: the root of the mean square, by their powers.
    double meanOffset()
    {
        double sum = 0;
        double weights = 0;
        for (int harmonic = 1; harmonic <= line.harmonics; ++harmonic) {
            const double weight = std::max(0.0, ownMeanAt(binOf(harmonic)) - 1);
            sum += weight * offsetOf(harmonic) * offsetOf(harmonic);
            weights += weight;
        }
        return weights > 0 ? std::sqrt(sum / weights) : 0;
    }

    void findTransit()
    {
        const int first = std::max(0, candidate.start - startsAround);
        const int last = std::min(plan.starts - 1, candidate.start + startsAround);
        std::vector<int> starts;
        for (int start = first; start <= last; ++start) {
            if (stack.days(candidate.ray, start) > 0)
                starts.push_back(start);
        }
        if (starts.size() < 2 || !(transitWidth > 0))
            return;
        PowerSamples set;
        for (const int start : starts) {
            set.powers.push_back(meanOfHarmonics(candidate.ray, start));
            set.days.push_back(stack.days(candidate.ray, start) * double(line.harmonics));
            for (const int other : starts)
                set.noise.emplace_back(std::max(0.0, 1 - std::abs(start - other) * 0.5));
        }
        const double offset = meanOffset();
        set.amplitudes = [this, starts, offset](double place) {
            std::vector<Complex> amplitudes;
            for (const int start : starts)
                amplitudes.push_back(toneAmplitude(offset, place, start - candidate.start));
            return amplitudes;
        };
        const double range = 0.75 * stretch;
        const Located found = locate({set}, -range, range, stretch / 100);
        transitOffset = found.value;
        transitError = found.error;
    }

    // s, of each band, as the sum at a dispersion takes them.
    std::vector<double> shiftsOf(double dispersion) const
    {
        std::vector<double> shifts;
        const Tools::BandDelays delays = Pulsar::bandDelays(plan.header, dispersion);
        for (int band = 0; band < delays.bands(); ++band)
            shifts.push_back(delays.shift(band) * plan.header.tresolution);
        return shifts;
    }

    // Amplitude of a tone of unit height, delayed by `factor` times the delays, in a sum with these
    // shifts.
    static Complex meanTurn(const std::vector<double> &shifts, const std::vector<double> &delays,
                            double factor, double frequency)
    {
        Complex sum = 0;
        for (std::size_t band = 0; band < shifts.size(); ++band)
            sum += std::polar(1.0, 2 * pi * frequency * (shifts[band] - factor * delays[band]));
        return sum / double(shifts.size());
    }

    void findDispersion()
    {
        candidate.dispersion.value = plan.dispersions[std::size_t(candidate.dispersionIndex)];
        if (plan.dispersions.size() < 2)
            return;
        std::vector<double> perUnit; // s, delays at dispersion 1
        const Tools::BandDelays unit = Pulsar::bandDelays(plan.header, 1);
        for (int band = 0; band < unit.bands(); ++band)
            perUnit.push_back(unit.delay(band) * plan.header.tresolution);
        std::vector<std::vector<double>> shifts;
        for (const double dispersion : plan.dispersions)
            shifts.push_back(shiftsOf(dispersion));
        const auto [least, most] = std::minmax_element(perUnit.begin(), perUnit.end());
        const double perTurn = candidate.telescope * (*most - *least); // turns a unit
        std::vector<PowerSamples> sets;
        for (const int harmonic : harmonics)
            sets.push_back(dispersionSet(harmonic, perUnit, shifts));
        // About the width of the peak of the lowest harmonic.
        const double range = std::max(0.75 / (perTurn * harmonics.front()), stepOfDispersions());
        const double from = std::max(0.0, candidate.dispersion.value - range);
        constexpr double share = 0.02;
        const Located found = locate(sets, from, candidate.dispersion.value + range,
                                     std::max(share / (perTurn * harmonics.back()), range / 2000));
        candidate.dispersion = {found.value, found.error};
    }

    double stepOfDispersions() const
    {
        const auto index = std::size_t(candidate.dispersionIndex);
        const double below = index > 0 ? plan.dispersions[index] - plan.dispersions[index - 1] : 0;
        const double above = index + 1 < plan.dispersions.size()
                                 ? plan.dispersions[index + 1] - plan.dispersions[index]
                                 : 0;
        return std::max(below, above);
    }

    PowerSamples dispersionSet(int harmonic, const std::vector<double> &perUnit,
                               const std::vector<std::vector<double>> &shifts)
    {
        const double frequency = candidate.telescope * harmonic;
        PowerSamples set;
        for (std::size_t i = 0; i < shifts.size(); ++i) {
            set.powers.push_back(meanAt(candidate.ray, int(i), candidate.start, binOf(harmonic)));
            set.days.push_back(days());
            for (const std::vector<double> &other : shifts)
                set.noise.push_back(meanTurn(shifts[i], other, 1, frequency));
        }
        set.amplitudes = [perUnit, shifts, frequency](double place) {
            std::vector<Complex> amplitudes;
            for (const std::vector<double> &own : shifts)
                amplitudes.push_back(meanTurn(own, perUnit, place, frequency));
            return amplitudes;
        };
        return set;
    }

    // Declination of the date; not known where one ray alone is near.
    Measured findDeclination()
    {
        constexpr double nearest = 2.5; // widths of the beam
        const double width = plan.parameters.beamDelta * degree;
        std::vector<int> rays;
        for (int i = 0; i < plan.rayCount(); ++i) {
            const SkyRay &other = plan.rays[std::size_t(i)];
            if (other.beam.isKnown() && stack.days(i, candidate.start) > 0 &&
                std::abs(other.beam.delta - ray.beam.delta) < nearest * width)
                rays.push_back(i);
        }
        if (rays.size() < 2)
            return {ray.beam.delta, std::numeric_limits<double>::quiet_NaN()};
        PowerSamples set;
        for (const int i : rays) {
            set.powers.push_back(meanOfHarmonics(i, candidate.start));
            set.days.push_back(stack.days(i, candidate.start) * double(line.harmonics));
            for (const int j : rays)
                set.noise.emplace_back(i == j ? 1 : 0);
        }
        set.amplitudes = [this, rays, width](double place) {
            std::vector<Complex> amplitudes;
            for (const int i : rays)
                amplitudes.emplace_back(
                    response(place - plan.rays[std::size_t(i)].beam.delta, width));
            return amplitudes;
        };
        const Located found =
            locate({set}, ray.beam.delta - 1.25 * width, ray.beam.delta + 1.25 * width, width / 50);
        return {found.value, found.error};
    }

    void findPosition()
    {
        if (!ray.beam.isKnown() || plan.passages.empty())
            return;
        const Measured delta = findDeclination();
        const Passage &passage = plan.passages[plan.passages.size() / 2];
        constexpr double msPerSecond = 1000;
        const QDateTime crossing = plan.middleOf(passage, candidate.start)
                                       .addMSecs(qint64(std::llround(transitOffset * msPerSecond)));
        const Tools::SkyPosition position = Tools::positionInBeam(crossing, delta.value);
        candidate.alfa = {position.alfa, transitError * 2 * pi / Tools::siderealDay()};
        candidate.delta = {position.delta, delta.error};
    }

    const SkyStack &stack;
    const SkyPlan &plan;
    const CellLine &line;
    SkyCandidate &candidate;
    const SkyRay &ray;
    double stretch = 0;      // s
    double transitWidth = 0; // s, full width at half maximum; 0: unknown, as wide as can be
    double bin = 0;          // of the fundamental
    double ratio = 1;
    std::vector<int> harmonics; // that are measured with, ascending
    double transitOffset = 0;   // s from the middle of the stretch to the crossing of the beam
    double transitError = std::numeric_limits<double>::quiet_NaN();
    std::map<std::tuple<int, int, int>, FineStack> cells;
};

} // namespace

void measureLine(const SkyStack &stack, const SkyPlan &plan, const CellLine &line,
                 SkyCandidate &candidate)
{
    Measurer(stack, plan, line, candidate).measure();
}

} // namespace Sky
