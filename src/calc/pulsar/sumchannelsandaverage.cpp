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
    Results::Report &report = result.report;
    report.addLine("Sum channels and average");
    report.addValue("Dispersion", ReportText::general(given.dispersion));
    report.addLine("Number of points is fixed - 16384");
    report.addLine(baselineText(given.noise));
    report.addValue("Averaging number", QString::number(n));
    report.addValue("Step", QString("%1 ms, length = %2 points, %3 s")
                                .arg(factor * tresolution * 1000)
                                .arg(length)
                                .arg(fixedPoints * tresolution));
    append(bandRemarks({samples.data, given, fixedPoints, given.dispersion}, wholeBands), result);
    result.times = timesText(samples.data, sumBands);
    return outcome;
}

} // namespace Pulsar
