#pragma once

#include "analyses/days/daylist.h"
#include "analyses/days/dayseries.h"
#include "calc/analysis.h"
#include "calc/fieldproblem.h"
#include "jobs/control.h"

#include <QStringList>
#include <optional>

/// Which part of each day a user asks for, as typed, and what it becomes for a set of recordings.
namespace Days {

/// At most one start is given: a source by its name or by both coordinates, a sidereal time or a
/// time; without any of them it is the point.
struct DayPlace {
    int module = 0; ///< the telescope's number; 0: that of the beam nearest to the source
    int ray = 0;    ///< the same
    int points = 16384;
    int firstPoint = 0;     ///< of every file
    QString utc;            ///< "hh:mm:ss"
    QString siderealTime;   ///< "hh:mm:ss"
    QString source;         ///< name in the catalogue of known pulsars
    QString alfa;           ///< of a source, of 2000, "hh:mm:ss"
    QString delta;          ///< "dd:mm:ss"
    double clockOffset = 0; ///< s by which the recordings' clock is ahead of UTC
};

inline constexpr int fewestPoints = 1 << 10;
inline constexpr int mostPoints = 1 << 17;

/// Everything that is wrong with a place, whatever the recordings are.
std::vector<FieldProblem> problemsOf(const DayPlace &place);

/// The place on the sky that was asked for; nothing where the start is another one.
std::optional<Tools::SkyPosition> sourceOf(const DayPlace &place);

/// The start of a place without problems.
DayStart startOf(const DayPlace &place);

/// A beam by the table of declinations, whose values are nominal.
struct Beam {
    QString site; ///< "N0" to "N4"; empty where neither path nor name of a recording tells it
    int module = 0;
    int ray = 0;
    double delta;     ///< declination of the date, radians; not a number where unknown
    double reach = 0; ///< radians: half of the distance to the next ray

    bool isKnown() const;
};

/// Site of a recording by its path, or else by its name.
QString siteOf(const QString &path);

/// That of the first recording that tells it.
QString siteOf(const RecordingSet &set);

/// Where a ray stands among all rays of the telescope: neighbours differ by one.
int placeOfRay(int module, int ray);

Beam beamOf(const QString &site, int module, int ray);

/// The beam of a site that a place of the sky comes nearest to.
///
/// @return of module 0 where the site is in no table
Beam nearestBeam(const QString &site, const Tools::SkyPosition &source, const QDate &date);

/// The same for all days of a request.
struct DayPlan {
    DayChoice choice; ///< with module and ray
    std::optional<Tools::SkyPosition> source;
    Beam beam;
    std::vector<SeriesRequest> series; ///< as many for each of the rays, its own ones first
    int rays = 1;
    DayList list;
    ObservationData header;             ///< step and bands of the days
    QStringList remarks;                ///< what a user should know of the place
    std::vector<FieldProblem> problems; ///< for which nothing of the above can be used
};

/// What the beam points to in the middle of a day: the source, or else what crosses the beam. No
/// numbers where the beam is not known.
Tools::SkyPosition directionOf(const DayPlan &plan, const QDateTime &begin);

/// The recordings of several folders with their sub-folders, each file once.
RecordingSet recordingsOfFolders(const QStringList &folders, const Jobs::Control &control = {});

/// Where what is kept of days belongs: a folder beside the data, or one in the user's cache where
/// that cannot be written.
struct KeptFolder {
    QString path;
    bool isBesideData = true;
};
KeptFolder keptFolder(const QString &dataFolder);

} // namespace Days
