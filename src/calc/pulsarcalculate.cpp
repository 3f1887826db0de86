#include "calc/pulsarcalculate.h"

#include "base/debugline.h"
#include "calc/approximation.h"
#include "calc/channelsum.h"
#include "calc/fourier.h"

#include <algorithm>

namespace {

constexpr int polynomialDegree = 5;
constexpr int medianBlock = 256;  // points
constexpr int backSumBlock = 128; // points
constexpr int minFourierPoints = 65;
constexpr int referenceBand = PulsarCalculate::sumBands - 1;

using BandShifts = std::array<int, referenceBand>;

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

// Shifts of the bands below the reference; false after a debug line when one is beyond an int.
bool findShifts(const ObservationData &data, double dispersion, bool forward, BandShifts &shifts)
{
    for (int k = referenceBand - 1; k >= 0; --k) {
        const double delay = Tools::dispersionDelay(
            data.fbands[std::size_t(k)], data.fbands[referenceBand], dispersion, data.tresolution);
        if (!Tools::isShift(delay)) {
            debugLine("ERROR! PulsarCalculate::sumChannels: bad delay=", delay, " k=", k);
            return false;
        }
        shifts[std::size_t(k)] = Tools::stretchShift(delay) * (forward ? 1 : -1);
    }
    return true;
}

} // namespace

PulsarCalculate::PulsarCalculate(const ObservationData &recording,
                                 const PulsarParameters &pulsarParameters, QObject *parent)
    : QObject(parent), data(recording), parameters(pulsarParameters)
{}

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
    BandShifts shifts;
    if (!(dispersion >= 0) || isSelectionRefused(data, parameters) ||
        !findShifts(data, dispersion, forward, shifts))
        return false;

    const float *const *const *const channels = data.samples[parameters.module - 1];
    const int ray = parameters.ray - 1;
    std::copy_n(channels[referenceBand][ray] + firstPoint, count, dataOut);
    completeBands = 1;
    for (int k = referenceBand - 1; k >= 0; --k) {
        const float *const samples = channels[k][ray];
        const qint64 first = qint64(firstPoint) + shifts[std::size_t(k)]; // for point 0
        const int begin = int(std::clamp<qint64>(-first, 0, count));
        const int end = int(std::clamp<qint64>(data.npoints - first, 0, count));
        for (int i = begin; i < end; ++i)
            dataOut[i] += samples[first + i];
        if (end < count) {
            debugLine("Error! j>npoints!!! i=", end, " j=", first + end,
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
    const int bandsOfSum = completeBands;
    const bool subtracted = subtractBaseline(sum, dispersion, dataOut);
    completeBands = bandsOfSum;
    if (!subtracted)
        return false;
    return !parameters.normalise || Tools::normalise(dataOut, count);
}

bool PulsarCalculate::subtractBaseline(const std::vector<double> &sum, double dispersion,
                                       double *dataOut)
{
    const int count = int(sum.size());
    std::vector<double> baseline(sum.size());
    if (parameters.noise == "polinom5") {
        if (!Approximation(sum.data(), baseline.data(), count).polynomial(polynomialDegree, false))
            return false;
    } else if (parameters.noise == "median") {
        if (!Approximation(sum.data(), baseline.data(), count).medianLine(medianBlock))
            return false;
    } else if (parameters.noise == "backSum") {
        if (!sumChannels(baseline.data(), count, dispersion, false) ||
            !Approximation(baseline.data(), baseline.data(), count).linearLine(backSumBlock))
            return false;
    } else {
        std::copy(sum.begin(), sum.end(), dataOut);
        return true;
    }
    return Tools::deduct(sum.data(), baseline.data(), dataOut, count);
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
