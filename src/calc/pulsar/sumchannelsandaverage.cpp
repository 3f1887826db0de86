#include "calc/pulsar/actions.h"

#include "calc/fourier.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/remarks.h"
#include "results/reporttext.h"

namespace Pulsar {

AnalysisOutcome sumChannelsAndAverage(const PreparedSamples &samples, const PulsarParameters &given,
                                      const Control &)
{
    AnalysisOutcome outcome = begun(samples, given);
    PulsarResult &result = outcome.result;
    const int n = given.averageCount;
    int wholeBands = 0;
    std::vector<double> sum(fixedPoints);
    if (!sumWithoutNoise(samples.data, given, sum.data(), fixedPoints, given.dispersion,
                         wholeBands))
        return refused(outcome, "The channels cannot be summed.");
    std::vector<double> averaged(fixedPoints);
    if (!Tools::averagePairs(sum.data(), averaged.data(), fixedPoints, n, false))
        return refused(outcome, "The sum cannot be averaged.");
    // Zeros that pad a transform are no part of the series.
    const int length = Tools::averagedLength(fixedPoints, n, false);
    averaged.resize(std::size_t(length));
    addCurve(result, averaged, "Sum channels and average");

    const double factor = Tools::averagedStepFactor(n, false);
    const double tresolution = samples.data.tresolution;
    result.points = length;
    result.axis.step = factor;
    result.description = QString("Sum channels and average\nDispersion = %1\nNumber of points is "
                                 "fixed - 16384%2\nAveraging number = %3\nStep = %4 ms, length = "
                                 "%5 points, %6 s")
                             .arg(ReportText::general(given.dispersion), baselineText(given.noise))
                             .arg(n)
                             .arg(factor * tresolution * 1000)
                             .arg(length)
                             .arg(fixedPoints * tresolution);
    result.times = timesText(samples.data, sumBands);
    result.remarks << bandRemarks({samples.data, given, fixedPoints, given.dispersion}, wholeBands)
                   << result.times;
    return outcome;
}

} // namespace Pulsar
