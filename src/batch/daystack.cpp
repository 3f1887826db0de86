#include "analyses/days/dayspectra.h"
#include "batch/dayswork.h"
#include "batch/stackfiles.h"
#include "jobs/items.h"

#include <QFileInfo>
#include <algorithm>

// stack: spectra or periodograms of all days, which of them count, and their sum.

namespace Batch {

namespace {

class StackWork {
public:
    StackWork(const DaysRequest &daysRequest, const FoundDays &foundDays,
              const Days::FourierDaysParameters &ofPlan,
              const std::vector<Days::Interference> &leftOut, const StackFiles &stackFiles,
              const RunOptions &runOptions)
        : request(daysRequest), found(foundDays), parameters(ofPlan), interference(leftOut),
          files(stackFiles), options(runOptions)
    {}

    Work work() const
    {
        Work made;
        made.command = "stack";
        made.outputs = [this](const QString &) { return files.paths(); };
        made.isDone = [this](const QString &) { return files.areDone(); };
        made.memory = [this](const QString &) { return memory(); };
        made.run = [this](const QString &, const Control &control) { return run(control); };
        return made;
    }

private:
    qint64 memory() const
    {
        const qint64 products =
            Days::analysisOf(parameters)
                .bytes(parameters, found.plan.header, int(found.plan.list.days.size())) *
            found.plan.rays;
        const qint64 bands = qint64(found.plan.header.fbands.size()) + 1;
        const qint64 points = qint64(parameters.points) + found.plan.choice.pointsAfter +
                              found.plan.choice.pointsBefore;
        const int side = options.jobs > 0 ? options.jobs : Jobs::threadCount();
        return products + 2 * side * points * bands * found.plan.rays * qint64(sizeof(float));
    }

    Failure run(const Control &control) const
    {
        Days::StackRequest stack;
        if (Failure failure = decideDays(request, found.plan.list, stack.decided))
            return failure;
        const auto spectra = std::make_shared<Days::DaySpectra>();
        if (Failure failure = readDays(control, *spectra))
            return failure;
        stack.spectra = spectra;
        stack.parameters = parameters;
        stack.leftOut = interference;
        const auto outcome = Days::stackSpectra(stack, control);
        if (control.isStopped())
            return stopped();
        if (outcome->stack.days == 0)
            return {ExitCode::BadData, noDayLeft(*spectra, *outcome)};
        if (!outcome->stack.problem.isEmpty())
            return {ExitCode::BadData, outcome->stack.problem};
        return files.write(*spectra, *outcome);
    }

    Failure readDays(const Control &control, Days::DaySpectra &spectra) const
    {
        const std::vector<Days::Day> &list = found.plan.list.days;
        spectra.parameters = parameters;
        spectra.plan = found.plan;
        spectra.kept = found.kept;
        spectra.rays.assign(std::size_t(found.plan.rays),
                            std::vector<Days::FourierDay>(list.size()));
        Jobs::Control whole = control;
        whole.progress = [&control](int percent) { control.progress(percent * 9 / 10); };
        const auto endings = Jobs::runItems(
            int(list.size()), options.jobs, whole, [&](int item, const Jobs::Control &own) {
                std::vector<Days::FourierDay> products =
                    Days::readRays(found.set, found.plan, list[std::size_t(item)], parameters,
                                   found.kept.path, own);
                for (std::size_t ray = 0; ray < products.size(); ++ray)
                    spectra.rays[ray][std::size_t(item)] = std::move(products[ray]);
            });
        for (std::size_t i = 0; i < endings.size(); ++i) {
            if (endings[i].kind == Jobs::Ending::Stopped || control.isStopped())
                return {ExitCode::TryLater, "Stopped; the series that were made are kept."};
            if (endings[i].kind == Jobs::Ending::Failed)
                spectra.rays.front()[i].problem = endings[i].problem;
        }
        return {};
    }

    // Which reasons left no day to stack, the first of them.
    QString noDayLeft(const Days::DaySpectra &spectra, const Days::StackOutcome &outcome) const
    {
        const std::vector<Days::FourierDay> &days = spectra.days();
        if (outcome.stack.allDays == 0)
            return "No day has a spectrum. " + days.front().problem;
        for (std::size_t i = 0; i < days.size(); ++i) {
            if (days[i].isWhole() && !outcome.verdicts[i].isGood)
                return QString("No day is left to stack. %1: %2. Give --all-days to count days in "
                               "spite of the rule.")
                    .arg(Days::dayName(days[i].begin), outcome.verdicts[i].reason);
        }
        return "No day is left to stack: all are switched off. Name fewer days with --days-off.";
    }

    const DaysRequest &request;
    const FoundDays &found;
    const Days::FourierDaysParameters &parameters; // with the module and ray of the plan
    const std::vector<Days::Interference> &interference;
    const StackFiles &files;
    const RunOptions &options;
};

} // namespace

ExitCode stackDays(const DaysRequest &request, const RunOptions &options)
{
    const FoundDays found = findDays(request, options.quiet);
    if (found.failure)
        return found.failure.code;
    std::vector<Days::Interference> interference;
    if (const Failure failure = readInterference(request.interference, interference)) {
        printError(failure.text);
        return failure.code;
    }
    const Days::FourierDaysParameters parameters =
        Days::usedParameters(request.parameters, found.plan);
    const StackFiles files(request, found, parameters, interference);
    const StackWork stack(request, found, parameters, interference, files, options);
    return runWork(stack.work(), {files.input()}, options);
}

} // namespace Batch
