#include "calc/pulsar/runanalysis.h"

#include "base/systemmemory.h"
#include "calc/pulsar/actions.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/pulsaranalyses.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace {

// Finite samples may have sums that no float holds.
bool holdsNumbers(const std::vector<float> &curve)
{
    return curve.empty() || std::any_of(curve.begin(), curve.end(),
                                        [](float value) { return std::isfinite(value); });
}

// Tells of the jumps that were taken out, and marks them where the X values are points.
void tellSteps(const PreparedSamples &samples, PulsarResult &result)
{
    result.jumps = samples.jumps;
    result.report.addValue("Deleted steps", QString::number(samples.jumps));
    if (result.axis.kind != PulsarAxis::Kind::Points)
        return;
    for (const int point : samples.jumpPoints) {
        const int index = int((point - result.axis.first) / result.axis.step);
        if (point >= result.axis.first && index < result.points)
            result.markers.push_back(index);
    }
}

// A search tries fewer periods when the shortest one is longer; the others have no such field.
Problems lackOfMemory(const PulsarAnalysis &analysis, const ObservationData &header,
                      const PulsarParameters &parameters)
{
    const qint64 bytes = findBytes(analysis.name, header, parameters);
    if (hasMemoryFor(double(bytes)))
        return {};
    const PulsarField &shortest = pulsarField("--period-min");
    return {{analysis.reads(shortest) ? shortest.name : QString(),
             QString("This needs %1 of memory, %2 are available.")
                 .arg(sizeText(bytes), sizeText(availableMemory()))}};
}

AnalysisOutcome computed(const PulsarAnalysis &analysis, const ObservationData &data,
                         const PulsarParameters &parameters, const Jobs::Control &control)
{
    const PreparedSamples samples = prepareSamples(analysis.name, data, parameters, control);
    AnalysisOutcome outcome;
    if (samples.problems.empty() && !control.isStopped())
        outcome = analysis.compute(samples, parameters, control);
    else
        outcome.problems = samples.problems;
    PulsarResult &result = outcome.result;
    result.nonFinite = samples.nonFinite;
    if (!samples.remark.isEmpty())
        result.remarks.insert(result.remarks.begin(), Results::Report(samples.remark));
    outcome.isStopped = control.isStopped();
    if (!outcome.isWhole())
        return outcome;
    if (!holdsNumbers(result.curves[0]))
        outcome.problems = {{"", "No finite value came out: the samples are too large to be added."
                                 "\nCheck the file, or choose another stretch, ray or module."}};
    else if (parameters.deleteStep)
        tellSteps(samples, result);
    return outcome;
}

} // namespace

std::vector<FieldProblem> findProblems(const QString &action, const ObservationData &header,
                                       const PulsarParameters &parameters)
{
    const PulsarAnalysis *const known = findAnalysis(action);
    if (!known)
        return {{"", "There is no action \"" + action + "\"."}};
    const ObservationData whole = Pulsar::wholePointsOf(header);
    const Problems problems = known->check(whole, parameters);
    return problems.empty() ? lackOfMemory(*known, whole, parameters) : problems;
}

AnalysisOutcome runAnalysis(const QString &action, const ObservationData &recording,
                            const PulsarParameters &parameters, const Jobs::Control &control)
{
    const ObservationData data = Pulsar::wholePointsOf(recording);
    AnalysisOutcome outcome;
    outcome.problems = findProblems(action, data, parameters);
    if (!outcome.problems.empty())
        return outcome;
    if (!data.samples) {
        outcome.problems = {{"", "Error of data! data.npoints=" + QString::number(data.npoints)}};
        return outcome;
    }
    try {
        outcome = computed(*findAnalysis(action), data, parameters, control);
    } catch (const std::bad_alloc &) {
        outcome.problems = {{"", "There is not enough memory for this action.\nClose other "
                                 "programs, or take a shorter stretch."}};
    }
    return outcome;
}
