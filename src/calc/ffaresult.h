#pragma once

#include "calc/mainshum.h"
#include "ffa/ffaplan.h"
#include "ffa/periodogram.h"

#include <vector>

/// A fast folding search with the series that it searched.
struct FfaResult {
    std::vector<double> series; ///< of mean 0 and sigma 1
    double tsamp = 0;           ///< s
    Periodogram periodogram;
    std::vector<MainsLine> mains;                   ///< hum in the series
    std::vector<Ffa::WholeFactorStep> wholeFactors; ///< where its S/N is too low
};
