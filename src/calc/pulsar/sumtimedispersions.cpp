#include "calc/pulsar/scan.h"

#include "results/reporttext.h"

#include <algorithm>
#include <cmath>

namespace Pulsar {

namespace {

constexpr int maxStarts = 8;

// Points from one first point to the next; below 1 where the typed delta cannot be used.
int deltaOf(const ObservationData &header, const PulsarParameters &given)
{
    if (!(given.startDelta >= 0))
        return 0;
    if (given.startDelta > 0)
        return int(std::min(std::round(given.startDelta), double(header.npoints)));
    return header.npoints / 16;
}

} // namespace

Problems checkStarts(const ObservationData &header, const PulsarParameters &given)
{
    Problems delta;
    if (deltaOf(header, given) < 1)
        delta = {{"firstPointDelta", "The delta between the first points must be one point or "
                                     "more, or be left empty for a sixteenth of the recording."}};
    return joinProblems({checkScan(header, given), delta});
}

std::vector<int> scanStarts(const ObservationData &header, const PulsarParameters &given)
{
    std::vector<int> starts;
    const int delta = std::max(1, deltaOf(header, given));
    for (qint64 start = given.firstPoint;
         start + fixedPoints < header.npoints && int(starts.size()) < maxStarts; start += delta)
        starts.push_back(int(start));
    return starts;
}

AnalysisOutcome sumTimeDispersions(const PreparedSamples &samples, const PulsarParameters &given,
                                   const Control &control)
{
    AnalysisOutcome outcome = begunScan(samples, given);
    PulsarResult &result = outcome.result;
    const int delta = deltaOf(samples.data, given);
    const std::vector<int> starts = scanStarts(samples.data, given);
    result.report.addValue("Delta",
                           QString("%1 points, %2 s")
                               .arg(delta)
                               .arg(ReportText::general(delta * samples.data.tresolution)));
    result.report.addGap();
    result.report.addLine("Change: first point (see colors)");
    result.report.addGap();
    std::vector<NamedScan> scans;
    result.starts = starts;
    int wholeBands = sumBands;
    const int curves = int(starts.size());
    for (int k = 0; k < curves; ++k) {
        PulsarParameters fromStart = given;
        fromStart.firstPoint = starts[std::size_t(k)];
        DispersionScan scan = scanDispersions(samples.data, fromStart, given.averageCount,
                                              shareOf(control, k, curves));
        if (!scan.problem.isEmpty())
            return refused(outcome, scan.problem);
        if (!scan.isWhole)
            return outcome;
        wholeBands = std::min(wholeBands, scan.wholeBands);
        scans.push_back({QString("first point %1").arg(starts[std::size_t(k)]), std::move(scan)});
    }
    addScans(scans, given.harmonicNum, result);
    result.remarks = scanRemarks(samples.data, given, wholeBands, starts);
    return outcome;
}

} // namespace Pulsar
