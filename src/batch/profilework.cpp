#include "batch/profilework.h"

#include "analyses/profiles/profilerun.h"
#include "batch/profilefiles.h"
#include "jobs/items.h"

#include <algorithm>

// profile: the days folded, their average and what follows from it.

namespace Batch {

namespace {

struct FoundProfiles {
    RecordingSet set;
    Profiles::ProfilePlan plan;
    QString kept; // folder
    Failure failure;
    QStringList remarks;
};

FoundProfiles lookedFor(const ProfileRequest &request)
{
    FoundProfiles found;
    found.failure = readFolders(request.days.folders, found.set);
    if (found.failure)
        return found;
    found.plan = Profiles::planProfiles(found.set, request.parameters);
    if (!found.plan.problems.empty()) {
        found.failure = refusalOf(found.plan.problems.front(), Profiles::profileAnalysis());
        return found;
    }
    Days::DayList &list = found.plan.days.list;
    keepDates(request.days, list);
    found.remarks = found.plan.remarks + remarksOn(found.set, list);
    found.kept = request.days.kept.isEmpty() ? Days::keptFolder(request.days.folders.front()).path
                                             : request.days.kept;
    if (std::none_of(list.days.begin(), list.days.end(),
                     [](const Days::Day &day) { return day.reason.isEmpty(); }))
        found.failure = {ExitCode::BadData,
                         QString("None of %1 recordings gives a day that can be used.")
                             .arg(found.set.entries.size())};
    return found;
}

class ProfileWork {
public:
    ProfileWork(const ProfileRequest &profileRequest, const FoundProfiles &foundProfiles,
                const ProfileFiles &profileFiles, const RunOptions &runOptions)
        : request(profileRequest), found(foundProfiles), files(profileFiles), options(runOptions)
    {}

    Work work() const
    {
        Work made;
        made.command = "profile";
        made.outputs = [this](const QString &) { return files.paths(); };
        made.isDone = [this](const QString &) { return files.areDone(); };
        made.memory = [this](const QString &) { return Profiles::bytesOf(found.plan, options.jobs); };
        made.run = [this](const QString &, const Control &control) { return run(control); };
        return made;
    }

private:
    Failure run(const Control &control) const
    {
        Profiles::StackChoice choice = Profiles::choiceOf(found.plan.parameters);
        if (Failure failure = countDays(request.days.daysOff, found.plan.days.list, choice.days))
            return failure;
        Jobs::Control folding = control;
        folding.progress = [&control](int percent) { control.progress(percent * 7 / 10); };
        const auto days = std::make_shared<const std::vector<Profiles::ProfileDay>>(
            Profiles::foldDays(found.set, found.plan, found.kept, options.jobs, folding));
        if (control.isStopped())
            return {ExitCode::TryLater, "Stopped; the days that were folded are kept."};
        Jobs::Control quiet = control;
        quiet.progress = [](int) {};
        Profiles::ProfileOutcome outcome = Profiles::averageDays(days, choice, quiet);
        if (control.isStopped())
            return stopped();
        if (outcome.stack.incoherentDays == 0)
            return {ExitCode::BadData, noDayLeft(outcome)};
        outcome.scan = Profiles::scanOf(outcome, found.plan, quiet);
        if (control.isStopped())
            return stopped();
        for (const QString &remark : outcome.stack.remarks)
            control.remark(remark);
        return files.write(outcome);
    }

    // Which reasons left no day, the first of them.
    static QString noDayLeft(const Profiles::ProfileOutcome &outcome)
    {
        const auto &days = outcome.stack.days;
        const auto told =
            std::find_if(days.begin(), days.end(),
                         [](const Profiles::StackedDay &day) { return !day.reason.isEmpty(); });
        return "No day is left to average. " + (told == days.end() ? QString() : told->reason);
    }

    const ProfileRequest &request;
    const FoundProfiles &found;
    const ProfileFiles &files;
    const RunOptions &options;
};

} // namespace

ExitCode profileDays(const ProfileRequest &request, const RunOptions &options)
{
    const FoundProfiles found = lookedFor(request);
    if (!options.quiet || found.failure) {
        for (const QString &remark : found.remarks)
            printError(remark);
    }
    if (found.failure) {
        printError(found.failure.text);
        return found.failure.code;
    }
    const ProfileFiles files(request, found.set, found.plan);
    const ProfileWork profiles(request, found, files, options);
    return runWork(profiles.work(), {files.input()}, options);
}

} // namespace Batch
