#pragma once

#include "calc/fieldproblem.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "jobs/control.h"

/// An action of PulsarCalculate as a function: parameters in, result out, on any thread. `action`
/// is a name of pulsarAnalyses(); parameters count modules, rays and points of the record that is
/// handed in.

/// Everything for which the action would refuse its parameters; empty where it accepts them. The
/// record may be without samples.
std::vector<FieldProblem> findProblems(const QString &action, const ObservationData &header,
                                       const PulsarParameters &parameters);

/// How an action ended.
struct AnalysisOutcome {
    PulsarResult result; ///< whole unless there is a problem or it was stopped
    std::vector<FieldProblem> problems;
    bool isStopped = false;

    bool isWhole() const { return problems.empty() && !isStopped; }
};

/// Runs an action. Lack of memory is a problem of no field.
AnalysisOutcome runAnalysis(const QString &action, const ObservationData &data,
                            const PulsarParameters &parameters, const Jobs::Control &control);
