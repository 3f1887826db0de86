#include "analyses/profiles/profileday.h"

#include "calc/approximation.h"
#include "calc/banddelays.h"
#include "calc/baseline.h"
#include "calc/leveljumps.h"
#include "calc/pulsar/bandsum.h"
#include "calc/significance.h"
#include "coords/barycentre.h"

#include <algorithm>
#include <boost/math/statistics/univariate_statistics.hpp>
#include <cmath>
#include <numeric>

namespace Profiles {

namespace {

constexpr double periodsOfPart = 4;
constexpr int mostNoiseParts = 64;

} // namespace

int partsOf(double periods)
{
    return std::clamp(int(periods / periodsOfPart), 1, mostParts);
}

const ProfileDay *firstWhole(const std::vector<ProfileDay> &days)
{
    const auto first =
        std::find_if(days.begin(), days.end(), [](const ProfileDay &day) { return day.isWhole(); });
    return first == days.end() ? nullptr : &*first;
}

int ProfileDay::usedBands() const
{
    return int(std::count(used.begin(), used.end(), true));
}

namespace {

// One band of a day less its base line and mean, in sigmas of its samples.
struct BandSeries {
    std::vector<double> samples; // empty: there is no noise in it
    double sigma = 0;
};

BandSeries bandSeries(const float *first, int count, const Folding &folding,
                      const Jobs::Control &control)
{
    std::vector<float> values(first, first + count);
    if (folding.removesJumps)
        Tools::removeLevelJumps(
            values.data(), count,
            Tools::findLevelJumps(values.data(), count, [&] { return !control.isStopped(); }));
    BandSeries series;
    series.sigma = Tools::robustSigma(values.data(), count);
    std::vector<double> whole(values.begin(), values.end());
    std::vector<double> line(whole.size());
    if (!(series.sigma > 0) ||
        !Tools::findBaseline(folding.noise, whole.data(), line.data(), count))
        return series;
    Pulsar::removeBaseline(false, line, whole);
    const double mean = std::accumulate(whole.begin(), whole.end(), 0.0) / count;
    for (double &value : whole)
        value = (value - mean) / series.sigma;
    series.samples = std::move(whole);
    return series;
}

// A run of samples of a stretch of so many points.
struct Piece {
    int begin = 0;
    int end = 0; // not included

    Piece(int points, int index, int pieces)
        : begin(int(qint64(points) * index / pieces)),
          end(int(qint64(points) * (index + 1) / pieces))
    {}
};

// Folds a piece of a stretch. The phase is taken where its samples begin and end, which is a part
// of a sample before the bounds of the sub-integrations.
//
// @param late  samples by which the stretch is read too late
Tools::FoldedProfile foldPiece(const std::vector<double> &samples, const Piece &piece,
                               const DayPhase &phase, double late, int bins)
{
    const double points = double(samples.size());
    const double from = phase.at(piece.begin / points);
    const double to = phase.at(piece.end / points);
    const int count = piece.end - piece.begin;
    const double period = count / (to - from); // samples
    const double first = (from - std::floor(from)) * period;
    return Tools::fold(samples.data() + piece.begin, count, period, bins, first + late);
}

// Noise of a sample in a sum of bands, from how the profiles of neighbouring pieces of the stretch
// differ: what is slower than a bin and what bands have in common is in it; a steady pulse is not,
// nor much of one that drifts because the period is a little wrong. Bins with pulses that vary
// hardly count.
double sampleNoise(const std::vector<double> &sum, const DayPhase &phase, int bins)
{
    const int count = int(sum.size());
    const double periods = phase.turns.back() - phase.turns.front();
    const int pieces = std::clamp(int(periods / periodsOfPart), 1, mostNoiseParts);
    if (pieces < 2)
        return Tools::sigma(sum.data(), count);
    std::vector<double> variances(std::size_t(bins), 0.0);
    Tools::FoldedProfile before;
    for (int i = 0; i < pieces; ++i) {
        Tools::FoldedProfile profile = foldPiece(sum, Piece(count, i, pieces), phase, 0, bins);
        for (std::size_t bin = 0; bin < variances.size() && i > 0; ++bin) {
            const double variance = before.variances[bin] + profile.variances[bin];
            if (before.variances[bin] > 0 && profile.variances[bin] > 0)
                variances[bin] +=
                    std::pow(profile.bins[bin] - before.bins[bin], 2) / variance / (pieces - 1);
        }
        before = std::move(profile);
    }
    // Such a mean of squared differences scatters as chi squared of so many degrees over them (von
    // Neumann 1941, Ann. Math. Stat. 12, 367).
    const double powers = std::pow(pieces - 1, 2) / (3.0 * pieces - 4); // half of the degrees
    return std::sqrt(boost::math::statistics::median(variances) * powers /
                     Tools::medianPower(powers));
}

// Puts the bands of a day into its product.
class DayFold {
public:
    DayFold(ProfileDay &made, const Folding &wanted, int stretchPoints)
        : day(made), folding(wanted), points(stretchPoints), sum(std::size_t(stretchPoints))
    {
        day.used.assign(day.frequencies.size(), false);
        day.values.assign(
            std::size_t(day.parts()) * day.frequencies.size() * std::size_t(folding.bins), 0.0F);
    }

    // @param late  samples by which the band is read later than its delay asks
    void addBand(int band, const float *first, double late, const Jobs::Control &control)
    {
        const BandSeries series = bandSeries(first, points, folding, control);
        if (series.samples.empty())
            return;
        day.used[std::size_t(band)] = true;
        sigmas += series.sigma;
        for (std::size_t i = 0; i < sum.size(); ++i)
            sum[i] += series.samples[i];
        for (int part = 0; part < day.parts(); ++part)
            addPart(band, part, series.samples, late);
    }

    void finish()
    {
        const int bands = day.usedBands();
        if (bands == 0) {
            day.values.clear();
            day.problem = "no band has any noise: all samples of each are equal.";
            return;
        }
        day.unit = sigmas / bands;
        day.noise.shared = shared / (double(bands) * day.parts() * folding.bins);
        const double samplesOfBin = double(points) / folding.bins;
        day.noise.sigma =
            sampleNoise(sum, day.phase, folding.bins) / bands / std::sqrt(samplesOfBin);
        std::vector<double> phases(sum.size());
        for (std::size_t i = 0; i < phases.size(); ++i)
            phases[i] = day.phase.at((double(i) + 0.5) / points);
        day.chiSquared = Tools::chiSquaredOf(sum.data(), phases.data(), points, folding.bins);
        if (!(day.noise.sigma > 0)) {
            day.values.clear();
            day.problem = "the sum of the bands has no noise.";
        }
    }

private:
    void addPart(int band, int part, const std::vector<double> &samples, double late)
    {
        const Tools::FoldedProfile profile =
            foldPiece(samples, Piece(points, part, day.parts()), day.phase, late, folding.bins);
        const std::size_t row = (std::size_t(part) * day.frequencies.size() + std::size_t(band)) *
                                std::size_t(folding.bins);
        for (std::size_t bin = 0; bin < profile.bins.size(); ++bin) {
            day.values[row + bin] = float(profile.bins[bin]);
            shared += 2 * profile.covariances[bin] * profile.weights[bin];
        }
    }

    ProfileDay &day;
    const Folding &folding;
    const int points;
    std::vector<double> sum; // of the bands, each in sigmas of its samples
    double sigmas = 0;
    double shared = 0;
};

} // namespace

ProfileDay foldDay(const ObservationData &data, int first, int points, const Folding &folding,
                   const DayPhase &phase, const Jobs::Control &control)
{
    ProfileDay day;
    day.seconds = points * data.tresolution;
    day.phase = phase;
    day.dispersion = folding.dispersion;
    day.bins = folding.bins;
    day.frequencies.assign(data.fbands.begin(), data.fbands.begin() + Pulsar::sumBands);
    const Tools::BandDelays delays = Pulsar::bandDelays(data, folding.dispersion);
    DayFold fold(day, folding, points);
    for (int band = 0; band < day.bands(); ++band) {
        control.progress(100 * band / day.bands());
        const qint64 start = qint64(first) + delays.shift(band);
        if (control.isStopped() || start < 0 || start + points > data.npoints) {
            day.wasStopped = control.isStopped();
            day.values.clear();
            day.problem = "the delays of the bands reach beyond the recording.";
            return day;
        }
        fold.addBand(band, data.samples[0][band][0] + start,
                     delays.shift(band) - delays.delay(band), control);
    }
    fold.finish();
    return day;
}

double barycentricPeriod(const Ephemeris &ephemeris, const ProfileDay &day)
{
    constexpr double secondsPerDay = 86400;
    const double days = Tools::modifiedJulianDay(day.utc) - ephemeris.epoch;
    return 1 / ephemeris.frequencyAt(days * secondsPerDay);
}

double delayPerDispersion(const ProfileDay &day, int band)
{
    return Tools::dispersionConstant *
           Tools::inverseSquares(day.frequencies[std::size_t(band)], day.frequencies.back());
}

namespace {

// s from the middle of the stretch to that of a sub-integration.
double fromMiddle(const ProfileDay &day, int part)
{
    return ((part + 0.5) / day.parts() - 0.5) * day.seconds;
}

const float *rowOf(const ProfileDay &day, int part, int band)
{
    return &day.values[std::size_t(part * day.bands() + band) * std::size_t(day.bins)];
}

} // namespace

void addRows(const ProfileDay &day, const PhaseChange &change, double weight,
             std::vector<Tools::Harmonics> &rows)
{
    const double share = weight / day.usedBands();
    std::vector<double> row;
    for (int part = 0; part < day.parts(); ++part) {
        const double drift = change.moreFrequency * fromMiddle(day, part);
        for (int band = 0; band < day.bands(); ++band) {
            if (!day.used[std::size_t(band)])
                continue;
            const float *const values = rowOf(day, part, band);
            row.assign(values, values + day.bins);
            const double late =
                change.moreDispersion * delayPerDispersion(day, band) * day.phase.frequency;
            Tools::addTurned(Tools::harmonicsOf(row), change.turns + drift - late, share,
                             rows[std::size_t(part * day.bands() + band)]);
        }
    }
}

std::vector<Tools::Harmonics> partHarmonics(const ProfileDay &day,
                                            const std::vector<Tools::Harmonics> &rows,
                                            double moreDispersion)
{
    std::vector<Tools::Harmonics> parts(std::size_t(day.parts()),
                                        Tools::Harmonics(rows.front().size()));
    for (int band = 0; band < day.bands(); ++band) {
        const double late = moreDispersion * delayPerDispersion(day, band) * day.phase.frequency;
        for (int part = 0; part < day.parts(); ++part)
            Tools::addTurned(rows[std::size_t(part * day.bands() + band)], -late, 1,
                             parts[std::size_t(part)]);
    }
    return parts;
}

std::vector<Tools::Harmonics> partHarmonics(const ProfileDay &day, double moreDispersion)
{
    if (moreDispersion != 0) {
        std::vector<Tools::Harmonics> rows(std::size_t(day.parts() * day.bands()),
                                           Tools::Harmonics(std::size_t(day.bins) / 2 + 1));
        addRows(day, {0, moreDispersion, 0}, 1, rows);
        return partHarmonics(day, rows, 0);
    }
    // Without turning, the bands are added before they are transformed.
    const double share = 1.0 / day.usedBands();
    std::vector<Tools::Harmonics> parts;
    for (int part = 0; part < day.parts(); ++part) {
        std::vector<double> sum(std::size_t(day.bins));
        for (int band = 0; band < day.bands(); ++band) {
            const float *const values = rowOf(day, part, band);
            for (std::size_t bin = 0; bin < sum.size(); ++bin)
                sum[bin] += share * double(values[bin]);
        }
        parts.push_back(Tools::harmonicsOf(sum));
    }
    return parts;
}

Tools::Harmonics dayHarmonics(const ProfileDay &day, const std::vector<Tools::Harmonics> &parts,
                              double moreFrequency)
{
    Tools::Harmonics sum(parts.front().size());
    for (int part = 0; part < day.parts(); ++part)
        Tools::addTurned(parts[std::size_t(part)], moreFrequency * fromMiddle(day, part),
                         1.0 / day.parts(), sum);
    return sum;
}

} // namespace Profiles
