#pragma once

#include "analyses/days/daylist.h"
#include "jobs/control.h"

#include <QString>
#include <vector>

/// The sum over the bands of a day's stretch, before any baseline, and the files that keep it, so
/// that the recordings are read once.
namespace Days {

/// One ray at one dispersion.
struct SeriesRequest {
    int module = 1;          ///< the telescope's number
    int ray = 1;             ///< the telescope's number
    double dispersion = 0;   ///< pc/cm^3
    bool isBackward = false; ///< delays of the opposite sign: no dispersed pulse adds up
};

/// Points behind a stretch that the delays of the bands take in: what DayChoice::pointsAfter
/// is to be for the highest dispersion, and DayChoice::pointsBefore for that of a backward sum.
///
/// @param header  fbands, tresolution
/// @return -1 where there are too few bands, or a delay beyond an int
int pointsBehind(const ObservationData &header, double dispersion);

struct DaySeries {
    std::vector<float> sums; ///< one per point of the stretch; empty where there is a problem
    QString remark;          ///< which samples were no finite numbers; empty where all were
    QString problem;         ///< which file, what is wrong, what can be done; empty otherwise
    bool wasKept = false;    ///< read from a file that an earlier run wrote
    bool wasStopped = false;
};

/// The series of one day for several rays and dispersions; its samples are read once for all.
///
/// A series that was kept counts only when it was made of the same files, by size and time of
/// change, with the same request; a damaged one is made anew. Kept or made anew, the values are the
/// same. A folder that cannot be written is no problem: nothing is kept then.
///
/// @param day     one that can be used: it has parts
/// @param points  of the stretch
/// @param folder  for the files; empty: nothing is kept
/// @return one per request, in their order
std::vector<DaySeries> seriesOfDay(const RecordingSet &set, const Day &day, int points,
                                   const std::vector<SeriesRequest> &requests,
                                   const QString &folder, const Jobs::Control &control = {});

/// Whether all of these series are kept and can be used.
bool areKept(const RecordingSet &set, const Day &day, int points,
             const std::vector<SeriesRequest> &requests, const QString &folder);

/// The file that keeps a series, named by UTC of its first point, module, ray, and a hash of all
/// that it depends on.
QString seriesPath(const RecordingSet &set, const Day &day, int points,
                   const SeriesRequest &request, const QString &folder);

} // namespace Days
