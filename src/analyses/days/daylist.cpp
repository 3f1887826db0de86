#include "analyses/days/daylist.h"

#include "coords/skyclock.h"
#include "data/truenumbers.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <utility>

namespace Days {

namespace {

constexpr double msPerSecond = 1000;

struct Shape {
    double tresolution = 0;
    std::vector<double> fbands;

    bool operator<(const Shape &other) const
    {
        return std::tie(tresolution, fbands) < std::tie(other.tresolution, other.fbands);
    }
    bool operator==(const Shape &other) const = default;
};

Shape shapeOf(const ObservationData &header)
{
    return {header.tresolution, header.fbands};
}

QString stepText(double tresolution)
{
    return QString("%1 ms").arg(tresolution * msPerSecond, 0, 'g', 10);
}

// Why a recording cannot be used whatever the stretch is; empty where it can.
QString unfitness(const RecordingEntry &entry, const DayChoice &choice)
{
    if (entry.state == RecordingState::Damaged || entry.state == RecordingState::Unreadable)
        return entry.problem;
    if (!entry.begin.isValid())
        return "Its header has no begin time.";
    if (!(entry.header.tresolution > 0))
        return "Its header has no step of time.";
    if (!holdsRay(entry.header, choice.module, choice.ray))
        return QString("It does not hold module %1, ray %2.").arg(choice.module).arg(choice.ray);
    return {};
}

// Shapes that equally many files have are tried, at most so many.
constexpr std::size_t mostShapes = 16;

// The recordings that can be used and what most of them have in common.
struct Usable {
    std::vector<int> recordings;
    std::vector<LeftOut> leftOut;
    std::vector<Shape> shapes; // those that most files have, in the order in which they were found
    int ofShape = 0;           // files that have each of them
};

Usable usableOf(const RecordingSet &set, const DayChoice &choice)
{
    Usable usable;
    std::map<Shape, int> counts;
    for (int i = 0; i < int(set.entries.size()); ++i) {
        const RecordingEntry &entry = set.entries[std::size_t(i)];
        const QString reason = unfitness(entry, choice);
        if (!reason.isEmpty()) {
            usable.leftOut.push_back({i, reason});
            continue;
        }
        usable.recordings.push_back(i);
        usable.ofShape = std::max(usable.ofShape, ++counts[shapeOf(entry.header)]);
    }
    for (const int recording : usable.recordings) {
        const auto counted = counts.find(shapeOf(set.entries[std::size_t(recording)].header));
        if (counted == counts.end() || counted->second < usable.ofShape)
            continue;
        usable.shapes.push_back(counted->first);
        counts.erase(counted);
        if (usable.shapes.size() == mostShapes)
            break;
    }
    return usable;
}

// Recordings that follow each other.
struct Chain {
    std::vector<int> recordings;
    std::vector<qint64> offsets; // of the first point of each among the points of all
    qint64 points = 0;
    QDateTime begin;
    QDateTime end;
};

bool hasFraction(const QDateTime &moment)
{
    return moment.time().msec() != 0;
}

class Finder {
public:
    Finder(const RecordingSet &recordings, const DayChoice &wanted, const Usable &usable,
           const Shape &shape)
        : set(recordings), choice(wanted)
    {
        list.leftOut = usable.leftOut;
        list.tresolution = shape.tresolution;
        list.fbands = shape.fbands;
        selectRecordings(usable);
    }

    DayList find()
    {
        joinRecordings();
        for (const Chain &chain : chains)
            findIn(chain);
        std::stable_sort(list.days.begin(), list.days.end(),
                         [](const Day &a, const Day &b) { return a.begin < b.begin; });
        std::sort(list.leftOut.begin(), list.leftOut.end(),
                  [](const LeftOut &a, const LeftOut &b) { return a.recording < b.recording; });
        return std::move(list);
    }

private:
    const RecordingEntry &entry(int recording) const { return set.entries[std::size_t(recording)]; }

    QDateTime endOf(int recording) const
    {
        const double length = entry(recording).completePoints * list.tresolution * msPerSecond;
        return entry(recording).begin.addMSecs(qint64(std::llround(length)));
    }

    void selectRecordings(const Usable &usable)
    {
        for (const int recording : usable.recordings) {
            const ObservationData &header = entry(recording).header;
            if (header.tresolution != list.tresolution)
                list.leftOut.push_back(
                    {recording,
                     QString("Its step is %1. The days are those of the step %2, which %3 of %4 "
                             "recordings have.")
                         .arg(stepText(header.tresolution), stepText(list.tresolution))
                         .arg(usable.ofShape)
                         .arg(usable.recordings.size())});
            else if (header.fbands != list.fbands)
                list.leftOut.push_back({recording, "Its bands have other frequencies than those of "
                                                   "the others."});
            else
                selected.push_back(recording);
        }
    }

    // s; the begin of many files is known to whole seconds only.
    double joiningTolerance(int before, int after) const
    {
        const bool inFractions =
            hasFraction(entry(before).begin) || hasFraction(entry(after).begin);
        return inFractions ? list.tresolution : 1;
    }

    void joinRecordings()
    {
        for (const int recording : selected) {
            const QDateTime begin = entry(recording).begin;
            Chain *last = chains.empty() ? nullptr : &chains.back();
            if (last && begin < last->end.addMSecs(-qint64(msPerSecond))) {
                list.leftOut.push_back({recording, "Another file holds the same time: " +
                                                       entry(last->recordings.back()).path});
                continue;
            }
            const double gap = last ? double(last->end.msecsTo(begin)) / msPerSecond : 0;
            const bool follows =
                last && std::abs(gap) <= joiningTolerance(last->recordings.back(), recording);
            if (!follows) {
                chains.push_back({});
                last = &chains.back();
                last->begin = begin;
            }
            last->recordings.push_back(recording);
            last->offsets.push_back(last->points);
            last->points += entry(recording).completePoints;
            last->end = endOf(recording);
        }
    }

    // A moment that the recordings' clock shows when the true time is `utc`.
    QDateTime clockOf(const QDateTime &utc) const
    {
        return utc.addMSecs(qint64(std::llround(choice.start.clockOffset * msPerSecond)));
    }

    QDateTime utcOf(const QDateTime &clock) const
    {
        return clock.addMSecs(-qint64(std::llround(choice.start.clockOffset * msPerSecond)));
    }

    // Moments, by the recordings' clock, at which a stretch of this chain is wanted: its first
    // point, that of a source its middle.
    std::vector<QDateTime> momentsIn(const Chain &chain) const
    {
        const QDateTime begin = utcOf(chain.begin);
        const QDateTime end = utcOf(chain.end);
        std::vector<QDateTime> moments;
        if (choice.start.kind == StartKind::Source) {
            moments = Tools::culminations(choice.start.source, begin, end);
        } else if (choice.start.kind == StartKind::Sidereal) {
            moments = Tools::siderealMoments(choice.start.siderealTime, begin, end);
        } else {
            for (QDate date = begin.date(); date <= end.date(); date = date.addDays(1)) {
                const QDateTime moment(date, choice.start.utc, Qt::UTC);
                if (moment >= begin && moment < end)
                    moments.push_back(moment);
            }
        }
        for (QDateTime &moment : moments)
            moment = clockOf(moment);
        return moments;
    }

    void findIn(const Chain &chain)
    {
        std::vector<bool> used(chain.recordings.size());
        const std::size_t firstDay = list.days.size();
        const auto add = [this, &chain, &used](std::size_t recording, qint64 point) {
            used[recording] = true;
            list.days.push_back(dayAt(chain, recording, point));
        };
        if (choice.start.kind == StartKind::Point) {
            for (std::size_t i = 0; i < chain.recordings.size(); ++i)
                add(i, choice.start.point);
            return;
        }
        for (const QDateTime &moment : momentsIn(chain)) {
            std::size_t i = chain.recordings.size() - 1;
            while (i > 0 && moment < entry(chain.recordings[i]).begin)
                --i;
            const qint64 ms = entry(chain.recordings[i]).begin.msecsTo(moment);
            const double before = choice.start.kind == StartKind::Source ? choice.points * 0.5 : 0;
            const double point = double(ms) / msPerSecond / list.tresolution - before;
            add(i, qint64(std::trunc(point)));
        }
        markUnused(chain, firstDay, used);
    }

    // Files that a stretch merely reaches into are used as well.
    void markUnused(const Chain &chain, std::size_t firstDay, std::vector<bool> &used)
    {
        for (std::size_t day = firstDay; day < list.days.size(); ++day) {
            for (const DayPart &part : list.days[day].parts) {
                const auto place =
                    std::find(chain.recordings.begin(), chain.recordings.end(), part.recording);
                used[std::size_t(place - chain.recordings.begin())] = true;
            }
        }
        for (std::size_t i = 0; i < chain.recordings.size(); ++i) {
            if (!used[i])
                list.leftOut.push_back({chain.recordings[i], "It was made at another time of the "
                                                             "day than the one looked for."});
        }
    }

    Day dayAt(const Chain &chain, std::size_t recording, qint64 point) const
    {
        Day day;
        const double ms = double(point) * list.tresolution * msPerSecond;
        day.begin = entry(chain.recordings[recording]).begin.addMSecs(qint64(std::floor(ms)));
        const qint64 behind = chain.offsets[recording] + point + choice.points + choice.pointsAfter;
        qint64 first = chain.offsets[recording] + point - choice.pointsBefore;
        day.before = choice.pointsBefore;
        if (first < 0) {
            day.reason = QString("The stretch%2 begins %1 points before the recording.")
                             .arg(-first)
                             .arg(choice.pointsBefore > 0 ? ", with what its bands take in," : "");
            return day;
        }
        if (behind > chain.points) {
            day.reason = QString("The stretch ends %1 points after the recording%2.")
                             .arg(behind - chain.points)
                             .arg(endsEarly(chain) ? ", which ends early" : "");
            return day;
        }
        for (std::size_t i = 0; i < chain.recordings.size() && first < behind; ++i) {
            const qint64 next = chain.offsets[i] + entry(chain.recordings[i]).completePoints;
            if (first >= next)
                continue;
            const qint64 count = std::min(behind, next) - first;
            day.parts.push_back({chain.recordings[i], int(first - chain.offsets[i]), int(count)});
            first += count;
        }
        return day;
    }

    bool endsEarly(const Chain &chain) const
    {
        return entry(chain.recordings.back()).state == RecordingState::Short;
    }

    const RecordingSet &set;
    const DayChoice &choice;
    std::vector<int> selected;
    std::vector<Chain> chains;
    DayList list;
};

} // namespace

DayList findDays(const RecordingSet &set, const DayChoice &choice)
{
    const Usable usable = usableOf(set, choice);
    DayList best =
        Finder(set, choice, usable, usable.shapes.empty() ? Shape() : usable.shapes[0]).find();
    const auto count = [](const DayList &list) {
        return std::count_if(list.days.begin(), list.days.end(),
                             [](const Day &day) { return day.reason.isEmpty(); });
    };
    for (std::size_t i = 1; i < usable.shapes.size(); ++i) {
        DayList other = Finder(set, choice, usable, usable.shapes[i]).find();
        if (count(other) > count(best))
            best = std::move(other);
    }
    return best;
}

DayList findDays(const RecordingSet &set, const DayChoice &choice, const DayList &other)
{
    return Finder(set, choice, usableOf(set, choice), {other.tresolution, other.fbands}).find();
}

} // namespace Days
