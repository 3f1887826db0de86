#include "app/shell/settings.h"
#include "calc/pulsar/bandfold.h"
#include "calc/pulsar/preparedsamples.h"
#include "forms/ffa/ffaform.h"
#include "forms/ffa/ffaresults.h"
#include "picture/periodmarks.h"
#include "picture/resultplot.h"
#include "plot/pulsargrafik.h"
#include "results/reporttext.h"

#include <QDir>
#include <algorithm>
#include <cmath>

// What FfaForm shows of a search: the plot, the table of candidates and the fold at one period.

namespace {

constexpr double catchPixels = 3; // beside a click, where a peak is looked for

QString periodText(double period)
{
    return QString::number(period, 'f', 7) + " s";
}

} // namespace

void FfaForm::showResult()
{
    bandWorker.stop();
    chosenPeriod = 0;
    chosenRow = -1;
    const int count = int(candidates.size());
    const QString number = count == 0   ? "No candidate"
                           : count == 1 ? "1 candidate"
                           : count < mostCandidates
                               ? QString("%1 candidates").arg(count)
                               : QString("The strongest %1 candidates").arg(count);
    Results::Report noise(QString("%1 above %2 %3, the highest that white noise is expected to "
                                  "reach in this search. Periods are topocentric.")
                              .arg(number)
                              .arg(result().wholeFactors.empty() ? "S/N" : "true S/N")
                              .arg(searched.estimate.noiseThreshold, 0, 'f', 1));
    for (const QString &line : {found->result.nonFinite, readProblem, searched.leftOut()}) {
        if (!line.isEmpty())
            noise.addLine(line);
    }
    for (const Results::Report &remark : found->result.remarks)
        noise.add(remark);
    const Settings *const settings = Settings::instance();
    const QString folder =
        settings->lastSavePath().isEmpty() ? settings->lastOpenPath() : settings->lastSavePath();
    const QString name = data.fileName.section('.', 0, -2) + "_ffa.txt";
    results->showSearch(candidates, result().periodogram.widths, noise.html(), sourceLines(),
                        QDir(folder).filePath(name));
    showSpectrum(results->shownWidth());
    if (!candidates.empty()) {
        results->selectRow(0);
        chooseCandidate(0);
    }
}

void FfaForm::showSpectrum(int width)
{
    if (!found)
        return;
    spectrum =
        std::make_shared<const FfaSpectrum>(Tools::sortedSpectrum(result().periodogram, width));
    std::vector<float> noise = Tools::snrFactors(*spectrum, result().wholeFactors);
    for (float &value : noise)
        value = float(searched.estimate.noiseThreshold) / value;
    const QString name =
        width < 0
            ? QString("S/N, best width")
            : QString("S/N, width %1 bins").arg(result().periodogram.widths[std::size_t(width)]);
    PlotData plot = Plot::periodPlot(spectrum->periods, {spectrum->snr, std::move(noise)},
                                     {name, "noise alone"});
    plot.colours = {plotColour(0).code, plotColour(2).code};
    plot.source = sourceLines();
    Plot::markPeriods(plot, chosenPeriod);
    grafik->setData(std::move(plot));
    grafik->recomputeRange();
    grafik->setHoverText([this](const QPointF &coords) { return textAt(coords); });
}

// The texts of the highest S/N among the trial periods under the pointer.
QStringList FfaForm::textAt(const QPointF &coords) const
{
    if (!found || spectrum->snr.empty())
        return {};
    const double last = double(spectrum->snr.size()) - 1;
    const double reach = std::abs(grafik->dataPerPixel().x()) / 2;
    const auto begin = std::size_t(std::clamp(std::floor(coords.x() - reach), 0.0, last));
    const auto end = std::size_t(std::clamp(std::ceil(coords.x() + reach), 0.0, last)) + 1;
    const float *const snr = spectrum->snr.data();
    const auto place = std::size_t(std::max_element(snr + begin, snr + end) - snr);
    const Periodogram &periodogram = result().periodogram;
    const auto trial = std::size_t(spectrum->trials[place]);
    const std::size_t widths = periodogram.widths.size();
    const auto *const row = periodogram.snr.data() + trial * widths;
    const auto best = std::size_t(std::max_element(row, row + widths) - row);
    const double period = spectrum->periods[place];
    return {QString("%1,  %2 Hz,  S/N %3")
                .arg(periodText(period))
                .arg(1 / period, 0, 'f', 6)
                .arg(double(snr[place]), 0, 'f', 1),
            QString("best width %1 of %2 bins, S/N %3")
                .arg(periodogram.widths[best])
                .arg(periodogram.foldbins[trial])
                .arg(double(row[best]), 0, 'f', 1)};
}

// The highest peak within some pixels of a click.
void FfaForm::choosePeak(QPointF coords)
{
    if (!found || spectrum->snr.empty())
        return;
    const double reach = catchPixels * std::abs(grafik->dataPerPixel().x());
    const double last = double(spectrum->snr.size()) - 1;
    const auto begin = std::size_t(std::clamp(std::floor(coords.x() - reach), 0.0, last));
    const auto end = std::size_t(std::clamp(std::ceil(coords.x() + reach), 0.0, last)) + 1;
    const float *const snr = spectrum->snr.data();
    const auto peak = std::size_t(std::max_element(snr + begin, snr + end) - snr);
    const double period = spectrum->periods[peak];
    const auto isThere = [&](const FfaCandidate &candidate) {
        return std::abs(1 / candidate.period - 1 / period) * seconds() < 0.5;
    };
    const auto candidate = std::find_if(candidates.begin(), candidates.end(), isThere);
    chosenRow = candidate == candidates.end() ? -1 : int(candidate - candidates.begin());
    results->selectRow(chosenRow);
    const int trial = spectrum->trials[peak];
    choosePeriod(period, int(result().periodogram.foldbins[std::size_t(trial)]));
}

void FfaForm::chooseCandidate(int row)
{
    if (!found || row >= int(candidates.size()))
        return;
    chosenRow = row;
    const FfaCandidate &candidate = candidates[std::size_t(row)];
    choosePeriod(candidate.period, candidate.bins,
                 std::isfinite(candidate.periodError)
                     ? ReportText::withError(candidate.period, candidate.periodError) + " s"
                     : QString());
}

void FfaForm::choosePeriod(double period, int bins, const QString &refined)
{
    chosenPeriod = period;
    chosenBins = bins;
    chosenText = refined;
    PlotData plot = grafik->data();
    Plot::markPeriods(plot, chosenPeriod);
    grafik->setData(std::move(plot));
    const FfaFold fold = Tools::foldSeries(result(), period, bins);
    const int width = fold.widths[std::size_t(fold.best)];
    const int count = int(fold.profile.size());
    foldBins = count;
    Results::Report report(QString("Period %1, %2 Hz")
                               .arg(refined.isEmpty() ? periodText(period) : refined)
                               .arg(1 / period, 0, 'f', 6));
    report.addLine(QString("Fold: S/N %1, width %2 of %3 bins, %4 ms, phase %5")
                       .arg(fold.snr[std::size_t(fold.best)], 0, 'f', 1)
                       .arg(width)
                       .arg(count)
                       .arg(1000 * width * period / count, 0, 'f', 2)
                       .arg(fold.phase, 0, 'f', 3));
    results->showFold(fold, seconds(), report.html());
    if (results->wantsBands())
        foldBands();
}

// Folds the bands at the chosen period, beside the window.
void FfaForm::foldBands()
{
    if (!found || !(chosenPeriod > 0))
        return;
    if (!results->wantsBands()) {
        bandWorker.stop();
        choosePeriod(chosenPeriod, chosenBins, chosenText);
        return;
    }
    const int bins = foldBins;
    using Fold = std::shared_ptr<const BandFold>;
    bandWorker.start<Fold>(
        [recording = data, parameters = searched.parameters, period = chosenPeriod, bins,
         search = found](const Jobs::Control &control, const Jobs::Deliver<Fold> &deliver) {
            const PreparedSamples samples =
                prepareSamples("createFFA", recording, parameters, control);
            if (!samples.problems.empty() || control.isStopped())
                return;
            auto fold = std::make_shared<const BandFold>(
                Pulsar::foldBands(samples.data, parameters, int(search->result.ffa->series.size()),
                                  period, bins, search->result.cut, control));
            if (!fold->values.empty())
                deliver(fold);
        },
        [this, period = chosenPeriod](const Fold &fold) {
            if (chosenPeriod == period && results->wantsBands())
                results->showBands(fold);
        });
}
