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

QString lineText(const Tools::SpectrumLine &line, double hertzPerLine)
{
    const double frequency = line.number * hertzPerLine;
    return QString("%1: %2, %3, %4 Hz, %5 s")
        .arg(line.number)
        .arg(line.snr, 0, 'f', 1)
        .arg(line.amplitude, 0, 'g', 4)
        .arg(ReportText::general(frequency), ReportText::general(1 / frequency));
}

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

QString strongestText(const std::vector<double> &spectrum, const std::vector<double> &levels,
                      double hertzPerLine)
{
    const double expected = double(spectrum.size()) * std::exp(-significance * significance / 2);
    QString text = QString("Strongest lines: noise levels, amplitude, frequency, period (of noise, "
                           "%1 are expected above %2 levels)")
                       .arg(ReportText::count(expected))
                       .arg(significance);
    for (const Tools::SpectrumLine &line : Tools::strongestLines(spectrum, levels, strongest))
        text += "\n" + lineText(line, hertzPerLine);
    return text;
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

// What noise explains of the lines above a threshold, which stand out of it, the strongest lines of
// all, and that of the typed period.
QStringList lineRemarks(const std::vector<double> &spectrum, const Above &above,
                        const PulsarParameters &given, double tresolution, double hertzPerLine)
{
    const int window = given.withNull ? paddedNoiseWindow : noiseWindow;
    const std::vector<double> levels = Tools::amplitudeNoise(spectrum, window);
    if (!(*std::max_element(levels.begin(), levels.end()) > 0))
        return {"The spectrum holds no noise: there is nothing to compare its lines with."};
    const bool listsAll = above.count == int(above.listed.size());
    QString text =
        QString("%1\n%2 of %3 values lie above %4 sigma%5; noise of this level would put "
                "%6 there.")
            .arg(levelText(levels, window))
            .arg(above.count)
            .arg(spectrum.size())
            .arg(given.sigmaMultiple)
            .arg(listsAll ? "" : QString(", the first %1 are listed").arg(above.listed.size()))
            .arg(ReportText::count(Tools::expectedAbove(levels, above.threshold)));
    if (!above.listed.empty())
        text += "\n" + significantText(spectrum, levels, above.listed);
    QStringList remarks = {text, strongestText(spectrum, levels, hertzPerLine)};
    if (given.period > 0)
        remarks << periodText(spectrum, levels, given, tresolution);
    return remarks;
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
    return joinProblems({checkFixedSum(header, given), spectrum});
}

AnalysisOutcome sumChannelsAndFourier(const PreparedSamples &samples, const PulsarParameters &given,
                                      const Control &)
{
    AnalysisOutcome outcome = begun(samples, given);
    PulsarResult &result = outcome.result;
    const int n = spectrumLength(given);
    int wholeBands = 0;
    auto spectrum = std::vector<double>(std::size_t(n));
    if (!getFourierOfSum(samples.data, given, spectrum.data(), fixedPoints, given.dispersion,
                         given.averageCount, given.withNull, wholeBands))
        return refused(outcome, "The spectrum of the sum cannot be computed.");

    const int multiple = given.sigmaMultiple;
    const double sigma = Tools::sigma(spectrum.data(), n);
    const Above above = linesAbove(spectrum, multiple * sigma);
    QString &text = result.description;
    text = "Sigma = " + ReportText::general(sigma) + "\n" + QString::number(multiple) +
           " sigma = " + ReportText::general(above.threshold) +
           "\n\nHarmonics >= " + QString::number(multiple) + " sigma:\n\n";
    for (const int line : above.listed)
        text +=
            QString::number(line) + ": " + ReportText::general(spectrum[std::size_t(line)]) + "\n";
    text += "\nFirst harmonic:\nnum = " + QString::number(given.harmonicNum) +
            "\nvalue = " + ReportText::general(spectrum[std::size_t(given.harmonicNum)]) + "\n";

    addCurve(result, spectrum, "fourier of sum channels");
    addCurve(result, std::vector<double>(std::size_t(n), sigma), "1 sigma of fourier");
    addCurve(result, std::vector<double>(std::size_t(n), above.threshold),
             QString::number(multiple) + " sigma of fourier");
    result.points = n;
    setSpectrumAxis(result, samples.data, given.averageCount);
    result.remarks << lineRemarks(spectrum, above, given, samples.data.tresolution,
                                  result.axis.step)
                   << bandRemarks({samples.data, given, fixedPoints, given.dispersion}, wholeBands);
    return outcome;
}

} // namespace Pulsar
