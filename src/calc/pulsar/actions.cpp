#include "calc/pulsar/actions.h"

#include "calc/fourier.h"

namespace Pulsar {

bool goesOn(const Control &control, int percent)
{
    control.progress(percent);
    return !control.isStopped();
}

AnalysisOutcome begun(const PreparedSamples &samples, const PulsarParameters &given)
{
    AnalysisOutcome outcome;
    outcome.result.points = samples.points;
    outcome.result.stretch = samples.points;
    outcome.result.axis.first = given.firstPoint;
    return outcome;
}

AnalysisOutcome refused(AnalysisOutcome outcome, const QString &text)
{
    outcome.problems = {{"", text}};
    return outcome;
}

void addCurve(PulsarResult &result, const std::vector<double> &values, const QString &name)
{
    result.curves.emplace_back(values.begin(), values.end());
    result.visible.push_back(true);
    result.names << name;
}

// Padding with zeros lengthens the transform but not the sampling interval.
void setSpectrumAxis(PulsarResult &result, const ObservationData &header, int averageCount)
{
    const double interval = header.tresolution * Tools::averagedStepFactor(averageCount, false);
    result.axis = {PulsarAxis::Kind::Frequency, 0, 1 / (2 * result.points * interval), 0};
}

} // namespace Pulsar
