#include "calc/pulsar/pulsarcalculate.h"

#include "base/numbertext.h"
#include "calc/approximation.h"
#include "calc/fourier.h"
#include "calc/spectrumlines.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>
#include <numeric>

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

} // namespace

bool PulsarCalculate::acceptFourier()
{
    const int length =
        Tools::averagedLength(fixedPoints, parameters.averageCount, parameters.withNull);
    const bool isSum = acceptFixedSum();
    return acceptSpectrum(length) && acceptHarmonic(length / 2) && isSum;
}

bool PulsarCalculate::getFourierOfSum(double *out, int count, double dispersion, int averageCount,
                                      bool withNull)
{
    auto sum = std::vector<double>(std::size_t(std::max(count, 0)));
    if (!sumWithoutNoise(sum.data(), count, dispersion))
        return false;
    fewestBands = std::min(fewestBands, completeBands);
    std::vector<double> averaged(2 * sum.size());
    if (!Tools::averagePairs(sum.data(), averaged.data(), count, averageCount, withNull))
        return false;
    const int length = Tools::averagedLength(count, averageCount, withNull);
    return getFourier(averaged.data(), out, length, length / 2);
}

bool PulsarCalculate::sumChannelsAndFourier()
{
    const int count = Tools::powerOfTwoFloor(fixedPoints);
    const int length = Tools::averagedLength(count, parameters.averageCount, parameters.withNull);
    const int n = length / 2;

    auto spectrum = std::vector<double>(std::size_t(n));
    if (!getFourierOfSum(spectrum.data(), count, parameters.dispersion, parameters.averageCount,
                         parameters.withNull))
        return refuse("The spectrum of the sum cannot be computed.");

    const int multiple = parameters.sigmaMultiple;
    const double sigma = Tools::sigma(spectrum.data(), n);
    const double threshold = multiple * sigma;
    QString &text = outcome.description;
    text = "Sigma = " + ReportText::general(sigma) + "\n" + QString::number(multiple) +
           " sigma = " + ReportText::general(threshold) +
           "\n\nHarmonics >= " + QString::number(multiple) + " sigma:\n\n";
    int above = 0;
    std::vector<int> listed;
    for (int i = 0; i < n; ++i) {
        const double value = spectrum[std::size_t(i)];
        if (!(value > threshold) || ++above > maxListedHarmonics)
            continue;
        text += QString::number(i) + ": " + ReportText::general(value) + "\n";
        listed.push_back(i);
    }
    text += "\nFirst harmonic:\nnum = " + QString::number(parameters.harmonicNum) +
            "\nvalue = " + ReportText::general(spectrum[std::size_t(parameters.harmonicNum)]) +
            "\n";

    addCurve(spectrum, "fourier of sum channels");
    addCurve(std::vector<double>(std::size_t(n), sigma), "1 sigma of fourier");
    addCurve(std::vector<double>(std::size_t(n), threshold),
             QString::number(multiple) + " sigma of fourier");
    outcome.points = n;
    setSpectrumAxis(parameters.averageCount);

    remarkOnLines(spectrum, threshold, listed, above);
    markSteps();
    remarkOnBands();
    return true;
}

// What noise explains of the lines above a threshold, which stand out of it, the strongest lines of
// all, and that of the typed period.
void PulsarCalculate::remarkOnLines(const std::vector<double> &spectrum, double threshold,
                                    const std::vector<int> &listed, int above)
{
    const int window = parameters.withNull ? paddedNoiseWindow : noiseWindow;
    const std::vector<double> levels = Tools::amplitudeNoise(spectrum, window);
    if (!(*std::max_element(levels.begin(), levels.end()) > 0)) {
        outcome.remarks
            << "The spectrum holds no noise: there is nothing to compare its lines with.";
        return;
    }
    const bool listsAll = above == int(listed.size());
    QString text =
        QString("%1\n%2 of %3 values lie above %4 sigma%5; noise of this level would put "
                "%6 there.")
            .arg(levelText(levels, window))
            .arg(above)
            .arg(spectrum.size())
            .arg(parameters.sigmaMultiple)
            .arg(listsAll ? "" : QString(", the first %1 are listed").arg(listed.size()))
            .arg(ReportText::count(Tools::expectedAbove(levels, threshold)));
    if (!listed.empty())
        text += "\n" + significantText(spectrum, levels, listed);
    outcome.remarks << text << strongestText(spectrum, levels, outcome.axis.step);

    if (!(parameters.period > 0))
        return;
    const double harmonic = harmonicOfPeriod(parameters, data.tresolution);
    text = QString("The period of %1 s (topocentric) has the harmonic number %2")
               .arg(exactText(parameters.period))
               .arg(harmonic, 0, 'f', 2);
    const double nearest = std::round(harmonic);
    if (nearest >= 1 && nearest < double(spectrum.size())) {
        const std::size_t i = std::size_t(nearest);
        text += QString("; line %1 has %2 noise levels, amplitude %3")
                    .arg(i)
                    .arg(spectrum[i] / levels[i], 0, 'f', 1)
                    .arg(spectrum[i], 0, 'g', 4);
    } else {
        text += ", which is not in this spectrum";
    }
    outcome.remarks << text + ".";
}
