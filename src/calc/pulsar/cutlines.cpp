#include "calc/pulsar/cutlines.h"

#include "calc/approximation.h"
#include "calc/mainshum.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

namespace Pulsar {

namespace {

const char humName[] = "hum";
constexpr double halfWidth = 0.1; // Hz, of a line that is given by one frequency

struct Wanted {
    bool hum = false;
    std::vector<CutBand> bands;
    QString unread; // the first item that is neither
};

Wanted wantedOf(const QString &list)
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
        const double margin = ends.size() == 1 ? halfWidth : 0;
        wanted.bands.push_back({first - margin, last + margin});
    }
    return wanted;
}

double varianceOf(const std::vector<double> &series)
{
    const double sigma = Tools::sigma(series.data(), int(series.size()));
    return sigma * sigma;
}

void take(const CutBand &band, double tresolution, std::vector<double> &series,
          std::vector<CutBand> &taken)
{
    const double before = varianceOf(series);
    Tools::removeBand(series, tresolution, band.low, band.high);
    taken.push_back(band);
    taken.back().variance = before > 0 ? 1 - varianceOf(series) / before : 0;
}

} // namespace

Problems checkCut(const ObservationData &header, const QString &list)
{
    const Wanted wanted = wantedOf(list);
    if (!wanted.unread.isEmpty())
        return {
            {"cutLines", QString("\"%1\" cannot be cut out.\nAllowed: hum, frequencies in Hz as "
                                 "33.3 or 24.9-25.1, separated by commas.")
                             .arg(wanted.unread)}};
    const double most = 1 / (2 * header.tresolution);
    for (const CutBand &band : wanted.bands) {
        if (!(band.low > 0 && band.low < band.high && band.high <= most))
            return {{"cutLines",
                     QString("%1 to %2 Hz cannot be cut out.\nAllowed: rising frequencies above 0, "
                             "up to %3 Hz, half of the sampling rate.")
                         .arg(band.low)
                         .arg(band.high)
                         .arg(most)}};
    }
    return {};
}

std::vector<CutBand> cutOut(const QString &list, double tresolution, std::vector<double> &series)
{
    const Wanted wanted = wantedOf(list);
    std::vector<CutBand> taken;
    std::vector<MainsLine> hum;
    if (wanted.hum)
        hum = Tools::findMains(Tools::powerSpectrum(series, tresolution));
    std::sort(hum.begin(), hum.end(),
              [](const MainsLine &a, const MainsLine &b) { return a.variance > b.variance; });
    for (const MainsLine &line : hum) {
        const auto [low, high] = std::minmax({Tools::foldedFrequency(line.from, 1 / tresolution),
                                              Tools::foldedFrequency(line.to, 1 / tresolution)});
        take({low, high, 0, true}, tresolution, series, taken);
    }
    for (const CutBand &band : wanted.bands)
        take(band, tresolution, series, taken);
    return taken;
}

Results::Report cutReport(const QString &list, const std::vector<CutBand> &bands)
{
    Results::Report report;
    if (list.isEmpty())
        return report;
    if (bands.empty()) {
        report.addLine("No hum was found; nothing is cut out.");
        return report;
    }
    report.addHeading(
        "Cut out of the sum: frequencies, Hz, and the part of the variance that goes");
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
