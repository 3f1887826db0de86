#pragma once

#include "calc/fieldproblem.h"
#include "calc/pulsar/needs.h"
#include "calc/pulsar/pulsarresult.h"
#include "jobs/control.h"

/// An action as a function: parameters in, result out, on any thread. `action` is a name of
/// pulsarAnalyses(); parameters count modules, rays and points of the record that is handed in. A
/// record that ends early counts as one of the points that are whole.

/// Everything for which the action would refuse its parameters; empty where it accepts them. The
/// record may be without samples.
std::vector<FieldProblem> findProblems(const QString &action, const ObservationData &header,
                                       const PulsarParameters &parameters);

/// Runs an action. Samples that are no finite numbers count as the median of what the action takes
/// in of their channel; a channel without any finite one is refused. Lack of memory is a problem of
/// no field.
AnalysisOutcome runAnalysis(const QString &action, const ObservationData &data,
                            const PulsarParameters &parameters, const Jobs::Control &control);
