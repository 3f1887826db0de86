#pragma once

#include "calc/approximation.h"
#include "calc/dispersionpeak.h"
#include "calc/pulsar/pulsarcalculate.h"

#include <vector>

/// One harmonic of the spectrum of the sum over trial dispersions.
struct PulsarCalculate::Scan {
    std::vector<double> dispersions; // pc/cm^3
    std::vector<double> values;      // of the harmonic
    int wholeBands = sumBands;       // of the sum that has the fewest
    std::vector<double> cubic;       // fit of degree 3
    Approximation::Extrema extrema;  // of the fit, positions in trials
    Tools::DispersionPeak peak;
};
