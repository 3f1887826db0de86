#include "calc/dispersiongrid.h"

#include "calc/banddelays.h"

#include <algorithm>
#include <cmath>

namespace Tools {

double delaySpread(const ObservationData &header, int bands)
{
    const BandDelays delays(header, bands, 1, ShiftRounding::Nearest);
    double earliest = 0;
    double latest = 0;
    for (int band = 0; band < bands; ++band) {
        earliest = std::min(earliest, delays.delay(band));
        latest = std::max(latest, delays.delay(band));
    }
    return latest - earliest;
}

double dispersionStep(const ObservationData &header, int bands, double width)
{
    return delayOfStep * width / delaySpread(header, bands);
}

std::vector<double> dispersionGrid(double least, double most, double step)
{
    std::vector<double> grid = {least};
    for (int i = 1; grid.back() < most && std::isfinite(step); ++i)
        grid.push_back(least + i * step);
    return grid;
}

} // namespace Tools
