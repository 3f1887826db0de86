#include "calc/banddelays.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tools {

namespace {

constexpr double minFrequency = 0.0001; // MHz

} // namespace

bool areFrequencies(const std::vector<double> &fbands, int bands)
{
    return fbands.size() >= std::size_t(bands) &&
           std::all_of(fbands.begin(), fbands.begin() + bands,
                       [](double frequency) { return frequency >= minFrequency; });
}

double dispersionDelay(double frequency, double reference, double dispersion, double tresolution)
{
    return inverseSquares(frequency, reference) * dispersionConstant * dispersion / tresolution;
}

double roundedDelay(double delay, ShiftRounding rounding)
{
    if (rounding == ShiftRounding::Nearest)
        return std::round(delay);
    const double whole = std::trunc(delay);
    return std::abs(delay - whole) > 0.5 ? whole + 1 : whole;
}

BandDelays::BandDelays(const ObservationData &header, int bands, double dispersion,
                       ShiftRounding shiftRounding)
    : rounding(shiftRounding)
{
    delays.reserve(std::size_t(bands));
    for (int band = 0; band < bands; ++band)
        delays.push_back(dispersionDelay(header.fbands[std::size_t(band)],
                                         header.fbands[std::size_t(bands - 1)], dispersion,
                                         header.tresolution));
}

BandDelays BandDelays::reversed() const
{
    BandDelays opposite = *this;
    opposite.sign = -sign;
    return opposite;
}

bool BandDelays::isShift(int band) const
{
    return std::abs(delay(band)) <= std::numeric_limits<int>::max();
}

int BandDelays::highestWithoutShift() const
{
    int band = bands() - 2;
    while (band >= 0 && isShift(band))
        --band;
    return std::max(band, -1);
}

int BandDelays::shift(int band) const
{
    return sign * int(roundedDelay(delay(band), rounding));
}

double BandDelays::longest(int direction) const
{
    double samples = 0;
    for (int band = 0; band + 1 < bands(); ++band)
        samples = std::max(samples, direction * roundedDelay(delay(band), rounding));
    return samples;
}

int BandDelays::wrapped(int band, int npoints) const
{
    const int rest = shift(band) % npoints;
    return rest < 0 ? rest + npoints : rest;
}

BandDelays::Part BandDelays::part(int band, int firstPoint, int count, int npoints) const
{
    Part part;
    part.first = qint64(firstPoint) + shift(band);
    part.begin = int(std::clamp<qint64>(-part.first, 0, count));
    part.end = int(std::clamp<qint64>(npoints - part.first, 0, count));
    part.isCut = part.end < count;
    return part;
}

} // namespace Tools
