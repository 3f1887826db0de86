#include "calc/pulsar/cutlines.h"

#include "calc/leveljumps.h"
#include "calc/mainshum.h"
#include "calc/notch.h"

#include <QStringList>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

namespace Pulsar {

namespace {

const char humName[] = "hum";
// Hz, that go to either side of a line given by one frequency, and of the measured ends of hum:
// what stands less far out of the noise there.
constexpr double halfWidth = 0.1;
constexpr double fewestTurns = 2; // of the gap between two bands, over the series

struct Wanted {
    bool hum = false;
    std::vector<CutBand> bands;
    QString unread; // the first item that is neither
};

// The band of a line given by one frequency, or of one measured: never beyond what the sampling
// shows, where the line itself is within.
CutBand aroundLine(double low, double high, double tresolution)
{
    const double half = 1 / (2 * tresolution);
    CutBand band = {low - halfWidth, high + halfWidth};
    if (low > 0)
        band.low = std::max(band.low, low / 2);
    if (high <= half)
        band.high = std::min(band.high, half);
    return band;
}

Wanted wantedOf(const QString &list, double tresolution)
{
    Wanted wanted;
    for (const QString &item : list.split(',', Qt::SkipEmptyParts)) {
        const QString text = item.trimmed();
        if (text == humName) {
            wanted.hum = true;
            continue;
        }
        const QStringList ends = text.split('-');
        bool isLow = false;
        bool isHigh = false;
        const double first = ends.first().toDouble(&isLow);
        const double last = ends.last().toDouble(&isHigh);
        if (!isLow || !isHigh || ends.size() > 2 || !std::isfinite(first) || !std::isfinite(last))
            return {wanted.hum, {}, text};
        wanted.bands.push_back(ends.size() == 1 ? aroundLine(first, last, tresolution)
                                                : CutBand{first, last});
    }
    return wanted;
}

bool isPossible(const CutBand &band, double tresolution)
{
    return band.low > 0 && band.low < band.high && band.high <= 1 / (2 * tresolution);
}

// Where the mains hum of a series shows.
std::vector<CutBand> humBands(const std::vector<double> &series, double tresolution)
{
    const double rate = 1 / tresolution;
    std::vector<CutBand> bands;
    for (const MainsLine &line : Tools::findMains(Tools::powerSpectrum(series, tresolution))) {
        const auto [low, high] = std::minmax(
            {Tools::foldedFrequency(line.from, rate), Tools::foldedFrequency(line.to, rate)});
        CutBand band = aroundLine(low, high, tresolution);
        band.isHum = true;
        bands.push_back(band);
    }
    return bands;
}

// Bands that overlap or that lie too near to be told apart become one. In rising order.
std::vector<CutBand> united(std::vector<CutBand> bands, double nearest)
{
    std::sort(bands.begin(), bands.end(),
              [](const CutBand &a, const CutBand &b) { return a.low < b.low; });
    std::vector<CutBand> apart;
    for (const CutBand &band : bands) {
        if (apart.empty() || band.low > apart.back().high + nearest) {
            apart.push_back(band);
            continue;
        }
        apart.back().high = std::max(apart.back().high, band.high);
        apart.back().isHum |= band.isHum;
    }
    return apart;
}

} // namespace

Problems checkCut(const ObservationData &header, const QString &list)
{
    const Wanted wanted = wantedOf(list, header.tresolution);
    if (!wanted.unread.isEmpty())
        return {
            {"cutLines", QString("\"%1\" cannot be cut out.\nAllowed: hum, frequencies in Hz as "
                                 "33.3 or 24.9-25.1, separated by commas.")
                             .arg(wanted.unread)}};
    for (const CutBand &band : wanted.bands) {
        if (!isPossible(band, header.tresolution))
            return {{"cutLines",
                     QString("%1 to %2 Hz cannot be cut out.\nAllowed: rising frequencies above 0, "
                             "up to %3 Hz, half of the sampling rate.")
                         .arg(band.low)
                         .arg(band.high)
                         .arg(1 / (2 * header.tresolution))}};
    }
    return {};
}

std::vector<CutBand> bandsToCut(const QString &list, double tresolution,
                                const std::vector<double> &series)
{
    const Wanted wanted = wantedOf(list, tresolution);
    std::vector<CutBand> taken = wanted.bands;
    if (wanted.hum) {
        const std::vector<CutBand> hum = humBands(series, tresolution);
        taken.insert(taken.end(), hum.begin(), hum.end());
    }
    return united(std::move(taken), fewestTurns / (double(series.size()) * tresolution));
}

void cutOut(std::vector<CutBand> &bands, double tresolution, std::vector<double> &series,
            const std::function<bool()> &goOn)
{
    std::vector<Tools::NotchBand> ranges;
    for (const CutBand &band : bands)
        ranges.push_back({band.low, band.high});
    const std::vector<double> shares = Tools::notch(series, tresolution, ranges, goOn);
    for (std::size_t i = 0; i < bands.size(); ++i)
        bands[i].variance = shares[i];
}

std::vector<CutBand> cutOut(const QString &list, double tresolution, std::vector<double> &series,
                            const std::function<bool()> &goOn)
{
    std::vector<CutBand> bands = bandsToCut(list, tresolution, series);
    cutOut(bands, tresolution, series, goOn);
    return bands;
}

double noiseAfterCut(const std::vector<double> &series, const std::vector<CutBand> &bands,
                     double tresolution)
{
    // Floats hold the noise above any level that is taken off.
    const double mean = std::accumulate(series.begin(), series.end(), 0.0) /
                        double(std::max<std::size_t>(series.size(), 1));
    std::vector<float> samples;
    samples.reserve(series.size());
    for (const double value : series)
        samples.push_back(float(value - mean));
    const double noise = Tools::robustSigma(samples.data(), int(samples.size()));
    // A difference of neighbours has the power 1 - cos(w) at w radians a sample.
    const auto powerBelow = [tresolution](double frequency) {
        const double turn = 2 * M_PI * frequency * tresolution;
        return (turn - std::sin(turn)) / M_PI;
    };
    double left = 1;
    for (const CutBand &band : bands)
        left -= powerBelow(band.high) - powerBelow(band.low);
    return left > 0 ? noise / std::sqrt(left) : 0;
}

double cutBytes(const QString &list, int points, double tresolution)
{
    const Wanted wanted = wantedOf(list, tresolution);
    std::vector<Tools::NotchBand> bands;
    for (const CutBand &band : wanted.bands) {
        if (isPossible(band, tresolution))
            bands.push_back({band.low, band.high});
    }
    if (wanted.hum) // hum is that wide at least
        bands.push_back({0, std::min(halfWidth, 1 / (2 * tresolution))});
    const auto count = std::size_t(std::max(points, 0));
    return sizeof(double) * double(count) + Tools::notchBytes(count, tresolution, bands);
}

Results::Report cutReport(const QString &list, const std::vector<CutBand> &bands,
                          const char *series)
{
    Results::Report report;
    if (list.isEmpty())
        return report;
    if (bands.empty()) {
        report.addLine("No hum was found; nothing is cut out.");
        return report;
    }
    report.addHeading(
        QString("Cut out of the %1: frequencies, Hz, and the part of the variance that goes")
            .arg(series));
    Results::ReportTable table = {{{"from", "Hz"}, {"to", "Hz"}, {"variance", "%"}, {""}},
                                  "%1 to %2: %3 %4"};
    for (const CutBand &band : bands)
        table.rows.push_back({QString::number(band.low, 'f', 3), QString::number(band.high, 'f', 3),
                              QString::number(100 * band.variance, 'g', 2) + " %",
                              band.isHum ? "hum" : "line"});
    report.addTable(table);
    return report;
}

} // namespace Pulsar
