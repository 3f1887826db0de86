#include "calc/leveljumps.h"
#include "calc/pulsar/actions.h"
#include "calc/pulsar/bandfold.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/checks.h"
#include "calc/pulsar/foldreport.h"
#include "calc/pulsar/remarks.h"
#include "results/reporttext.h"

#include <algorithm>
#include <numeric>

namespace Pulsar {

namespace {

constexpr int shortestFold = 512; // points for a base line

} // namespace

int foldSumPoints(const ObservationData &header, const PulsarParameters &given)
{
    PulsarParameters all = given;
    all.points = 0;
    const int whole = ffaPoints(header, all);
    return given.points > 0 ? std::min(given.points, whole) : whole;
}

Problems checkFoldSum(const ObservationData &header, const PulsarParameters &given)
{
    const Problems problems = checkSumOf(shortestFold, header, given);
    if (!problems.empty())
        return problems;
    const int count = foldSumPoints(header, given);
    if (count < shortestFold)
        return {{"dispersion", QString("Dispersion %1 leaves %2 points with every band after the "
                                       "first one.\nA fold needs %3.")
                                   .arg(ReportText::general(given.dispersion))
                                   .arg(count)
                                   .arg(shortestFold)}};
    return joinProblems({checkFoldPeriod(header, given, count), checkCut(header, given.cut)});
}

AnalysisOutcome sumPeriodOfBands(const PreparedSamples &samples, const PulsarParameters &given,
                                 const Control &control)
{
    AnalysisOutcome outcome = begun(samples, given);
    PulsarResult &result = outcome.result;
    const int count = samples.points;
    std::vector<double> sum(std::size_t(std::max(count, 0)));
    const int wholeBands =
        sumChannels(samples.data, given, sum.data(), count, given.dispersion, true);
    if (wholeBands == 0)
        return refused(outcome, "The channels cannot be summed.");
    if (!goesOn(control, 20))
        return outcome;
    const double tresolution = samples.data.tresolution;
    double noise = noiseAfterCut(sum, {}, tresolution);
    std::vector<double> baseline(sum.size());
    if (!sumBaseline(samples.data, given, sum, given.dispersion, baseline.data()))
        return refused(outcome, "The noise base line cannot be computed.");
    noise /= removeBaseline(given.normalise, baseline, sum);
    const std::vector<CutBand> cut =
        cutOut(given.cut, tresolution, sum, [&] { return goesOn(control, 25); });
    if (!cut.empty())
        noise = noiseAfterCut(sum, cut, tresolution);
    if (!goesOn(control, 30))
        return outcome;

    result.report.addLine("Summation on period of the sum of the bands");
    result.report.addValue("Dispersion", ReportText::general(given.dispersion));
    addFold({std::move(sum), tresolution, noise}, given, shareOf(control, 1, 3), result);
    if (control.isStopped())
        return outcome;
    result.bands = std::make_shared<const BandFold>(foldBands(
        samples.data, given, count, given.period, result.points, cut, shareOf(control, 2, 3)));
    append({cutReport(given.cut, cut)}, result);
    append(bandRemarks({samples.data, given, count, given.dispersion}, wholeBands), result);
    result.times = timesText(samples.data, sumBands);
    return outcome;
}

} // namespace Pulsar
