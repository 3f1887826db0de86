#pragma once

#include "batch/tablework.h"
#include "calc/ffasearch.h"

#include <optional>
#include <vector>

namespace Batch {

/// A fast folding search of rays and dispersions of each recording.
struct FfaRequest {
    std::vector<int> modules;       ///< places in the file, from 1; empty: all
    std::vector<int> rays;          ///< places in the file, from 1; empty: all
    std::vector<int> moduleNumbers; ///< by the passport, instead of places where not empty
    std::vector<int> rayNumbers;
    std::vector<double> dispersions; ///< pc/cm^3; empty: that of the passport
    int firstPoint = 0;
    int points = 0; ///< 0: to the end of what has every band
    QString noise = "polinom5";
    QString cut; ///< hum and lines to take out before the search, see calc/pulsar/cutlines.h
    bool normalise = false;
    bool deleteStep = false;
    QString channelsOff; ///< numbers from 1 with commas, left out; empty: none
    /// What is given of the search; the rest as the form presets it for the recording.
    std::optional<double> periodMin, periodMax, ducyMax, wtsp, medianWidth;
    std::optional<int> binsMin, binsMax, fewestPeriods, medianPoints;
    bool deredden = true;
    std::optional<double> threshold; ///< true S/N; none: what noise alone is expected to reach
    int most = 50;                   ///< candidates of each search
    bool refine = false;             ///< make the periods more precise
    OutputOptions output;
};

/// Tables of candidates, the strongest first. Where a ray gives a period at several
/// dispersions, the strongest remains.
Work ffaWork(const FfaRequest &request);

} // namespace Batch
