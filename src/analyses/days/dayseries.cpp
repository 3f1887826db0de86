#include "analyses/days/dayseries.h"

#include "analyses/days/dayseriesfile.h"
#include "analyses/days/daysums.h"
#include "calc/pulsar/bandsum.h"

#include <algorithm>
#include <limits>

namespace Days {

int pointsBehind(const ObservationData &header, double dispersion)
{
    if (!Tools::areFrequencies(header.fbands, Pulsar::sumBands))
        return -1;
    const Tools::BandDelays delays = Pulsar::bandDelays(header, dispersion);
    if (delays.highestWithoutShift() >= 0)
        return -1;
    // A sum ends before the last point.
    return int(std::min<double>(delays.longestLater() + 1, std::numeric_limits<int>::max()));
}

QString seriesPath(const RecordingSet &set, const Day &day, int points,
                   const SeriesRequest &request, const QString &folder)
{
    return keptSeriesOf(set, day, points, request, folder).path;
}

bool areKept(const RecordingSet &set, const Day &day, int points,
             const std::vector<SeriesRequest> &requests, const QString &folder)
{
    return std::all_of(requests.begin(), requests.end(), [&](const SeriesRequest &request) {
        DaySeries series;
        return readKept(keptSeriesOf(set, day, points, request, folder), series);
    });
}

std::vector<DaySeries> seriesOfDay(const RecordingSet &set, const Day &day, int points,
                                   const std::vector<SeriesRequest> &requests,
                                   const QString &folder, const Jobs::Control &control)
{
    std::vector<DaySeries> all(requests.size());
    std::vector<KeptSeries> files(requests.size());
    std::vector<SeriesRequest> missing;
    for (std::size_t i = 0; i < requests.size(); ++i) {
        if (!folder.isEmpty()) {
            files[i] = keptSeriesOf(set, day, points, requests[i], folder);
            readKept(files[i], all[i]);
        }
        if (!all[i].wasKept)
            missing.push_back(requests[i]);
    }
    if (missing.empty())
        return all;
    std::vector<DaySeries> made = sumsOfDay(set, day, points, missing, control);
    auto next = made.begin();
    for (std::size_t i = 0; i < requests.size(); ++i) {
        if (all[i].wasKept)
            continue;
        all[i] = std::move(*next++);
        if (!folder.isEmpty() && !all[i].sums.empty())
            keep(files[i], all[i]);
    }
    return all;
}

} // namespace Days
