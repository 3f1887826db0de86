#include "forms/native/nativestatistics.h"

#include "calc/finitesamples.h"

#include <algorithm>
#include <cmath>

namespace {

// Exact statistics of the samples between two indices of the series.
void setFromSeries(NativeTexts::StatisticsPart &part, const std::vector<double> &series, int begin,
                   int end)
{
    const std::vector<double> values(series.begin() + begin, series.begin() + end);
    part.statistics = Tools::seriesStatistics(values);
    part.deviation = Tools::medianAbsoluteDeviation(values, part.statistics.median);
    if (part.isSelected)
        part.signal = Tools::partSignal(series, begin, end);
}

void setFromMoments(NativeTexts::StatisticsPart &part, const Tools::RowMoments &moments)
{
    part.isReduced = true;
    part.statistics.count = moments.points;
    part.statistics.mean = moments.mean;
    part.statistics.sigma = moments.sigma;
    part.statistics.min = moments.min;
    part.statistics.max = moments.max;
}

QString stepsNote(const NativePicture &picture, const NativeCurves &drawn)
{
    if (!picture.request.deletesSteps)
        return "As recorded; level steps are not deleted.";
    if (!picture.window.samples)
        return "Level steps are not deleted here; zoom in.";
    std::size_t steps = 0;
    for (const auto &ofChannel : picture.jumps)
        steps += ofChannel.size();
    return QString("Deleted level steps: %1 in all channels%2.")
        .arg(steps)
        .arg(drawn.markers.empty() ? "" : ", marked green");
}

} // namespace

NativeTexts::StatisticsPart nativeStatistics(const NativePicture &picture,
                                             const NativeCurves &drawn, const NativeRange &range,
                                             bool isSelected, double tresolution)
{
    NativeTexts::StatisticsPart part;
    part.isSelected = isSelected;
    part.first = qint64(range.first);
    part.last = qint64(range.first + range.points) - 1;
    part.seconds = range.points * tresolution;
    if (!drawn.series.empty()) {
        const int begin = int(range.first - drawn.first);
        const int end = std::min(begin + int(range.points), int(drawn.series.size()));
        setFromSeries(part, drawn.series, begin, end);
    } else {
        const Tools::Reduction &reduction = picture.reduction;
        const int begin = reduction.columnOf(int(part.first));
        const int end = reduction.columnOf(int(part.last)) + 1;
        setFromMoments(part, Tools::rowMoments(reduction, drawn.row, begin, end));
    }
    return part;
}

NativeBandpass nativeBandpass(const NativePicture &picture, const NativeRange &range)
{
    const Tools::Reduction &reduction = picture.reduction;
    const NativeDomain &domain = picture.request.domain;
    const int lastOfAll = domain.first + domain.count - 1;
    const int first = std::clamp(int(range.first), domain.first, lastOfAll);
    const int last = std::clamp(int(range.first + range.points) - 1, first, lastOfAll);
    NativeBandpass bandpass;
    for (int band = 0; band < reduction.channels - 1; ++band) {
        const Tools::RowMoments moments = Tools::rowMoments(
            reduction, band, reduction.columnOf(first), reduction.columnOf(last) + 1);
        bandpass.mean.push_back(moments.points > 0 ? moments.mean : NAN);
        bandpass.sigma.push_back(moments.points > 0 ? moments.sigma : NAN);
    }
    return bandpass;
}

QStringList nativeNotes(const NativePicture &picture, const NativeCurves &drawn,
                        const std::vector<bool> &channelsOff)
{
    QStringList notes;
    if (!picture.window.samples && picture.isGlance)
        notes << QString("First look: %1 % of the points read.")
                     .arg(100 * picture.share, 0, 'f', picture.share < 0.1 ? 2 : 0);
    else if (!picture.window.samples)
        notes << "Least and greatest values of equal parts; zoom in for every sample.";
    notes << stepsNote(picture, drawn);
    if (!picture.problem.isEmpty())
        notes << picture.problem;
    if (!picture.nonFinite.isEmpty())
        notes << picture.nonFinite + " In sums they count as the median of their channel.";
    const std::vector<int> bands = bandsThatKeepFromSumming(picture, channelsOff);
    if (!bands.empty())
        notes << Tools::noFiniteText(bands) +
                     " here: there is no sum until a click on the bandpass switches " +
                     (bands.size() == 1 ? "it off." : "them off.");
    return notes;
}
