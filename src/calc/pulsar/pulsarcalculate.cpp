#include "calc/pulsar/pulsarcalculate.h"

#include "base/debugline.h"
#include "calc/approximation.h"
#include "calc/fourier.h"

#include <algorithm>

namespace {

constexpr int minFourierPoints = 65;
constexpr int referenceBand = PulsarCalculate::sumBands - 1;

bool isSelectionRefused(const ObservationData &data, const PulsarParameters &selected)
{
    if (selected.module < 1 || selected.module > data.modules)
        debugLine("ERROR! PulsarCalculate::sumChannels: bad module=", selected.module,
                  " data.modules=", data.modules);
    else if (selected.ray < 1 || selected.ray > data.rays)
        debugLine("ERROR! PulsarCalculate::sumChannels: bad ray=", selected.ray,
                  " data.rays=", data.rays);
    else if (selected.firstPoint < 0)
        debugLine("ERROR! PulsarCalculate::sumChannels: bad firstPoint=", selected.firstPoint);
    else if (data.channels <= PulsarCalculate::sumBands)
        debugLine("ERROR! PulsarCalculate::sumChannels: bad data.channels=", data.channels);
    else if (!Tools::areFrequencies(data.fbands, PulsarCalculate::sumBands))
        debugLine("ERROR! PulsarCalculate::sumChannels: bad fbands");
    else if (data.samples == nullptr)
        debugLine("ERROR! PulsarCalculate::sumChannels: no samples");
    else
        return false;
    return true;
}

bool hasBaseline(const QString &noise)
{
    return noise == "polinom5" || noise == "median" || noise == "backSum";
}

} // namespace

PulsarCalculate::PulsarCalculate(const ObservationData &recording,
                                 const PulsarParameters &pulsarParameters, QObject *parent)
    : QObject(parent), data(recording), parameters(pulsarParameters)
{
    data.npoints = completePoints(recording);
    data.missingPoints = 0;
}

Tools::BandDelays PulsarCalculate::bandDelays(double dispersion) const
{
    return {data, sumBands, dispersion, Tools::ShiftRounding::Nearest};
}

bool PulsarCalculate::sumChannels(double *dataOut, int count, double dispersion, bool forward)
{
    completeBands = 0;
    const int firstPoint = parameters.firstPoint;
    if (count <= 0 || qint64(firstPoint) + count >= data.npoints) {
        debugLine("ERROR! PulsarCalculate::sumChannels : firstPoint + count) >= data.npoints");
        return false;
    }
    if (!dataOut) {
        debugLine("Error: bad dataOut0!");
        return false;
    }
    if (!(dispersion >= 0) || isSelectionRefused(data, parameters))
        return false;
    const Tools::BandDelays asComputed = bandDelays(dispersion);
    if (const int bad = asComputed.highestWithoutShift(); bad >= 0) {
        debugLine("ERROR! PulsarCalculate::sumChannels: bad delay=", asComputed.delay(bad),
                  " k=", bad);
        return false;
    }
    const Tools::BandDelays delays = forward ? asComputed : asComputed.reversed();

    std::copy_n(bandSamples(referenceBand) + firstPoint, count, dataOut);
    completeBands = 1;
    for (int k = referenceBand - 1; k >= 0; --k) {
        const float *const samples = bandSamples(k);
        const Tools::BandDelays::Part part = delays.part(k, firstPoint, count, data.npoints);
        for (int i = part.begin; i < part.end; ++i)
            dataOut[i] += samples[part.first + i];
        if (part.isCut) {
            debugLine("Error! j>npoints!!! i=", part.end, " j=", part.first + part.end,
                      " data.npoints=", data.npoints);
            debugLine("STOP! k=", k);
            return true;
        }
        ++completeBands;
    }
    return true;
}

bool PulsarCalculate::sumWithoutNoise(double *dataOut, int count, double dispersion)
{
    if (!dataOut) {
        debugLine("Error: bad dataOut0!");
        return false;
    }
    // A longer stretch than the recording is refused, so its memory is not asked for either.
    std::vector<double> sum(std::size_t(std::clamp(count, 1, std::max(data.npoints, 1))));
    if (!sumChannels(sum.data(), count, dispersion, true)) {
        debugLine("ERROR: sumChannels return false!");
        return false;
    }
    if (hasBaseline(parameters.noise)) {
        std::vector<double> baseline(sum.size());
        if (!noiseBaseline(sum, dispersion, baseline.data()) ||
            !Tools::deduct(sum.data(), baseline.data(), dataOut, count))
            return false;
        Tools::clearResidue(sum.data(), dataOut, count);
    } else {
        std::copy_n(sum.data(), count, dataOut);
    }
    return !parameters.normalise || Tools::normalise(dataOut, count);
}

// The chosen baseline of a sum, sum.size() values; zeros where none is chosen. For "backSum"
// the sum with opposite delays goes to `backSum`, where that is wanted.
bool PulsarCalculate::noiseBaseline(const std::vector<double> &sum, double dispersion,
                                    double *baseline, std::vector<double> *backSum)
{
    const int count = int(sum.size());
    if (parameters.noise == "polinom5")
        return Approximation(sum.data(), baseline, count).polynomial(baselineDegree, false);
    if (parameters.noise == "median")
        return Approximation(sum.data(), baseline, count).medianLine(baselineMedianBlock);
    if (parameters.noise == "backSum") {
        const int bandsOfSum = completeBands;
        const bool summed = sumChannels(baseline, count, dispersion, false);
        completeBands = bandsOfSum;
        if (summed && backSum)
            backSum->assign(baseline, baseline + count);
        return summed && Approximation(baseline, baseline, count).linearLine(baselineMeanBlock);
    }
    std::fill_n(baseline, count, 0.0);
    return true;
}

bool PulsarCalculate::getFourier(const double *dataIn, double *dataOut, int countIn, int countOut)
{
    if (countIn < minFourierPoints) {
        debugLine("ERROR! PulsarCalculate::getFourier: Can't draw fourier - too small points!");
        return false;
    }
    const int power = Tools::powerOfTwoFloor(countIn);
    if (countIn != power) {
        debugLine("ERROR! PulsarCalculate::getFourier: countIn must be degree of 2! countIn=",
                  countIn, " correct: countIn0=", power);
        return false;
    }
    if (countOut != countIn / 2) {
        debugLine("ERROR! PulsarCalculate::getFourier: countOut must equal countIn/2!");
        return false;
    }
    if (!dataIn || !dataOut) {
        debugLine("ERROR! PulsarCalculate::getFourier: bad ", dataIn ? "dataOut!" : "dataIn!");
        return false;
    }
    Tools::amplitudeSpectrum(dataIn, dataOut, countIn, countOut);
    return true;
}
