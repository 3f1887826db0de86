#include "calc/pulsar/pulsarcalculate.h"

#include "base/numbertext.h"
#include "calc/fourier.h"
#include "calc/pulsar/scan.h"
#include "results/reporttext.h"

#include <QScopedValueRollback>
#include <algorithm>
#include <cmath>

// What the scans share: one harmonic of the spectrum of the sum over trial dispersions.

namespace {

constexpr int trials = 201;
constexpr double smallestTop = 20; // pc/cm^3: a scan reaches at least this far
constexpr int movedBands = PulsarCalculate::sumBands - 1;

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

} // namespace

bool PulsarCalculate::Scan::fitCubic()
{
    cubic.resize(values.size());
    Approximation fit(values.data(), cubic.data(), int(values.size()));
    if (!fit.polynomial(3, true))
        return false;
    extrema = fit.extrema();
    return true;
}

std::size_t PulsarCalculate::Scan::strongest() const
{
    return std::size_t(std::max_element(values.begin(), values.end()) - values.begin());
}

std::vector<double> PulsarCalculate::trialDispersions() const
{
    const double top = std::max(2 * parameters.dispersion, smallestTop);
    std::vector<double> dispersions(trials);
    for (int i = 0; i < trials; ++i)
        dispersions[std::size_t(i)] = top * i / (trials - 1);
    return dispersions;
}

bool PulsarCalculate::acceptScan()
{
    const int length =
        Tools::averagedLength(fixedPoints, parameters.averageCount, parameters.withNull);
    const double top = trialDispersions().back();
    const bool isSelected = acceptSelection(top);
    const bool isDispersion = acceptDispersion(parameters.dispersion) && acceptDispersion(top);
    if (!acceptSpectrum(length))
        return false;
    const bool isHarmonic =
        (parameters.harmonicNum >= 1 && parameters.harmonicNum < length / 2) ||
        refuse(QString("Harmonic number %1 cannot be scanned.\nAllowed: 1 to %2.")
                   .arg(parameters.harmonicNum)
                   .arg(length / 2 - 1),
               "harmonicNum");
    return isSelected && isDispersion && isHarmonic;
}

// Axis and first lines of the report.
void PulsarCalculate::beginScan()
{
    const int averageCount = parameters.averageCount;
    const int length = Tools::averagedLength(fixedPoints, averageCount, parameters.withNull);
    const std::vector<double> dispersions = trialDispersions();
    outcome.points = trials;
    outcome.axis = {PulsarAxis::Kind::Dispersion, 0, dispersions[1], 0};
    outcome.description =
        QString(
            "Harmonic number = %1, period = %2 s (topocentric)\nDispersions = 0 - %3, step = %4\n"
            "Number of points is fixed - 16384\n")
            .arg(parameters.harmonicNum)
            .arg(ReportText::general(length * Tools::averagedStepFactor(averageCount, false) *
                                     data.tresolution / parameters.harmonicNum),
                 ReportText::general(dispersions.back()), ReportText::general(dispersions[1]));
}

// From one trial to the next few bands move by a sample: exchanging those in the sum is a fraction
// of a new one. The samples are floats, so that the sums stay as exact.
void PulsarCalculate::exchangeBands(int firstPoint, const std::vector<int> &shifts,
                                    const std::vector<int> &next, std::vector<double> &sum) const
{
    for (int band = 0; band < movedBands; ++band) {
        const int from = shifts[std::size_t(band)];
        const int to = next[std::size_t(band)];
        if (from == to)
            continue;
        const float *const oldSamples = bandSamples(band) + firstPoint + from;
        const float *const newSamples = bandSamples(band) + firstPoint + to;
        for (std::size_t i = 0; i < sum.size(); ++i)
            sum[i] += double(newSamples[i]) - double(oldSamples[i]);
    }
}

// False when the user stopped it or, with a refusal, when a sum cannot be computed.
bool PulsarCalculate::scanDispersions(int firstPoint, int averageCount, int progressFrom,
                                      int progressTo, Scan &scan)
{
    const QScopedValueRollback<int> start(parameters.firstPoint, firstPoint);
    const int length = Tools::averagedLength(fixedPoints, averageCount, parameters.withNull);
    const int used = Tools::averagedLength(fixedPoints, averageCount, false);
    const HarmonicAmplitude amplitude(used, length, parameters.harmonicNum);

    scan.dispersions = trialDispersions();
    std::vector<double> sum(fixedPoints);
    std::vector<double> baseline(fixedPoints);
    std::vector<double> rest;
    std::vector<double> averaged(fixedPoints);
    std::vector<int> shifts;
    bool sumIsWhole = false;
    for (int trial = 0; trial < trials; ++trial) {
        const double dispersion = scan.dispersions[std::size_t(trial)];
        const std::vector<int> next = shiftsOf(bandDelays(dispersion));
        if (next == shifts) {
            scan.values.push_back(scan.values.back());
            continue;
        }
        const auto inside = [&](int shift) {
            const qint64 begin = qint64(firstPoint) + shift;
            return begin >= 0 && begin + fixedPoints <= data.npoints;
        };
        if (sumIsWhole && std::all_of(next.begin(), next.end(), inside)) {
            exchangeBands(firstPoint, shifts, next, sum);
        } else {
            if (!sumChannels(sum.data(), fixedPoints, dispersion, true))
                return refuse(QString("The channels cannot be summed at dispersion %1.")
                                  .arg(ReportText::general(dispersion)));
            scan.wholeBands = std::min(scan.wholeBands, completeBands);
            sumIsWhole = std::all_of(next.begin(), next.end(), inside);
        }
        shifts = next;
        if (!noiseBaseline(sum, dispersion, baseline.data()))
            return refuse("The noise base line cannot be computed.");
        rest = sum;
        removeBaseline(rest, baseline);
        Tools::averagePairs(rest.data(), averaged.data(), fixedPoints, averageCount, false);
        scan.values.push_back(amplitude.of(averaged.data()));
        if (!goOn(progressFrom + (progressTo - progressFrom) * trial / trials))
            return false;
    }

    fewestBands = std::min(fewestBands, scan.wholeBands);
    if (!scan.fitCubic())
        return refuse("The approximation by polinom 3 cannot be computed.");
    scan.peak = findDispersion(firstPoint, averageCount, scan.dispersions[scan.strongest()],
                               scan.dispersions.back());
    return true;
}

QString PulsarCalculate::describeScan(const Scan &scan)
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
                    .arg(parameters.harmonicNum)
                    .arg(peak.unconstrained);
    return text;
}

// One curve of several, and what is shown of it alone.
void PulsarCalculate::addScan(const Scan &scan, const QString &name)
{
    addCurve(scan.values, name);
    PulsarMultiResult single;
    single.name = name;
    single.description = name + "\n\n" + describeScan(scan);
    single.curves.emplace_back(scan.values.begin(), scan.values.end());
    single.curves.emplace_back(scan.cubic.begin(), scan.cubic.end());
    single.names << name << "approximation by polinom 3";
    outcome.multi.push_back(single);
    outcome.description += single.description + "\n";
}

double PulsarCalculate::harmonicOfPeriod(const PulsarParameters &given, double tresolution)
{
    return (given.withNull ? 2 : 1) * fixedPoints * tresolution / given.period;
}

// Where a scanned harmonic is not one of the typed period.
void PulsarCalculate::remarkOnHarmonic()
{
    if (!(parameters.period > 0))
        return;
    const double first = harmonicOfPeriod(parameters, data.tresolution);
    const double multiple = std::max(1.0, std::round(parameters.harmonicNum / first));
    if (std::abs(parameters.harmonicNum - multiple * first) >= 1)
        outcome.remarks << QString("Harmonic number %1 is none of the period of %2 s, which "
                                   "has the number %3 and its multiples.")
                               .arg(parameters.harmonicNum)
                               .arg(exactText(parameters.period))
                               .arg(first, 0, 'f', 2);
}
