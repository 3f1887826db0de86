#include "calc/pulsar/runanalysis.h"

std::vector<FieldProblem> findProblems(const QString &action, const ObservationData &header,
                                       const PulsarParameters &parameters)
{
    PulsarCalculate calculate(header, parameters);
    calculate.validate(action);
    return calculate.problems();
}

AnalysisOutcome runAnalysis(const QString &action, const ObservationData &data,
                            const PulsarParameters &parameters, const Jobs::Control &control)
{
    PulsarCalculate calculate(data, parameters);
    QObject::connect(&calculate, &PulsarCalculate::progress, [&](int percent) {
        control.progress(percent);
        if (control.isStopped())
            calculate.cancel();
    });
    const bool isDone = calculate.run(action);
    return {calculate.takeResult(), calculate.problems(), !isDone && calculate.wasCancelled()};
}
