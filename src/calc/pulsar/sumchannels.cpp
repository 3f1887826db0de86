#include "calc/pulsar/actions.h"

#include "calc/baseline.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/checks.h"
#include "calc/pulsar/remarks.h"
#include "results/reporttext.h"

namespace Pulsar {

int fixedSumPoints(const ObservationData &, const PulsarParameters &)
{
    return fixedPoints;
}

int sumPoints(const ObservationData &, const PulsarParameters &given)
{
    return given.points > 0 ? given.points : fixedPoints;
}

Problems checkSum(const ObservationData &header, const PulsarParameters &given)
{
    return checkSumOf(sumPoints(header, given), header, given);
}

AnalysisOutcome sumChannelsAction(const PreparedSamples &samples, const PulsarParameters &given,
                                  const Control &)
{
    AnalysisOutcome outcome = begun(samples, given);
    PulsarResult &result = outcome.result;
    const int count = samples.points;
    Results::Report &report = result.report;
    report.addLine("One summation of channels");
    report.addValue("Dispersion", ReportText::general(given.dispersion));
    if (count == fixedPoints)
        report.addLine("Number of points is fixed - 16384");
    else
        report.addValue("Number of points", QString::number(count));

    auto sum = std::vector<double>(std::size_t(count));
    const int wholeBands =
        sumChannels(samples.data, given, sum.data(), count, given.dispersion, true);
    if (wholeBands == 0)
        return refused(outcome, "The channels cannot be summed.");
    std::vector<double> baseline(sum.size());
    std::vector<double> backSum;
    if (!sumBaseline(samples.data, given, sum, given.dispersion, baseline.data(), &backSum))
        return refused(outcome, "The noise base line cannot be computed.\nIt needs more points; "
                                "take more, or none of the base lines.");

    if (given.deductNoise) {
        removeBaseline(given.normalise, baseline, sum);
        addCurve(result, sum, "minus noise base line");
    } else {
        addCurve(result, sum, "sum on canals");
        if (!backSum.empty())
            addCurve(result, backSum, "back sum on canals");
        if (Tools::isBaseline(given.noise))
            addCurve(result, baseline, Tools::baselineCurveName(given.noise));
    }
    report.addLine(baselineText(given.noise));
    if (given.normalise && !given.deductNoise)
        result.remarks.emplace_back("Normalization applies to the sum less its base line only.");
    append(bandRemarks({samples.data, given, count, given.dispersion}, wholeBands), result);
    result.times = timesText(samples.data, sumBands);
    return outcome;
}

} // namespace Pulsar
