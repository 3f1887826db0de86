#include "calc/pulsar/bandfold.h"

#include "calc/baseline.h"
#include "calc/fold.h"
#include "calc/leveljumps.h"
#include "calc/pulsar/bandsum.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace Pulsar {

namespace {

// How bands are folded.
struct Folding {
    QString noise; // base line
    double tresolution = 0;
    double period = 0; // s
    int bins = 0;
    std::vector<CutBand> cut;
};

// One band: `count` samples, of which the first is number `first` of the sum. Stopped by `control`
// it is of no use.
std::vector<float> foldBand(const float *samples, int count, int first, Folding folding,
                            const Jobs::Control &control)
{
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> row(std::size_t(folding.bins), none);
    double sigma = count > 0 ? Tools::robustSigma(samples, count) : 0;
    std::vector<double> series(samples, samples + std::max(count, 0));
    std::vector<double> baseline(series.size());
    if (!(sigma > 0) || !Tools::findBaseline(folding.noise, series.data(), baseline.data(), count))
        return row;
    removeBaseline(false, baseline, series);
    if (!folding.cut.empty()) {
        cutOut(folding.cut, folding.tresolution, series, [&] { return !control.isStopped(); });
        sigma = noiseAfterCut(series, folding.cut, folding.tresolution);
    }
    const double mean = std::accumulate(series.begin(), series.end(), 0.0) / count;
    const Tools::FoldedProfile profile = Tools::fold(
        series.data(), count, folding.period / folding.tresolution, folding.bins, first);
    for (std::size_t b = 0; b < row.size() && sigma > 0; ++b) {
        if (profile.weights[b] > 0)
            row[b] = float((profile.bins[b] - mean) / sigma);
    }
    return row;
}

} // namespace

BandFold foldBands(const ObservationData &data, const PulsarParameters &selected, int count,
                   double period, int bins, const std::vector<CutBand> &cut,
                   const Jobs::Control &control)
{
    BandFold fold;
    fold.period = period;
    fold.bins = bins;
    const Folding folding = {selected.noise, data.tresolution, period, bins, cut};
    const Tools::BandDelays delays = bandDelays(data, selected.dispersion);
    for (int band = 0; band < sumBands; ++band) {
        control.progress(100 * band / sumBands);
        if (control.isStopped())
            return {};
        const qint64 start = qint64(selected.firstPoint) + delays.shift(band);
        const qint64 begin = std::clamp<qint64>(start, 0, data.npoints);
        const qint64 end = std::clamp<qint64>(start + count, begin, data.npoints);
        const std::vector<float> row =
            foldBand(channelSamples(data, selected, band) + begin, int(end - begin),
                     int(begin - start), folding, control);
        fold.frequencies.push_back(data.fbands[std::size_t(band)]);
        fold.values.insert(fold.values.end(), row.begin(), row.end());
    }
    return fold;
}

} // namespace Pulsar
