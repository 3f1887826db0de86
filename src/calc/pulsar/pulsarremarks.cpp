#include "calc/pulsar/pulsarcalculate.h"

#include "calc/spectrumlines.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

// What the reports say beside the system's own texts: of the lines of a spectrum, of harmonics, and
// of what a sum holds.

namespace {

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

double PulsarCalculate::harmonicOfPeriod(const PulsarParameters &given, double tresolution)
{
    return (given.withNull ? 2 : 1) * fixedPoints * tresolution / given.period;
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
               .arg(ReportText::exact(parameters.period))
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
                               .arg(ReportText::exact(parameters.period))
                               .arg(first, 0, 'f', 2);
}

void PulsarCalculate::remarkOnBands(const std::vector<int> &starts)
{
    const int bands = data.channels - 1;
    if (bands > sumBands)
        outcome.remarks << QString("bands 1-%1 of %2 used").arg(sumBands).arg(bands);
    const auto startsWhere = [&](auto isMeant) {
        std::vector<int> meant;
        std::copy_if(starts.begin(), starts.end(), std::back_inserter(meant), isMeant);
        return starts.size() > 1 ? " (first point " + startsText(meant) + ")" : QString();
    };
    if (fewestBands < sumBands) {
        const int last = lastFullStart(largestDispersion);
        outcome.remarks << QString("The recording ends before the delayed samples of every band%1: "
                                   "the sum holds %2 of the %3 bands whole; %4.")
                               .arg(startsWhere([last](int start) { return start > last; }))
                               .arg(fewestBands)
                               .arg(sumBands)
                               .arg(fullStartText(largestDispersion));
    }
    const int missing = pointsWithoutAllBands(largestDispersion, starts.front());
    const int whole = starts.front() + missing;
    if (missing > 0)
        outcome.remarks << QString("The first %1 points%2 lack bands whose shifted samples lie "
                                   "before the recording; from first point %3 on none is missing.")
                               .arg(missing)
                               .arg(startsWhere([whole](int start) { return start < whole; }))
                               .arg(pointText(whole));
}

QString PulsarCalculate::startsText(const std::vector<int> &starts) const
{
    QStringList texts;
    for (const int start : starts)
        texts << pointText(start);
    return texts.join(", ");
}

// A sum shows every pulse at the time of its arrival in the reference band.
void PulsarCalculate::remarkOnTimes(int channel)
{
    if (channel <= int(data.fbands.size()))
        outcome.remarks << QString("Times and periods are topocentric, at %1 MHz (band %2).")
                               .arg(data.fbands[std::size_t(channel - 1)])
                               .arg(channel);
    else
        outcome.remarks << QString("Channel %1 is no frequency band; times and periods are "
                                   "topocentric.")
                               .arg(channel);
}
