#include "calc/pulsar/scan.h"

#include "base/numbertext.h"
#include "calc/fourier.h"
#include "calc/pulsar/bandharmonics.h"
#include "calc/pulsar/checks.h"
#include "calc/pulsar/remarks.h"
#include "results/reporttext.h"

#include <algorithm>
#include <array>
#include <cmath>

// What the scans share: one harmonic of the spectrum of the sum over trial dispersions.

namespace Pulsar {

namespace {

constexpr int trials = 201;
constexpr double smallestTop = 20; // pc/cm^3: a scan reaches at least this far
constexpr int movedBands = sumBands - 1;

// One value of the amplitude spectrum of a series, without the others.
class HarmonicAmplitude {
public:
    // @param used    samples of the series
    // @param length  of the transform; the samples beyond `used` are zeros
    HarmonicAmplitude(int used, int length, int harmonic)
        : cosines(std::size_t(used)), sines(std::size_t(used)), scale(2.0 / length)
    {
        for (int i = 0; i < used; ++i) {
            // The phase is taken modulo whole turns in integers, so that it stays exact.
            const double turn = double(qint64(i) * harmonic % length) / length;
            cosines[std::size_t(i)] = std::cos(2 * M_PI * turn);
            sines[std::size_t(i)] = std::sin(2 * M_PI * turn);
        }
    }

    double of(const double *series) const
    {
        // Eight sums side by side, so that the additions do not wait for each other.
        constexpr std::size_t lanes = 8;
        std::array<double, lanes> re = {};
        std::array<double, lanes> im = {};
        for (std::size_t i = 0; i + lanes <= cosines.size(); i += lanes) {
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                re[lane] += series[i + lane] * cosines[i + lane];
                im[lane] += series[i + lane] * sines[i + lane];
            }
        }
        double real = 0;
        double imaginary = 0;
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            real += re[lane];
            imaginary += im[lane];
        }
        return scale * std::hypot(real, imaginary);
    }

private:
    std::vector<double> cosines;
    std::vector<double> sines;
    double scale;
};

std::vector<int> shiftsOf(const Tools::BandDelays &delays)
{
    std::vector<int> shifts(movedBands);
    for (int band = 0; band < movedBands; ++band)
        shifts[std::size_t(band)] = delays.shift(band);
    return shifts;
}

// The sum of the bands at one trial dispersion after the other. From one to the next few bands move
// by a sample: exchanging those in the sum is a fraction of a new one. The samples are floats, so
// that the sums stay as exact.
class MovingSum {
public:
    MovingSum(const ObservationData &recording, const PulsarParameters &parameters)
        : data(recording), given(parameters)
    {}

    // Whether the bands stand at other samples than at the trial before.
    bool isMovedBy(double dispersion)
    {
        next = shiftsOf(bandDelays(data, dispersion));
        return next != shifts;
    }

    // The sum at the dispersion that was asked about; false when it is refused.
    bool moveTo(double dispersion)
    {
        const bool isInside = std::all_of(next.begin(), next.end(), [this](int shift) {
            const qint64 begin = qint64(given.firstPoint) + shift;
            return begin >= 0 && begin + fixedPoints <= data.npoints;
        });
        if (isWhole && isInside) {
            exchangeBands();
        } else {
            const int bands =
                sumChannels(data, given, values.data(), fixedPoints, dispersion, true);
            if (bands == 0)
                return false;
            fewestBands = std::min(fewestBands, bands);
            isWhole = isInside;
        }
        shifts = next;
        return true;
    }

    const std::vector<double> &sum() const { return values; }
    int wholeBands() const { return fewestBands; } // of the sum that has the fewest

private:
    void exchangeBands()
    {
        for (int band = 0; band < movedBands; ++band) {
            const int from = shifts[std::size_t(band)];
            const int to = next[std::size_t(band)];
            if (from == to)
                continue;
            const float *const samples = channelSamples(data, given, band) + given.firstPoint;
            const float *const oldSamples = samples + from;
            const float *const newSamples = samples + to;
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i] += double(newSamples[i]) - double(oldSamples[i]);
        }
    }

    const ObservationData &data;
    const PulsarParameters &given;
    std::vector<double> values = std::vector<double>(fixedPoints);
    std::vector<int> shifts; // of the bands in the sum
    std::vector<int> next;
    bool isWhole = false; // the recording has every sample of every band
    int fewestBands = sumBands;
};

// The values of the harmonic; false when they are not whole.
bool fillValues(const ObservationData &data, const PulsarParameters &given, int averageCount,
                const Control &control, DispersionScan &scan)
{
    const int length = Tools::averagedLength(fixedPoints, averageCount, given.withNull);
    const int used = Tools::averagedLength(fixedPoints, averageCount, false);
    const HarmonicAmplitude amplitude(used, length, given.harmonicNum);
    MovingSum moving(data, given);
    std::vector<double> baseline(fixedPoints);
    std::vector<double> rest;
    std::vector<double> averaged(fixedPoints);
    for (int trial = 0; trial < trials; ++trial) {
        const double dispersion = scan.dispersions[std::size_t(trial)];
        if (!moving.isMovedBy(dispersion)) {
            scan.values.push_back(scan.values.back());
            continue;
        }
        if (!moving.moveTo(dispersion)) {
            scan.problem = QString("The channels cannot be summed at dispersion %1.")
                               .arg(ReportText::general(dispersion));
            return false;
        }
        if (!sumBaseline(data, given, moving.sum(), dispersion, baseline.data())) {
            scan.problem = "The noise base line cannot be computed.";
            return false;
        }
        rest = moving.sum();
        removeBaseline(given.normalise, baseline, rest);
        Tools::averagePairs(rest.data(), averaged.data(), fixedPoints, averageCount, false);
        scan.values.push_back(amplitude.of(averaged.data()));
        if (!goesOn(control, 100 * trial / trials))
            return false;
    }
    scan.wholeBands = moving.wholeBands();
    return true;
}

bool fitCubic(DispersionScan &scan)
{
    scan.cubic.resize(scan.values.size());
    Approximation fit(scan.values.data(), scan.cubic.data(), int(scan.values.size()));
    if (!fit.polynomial(3, true)) {
        scan.problem = "The approximation by polinom 3 cannot be computed.";
        return false;
    }
    scan.extrema = fit.extrema();
    return true;
}

QString extremaText(const DispersionScan &scan)
{
    const double step = scan.dispersions[1] - scan.dispersions[0];
    QString text = "Polinom extremums:\n";
    const auto addExtremum = [&](double position, double value, double other) {
        if (position > 0 && position < trials)
            text += QString("disp = %1 value = %2 (%3)\n")
                        .arg(position * step, 0, 'f', 2)
                        .arg(ReportText::general(value), value > other ? "maximum" : "minimum");
    };
    const Approximation::Extrema &extrema = scan.extrema;
    addExtremum(extrema.firstPosition, extrema.firstValue, extrema.secondValue);
    addExtremum(extrema.secondPosition, extrema.secondValue, extrema.firstValue);
    if (!(extrema.firstPosition > 0 && extrema.firstPosition < trials) &&
        !(extrema.secondPosition > 0 && extrema.secondPosition < trials))
        text += "none within the scan\n";
    return text;
}

} // namespace

std::size_t DispersionScan::strongest() const
{
    return std::size_t(std::max_element(values.begin(), values.end()) - values.begin());
}

std::vector<double> trialDispersions(const PulsarParameters &given)
{
    const double top = std::max(2 * given.dispersion, smallestTop);
    std::vector<double> dispersions(trials);
    for (int i = 0; i < trials; ++i)
        dispersions[std::size_t(i)] = top * i / (trials - 1);
    return dispersions;
}

Problems checkScan(const ObservationData &header, const PulsarParameters &given)
{
    const double top = trialDispersions(given).back();
    Problems spectrum = checkSpectrum(given);
    const int length = spectrumLength(given);
    if (spectrum.empty() && (given.harmonicNum < 1 || given.harmonicNum >= length))
        spectrum = {
            {"harmonicNum", QString("Harmonic number %1 cannot be scanned.\nAllowed: 1 to %2.")
                                .arg(given.harmonicNum)
                                .arg(length - 1)}};
    return joinProblems({checkSelection(header, given, fixedPoints, top),
                         checkDispersion(header, given.dispersion), checkDispersion(header, top),
                         spectrum});
}

AnalysisOutcome begunScan(const PreparedSamples &samples, const PulsarParameters &given)
{
    AnalysisOutcome outcome = begun(samples, given);
    const int averageCount = given.averageCount;
    const int length = Tools::averagedLength(fixedPoints, averageCount, given.withNull);
    const std::vector<double> dispersions = trialDispersions(given);
    outcome.result.points = trials;
    outcome.result.axis = {PulsarAxis::Kind::Dispersion, 0, dispersions[1], 0};
    outcome.result.description =
        QString(
            "Harmonic number = %1, period = %2 s (topocentric)\nDispersions = 0 - %3, step = %4\n"
            "Number of points is fixed - 16384\n")
            .arg(given.harmonicNum)
            .arg(ReportText::general(length * Tools::averagedStepFactor(averageCount, false) *
                                     samples.data.tresolution / given.harmonicNum),
                 ReportText::general(dispersions.back()), ReportText::general(dispersions[1]));
    return outcome;
}

DispersionScan scanDispersions(const ObservationData &data, const PulsarParameters &given,
                               int averageCount, const Control &control)
{
    DispersionScan scan;
    scan.dispersions = trialDispersions(given);
    if (!fillValues(data, given, averageCount, control, scan) || !fitCubic(scan))
        return scan;
    scan.peak = findDispersion(data, given, averageCount, scan.dispersions[scan.strongest()],
                               scan.dispersions.back());
    scan.isWhole = true;
    return scan;
}

QString describeScan(const DispersionScan &scan, int harmonic)
{
    QString text = extremaText(scan);
    text += QString("\nMaximum:\ndisp = %1 value = %2\n")
                .arg(scan.dispersions[scan.strongest()], 0, 'f', 2)
                .arg(ReportText::general(scan.values[scan.strongest()]));
    const Tools::DispersionPeak &peak = scan.peak;
    const bool isOutside = peak.dispersion < 0 || peak.dispersion > scan.dispersions.back();
    if (peak.unconstrained.isEmpty())
        text += QString("\nDM = %1 pc/cm^3%2\n")
                    .arg(ReportText::withError(peak.dispersion, peak.error),
                         isOutside ? " (outside the scan)" : "");
    else
        text += QString("\nHarmonic %1 does not tell the dispersion: %2.\n")
                    .arg(harmonic)
                    .arg(peak.unconstrained);
    return text;
}

void addScan(const DispersionScan &scan, const QString &name, int harmonic, PulsarResult &result)
{
    addCurve(result, scan.values, name);
    PulsarMultiResult single;
    single.name = name;
    single.description = name + "\n\n" + describeScan(scan, harmonic);
    single.curves.emplace_back(scan.values.begin(), scan.values.end());
    single.curves.emplace_back(scan.cubic.begin(), scan.cubic.end());
    single.names << name << "approximation by polinom 3";
    result.multi.push_back(single);
    result.description += single.description + "\n";
}

Control shareOf(const Control &control, int part, int parts)
{
    Control share = control;
    share.progress = [&control, part, parts](int percent) {
        control.progress((100 * part + percent) / parts);
    };
    return share;
}

QStringList scanRemarks(const ObservationData &data, const PulsarParameters &given, int wholeBands,
                        const std::vector<int> &starts)
{
    QStringList remarks;
    if (given.period > 0) {
        const double first = harmonicOfPeriod(given, data.tresolution);
        const double multiple = std::max(1.0, std::round(given.harmonicNum / first));
        if (std::abs(given.harmonicNum - multiple * first) >= 1)
            remarks << QString("Harmonic number %1 is none of the period of %2 s, which "
                               "has the number %3 and its multiples.")
                           .arg(given.harmonicNum)
                           .arg(exactText(given.period))
                           .arg(first, 0, 'f', 2);
    }
    const double top = trialDispersions(given).back();
    return remarks << bandRemarks({data, given, fixedPoints, top}, wholeBands, starts);
}

} // namespace Pulsar
