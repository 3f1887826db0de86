#pragma once

#include "analyses/sky/skymap.h"
#include "analyses/sky/skysearch.h"
#include "forms/sky/skyinputs.h"
#include "jobs/control.h"

#include <functional>
#include <memory>
#include <vector>

/// The long computations over maps and searches, as jobs that share nothing with the form but
/// values that nobody changes meanwhile.

/// What a request comes to. The time is that of this computer: one stretch is worked on.
PlannedSky plannedSky(const RecordingSet &set, const Sky::SkyParameters &parameters,
                      Sky::Product product);

/// The stacks of a request.
struct SkyOutcome {
    std::shared_ptr<const Sky::SkyPlan> plan;
    Sky::SkyRun run;
    Days::KeptFolder kept;
};

using SkyMaps = std::vector<std::shared_ptr<const Sky::SkyMap>>;

struct SkyRequest {
    std::shared_ptr<const RecordingSet> recordings;
    QString directory;
    std::shared_ptr<const Sky::SkyPlan> plan;
    std::vector<Sky::MapChoice> maps; ///< that fill in meanwhile
    bool isKeptOnly = false;          ///< takes what is kept and adds nothing
};

/// What a run tells: maps now and then, then the outcome.
struct SkyNews {
    SkyMaps maps;
    std::shared_ptr<const SkyOutcome> outcome; ///< null until the end
};

/// Throws where memory is too small, or there is no outcome.
void runSkyJob(const SkyRequest &request, const Jobs::Control &control,
               const std::function<void(SkyNews news)> &deliver);

/// Maps of stacks; fewer than asked for when it was stopped.
SkyMaps mapsOf(const Sky::SkyStack &stack, const Sky::SkyPlan &plan,
               const std::vector<Sky::MapChoice> &choices, const Jobs::Control &control);

/// A result with all that it was made of, as the batch program writes it.
Results::ResultTable skyTable(const RecordingSet &set, const Sky::SkyPlan &plan,
                              const Sky::SkyRun &run,
                              const std::vector<Results::HeaderLine> &request,
                              const std::vector<Results::HeaderLine> &found,
                              std::vector<Results::Column> columns);
