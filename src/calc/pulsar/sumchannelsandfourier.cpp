#include "calc/pulsar/actions.h"

#include "base/numbertext.h"
#include "calc/approximation.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/checks.h"
#include "calc/pulsar/remarks.h"
#include "calc/spectrumlines.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Pulsar {

namespace {

constexpr int maxListedHarmonics = 15;
constexpr int noiseWindow = 257;       // lines
constexpr int paddedNoiseWindow = 513; // they lie half as far apart
constexpr double significance = 5;     // noise levels
constexpr int strongest = 15;
const char harmonicLink[] = "harmonic:%1";

QString levelText(const std::vector<double> &levels, int window)
{
    const auto [least, most] = std::minmax_element(levels.begin(), levels.end());
    const double count = double(levels.size());
    const double mean = std::accumulate(levels.begin(), levels.end(), 0.0) / count;
    return QString(
               "Noise level = %1, %2 to %3 over the spectrum: the standard deviation of real and "
               "imaginary part, from the median of %4 lines around each.")
        .arg(mean, 0, 'g', 3)
        .arg(*least, 0, 'g', 3)
        .arg(*most, 0, 'g', 3)
        .arg(std::min(window, (int(levels.size()) - 2) / 2 * 2 + 1));
}

// Which lines of the list above a multiple of sigma stand out of the noise.
QString significantText(const std::vector<double> &spectrum, const std::vector<double> &levels,
                        const std::vector<int> &listed)
{
    QStringList significant;
    for (const int line : listed) {
        const std::size_t i = std::size_t(line);
        if (line > 0 && spectrum[i] > significance * levels[i])
            significant << QString::number(line);
    }
    return QString("Of those listed, %1 above %2 noise levels%3.")
        .arg(significant.isEmpty() ? "none stands" : significant.join(", ") + " stand")
        .arg(significance)
        .arg(listed.front() == 0 ? "; line 0 is the mean of the series" : "");
}

Results::Report strongestReport(const std::vector<double> &spectrum,
                                const std::vector<double> &levels, double hertzPerLine)
{
    const double expected = double(spectrum.size()) * std::exp(-significance * significance / 2);
    Results::Report report;
    report.addHeading(QString("Strongest lines: noise levels, amplitude, frequency, period (of "
                              "noise, %1 are expected above %2 levels)")
                          .arg(ReportText::count(expected))
                          .arg(significance));
    Results::ReportTable table = {
        {{"line"}, {"levels"}, {"amplitude"}, {"frequency", "Hz"}, {"period", "s"}},
        "%1: %2, %3, %4 Hz, %5 s",
        harmonicLink};
    for (const Tools::SpectrumLine &line : Tools::strongestLines(spectrum, levels, strongest)) {
        const double frequency = line.number * hertzPerLine;
        table.rows.push_back({QString::number(line.number), QString::number(line.snr, 'f', 1),
                              QString::number(line.amplitude, 'g', 4),
                              ReportText::general(frequency), ReportText::general(1 / frequency)});
    }
    report.addTable(table);
    return report;
}

// Where the typed period has its harmonic.
QString periodText(const std::vector<double> &spectrum, const std::vector<double> &levels,
                   const PulsarParameters &given, double tresolution)
{
    const double harmonic = harmonicOfPeriod(given, tresolution);
    const QString text = QString("The period of %1 s (topocentric) has the harmonic number %2")
                             .arg(exactText(given.period))
                             .arg(harmonic, 0, 'f', 2);
    const double nearest = std::round(harmonic);
    if (!(nearest >= 1 && nearest < double(spectrum.size())))
        return text + ", which is not in this spectrum.";
    const std::size_t i = std::size_t(nearest);
    return text + QString("; line %1 has %2 noise levels, amplitude %3.")
                      .arg(i)
                      .arg(spectrum[i] / levels[i], 0, 'f', 1)
                      .arg(spectrum[i], 0, 'g', 4);
}

// The lines above a threshold.
struct Above {
    double threshold = 0;
    int count = 0;
    std::vector<int> listed; // the first of them
};

Above linesAbove(const std::vector<double> &spectrum, double threshold)
{
    Above above = {threshold, 0, {}};
    for (std::size_t i = 0; i < spectrum.size(); ++i) {
        if (spectrum[i] > threshold && ++above.count <= maxListedHarmonics)
            above.listed.push_back(int(i));
    }
    return above;
}

// What noise explains of the lines above a threshold, and which stand out of it.
Results::Report noiseReport(const std::vector<double> &spectrum, const std::vector<double> &levels,
                            const Above &above, int window, int sigmaMultiple)
{
    const bool listsAll = above.count == int(above.listed.size());
    Results::Report report(levelText(levels, window));
    report.addLine(
        QString("%1 of %2 values lie above %3 sigma%4; noise of this level would put %5 there.")
            .arg(above.count)
            .arg(spectrum.size())
            .arg(sigmaMultiple)
            .arg(listsAll ? "" : QString(", the first %1 are listed").arg(above.listed.size()))
            .arg(ReportText::count(Tools::expectedAbove(levels, above.threshold))));
    if (!above.listed.empty())
        report.addLine(significantText(spectrum, levels, above.listed));
    return report;
}

// The lines above a threshold, the strongest of all, and that of the typed period.
std::vector<Results::Report> lineRemarks(const std::vector<double> &spectrum, const Above &above,
                                         const PulsarParameters &given, double tresolution,
                                         double hertzPerLine)
{
    const int window = given.withNull ? paddedNoiseWindow : noiseWindow;
    const std::vector<double> levels = Tools::amplitudeNoise(spectrum, window);
    if (!(*std::max_element(levels.begin(), levels.end()) > 0))
        return {Results::Report(
            "The spectrum holds no noise: there is nothing to compare its lines with.")};
    std::vector<Results::Report> remarks = {
        noiseReport(spectrum, levels, above, window, given.sigmaMultiple),
        strongestReport(spectrum, levels, hertzPerLine)};
    if (given.period > 0)
        remarks.emplace_back(periodText(spectrum, levels, given, tresolution));
    return remarks;
}

// The system's own list.
Results::Report harmonicsReport(const std::vector<double> &spectrum, const Above &above,
                                const PulsarParameters &given, double sigma)
{
    const QString multiple = QString::number(given.sigmaMultiple);
    const auto valueOf = [&](int line) { return ReportText::general(spectrum[std::size_t(line)]); };
    Results::Report report;
    report.addValue("Sigma", ReportText::general(sigma));
    report.addValue(multiple + " sigma", ReportText::general(above.threshold));
    report.addGap();
    report.addHeading("Harmonics >= " + multiple + " sigma:");
    report.addGap();
    Results::ReportTable table = {{{"line"}, {"amplitude"}}, "%1: %2", harmonicLink};
    for (const int line : above.listed)
        table.rows.push_back({QString::number(line), valueOf(line)});
    report.addTable(table);
    report.addGap();
    report.addHeading("First harmonic:");
    report.addValue("num", QString::number(given.harmonicNum));
    report.addValue("value", valueOf(given.harmonicNum));
    report.addGap();
    return report;
}

} // namespace

Problems checkFourier(const ObservationData &header, const PulsarParameters &given)
{
    Problems spectrum = checkSpectrum(given);
    const int length = spectrumLength(given);
    if (spectrum.empty() && (given.harmonicNum < 0 || given.harmonicNum >= length))
        spectrum = {{"harmonicNum",
                     QString("Harmonic number %1 is outside the spectrum.\nAllowed: 0 to %2.")
                         .arg(given.harmonicNum)
                         .arg(length - 1)}};
    return joinProblems({checkFixedSum(header, given), spectrum, checkCut(header, given.cut)});
}

AnalysisOutcome sumChannelsAndFourier(const PreparedSamples &samples, const PulsarParameters &given,
                                      const Control &)
{
    AnalysisOutcome outcome = begun(samples, given);
    PulsarResult &result = outcome.result;
    const int n = spectrumLength(given);
    SumNotes notes;
    auto spectrum = std::vector<double>(std::size_t(n));
    if (!getFourierOfSum(samples.data, given, spectrum.data(), fixedPoints, given.dispersion,
                         given.averageCount, given.withNull, notes))
        return refused(outcome, "The spectrum of the sum cannot be computed.");

    const int multiple = given.sigmaMultiple;
    const double sigma = Tools::sigma(spectrum.data(), n);
    const Above above = linesAbove(spectrum, multiple * sigma);
    result.report = harmonicsReport(spectrum, above, given, sigma);

    addCurve(result, spectrum, "fourier of sum channels");
    addCurve(result, std::vector<double>(std::size_t(n), sigma), "1 sigma of fourier");
    addCurve(result, std::vector<double>(std::size_t(n), above.threshold),
             QString::number(multiple) + " sigma of fourier");
    result.points = n;
    setSpectrumAxis(result, samples.data, given.averageCount);
    append({cutReport(given.cut, notes.cut)}, result);
    append(lineRemarks(spectrum, above, given, samples.data.tresolution, result.axis.step), result);
    append(bandRemarks({samples.data, given, fixedPoints, given.dispersion}, notes.wholeBands),
           result);
    return outcome;
}

} // namespace Pulsar
