#include "calc/pulsar/pulsarcalculate.h"

#include "calc/pulsar/scan.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int maxStarts = 8;

} // namespace

bool PulsarCalculate::acceptStarts()
{
    const bool isScan = acceptScan();
    return (scanDelta() >= 1 ||
            refuse("The delta between the first points must be one point or more, or be left "
                   "empty for a sixteenth of the recording.",
                   "firstPointDelta")) &&
           isScan;
}

// Points from one first point to the next; below 1 where the typed delta cannot be used.
int PulsarCalculate::scanDelta() const
{
    if (!(parameters.startDelta >= 0))
        return 0;
    if (parameters.startDelta > 0)
        return int(std::min(std::round(parameters.startDelta), double(data.npoints)));
    return data.npoints / 16;
}

std::vector<int> PulsarCalculate::scanStarts() const
{
    std::vector<int> starts;
    const int delta = std::max(1, scanDelta());
    for (qint64 start = parameters.firstPoint;
         start + fixedPoints < data.npoints && int(starts.size()) < maxStarts; start += delta)
        starts.push_back(int(start));
    return starts;
}

bool PulsarCalculate::sumTimeDispersions()
{
    beginScan();
    const int delta = scanDelta();
    const std::vector<int> starts = scanStarts();
    outcome.description +=
        QString("Delta = %1 points, %2 s\n\nChange: first point (see colors)\n\n")
            .arg(delta)
            .arg(ReportText::general(delta * data.tresolution));
    outcome.starts = starts;
    const int curves = int(starts.size());
    for (int k = 0; k < curves; ++k) {
        Scan scan;
        if (!scanDispersions(starts[std::size_t(k)], parameters.averageCount, 100 * k / curves,
                             100 * (k + 1) / curves, scan))
            return false;
        addScan(scan, QString("first point %1").arg(starts[std::size_t(k)]));
    }
    markSteps();
    remarkOnHarmonic();
    remarkOnBands(starts);
    return true;
}
