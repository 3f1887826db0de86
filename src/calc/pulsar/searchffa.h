#pragma once

#include "calc/ffacandidates.h"
#include "calc/ffasearch.h"
#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"
#include "jobs/control.h"

#include <optional>
#include <vector>

/// A fast folding search of one ray at one dispersion with its candidates, on any thread.
struct FfaSearchRequest {
    ObservationData data;
    PulsarParameters parameters;
    /// True S/N above which a peak is a candidate; none: what noise alone is expected to reach.
    std::optional<double> threshold;
    int mostCandidates = 0; ///< to be found
};

struct FfaSearchOutcome {
    PulsarResult result; ///< of "createFFA"; its `ffa` is null where the search failed
    std::vector<FfaCandidate> candidates;
    FieldProblem problem; ///< why it was refused; without a text after a success
    FfaEstimate estimate; ///< of this search, unless it failed
    double seconds = 0;   ///< that the search took
};

/// Searches a recording. What a stopped search returns is of no use.
FfaSearchOutcome searchFfa(const FfaSearchRequest &request, const Jobs::Control &control);
