#include "batch/dayswork.h"

#include "base/stopsignal.h"
#include "calc/pulsar/bandsum.h"
#include "data/observationdata.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <algorithm>
#include <map>

// The days that both commands work on, and survey.

namespace Batch {

namespace {

constexpr int mostNamed = 3; // recordings or days of one reason

// "12 recordings: reason: first, second, third and 9 more."
QStringList summaryOf(const std::map<QString, QStringList> &byReason, const QString &what)
{
    QStringList lines;
    for (const auto &[reason, names] : byReason) {
        QString named = QStringList(names.mid(0, mostNamed)).join(", ");
        if (names.size() > mostNamed)
            named += QString(" and %1 more").arg(names.size() - mostNamed);
        lines << QString("%1 %2%3 left out: %4 (%5)")
                     .arg(names.size())
                     .arg(what, names.size() == 1 ? " is" : "s are", reason, named);
    }
    return lines;
}

} // namespace

QStringList remarksOn(const RecordingSet &set, const Days::DayList &list)
{
    std::map<QString, QStringList> recordings;
    for (const Days::LeftOut &left : list.leftOut) {
        const QString &path = set.entries[std::size_t(left.recording)].path;
        recordings[QString(left.reason).replace(path, "the file")] << path;
    }
    std::map<QString, QStringList> days;
    for (const Days::Day &day : list.days) {
        if (!day.reason.isEmpty())
            days[day.reason] << Days::dayName(day.begin);
    }
    return summaryOf(recordings, "recording") + summaryOf(days, "day");
}

QString stateOf(const RecordingSet &set)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const RecordingEntry &entry : set.entries) {
        const QFileInfo file(entry.path);
        hash.addData(entry.path.toUtf8() + '\n' + QByteArray::number(file.size()) + ' ' +
                     QByteArray::number(file.lastModified().toMSecsSinceEpoch()) + '\n');
    }
    constexpr int digits = 24;
    return QString("%1 recordings, %2")
        .arg(set.entries.size())
        .arg(QString::fromLatin1(hash.result().toHex().left(digits)));
}

Failure readFolders(const QStringList &folders, RecordingSet &set)
{
    for (const QString &folder : folders) {
        if (!QFileInfo(folder).isDir())
            return {ExitCode::NoInput, folder + " is no folder. Give folders of recordings."};
        if (!QFileInfo(folder).isReadable())
            return {ExitCode::NoInput, folder + " cannot be read. Check its permissions."};
    }
    Jobs::Control control;
    control.isStopped = [] { return isStopRequested(); };
    set = Days::recordingsOfFolders(folders, control);
    if (set.wasStopped)
        return {ExitCode::TryLater, "Stopped while the headers were read."};
    if (set.entries.empty())
        return {ExitCode::NoInput, folders.join(", ") +
                                       ": there is no recording (.pnt, .pnthr) in it, nor in its "
                                       "sub-folders."};
    return {};
}

Failure readInterference(const QString &choice, std::vector<Days::Interference> &entries)
{
    if (choice == "none")
        return {};
    const QString path = choice.isEmpty() ? Days::interferencePath() : choice;
    if (!choice.isEmpty() && !QFileInfo::exists(path))
        return {ExitCode::NoInput,
                path + " does not exist. Give the list of interference, or none."};
    const Days::InterferenceList list = Days::readInterference(path);
    entries = list.entries;
    return list.problem.isEmpty() ? Failure() : Failure{ExitCode::BadData, list.problem};
}

void keepDates(const DaysRequest &request, Days::DayList &list)
{
    const QDate first = QDate::fromString(request.firstDate, Qt::ISODate);
    const QDate last = QDate::fromString(request.lastDate, Qt::ISODate);
    const auto isOutside = [&](const Days::Day &day) {
        return (first.isValid() && day.begin.date() < first) ||
               (last.isValid() && day.begin.date() > last);
    };
    list.days.erase(std::remove_if(list.days.begin(), list.days.end(), isOutside), list.days.end());
}

Failure countDays(const QStringList &daysOff, const Days::DayList &list, std::vector<bool> &counts)
{
    QStringList unknown = daysOff;
    for (const Days::Day &day : list.days) {
        const QString name = Days::dayName(day.begin);
        const QString date = name.section('T', 0, 0);
        counts.push_back(!daysOff.contains(name) && !daysOff.contains(date));
        unknown.removeAll(name);
        unknown.removeAll(date);
    }
    if (unknown.isEmpty())
        return {};
    return {ExitCode::Usage,
            "--days-off: there is no day " + unknown.join(", ") + " among those found."};
}

Failure decideDays(const DaysRequest &request, const Days::DayList &list,
                   std::vector<std::optional<bool>> &decided)
{
    std::vector<bool> counts;
    if (Failure failure = countDays(request.daysOff, list, counts))
        return failure;
    for (const bool isOn : counts)
        decided.push_back(!isOn             ? std::optional(false)
                          : request.allDays ? std::optional(true)
                                            : std::nullopt);
    return {};
}

namespace {

bool isUsable(const Days::Day &day)
{
    return day.reason.isEmpty();
}

FoundDays lookedFor(const DaysRequest &request)
{
    FoundDays found;
    found.failure = readFolders(request.folders, found.set);
    if (found.failure)
        return found;
    found.plan = Days::planDays(found.set, request.parameters);
    if (!found.plan.problems.empty()) {
        found.failure =
            refusalOf(found.plan.problems.front(), Days::analysisOf(request.parameters));
        return found;
    }
    keepDates(request, found.plan.list);
    found.remarks = found.plan.remarks + remarksOn(found.set, found.plan.list);
    found.kept = request.kept.isEmpty() ? Days::keptFolder(request.folders.front())
                                        : Days::KeptFolder{request.kept, false};
    const std::vector<Days::Day> &days = found.plan.list.days;
    if (std::none_of(days.begin(), days.end(), isUsable))
        found.failure = {ExitCode::BadData,
                         QString("None of %1 recordings gives a day that can be used.")
                             .arg(found.set.entries.size())};
    return found;
}

// The days of one part by their names.
class SurveyWork {
public:
    SurveyWork(const DaysRequest &request, const FoundDays &foundDays, bool isForced)
        : found(foundDays), force(isForced)
    {
        int number = 0;
        for (const Days::Day &day : found.plan.list.days) {
            if (!isUsable(day) || number++ % request.parts != request.part - 1)
                continue;
            names << Days::dayName(day.begin);
            dayOf[names.back()] = &day;
        }
    }

    const QStringList &inputs() const { return names; }

    Work work() const
    {
        Work made;
        made.command = Days::surveyCommand;
        made.outputs = [this](const QString &name) { return pathsOf(*dayOf[name]); };
        made.isDone = [this](const QString &name) {
            return Days::areKept(found.set, *dayOf[name], found.plan.choice.points,
                                 found.plan.series, found.kept.path);
        };
        made.memory = [this](const QString &name) { return memoryOf(*dayOf[name]); };
        made.run = [this](const QString &name, const Control &control) {
            return run(*dayOf[name], control);
        };
        return made;
    }

private:
    QStringList pathsOf(const Days::Day &day) const
    {
        QStringList paths;
        for (const Days::SeriesRequest &series : found.plan.series)
            paths << Days::seriesPath(found.set, day, found.plan.choice.points, series,
                                      found.kept.path);
        return paths;
    }

    // The samples of a ray, which are held where some are no numbers, their copy, and the sums.
    qint64 memoryOf(const Days::Day &day) const
    {
        qint64 points = 0;
        for (const Days::DayPart &part : day.parts)
            points += part.count;
        const qint64 samples = 2 * (Pulsar::sumBands + 1) * qint64(sizeof(float));
        return points * (samples + qint64(found.plan.series.size() * sizeof(double)));
    }

    Failure run(const Days::Day &day, const Control &control) const
    {
        const QStringList paths = pathsOf(day);
        for (const QString &path : paths) {
            if (force)
                QFile::remove(path);
        }
        const std::vector<Days::DaySeries> all = Days::seriesOfDay(
            found.set, day, found.plan.choice.points, found.plan.series, found.kept.path, control);
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (all[i].wasStopped)
                return stopped();
            if (!all[i].problem.isEmpty())
                return {ExitCode::BadData, Days::dayName(day.begin) + ": " + all[i].problem};
            if (!QFileInfo::exists(paths[int(i)]))
                return {ExitCode::CannotCreate,
                        paths[int(i)] + " was not written. Check the folder, its permissions and "
                                        "the room on the disk, or choose another with --kept."};
            if (!all[i].remark.isEmpty())
                control.remark(Days::dayName(day.begin) + ": " + all[i].remark);
        }
        return {};
    }

    const FoundDays &found;
    const bool force;
    QStringList names;
    QHash<QString, const Days::Day *> dayOf;
};

} // namespace

FoundDays findDays(const DaysRequest &request, bool isQuiet)
{
    const FoundDays found = lookedFor(request);
    if (!isQuiet || found.failure) {
        for (const QString &remark : found.remarks)
            printError(remark);
    }
    if (found.failure)
        printError(found.failure.text);
    return found;
}

ExitCode surveyDays(const DaysRequest &request, const RunOptions &options)
{
    const FoundDays found = findDays(request, options.quiet);
    if (found.failure)
        return found.failure.code;
    if (!options.quiet)
        printError("Series are kept in " + found.kept.path + ".");
    const SurveyWork survey(request, found, options.force);
    return runWork(survey.work(), survey.inputs(), options);
}

} // namespace Batch
