#include "forms/sky/skyjobs.h"

#include "analyses/days/stacktables.h"
#include "analyses/sky/skytables.h"
#include "base/systemmemory.h"

#include <QElapsedTimer>
#include <algorithm>
#include <stdexcept>

namespace {

// Maps of a run that goes on, at most for a fifth of its time.
class FillingIn {
public:
    FillingIn(const SkyRequest &skyRequest, const Jobs::Control &jobControl,
              const std::function<void(SkyNews news)> &deliverNews)
        : request(skyRequest), control(jobControl), deliver(deliverNews)
    {
        sinceLast.start();
    }

    void operator()(const Sky::SkyStack &stack)
    {
        constexpr qint64 leastMs = 500;
        constexpr qint64 timesLonger = 5;
        if (request.maps.empty() || control.isStopped() ||
            sinceLast.elapsed() < std::max(leastMs, timesLonger * lastMs))
            return;
        QElapsedTimer timer;
        timer.start();
        SkyMaps maps = mapsOf(stack, *request.plan, request.maps, control);
        if (maps.size() == request.maps.size())
            deliver({std::move(maps), nullptr});
        lastMs = timer.elapsed();
        sinceLast.restart();
    }

private:
    const SkyRequest &request;
    const Jobs::Control &control;
    const std::function<void(SkyNews news)> &deliver;
    QElapsedTimer sinceLast;
    qint64 lastMs = 0;
};

} // namespace

PlannedSky plannedSky(const RecordingSet &set, const Sky::SkyParameters &parameters,
                      Sky::Product product)
{
    PlannedSky made;
    made.plan = Sky::planSky(set, parameters, product);
    if (!made.plan.problems.empty())
        return made;
    made.memory = Sky::memoryOf(made.plan, 0);
    made.bytesRead = made.plan.bytesRead(set);
    made.seconds = made.plan.passages.empty() ? 0 : Sky::secondsOf(made.plan, 0);
    return made;
}

void runSkyJob(const SkyRequest &request, const Jobs::Control &control,
               const std::function<void(SkyNews news)> &deliver)
{
    constexpr double bytesPerMegabyte = 1e6;
    const qint64 memory = Sky::memoryOf(*request.plan, 0);
    if (!hasMemoryFor(double(memory)))
        throw std::runtime_error(
            QString("The stacks take %1 MB, more memory than there is. Choose fewer rays, "
                    "dispersions or starts.")
                .arg(double(memory) / bytesPerMegabyte, 0, 'f', 0)
                .toStdString());
    const auto outcome = std::make_shared<SkyOutcome>();
    outcome->plan = request.plan;
    outcome->kept = Days::keptFolder(request.directory);
    Sky::RunChoice choice;
    choice.folder = outcome->kept.path;
    FillingIn fillingIn(request, control, deliver);
    choice.passageDone = [&fillingIn](const Sky::SkyStack &stack) { fillingIn(stack); };
    Jobs::Control own = control;
    if (request.isKeptOnly)
        own.isStopped = [] { return true; };
    outcome->run = Sky::runSky(*request.recordings, *request.plan, choice, own);
    if (!outcome->run.problem.isEmpty())
        throw std::runtime_error(outcome->run.problem.toStdString());
    deliver({{}, outcome});
}

SkyMaps mapsOf(const Sky::SkyStack &stack, const Sky::SkyPlan &plan,
               const std::vector<Sky::MapChoice> &choices, const Jobs::Control &control)
{
    SkyMaps maps;
    for (const Sky::MapChoice &choice : choices) {
        if (control.isStopped())
            break;
        maps.push_back(std::make_shared<const Sky::SkyMap>(Sky::mapOf(stack, plan, choice)));
    }
    return maps;
}

Results::ResultTable skyTable(const RecordingSet &set, const Sky::SkyPlan &plan,
                              const Sky::SkyRun &run,
                              const std::vector<Results::HeaderLine> &request,
                              const std::vector<Results::HeaderLine> &found,
                              std::vector<Results::Column> columns)
{
    Results::ResultTable table;
    table.request = request;
    table.result = Sky::planLines(plan, run);
    Days::DayList leftOut;
    leftOut.leftOut = plan.leftOut;
    for (const std::vector<Results::HeaderLine> &more : {found, Days::leftOutLines(set, leftOut)})
        table.result.insert(table.result.end(), more.begin(), more.end());
    table.columns = std::move(columns);
    return table;
}
