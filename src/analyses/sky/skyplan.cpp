#include "analyses/sky/skyplan.h"

#include "analyses/days/dayseries.h"
#include "analyses/days/ffaday.h"
#include "analyses/days/fourierdays.h"
#include "analyses/sky/skystack.h"
#include "base/timetext.h"
#include "coords/skyclock.h"
#include "data/truenumbers.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>

namespace Sky {

namespace {

constexpr double msPerSecond = 1000;
constexpr double secondsPerHour = 3600;
constexpr int stateDigits = 24;

// A stretch of one day with its number.
struct HeldStart {
    int start = 0;
    QDateTime base; // of the first stretch of its passage
    const Days::Day *day = nullptr;
};

// Points of one recording that a passage takes.
struct Span {
    int first = 0;
    int end = 0;
};

bool isUsable(const RecordingEntry &entry)
{
    return (entry.state == RecordingState::Whole || entry.state == RecordingState::Short) &&
           entry.begin.isValid() && entry.header.tresolution > 0;
}

std::vector<int> numbersIn(const ObservationData &header, int count,
                           int (*numberOf)(const ObservationData &, int))
{
    constexpr int most = 1000; // a damaged passport may announce any number
    std::vector<int> numbers;
    for (int i = 0; i < std::min(count, most); ++i)
        numbers.push_back(numberOf(header, i));
    return numbers;
}

class Planner {
public:
    Planner(const RecordingSet &recordings, SkyPlan &result) : set(recordings), plan(result) {}

    void make()
    {
        const auto first = std::find_if(set.entries.begin(), set.entries.end(), isUsable);
        if (first == set.entries.end()) {
            for (int i = 0; i < int(set.entries.size()); ++i)
                plan.leftOut.push_back(
                    {i, set.entries[std::size_t(i)].problem.isEmpty()
                            ? QString("Its header has no begin time, or no step.")
                            : set.entries[std::size_t(i)].problem});
            return;
        }
        findRays(first->header);
        findStart(*first);
        // The step and the bands that most files have; how far delays reach follows from them.
        Days::DayChoice choice = choiceOf(0);
        choice.pointsBefore = 0;
        choice.pointsAfter = 1;
        const Days::DayList list = Days::findDays(set, choice);
        plan.leftOut = list.leftOut;
        plan.header.tresolution = list.tresolution;
        plan.header.fbands = list.fbands;
        if (!findReach() || !findTrials())
            return;
        findStarts();
        for (int number = 0; number < plan.starts; ++number)
            daysOfStarts.push_back(Days::findDays(set, choiceOf(number), list).days);
        joinStarts();
        leaveOutFiles();
        limitPassages();
    }

private:
    void findRays(const ObservationData &header)
    {
        std::vector<int> modules = *numbersOf(plan.parameters.modules);
        std::vector<int> rays = *numbersOf(plan.parameters.rays);
        if (modules.empty())
            modules = numbersIn(header, header.modules, moduleNumber);
        if (rays.empty())
            rays = numbersIn(header, header.rays, rayNumber);
        const QString site = Days::siteOf(set);
        for (const int module : modules)
            for (const int ray : rays)
                plan.rays.push_back({module, ray, Days::beamOf(site, module, ray)});
        if (!plan.rays.front().beam.isKnown())
            plan.remarks << "Neither the folder nor the names of the recordings tell the site (N0 "
                            "to N4): positions and barycentric frequencies are not known.";
    }

    void findStart(const RecordingEntry &first)
    {
        start = Days::startOf(plan.parameters);
        if (start.kind != Days::StartKind::Point || plan.parameters.firstPoint >= 0)
            return;
        start.kind = Days::StartKind::Sidereal;
        const qint64 offset = qint64(std::llround(start.clockOffset * msPerSecond));
        start.siderealTime = Tools::localSiderealTime(first.begin.addMSecs(-offset));
        // A passage that begins a little later than the first one has all stretches as well.
        constexpr double margin = 10; // s
        start.siderealTime += margin / secondsPerHour;
    }

    bool findReach()
    {
        if (plan.header.fbands.empty())
            return false;
        plan.reach = Days::pointsBehind(plan.header, plan.dispersions.back());
        plan.reachBefore = plan.parameters.noise == "backSum" ? plan.reach : 0;
        if (plan.reach >= 0)
            return true;
        plan.problems.push_back(
            {"dispersions", "The bands cannot be delayed: there are fewer than 32 of them, or the "
                            "highest dispersion is too high."});
        return false;
    }

    // What the search of a stretch will be, or why it cannot be.
    bool findTrials()
    {
        if (plan.product != Product::Ffa)
            return true;
        const int points = plan.parameters.points;
        const double step = plan.header.tresolution;
        const FfaParameters ffa = Days::ffaOfDays(plan.parameters.ffa, points, step);
        plan.problems = Days::problemsOfTrials(ffa, points, step);
        if (plan.problems.empty())
            plan.trials = Days::sharedTrials(ffa, points, step);
        return plan.problems.empty();
    }

    void findStarts()
    {
        plan.starts = plan.parameters.starts;
        if (plan.starts > 0)
            return;
        qint64 longest = 0;
        for (const RecordingEntry &entry : set.entries) {
            if (isUsable(entry) && entry.header.tresolution == plan.header.tresolution)
                longest = std::max<qint64>(longest, entry.completePoints);
        }
        const qint64 left = longest - plan.parameters.points - plan.reach - plan.reachBefore;
        constexpr qint64 most = 100000;
        plan.starts = int(std::clamp<qint64>(left / plan.startStep + 1, 1, most));
    }

    // Points from the first stretch to that one.
    qint64 offsetOf(int number) const { return qint64(number) * plan.startStep; }

    // Points from where the start of the request lies to the first stretch.
    qint64 offsetOfFirst() const
    {
        return start.kind == Days::StartKind::Source ? -offsetOf(plan.starts - 1) / 2 : 0;
    }

    // A sidereal time and a UTC move with the stretch, so that a recording that holds some of the
    // stretches only need not hold the first. A source has to be in the recordings itself.
    bool moves() const
    {
        return start.kind == Days::StartKind::Sidereal || start.kind == Days::StartKind::Utc;
    }

    Days::DayChoice choiceOf(int number) const
    {
        Days::DayChoice choice;
        choice.module = plan.rays.front().module;
        choice.ray = plan.rays.front().ray;
        choice.points = plan.parameters.points;
        choice.start = start;
        const qint64 offset = offsetOfFirst() + offsetOf(number);
        const double seconds = double(offset) * plan.header.tresolution;
        choice.pointsBefore = plan.reachBefore;
        choice.pointsAfter = plan.reach;
        if (start.kind == Days::StartKind::Sidereal) {
            choice.start.siderealTime =
                std::fmod(start.siderealTime + seconds / secondsPerHour / Tools::utPerSidereal, 24);
        } else if (start.kind == Days::StartKind::Utc) {
            choice.start.utc = start.utc.addMSecs(int(std::fmod(seconds * msPerSecond, 86400000)));
        } else {
            choice.pointsBefore -= int(offset);
            choice.pointsAfter += int(offset);
        }
        return choice;
    }

    QDateTime baseOf(const Days::Day &day, int number) const
    {
        const qint64 offset = moves() ? -offsetOf(number) : offsetOfFirst();
        const double ms = double(offset) * plan.header.tresolution * msPerSecond;
        return day.begin.addMSecs(qint64(std::llround(ms)));
    }

    void joinStarts()
    {
        std::vector<HeldStart> held;
        for (int number = 0; number < plan.starts; ++number) {
            for (const Days::Day &day : daysOfStarts[std::size_t(number)]) {
                if (day.reason.isEmpty())
                    held.push_back({number, baseOf(day, number), &day});
            }
        }
        std::stable_sort(held.begin(), held.end(),
                         [](const HeldStart &a, const HeldStart &b) { return a.base < b.base; });
        // One passage has one base but for the rounding of its stretches to points.
        constexpr qint64 apart = 10000; // ms
        for (std::size_t begin = 0; begin < held.size();) {
            std::size_t end = begin + 1;
            while (end < held.size() && held[begin].base.msecsTo(held[end].base) < apart)
                ++end;
            std::vector<HeldStart> one(held.begin() + std::ptrdiff_t(begin),
                                       held.begin() + std::ptrdiff_t(end));
            std::sort(one.begin(), one.end(),
                      [](const HeldStart &a, const HeldStart &b) { return a.start < b.start; });
            addPassages(one);
            begin = end;
        }
        std::stable_sort(plan.passages.begin(), plan.passages.end(),
                         [](const Passage &a, const Passage &b) { return a.begin < b.begin; });
    }

    // Where files are missing between the stretches, one passage of the sky gives several.
    void addPassages(const std::vector<HeldStart> &one)
    {
        std::map<int, Span> spans;
        std::vector<HeldStart> joined;
        for (const HeldStart &held : one) {
            const Days::DayPart &first = held.day->parts.front();
            const auto known = spans.find(first.recording);
            const bool isSame = !joined.empty() && joined.back().start == held.start;
            if (isSame)
                continue;
            if (!joined.empty() && (known == spans.end() || known->second.end < first.first)) {
                addPassage(joined, spans);
                joined.clear();
                spans.clear();
            }
            for (const Days::DayPart &part : held.day->parts) {
                const auto [span, isNew] =
                    spans.try_emplace(part.recording, Span{part.first, part.first + part.count});
                span->second.first = std::min(span->second.first, part.first);
                span->second.end = std::max(span->second.end, part.first + part.count);
            }
            joined.push_back(held);
        }
        if (!joined.empty())
            addPassage(joined, spans);
    }

    void addPassage(const std::vector<HeldStart> &held, const std::map<int, Span> &spans)
    {
        for (const HeldStart &one : held)
            for (const Days::DayPart &part : one.day->parts)
                used.insert(part.recording);
        Passage passage;
        passage.begin = held.front().base;
        std::map<int, int> offsets;
        qint64 points = 0;
        // Recordings stand in the set by their begin.
        for (const auto &[recording, span] : spans) {
            offsets[recording] = int(points);
            passage.parts.push_back({recording, span.first, span.end - span.first});
            points += span.end - span.first;
        }
        if (points > std::numeric_limits<int>::max() || !plan.dates.contains(passage.begin.date()))
            return;
        passage.firstPoints.assign(std::size_t(plan.starts), -1);
        for (const HeldStart &one : held) {
            const Days::DayPart &part = one.day->parts.front();
            passage.firstPoints[std::size_t(one.start)] = offsets[part.recording] + part.first -
                                                          spans.at(part.recording).first +
                                                          plan.reachBefore;
        }
        const double ms =
            double(offsetOf(held.front().start)) * plan.header.tresolution * msPerSecond;
        passage.name = Days::dayName(passage.begin.addMSecs(qint64(std::llround(ms))));
        if (holdsAllRays(passage)) {
            passage.state = stateOf(passage);
            plan.passages.push_back(std::move(passage));
        }
    }

    bool holdsAllRays(const Passage &passage)
    {
        bool holds = true;
        for (const Days::DayPart &part : passage.parts) {
            const RecordingEntry &entry = set.entries[std::size_t(part.recording)];
            for (const SkyRay &ray : plan.rays) {
                if (holdsRay(entry.header, ray.module, ray.ray))
                    continue;
                withoutRays.push_back(
                    {part.recording,
                     QString("It does not hold module %1, ray %2.").arg(ray.module).arg(ray.ray)});
                holds = false;
                break;
            }
        }
        return holds;
    }

    QByteArray stateOf(const Passage &passage) const
    {
        QCryptographicHash hash(QCryptographicHash::Sha256);
        for (const Days::DayPart &part : passage.parts) {
            const QFileInfo file(set.entries[std::size_t(part.recording)].path);
            hash.addData(file.fileName().toUtf8() + '\n' + QByteArray::number(file.size()) + ' ' +
                         QByteArray::number(file.lastModified().toMSecsSinceEpoch()) + ' ' +
                         QByteArray::number(part.first) + ' ' + QByteArray::number(part.count) +
                         '\n');
        }
        for (const int point : passage.firstPoints)
            hash.addData(QByteArray::number(point) + ' ');
        return hash.result().toHex().left(stateDigits);
    }

    // What the lists of all starts leave out is left out; a file that one of them uses is not, but
    // for those that lack a ray.
    void leaveOutFiles()
    {
        const auto isUsed = [this](const Days::LeftOut &left) {
            return used.count(left.recording) > 0;
        };
        std::vector<Days::LeftOut> &left = plan.leftOut;
        left.erase(std::remove_if(left.begin(), left.end(), isUsed), left.end());
        left.insert(left.end(), withoutRays.begin(), withoutRays.end());
    }

    void limitPassages()
    {
        if (int(plan.passages.size()) > mostDays) {
            plan.problems.push_back(
                {"", QString("There are %1 days; at most %2 can be added up. Choose some by their "
                             "dates.")
                         .arg(plan.passages.size())
                         .arg(mostDays)});
        }
    }

    const RecordingSet &set;
    SkyPlan &plan;
    Days::DayStart start;
    std::vector<std::vector<Days::Day>> daysOfStarts;
    std::set<int> used; // recordings
    std::vector<Days::LeftOut> withoutRays;
};

} // namespace

int Passage::points() const
{
    int sum = 0;
    for (const Days::DayPart &part : parts)
        sum += part.count;
    return sum;
}

bool DateRange::contains(const QDate &date) const
{
    return (!first.isValid() || date >= first) && (!last.isValid() || date <= last);
}

bool SkyPlan::knowsBeams() const
{
    return std::all_of(rays.begin(), rays.end(),
                       [](const SkyRay &ray) { return ray.beam.isKnown(); });
}

qint64 SkyPlan::cells() const
{
    return qint64(rays.size()) * qint64(dispersions.size()) * starts;
}

QDateTime SkyPlan::middleOf(const Passage &passage, int start) const
{
    const double points = double(start) * startStep + parameters.points * 0.5;
    const double seconds = points * header.tresolution - parameters.clockOffset;
    return passage.begin.addMSecs(qint64(std::llround(seconds * msPerSecond)));
}

Tools::SkyPosition SkyPlan::directionOf(const SkyRay &ray, const QDateTime &middle) const
{
    const double nowhere = std::numeric_limits<double>::quiet_NaN();
    return ray.beam.isKnown() ? Tools::positionInBeam(middle, ray.beam.delta)
                              : Tools::SkyPosition{nowhere, nowhere};
}

qint64 SkyPlan::bytesRead(const RecordingSet &set) const
{
    qint64 bytes = 0;
    for (const Passage &passage : passages) {
        for (const Days::DayPart &part : passage.parts) {
            const ObservationData &whole = set.entries[std::size_t(part.recording)].header;
            bytes += qint64(part.count) * whole.modules * whole.rays * whole.channels *
                     qint64(sizeof(float));
        }
    }
    return bytes;
}

SkyPlan planSky(const RecordingSet &set, const SkyParameters &parameters, Product product,
                const DateRange &dates)
{
    SkyPlan plan;
    plan.parameters = parameters;
    plan.product = product;
    plan.dates = dates;
    plan.problems = problemsOf(parameters);
    if (!plan.problems.empty())
        return plan;
    plan.dispersions = *dispersionsOf(parameters.dispersions);
    plan.startStep = parameters.points / 2;
    Planner(set, plan).make();
    return plan;
}

} // namespace Sky
