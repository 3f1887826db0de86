#include "calc/pulsar/pulsarcalculate.h"

#include "calc/approximation.h"
#include "calc/channelsum.h"
#include "calc/fourier.h"
#include "results/reporttext.h"

#include <QScopedValueRollback>
#include <algorithm>
#include <cmath>

// The scans: one harmonic of the sum's spectrum over trial dispersions.

namespace {

constexpr int trials = 201;
constexpr double smallestTop = 20; // pc/cm^3: a scan reaches at least this far
constexpr int maxStarts = 8;
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

PulsarCalculate::BandShifts shiftsAt(const ObservationData &data, double dispersion)
{
    PulsarCalculate::BandShifts shifts;
    for (int band = 0; band < movedBands; ++band)
        shifts[std::size_t(band)] = Tools::stretchShift(Tools::dispersionDelay(
            data.fbands[std::size_t(band)], data.fbands[movedBands], dispersion, data.tresolution));
    return shifts;
}

} // namespace

struct PulsarCalculate::Scan {
    std::vector<double> dispersions; // pc/cm^3
    std::vector<double> values;      // of the harmonic
    int wholeBands = sumBands;       // of the sum that has the fewest
    std::vector<double> cubic;       // fit of degree 3
    Approximation::Extrema extrema;  // of the fit, positions in trials
    Tools::DispersionPeak peak;
};

std::vector<double> PulsarCalculate::trialDispersions() const
{
    const double top = std::max(2 * parameters.dispersion, smallestTop);
    std::vector<double> dispersions(trials);
    for (int i = 0; i < trials; ++i)
        dispersions[std::size_t(i)] = top * i / (trials - 1);
    return dispersions;
}

// From one trial to the next few bands move by a sample: exchanging those in the sum is a fraction
// of a new one. The samples are floats, so that the sums stay as exact.
void PulsarCalculate::exchangeBands(int firstPoint, const BandShifts &shifts,
                                    const BandShifts &next, std::vector<double> &sum) const
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
    BandShifts shifts = {};
    bool sumIsWhole = false;
    for (int trial = 0; trial < trials; ++trial) {
        const double dispersion = scan.dispersions[std::size_t(trial)];
        const BandShifts next = shiftsAt(data, dispersion);
        if (trial > 0 && next == shifts) {
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
    scan.cubic.resize(scan.values.size());
    Approximation fit(scan.values.data(), scan.cubic.data(), trials);
    if (!fit.polynomial(3, true))
        return refuse("The approximation by polinom 3 cannot be computed.");
    scan.extrema = fit.extrema();

    const auto top = std::max_element(scan.values.begin(), scan.values.end());
    scan.peak = findDispersion(firstPoint, averageCount,
                               scan.dispersions[std::size_t(top - scan.values.begin())],
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

    const auto top = std::max_element(scan.values.begin(), scan.values.end());
    text += QString("\nMaximum:\ndisp = %1 value = %2\n")
                .arg(scan.dispersions[std::size_t(top - scan.values.begin())], 0, 'f', 2)
                .arg(ReportText::general(*top));
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

bool PulsarCalculate::acceptScan()
{
    const int length =
        Tools::averagedLength(fixedPoints, parameters.averageCount, parameters.withNull);
    const double top = trialDispersions().back();
    if (!acceptSelection(top) || !acceptDispersion(parameters.dispersion) ||
        !acceptDispersion(top) || !acceptSpectrum(length))
        return false;
    return (parameters.harmonicNum >= 1 && parameters.harmonicNum < length / 2) ||
           refuse(QString("Harmonic number %1 cannot be scanned.\nAllowed: 1 to %2.")
                      .arg(parameters.harmonicNum)
                      .arg(length / 2 - 1),
                  "harmonicNum");
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

// Points from one first point to the next; below 1 where the typed delta cannot be used.
int PulsarCalculate::scanDelta() const
{
    if (!(parameters.startDelta >= 0))
        return 0;
    if (parameters.startDelta > 0)
        return int(std::min(std::round(parameters.startDelta), double(data.npoints)));
    return data.npoints / 16;
}

std::vector<int> PulsarCalculate::scanStarts() const
{
    std::vector<int> starts;
    const int delta = std::max(1, scanDelta());
    for (qint64 start = parameters.firstPoint;
         start + fixedPoints < data.npoints && int(starts.size()) < maxStarts; start += delta)
        starts.push_back(int(start));
    return starts;
}

bool PulsarCalculate::sumAllDispersions()
{
    beginScan();
    Scan scan;
    if (!scanDispersions(parameters.firstPoint, parameters.averageCount, 0, 100, scan))
        return false;
    addCurve(scan.values, QString("value of harmonic %1").arg(parameters.harmonicNum));
    addCurve(scan.cubic, "approximation by polinom 3");
    outcome.description += "\n" + describeScan(scan);
    markSteps();
    remarkOnHarmonic();
    remarkOnBands();
    return true;
}

bool PulsarCalculate::sumMultiDispersions()
{
    // Averaging does not move a harmonic; it only shortens the spectrum.
    beginScan();
    outcome.description += "\nChange: averages (see colors)\n\n";
    const int curves = parameters.averageCount + 1;
    for (int n = 0; n < curves; ++n) {
        Scan scan;
        if (!scanDispersions(parameters.firstPoint, n, 100 * n / curves, 100 * (n + 1) / curves,
                             scan))
            return false;
        addScan(scan, QString("averaging number %1").arg(n));
    }
    markSteps();
    remarkOnHarmonic();
    remarkOnBands();
    return true;
}

bool PulsarCalculate::sumTimeDispersions()
{
    beginScan();
    const int delta = scanDelta();
    const std::vector<int> starts = scanStarts();
    outcome.description +=
        QString("Delta = %1 points, %2 s\n\nChange: first point (see colors)\n\n")
            .arg(delta)
            .arg(ReportText::general(delta * data.tresolution));
    outcome.starts = starts;
    const int curves = int(starts.size());
    for (int k = 0; k < curves; ++k) {
        Scan scan;
        if (!scanDispersions(starts[std::size_t(k)], parameters.averageCount, 100 * k / curves,
                             100 * (k + 1) / curves, scan))
            return false;
        addScan(scan, QString("first point %1").arg(starts[std::size_t(k)]));
    }
    markSteps();
    remarkOnHarmonic();
    remarkOnBands(starts);
    return true;
}
