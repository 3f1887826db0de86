#include "calc/pulsar/actions.h"

#include "calc/fourier.h"
#include "calc/pulsar/bandsum.h"

namespace Pulsar {

namespace {

// Tables of sines, trial dispersions, texts: the same for every length.
constexpr qint64 bytesBeside = 4 << 20;

// A series, its base line, what is left of both, and what a step of the work makes of it; at the
// end the curves stand in their place.
qint64 seriesBytes(qint64 points)
{
    return 5 * qint64(sizeof(double)) * points + bytesBeside;
}

qint64 bytesOfCut(const ObservationData &header, const PulsarParameters &given, int points)
{
    return given.cut.isEmpty()
               ? 0
               : qint64(std::min(cutBytes(given.cut, points, header.tresolution), 1e18));
}

} // namespace

qint64 screenBytes(const ObservationData &header, const PulsarParameters &given)
{
    return seriesBytes(screenPoints(header, given));
}

qint64 foldBytes(const ObservationData &header, const PulsarParameters &given)
{
    return seriesBytes(foldPoints(header, given)) +
           bytesOfCut(header, given, foldPoints(header, given));
}

qint64 foldSumBytes(const ObservationData &header, const PulsarParameters &given)
{
    const qint64 bins = qint64(given.period / header.tresolution) + 1;
    return seriesBytes(foldSumPoints(header, given)) +
           bytesOfCut(header, given, foldSumPoints(header, given)) +
           2 * sumBands * bins * qint64(sizeof(float));
}

qint64 sumBytes(const ObservationData &header, const PulsarParameters &given)
{
    return seriesBytes(sumPoints(header, given));
}

qint64 spectrumBytes(const ObservationData &header, const PulsarParameters &given)
{
    return seriesBytes(2 * fixedSumPoints(header, given)); // with as many zeros
}

bool goesOn(const Control &control, int percent)
{
    control.progress(percent);
    return !control.isStopped();
}

Control shareOf(const Control &control, int part, int parts)
{
    Control share = control;
    share.progress = [&control, part, parts](int percent) {
        control.progress((100 * part + percent) / parts);
    };
    return share;
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
