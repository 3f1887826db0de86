#include "calc/pulsar/searchffa.h"

#include "calc/pulsar/actions.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/runanalysis.h"

#include <QElapsedTimer>

namespace {

constexpr int searchShare = 90; // percent of the whole; the rest is for candidates

} // namespace

FfaSearchOutcome searchFfa(const FfaSearchRequest &request, const Jobs::Control &control)
{
    FfaSearchOutcome outcome;
    Jobs::Control ofSearch = control;
    ofSearch.progress = [&control](int percent) { control.progress(percent * searchShare / 100); };
    QElapsedTimer time;
    time.start();
    AnalysisOutcome search = runAnalysis("createFFA", request.data, request.parameters, ofSearch);
    outcome.seconds = double(time.nsecsElapsed()) * 1e-9;
    if (!search.problems.empty())
        outcome.problem = search.problems.front();
    if (!search.isWhole())
        return outcome;
    outcome.result = std::move(search.result);
    const int points = Pulsar::ffaPoints(Pulsar::wholePointsOf(request.data), request.parameters);
    outcome.estimate = Tools::estimateFfa(request.parameters.ffa, points, request.data.tresolution);
    const double threshold = request.threshold.value_or(outcome.estimate.noiseThreshold);
    outcome.candidates = Tools::findCandidates(
        *outcome.result.ffa, threshold, request.mostCandidates, [&](int percent) {
            control.progress(searchShare + percent * (100 - searchShare) / 100);
            return !control.isStopped();
        });
    return outcome;
}
