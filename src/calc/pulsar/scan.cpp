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
const char dispersionLink[] = "dispersion:%1";

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

// Rows of a dispersion with the value of the harmonic there.
Results::ReportTable dispersionTable(const QString &line)
{
    return {{{"dispersion", "pc/cm^3"}, {"value"}}, line, dispersionLink};
}

// The extremes of the fit within the scan.
Results::ReportTable extremaTable(const DispersionScan &scan)
{
    const double step = scan.dispersions[1] - scan.dispersions[0];
    Results::ReportTable table = dispersionTable("disp = %1 value = %2 (%3)");
    table.columns.push_back({""});
    const auto add = [&](double position, double value, double other) {
        if (position > 0 && position < trials)
            table.rows.push_back({QString::number(position * step, 'f', 2),
                                  ReportText::general(value),
                                  value > other ? "maximum" : "minimum"});
    };
    const Approximation::Extrema &extrema = scan.extrema;
    add(extrema.firstPosition, extrema.firstValue, extrema.secondValue);
    add(extrema.secondPosition, extrema.secondValue, extrema.firstValue);
    return table;
}

// The fit and the highest value, with the dispersion where there is one.
Results::Report valuesReport(const DispersionScan &scan)
{
    Results::Report report;
    report.addHeading("Polinom extremums:");
    const Results::ReportTable extrema = extremaTable(scan);
    if (extrema.rows.empty())
        report.addLine("none within the scan");
    else
        report.addTable(extrema);
    report.addGap();
    report.addHeading("Maximum:");
    Results::ReportTable maximum = dispersionTable("disp = %1 value = %2");
    maximum.rows = {{QString::number(scan.dispersions[scan.strongest()], 'f', 2),
                     ReportText::general(scan.values[scan.strongest()])}};
    report.addTable(maximum);
    report.addGap();
    if (!scan.tellsDispersion())
        return report;
    const Tools::DispersionPeak &peak = scan.peak;
    const bool isOutside = peak.dispersion < 0 || peak.dispersion > scan.dispersions.back();
    const QString text = ReportText::withError(peak.dispersion, peak.error) + " pc/cm^3";
    if (isOutside)
        report.addValue("DM", text + " (outside the scan)");
    else
        report.addValue("DM", text, QString(dispersionLink).arg(peak.dispersion, 0, 'f', 2));
    report.addGap();
    return report;
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
    const double period = length * Tools::averagedStepFactor(averageCount, false) *
                          samples.data.tresolution / given.harmonicNum;
    Results::Report &report = outcome.result.report;
    report.addValue("Harmonic number", QString("%1, period = %2 s (topocentric)")
                                           .arg(given.harmonicNum)
                                           .arg(ReportText::general(period)));
    report.addValue("Dispersions", "0 - " + ReportText::general(dispersions.back()) +
                                       ", step = " + ReportText::general(dispersions[1]));
    report.addLine("Number of points is fixed - 16384");
    report.addGap();
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

Results::Report scanReport(const DispersionScan &scan, int harmonic)
{
    Results::Report report = valuesReport(scan);
    if (scan.tellsDispersion())
        return report;
    report.addLine(QString("Harmonic %1 does not tell the dispersion: %2.")
                       .arg(harmonic)
                       .arg(scan.peak.unconstrained));
    report.addGap();
    return report;
}

void addScans(const std::vector<NamedScan> &scans, int harmonic, PulsarResult &result)
{
    std::vector<std::pair<QString, QStringList>> untold; // why, and which scans
    for (const auto &[name, scan] : scans) {
        addCurve(result, scan.values, name);
        Results::Report title(name);
        title.addGap();
        PulsarMultiResult single;
        single.name = name;
        single.report = title;
        single.report.add(scanReport(scan, harmonic));
        single.curves.emplace_back(scan.values.begin(), scan.values.end());
        single.curves.emplace_back(scan.cubic.begin(), scan.cubic.end());
        single.names << name << "approximation by polinom 3";
        result.multi.push_back(single);
        result.report.add(title);
        result.report.add(valuesReport(scan));
        if (scan.tellsDispersion())
            continue;
        const QString &reason = scan.peak.unconstrained;
        const auto known = std::find_if(untold.begin(), untold.end(),
                                        [&](const auto &other) { return other.first == reason; });
        if (known == untold.end())
            untold.push_back({reason, {name}});
        else
            known->second << name;
    }
    if (untold.empty())
        return;
    result.report.addLine(QString("Harmonic %1 does not tell the dispersion:").arg(harmonic));
    Results::ReportTable table = {{{"scan"}, {"because"}}, "%1: %2"};
    for (const auto &[reason, names] : untold)
        table.rows.push_back({names.join(", "), reason});
    result.report.addTable(table);
}

std::vector<Results::Report> scanRemarks(const ObservationData &data, const PulsarParameters &given,
                                         int wholeBands, const std::vector<int> &starts)
{
    std::vector<Results::Report> remarks;
    if (given.period > 0) {
        const double first = harmonicOfPeriod(given, data.tresolution);
        const double multiple = std::max(1.0, std::round(given.harmonicNum / first));
        if (std::abs(given.harmonicNum - multiple * first) >= 1)
            remarks.emplace_back(QString("Harmonic number %1 is none of the period of %2 s, which "
                                         "has the number %3 and its multiples.")
                                     .arg(given.harmonicNum)
                                     .arg(exactText(given.period))
                                     .arg(first, 0, 'f', 2));
    }
    const double top = trialDispersions(given).back();
    for (const Results::Report &remark :
         bandRemarks({data, given, fixedPoints, top}, wholeBands, starts))
        remarks.push_back(remark);
    return remarks;
}

} // namespace Pulsar
