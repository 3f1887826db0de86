#include "calc/pulsar/actions.h"

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
    result.description =
        "One summation of channels\nDispersion = " + ReportText::general(given.dispersion) +
        (count == fixedPoints ? QString("\nNumber of points is fixed - 16384")
                              : QString("\nNumber of points = %1").arg(count));

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
        if (given.noise == "polinom5")
            addCurve(result, baseline, "polinom5 approximation");
        else if (given.noise == "median")
            addCurve(result, baseline, "median line approximation");
        else if (given.noise == "backSum") {
            addCurve(result, backSum, "back sum on canals");
            addCurve(result, baseline, "noise approximation");
        }
    }
    result.description += baselineText(given.noise);
    if (given.normalise && !given.deductNoise)
        result.remarks << "Normalization applies to the sum less its base line only.";
    result.times = timesText(samples.data, sumBands);
    result.remarks << bandRemarks({samples.data, given, count, given.dispersion}, wholeBands)
                   << result.times;
    return outcome;
}

} // namespace Pulsar
