#include "calc/pulsar/bandsum.h"

#include "base/debugline.h"
#include "calc/approximation.h"
#include "calc/baseline.h"
#include "calc/fourier.h"

#include <algorithm>

namespace Pulsar {

namespace {

constexpr int minFourierPoints = 65;
constexpr int referenceBand = sumBands - 1;

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
    else if (data.channels <= sumBands)
        debugLine("ERROR! PulsarCalculate::sumChannels: bad data.channels=", data.channels);
    else if (!Tools::areFrequencies(data.fbands, sumBands))
        debugLine("ERROR! PulsarCalculate::sumChannels: bad fbands");
    else if (data.samples == nullptr)
        debugLine("ERROR! PulsarCalculate::sumChannels: no samples");
    else
        return false;
    return true;
}

} // namespace

ObservationData wholePointsOf(const ObservationData &recording)
{
    ObservationData whole = recording;
    whole.npoints = completePoints(recording);
    whole.missingPoints = 0;
    return whole;
}

Tools::BandDelays bandDelays(const ObservationData &header, double dispersion)
{
    return {header, sumBands, dispersion, Tools::ShiftRounding::Nearest};
}

const float *channelSamples(const ObservationData &data, const PulsarParameters &selected,
                            int channel)
{
    return data.samples[selected.module - 1][channel][selected.ray - 1];
}

int sumChannels(const ObservationData &data, const PulsarParameters &selected, double *dataOut,
                int count, double dispersion, bool forward)
{
    const int firstPoint = selected.firstPoint;
    if (count <= 0 || qint64(firstPoint) + count >= data.npoints) {
        debugLine("ERROR! PulsarCalculate::sumChannels : firstPoint + count) >= data.npoints");
        return 0;
    }
    if (!dataOut) {
        debugLine("Error: bad dataOut0!");
        return 0;
    }
    if (!(dispersion >= 0) || isSelectionRefused(data, selected))
        return 0;
    const Tools::BandDelays asComputed = bandDelays(data, dispersion);
    if (const int bad = asComputed.highestWithoutShift(); bad >= 0) {
        debugLine("ERROR! PulsarCalculate::sumChannels: bad delay=", asComputed.delay(bad),
                  " k=", bad);
        return 0;
    }
    const Tools::BandDelays delays = forward ? asComputed : asComputed.reversed();

    std::copy_n(channelSamples(data, selected, referenceBand) + firstPoint, count, dataOut);
    for (int k = referenceBand - 1; k >= 0; --k) {
        const float *const samples = channelSamples(data, selected, k);
        const Tools::BandDelays::Part part = delays.part(k, firstPoint, count, data.npoints);
        for (int i = part.begin; i < part.end; ++i)
            dataOut[i] += samples[part.first + i];
        if (part.isCut) {
            debugLine("Error! j>npoints!!! i=", part.end, " j=", part.first + part.end,
                      " data.npoints=", data.npoints);
            debugLine("STOP! k=", k);
            return referenceBand - k;
        }
    }
    return sumBands;
}

bool sumWithoutNoise(const ObservationData &data, const PulsarParameters &selected, double *dataOut,
                     int count, double dispersion, int &wholeBands)
{
    if (!dataOut) {
        debugLine("Error: bad dataOut0!");
        return false;
    }
    // A longer stretch than the recording is refused, so its memory is not asked for either.
    std::vector<double> sum(std::size_t(std::clamp(count, 1, std::max(data.npoints, 1))));
    wholeBands = sumChannels(data, selected, sum.data(), count, dispersion, true);
    if (wholeBands == 0) {
        debugLine("ERROR: sumChannels return false!");
        return false;
    }
    if (Tools::isBaseline(selected.noise)) {
        std::vector<double> baseline(sum.size());
        if (!sumBaseline(data, selected, sum, dispersion, baseline.data()) ||
            !Tools::deduct(sum.data(), baseline.data(), dataOut, count))
            return false;
        Tools::clearResidue(sum.data(), dataOut, count);
    } else {
        std::copy_n(sum.data(), count, dataOut);
    }
    return !selected.normalise || Tools::normalise(dataOut, count);
}

bool sumBaseline(const ObservationData &data, const PulsarParameters &selected,
                 const std::vector<double> &sum, double dispersion, double *baseline,
                 std::vector<double> *backSum)
{
    const int count = int(sum.size());
    if (selected.noise != "backSum")
        return Tools::findBaseline(selected.noise, sum.data(), baseline, count);
    if (!sumChannels(data, selected, baseline, count, dispersion, false))
        return false;
    if (backSum)
        backSum->assign(baseline, baseline + count);
    return Tools::findBaseline(selected.noise, baseline, baseline, count);
}

double removeBaseline(bool normalise, const std::vector<double> &baseline,
                      std::vector<double> &samples)
{
    const int count = int(samples.size());
    std::vector<double> rest(samples.size());
    Tools::deduct(samples.data(), baseline.data(), rest.data(), count);
    Tools::clearResidue(samples.data(), rest.data(), count);
    samples.swap(rest);
    const double sigma = normalise ? Tools::sigma(samples.data(), count) : 0;
    if (normalise)
        Tools::normalise(samples.data(), count);
    return sigma > 0 ? sigma : 1;
}

bool getFourier(const double *dataIn, double *dataOut, int countIn, int countOut)
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

bool getFourierOfSum(const ObservationData &data, const PulsarParameters &selected, double *out,
                     int count, double dispersion, int averageCount, bool withNull, SumNotes &notes)
{
    auto sum = std::vector<double>(std::size_t(std::max(count, 0)));
    if (!sumWithoutNoise(data, selected, sum.data(), count, dispersion, notes.wholeBands))
        return false;
    notes.cut = cutOut(selected.cut, data.tresolution, sum);
    std::vector<double> averaged(2 * sum.size());
    if (!Tools::averagePairs(sum.data(), averaged.data(), count, averageCount, withNull))
        return false;
    const int length = Tools::averagedLength(count, averageCount, withNull);
    return getFourier(averaged.data(), out, length, length / 2);
}

double harmonicOfPeriod(const PulsarParameters &given, double tresolution)
{
    return (given.withNull ? 2 : 1) * fixedPoints * tresolution / given.period;
}

} // namespace Pulsar
