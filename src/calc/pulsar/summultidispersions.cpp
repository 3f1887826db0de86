#include "calc/pulsar/scan.h"

#include <algorithm>

namespace Pulsar {

AnalysisOutcome sumMultiDispersions(const PreparedSamples &samples, const PulsarParameters &given,
                                    const Control &control)
{
    // Averaging does not move a harmonic; it only shortens the spectrum.
    AnalysisOutcome outcome = begunScan(samples, given);
    PulsarResult &result = outcome.result;
    result.report.addLine("Change: averages (see colors)");
    result.report.addGap();
    std::vector<NamedScan> scans;
    int wholeBands = sumBands;
    const int curves = given.averageCount + 1;
    for (int n = 0; n < curves; ++n) {
        DispersionScan scan = scanDispersions(samples.data, given, n, shareOf(control, n, curves));
        if (!scan.problem.isEmpty())
            return refused(outcome, scan.problem);
        if (!scan.isWhole)
            return outcome;
        wholeBands = std::min(wholeBands, scan.wholeBands);
        scans.push_back({QString("averaging number %1").arg(n), std::move(scan)});
    }
    addScans(scans, given.harmonicNum, result);
    result.remarks = scanRemarks(samples.data, given, wholeBands, {given.firstPoint});
    return outcome;
}

} // namespace Pulsar
