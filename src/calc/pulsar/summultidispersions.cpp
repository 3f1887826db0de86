#include "calc/pulsar/scan.h"

#include <algorithm>

namespace Pulsar {

AnalysisOutcome sumMultiDispersions(const PreparedSamples &samples, const PulsarParameters &given,
                                    const Control &control)
{
    // Averaging does not move a harmonic; it only shortens the spectrum.
    AnalysisOutcome outcome = begunScan(samples, given);
    PulsarResult &result = outcome.result;
    result.description += "\nChange: averages (see colors)\n\n";
    int wholeBands = sumBands;
    const int curves = given.averageCount + 1;
    for (int n = 0; n < curves; ++n) {
        const DispersionScan scan =
            scanDispersions(samples.data, given, n, shareOf(control, n, curves));
        if (!scan.problem.isEmpty())
            return refused(outcome, scan.problem);
        if (!scan.isWhole)
            return outcome;
        addScan(scan, QString("averaging number %1").arg(n), given.harmonicNum, result);
        wholeBands = std::min(wholeBands, scan.wholeBands);
    }
    result.remarks << scanRemarks(samples.data, given, wholeBands, {given.firstPoint});
    return outcome;
}

} // namespace Pulsar
