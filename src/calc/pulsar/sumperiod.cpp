#include "calc/pulsar/actions.h"

#include "calc/baseline.h"
#include "calc/leveljumps.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/checks.h"
#include "calc/pulsar/foldreport.h"
#include "calc/pulsar/remarks.h"

#include <algorithm>

namespace Pulsar {

int foldPoints(const ObservationData &header, const PulsarParameters &given)
{
    const int rest = header.npoints - given.firstPoint;
    return given.points > 0 ? std::min(given.points, rest) : rest;
}

Problems checkFold(const ObservationData &header, const PulsarParameters &given)
{
    const Problems problems = checkChannel(header, given);
    if (!problems.empty())
        return problems;
    return joinProblems(
        {checkFoldPeriod(header, given, foldPoints(header, given)), checkCut(header, given.cut)});
}

AnalysisOutcome sumPeriod(const PreparedSamples &samples, const PulsarParameters &given,
                          const Control &control)
{
    AnalysisOutcome outcome = begun(samples, given);
    PulsarResult &result = outcome.result;
    const int count = samples.points;
    const float *const channel =
        channelSamples(samples.data, given, given.channel - 1) + given.firstPoint;
    std::vector<double> series(channel, channel + count);
    std::vector<double> baseline(series.size());
    if (!goesOn(control, 10))
        return outcome;
    if (!Tools::findBaseline(given.noise, series.data(), baseline.data(), int(series.size())))
        return refused(outcome, "The noise base line cannot be computed.");
    if (!goesOn(control, 40))
        return outcome;
    // The samples as recorded tell their noise, the rest hides how coarse they are.
    double noise =
        Tools::robustSigma(channel, count) / removeBaseline(given.normalise, baseline, series);
    const double tresolution = samples.data.tresolution;
    const std::vector<CutBand> cut =
        cutOut(given.cut, tresolution, series, [&] { return goesOn(control, 40); });
    if (!cut.empty())
        noise = noiseAfterCut(series, cut, tresolution);
    if (!goesOn(control, 50))
        return outcome;

    result.report.addLine("Summation on period");
    addFold({std::move(series), tresolution, noise}, given, control, result);
    append({cutReport(given.cut, cut, "channel")}, result);
    result.times = timesText(samples.data, given.channel);
    return outcome;
}

} // namespace Pulsar
