#include "forms/ffa/ffajobs.h"

#include "calc/pulsar/pulsarcalculate.h"

#include <QElapsedTimer>

namespace {

constexpr int searchShare = 90; // percent of the whole; the rest is for candidates

} // namespace

FfaSearchOutcome searchFfa(const FfaSearchRequest &request, const Jobs::Control &control)
{
    FfaSearchOutcome outcome;
    PulsarCalculate calculate(request.data, request.parameters);
    QObject::connect(&calculate, &PulsarCalculate::progress, [&](int percent) {
        control.progress(percent * searchShare / 100);
        if (control.isStopped())
            calculate.cancel();
    });
    QElapsedTimer time;
    time.start();
    const bool isDone = calculate.run("createFFA");
    outcome.seconds = double(time.nsecsElapsed()) * 1e-9;
    outcome.failure = calculate.failure();
    outcome.failedParameter = calculate.failedParameter();
    if (!isDone)
        return outcome;
    outcome.result = calculate.result();
    outcome.candidates = Tools::findCandidates(
        *outcome.result.ffa, request.threshold, request.mostCandidates, [&](int percent) {
            control.progress(searchShare + percent * (100 - searchShare) / 100);
            return !control.isStopped();
        });
    return outcome;
}
