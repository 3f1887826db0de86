#include "batch/pulseswork.h"

#include "batch/inputlist.h"
#include "batch/outputfiles.h"
#include "batch/programname.h"

#include <QFileInfo>
#include <algorithm>
#include <set>

namespace Batch {

using namespace Results;

namespace {

constexpr qint64 largestTable = qint64(1) << 29; // bytes

// Places in the file, from 1, of the rays of a plan.
RaySelection selectionOf(const Pulses::PulsePlan &plan)
{
    std::set<int> modules;
    std::set<int> rays;
    for (const Pulses::RayPlace &place : plan.rays) {
        modules.insert(place.module + 1);
        rays.insert(place.ray + 1);
    }
    return {{modules.begin(), modules.end()}, {rays.begin(), rays.end()}};
}

qint64 bytesOfRay(const RecordingFile &file, const Pulses::PulsePlan &plan)
{
    return memoryOfRay(file, plan.points);
}

// Where a place of the plan stands in the record of a group.
Pulses::RayPlace placeIn(const RaySelection &group, const Pulses::RayPlace &place)
{
    const auto indexOf = [](const std::vector<int> &places, int index) {
        return int(std::lower_bound(places.begin(), places.end(), index + 1) - places.begin());
    };
    Pulses::RayPlace inGroup = place;
    inGroup.module = indexOf(group.modules, place.module);
    inGroup.ray = indexOf(group.rays, place.ray);
    return inGroup;
}

bool isIn(const RaySelection &group, const Pulses::RayPlace &place)
{
    return std::binary_search(group.modules.begin(), group.modules.end(), place.module + 1) &&
           std::binary_search(group.rays.begin(), group.rays.end(), place.ray + 1);
}

// With the option in front that it concerns.
QString textOf(const FieldProblem &problem)
{
    for (const Pulses::PulseField *field : Pulses::pulseAnalysis().fields) {
        if (field->name == problem.field)
            return field->option + ": " + problem.line();
    }
    return problem.line();
}

Failure searchGroup(RecordingFile &file, const Pulses::PulsePlan &plan,
                    const Pulses::PulseParameters &parameters, const RaySelection &group,
                    const Control &control, std::vector<Pulses::RayPulses> &found)
{
    ObservationData data;
    if (Failure failure = readRays(file, group, plan.firstPoint,
                                   qint64(plan.firstPoint) + plan.points, control, data))
        return failure;
    for (const Pulses::RayPlace &place : plan.rays) {
        if (!isIn(group, place))
            continue;
        found.push_back(Pulses::searchRay(data, placeIn(group, place), plan, parameters, control));
        if (control.isStopped())
            return stopped();
        control.progress(int(100 * found.size() / plan.rays.size()));
    }
    return {};
}

Failure fill(RecordingFile &file, const Pulses::PulseParameters &parameters, const Control &control,
             TableResult &result)
{
    const ObservationData &header = file.header();
    const Pulses::PulsePlan plan = Pulses::planPulses(header, parameters);
    if (!plan.problems.empty())
        return {ExitCode::BadData, file.path() + ": " + textOf(plan.problems.front())};
    for (const QString &remark : plan.remarks)
        control.remark(file.path() + ": " + remark);
    std::vector<Pulses::RayPulses> found;
    for (const RaySelection &group : groupsOf(selectionOf(plan), bytesOfRay(file, plan))) {
        if (Failure failure = searchGroup(file, plan, parameters, group, control, found))
            return failure;
    }
    const std::vector<Pulses::Pulse> pulses = Pulses::joinRays(found, plan);
    result.table.result = Pulses::searchLines(header, plan, found, pulses);
    result.table.columns = Pulses::pulseColumns(pulses, header.tresolution);
    return {};
}

qint64 memoryOf(const RecordingFile &file, const Pulses::PulseParameters &parameters)
{
    const Pulses::PulsePlan plan = Pulses::planPulses(file.header(), parameters);
    if (!plan.problems.empty()) // which the search will refuse
        return 0;
    const qint64 ofRay = bytesOfRay(file, plan);
    return ofRay * groupsOf(selectionOf(plan), ofRay).front().count() + plan.bytes;
}

// "survey.sources.txt" of "survey.txt".
QString sourcesPath(const QString &output)
{
    const QFileInfo info(output);
    const QString suffix = info.suffix();
    const QString base = suffix.isEmpty() ? output : output.chopped(suffix.size() + 1);
    return base + ".sources" + (suffix.isEmpty() ? QString() : "." + suffix);
}

Failure readTables(const QStringList &inputs, std::vector<Pulses::PulseTable> &tables)
{
    for (const QString &input : inputs) {
        QByteArray bytes;
        if (Failure failure = readInput(input, largestTable, bytes))
            return failure;
        Pulses::PulseTable table = Pulses::readPulseTable(bytes);
        if (!table.problem.isEmpty())
            return {ExitCode::BadData, input + " cannot be joined: " + table.problem + "."};
        tables.push_back(std::move(table));
    }
    std::sort(tables.begin(), tables.end(),
              [](const Pulses::PulseTable &a, const Pulses::PulseTable &b) {
                  return std::pair(a.file, a.mjdBegin) < std::pair(b.file, b.mjdBegin);
              });
    return {};
}

} // namespace

Failure refusalOf(const Pulses::PulseParameters &parameters)
{
    const std::vector<FieldProblem> problems = Pulses::problemsOf(parameters);
    return problems.empty() ? Failure() : Failure{ExitCode::Usage, textOf(problems.front())};
}

Work pulsesWork(const PulsesRequest &request)
{
    TableRequest table;
    table.command = Pulses::pulseAnalysis().command;
    table.parameters = Pulses::parameterLines(request.parameters);
    table.output = request.output;
    table.memory = [parameters = request.parameters](const RecordingFile &file) {
        return memoryOf(file, parameters);
    };
    table.fill = [parameters = request.parameters](RecordingFile &file, const Control &control,
                                                   TableResult &result) {
        return fill(file, parameters, control, result);
    };
    return tableWork(table);
}

Failure joinPulses(const QStringList &inputs, const RepeatsRequest &request)
{
    std::vector<Pulses::PulseTable> tables;
    if (Failure failure = readTables(inputs, tables))
        return failure;
    const std::vector<Pulses::RepeatingSource> sources =
        Pulses::repeatingSources(tables, request.parameters);
    ResultTable joined;
    joined.request = {{"program", programName()},
                      {"command", "repeats"},
                      {"minutes", numberText(request.parameters.minutes)},
                      {"dispersion", numberText(request.parameters.dispersion) + " pc/cm^3"},
                      {"fewest_dates", QString::number(request.parameters.dates)},
                      {"only_candidates", request.parameters.onlyCandidates ? "yes" : "no"},
                      {"tables", QString::number(tables.size())}};
    ResultTable repeating = joined;
    joined.columns = Pulses::joinedColumns(tables);
    repeating.columns = Pulses::sourceColumns(sources);
    repeating.result = {{"report",
                         "Rate: pulses over the hours that recordings of these rays spent "
                         "within the minutes around the sidereal time; its error is the "
                         "root of the pulses over these hours."}};
    const QString beside = sourcesPath(request.output);
    removeAbandoned({request.output, beside});
    const auto writer = [&request](const ResultTable &table) {
        return
            [&request, &table](WholeFile &file) { return writeTable(table, request.format, file); };
    };
    return writeOutputs({{request.output, {}, writer(joined)}, {beside, {}, writer(repeating)}});
}

} // namespace Batch
