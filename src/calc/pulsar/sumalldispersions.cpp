#include "calc/pulsar/scan.h"

namespace Pulsar {

AnalysisOutcome sumAllDispersions(const PreparedSamples &samples, const PulsarParameters &given,
                                  const Control &control)
{
    AnalysisOutcome outcome = begunScan(samples, given);
    PulsarResult &result = outcome.result;
    const DispersionScan scan = scanDispersions(samples.data, given, given.averageCount, control);
    if (!scan.problem.isEmpty())
        return refused(outcome, scan.problem);
    if (!scan.isWhole)
        return outcome;
    addCurve(result, scan.values, QString("value of harmonic %1").arg(given.harmonicNum));
    addCurve(result, scan.cubic, "approximation by polinom 3");
    result.report.add(scanReport(scan, given.harmonicNum));
    result.remarks = scanRemarks(samples.data, given, scan.wholeBands, {given.firstPoint});
    return outcome;
}

} // namespace Pulsar
