#pragma once

#include "coords/skyposition.h"
#include "data/recordingset.h"

#include <QDateTime>
#include <QString>
#include <QTime>
#include <vector>

/// Which part of each day's recordings belongs to one sky position.
namespace Days {

enum class StartKind {
    Point,    ///< a point of every file
    Utc,      ///< a time of every date
    Sidereal, ///< a sidereal time at the telescope
    Source,   ///< a place of the sky, which culminates in the middle of the stretch
};

struct DayStart {
    StartKind kind = StartKind::Point;
    int point = 0;             ///< of StartKind::Point, from 0
    QTime utc;                 ///< of StartKind::Utc
    double siderealTime = 0;   ///< of StartKind::Sidereal, hours, at the first point
    Tools::SkyPosition source; ///< of StartKind::Source
    double clockOffset = 0;    ///< s by which the recordings' clock is ahead of UTC
};

/// What is taken of each day. Modules and rays go by the telescope's numbers, for the files of many
/// days need not hold the same ones.
struct DayChoice {
    int module = 1;
    int ray = 1;
    int points = 16384;
    int pointsAfter = 0; ///< points behind the stretch that delayed bands take in, one at least
    DayStart start;
    int pointsBefore = 0; ///< points before it that bands with opposite delays take in
};

/// Points of one file.
struct DayPart {
    int recording = 0; ///< index in the set
    int first = 0;     ///< point in the file
    int count = 0;
};

inline const RecordingEntry &entryOf(const RecordingSet &set, const DayPart &part)
{
    return set.entries[std::size_t(part.recording)];
}

/// One passage of the sky. It may lie in two files or more where they follow each other.
struct Day {
    QDateTime begin; ///< UTC of the first point; names the day
    std::vector<DayPart>
        parts;      ///< the stretch with the points around it; empty where it cannot be used
    QString reason; ///< why it cannot be used; empty otherwise
    int before = 0; ///< points of the parts before the stretch
};

/// A recording that gives no day at all, and why.
struct LeftOut {
    int recording = 0; ///< index in the set
    QString reason;
};

struct DayList {
    std::vector<Day> days; ///< by begin, those that cannot be used among them
    std::vector<LeftOut> leftOut;
    double tresolution = 0;     ///< s, of all days
    std::vector<double> fbands; ///< MHz, of all days
};

/// Finds the days of a set from the headers alone.
///
/// Files follow each other, and are one, where the next begins within a second of the end of the
/// last one, or within a sample where begins are known to fractions of a second. Points of a day
/// count from the begin of the file in which the stretch begins. The step and the bands that most
/// files have are those of the list, of equally many those that give the most days; files with
/// other ones are left out. Where two files hold the same ray at the same time, the first by name
/// counts.
DayList findDays(const RecordingSet &set, const DayChoice &choice);

/// The days of the files that have the step and the bands of another list of the same set: where
/// equally many files have others, another stretch alone could choose those.
DayList findDays(const RecordingSet &set, const DayChoice &choice, const DayList &other);

} // namespace Days
