#pragma once

#include "calc/ffacandidates.h"
#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"
#include "jobs/control.h"

#include <QString>
#include <vector>

/// The long computations of FfaForm, as jobs that share nothing with the form.

struct FfaSearchRequest {
    ObservationData data;
    PulsarParameters parameters;
    double threshold = 0;   ///< S/N above which a peak is a candidate
    int mostCandidates = 0; ///< to be found
};

struct FfaSearchOutcome {
    PulsarResult result; ///< of "createFFA"; its `ffa` is null where the search failed
    std::vector<FfaCandidate> candidates;
    FieldProblem problem; ///< why it was refused; without a text after a success
    double seconds = 0;   ///< that the search took
};

/// Searches a recording. What a stopped search returns is of no use.
FfaSearchOutcome searchFfa(const FfaSearchRequest &request, const Jobs::Control &control);
