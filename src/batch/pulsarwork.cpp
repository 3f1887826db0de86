#include "batch/pulsarwork.h"

#include "calc/pulsar/axislines.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/computedon.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "calc/pulsar/runanalysis.h"
#include "calc/pulsar/startpoint.h"
#include "picture/resultplot.h"

#include <algorithm>
#include <cmath>

namespace Batch {

using namespace Results;

namespace {

// The action's own words, in one line.
Failure refusalOf(const FieldProblem &problem, const QString &path)
{
    return {ExitCode::BadData, path + ": " + problem.line()};
}

Failure findStart(PulsarParameters &parameters, const RecordingFile &file)
{
    if (parameters.startTime.isEmpty())
        return {};
    const StartPoint start = pointAtUtc(file.header(), parameters.startTime);
    if (!start.problem.text.isEmpty()) {
        Failure failure = refusalOf(start.problem, file.path());
        if (start.isWithoutTimes)
            failure.text += " Give --first-point instead.";
        return failure;
    }
    parameters.firstPoint = start.point;
    return {};
}

// All lines of the report, without the empty ones between paragraphs.
QString reportOf(const PulsarResult &result)
{
    QStringList lines = result.report.lines();
    for (const Report &note : result.notes())
        lines << note.lines();
    lines.removeAll({});
    return lines.join('\n');
}

// What is the same for every table of a ray: what it is of, and how its numbers can be placed in
// time and frequency. The samples of one channel have no dispersion.
void addRayHeader(const QString &action, const PulsarParameters &given,
                  const ObservationData &header, std::vector<HeaderLine> &lines)
{
    const bool isSum = !worksOnChannel(action);
    const std::vector<HeaderLine> ray = rayLines(header, given.module, given.ray);
    lines.insert(lines.end(), ray.begin(), ray.end());
    lines.push_back({"first_point", QString::number(given.firstPoint)});
    if (isSum)
        lines.push_back({"disp", QString::number(std::lround(given.dispersion))});
    lines.push_back({"tresolution", numberText(header.tresolution) + " s"});
    const int band = isSum ? Pulsar::sumBands : given.channel;
    if (band >= 1 && band <= int(header.fbands.size()))
        lines.push_back({isSum ? "reference_frequency" : "frequency",
                         numberText(header.fbands[std::size_t(band - 1)]) + " MHz"});
}

// The action's parameters for a recording of which only the passport was read.
struct Accepted {
    PulsarParameters parameters; // with places and the first point, however they were given
    PulsarNeeds needs;
    Failure failure;
};

Accepted accept(const PulsarRequest &request, const RecordingFile &file)
{
    Accepted accepted;
    accepted.parameters = request.parameters;
    PulsarParameters &given = accepted.parameters;
    accepted.failure = findPlace(file, Numbered::Module, request.moduleNumber, given.module);
    if (!accepted.failure)
        accepted.failure = findPlace(file, Numbered::Ray, request.rayNumber, given.ray);
    if (!accepted.failure)
        accepted.failure = findStart(given, file);
    if (accepted.failure)
        return accepted;
    const std::vector<FieldProblem> problems = findProblems(request.action, file.header(), given);
    if (problems.empty())
        accepted.needs = findNeeds(request.action, file.header(), given);
    else
        accepted.failure = refusalOf(problems.front(), file.path());
    return accepted;
}

// A column for each band, which the plot leaves to a picture of its own.
void addBands(const BandFold &fold, TableResult &made)
{
    made.plot = Plot::plotOf(made.table);
    made.rows = Plot::bandPicture(fold);
    for (int band = 0; band < fold.bands(); ++band)
        made.table.columns.push_back({QString("band %1 at %2 MHz")
                                          .arg(band + 1)
                                          .arg(fold.frequencies[std::size_t(band)], 0, 'g', 10),
                                      "sigma", fold.profile(band)});
}

Failure compute(const PulsarRequest &request, RecordingFile &file, const Control &control,
                TableResult &made)
{
    ResultTable &table = made.table;
    const Accepted accepted = accept(request, file);
    if (accepted.failure)
        return accepted.failure;
    const PulsarNeeds &needs = accepted.needs;
    ObservationData data;
    if (Failure failure = readRays(file, {{needs.module}, {needs.ray}}, needs.begin(), needs.end(),
                                   control, data))
        return failure;
    control.progress(30);

    PulsarParameters parameters = accepted.parameters;
    parameters.module = 1;
    parameters.ray = 1;
    Jobs::Control ofAction = control;
    ofAction.progress = [&control](int percent) { control.progress(30 + percent * 7 / 10); };
    const AnalysisOutcome outcome = runAnalysis(request.action, data, parameters, ofAction);
    if (outcome.isStopped)
        return stopped();
    if (!outcome.isWhole())
        return refusalOf(outcome.problems.front(), file.path());
    const PulsarResult &result = outcome.result;
    if (!result.nonFinite.isEmpty())
        control.remark(file.path() + ": " + result.nonFinite);

    addRayHeader(request.action, accepted.parameters, file.header(), table.result);
    if (const QString utc = utcRange(file.header(), accepted.parameters.firstPoint, result.stretch);
        !utc.isEmpty())
        table.result.push_back({"utc", utc});
    Tools::addAxis(result.axis, table.result);
    QStringList markers;
    for (const int marker : result.markers)
        markers << QString::number(marker);
    if (!markers.isEmpty())
        table.result.push_back({"steps_at", markers.join(' ')});
    if (const QString report = reportOf(result); !report.isEmpty())
        table.result.push_back({"report", report});
    if (request.output.format == Format::Csv)
        table.columns.push_back(Tools::axisColumn(result.axis, result.points));
    for (std::size_t i = 0; i < result.curves.size(); ++i)
        table.columns.push_back({result.names[int(i)], {}, result.curves[i]});
    if (result.bands)
        addBands(*result.bands, made);
    return {};
}

// A parameter as a header has it; a count of 0 stands for what the action takes by itself.
QString headerText(const PulsarField &field, const FieldValue &value, bool takesAll)
{
    QString text = Tools::headerText(value);
    if (field.option == "--count" && text == "0")
        text = takesAll ? QString("all") : QString::number(Pulsar::fixedPoints);
    return field.unit.isEmpty() ? text : text + " " + field.unit;
}

bool isRecorded(const PulsarField &field, const PulsarAnalysis &analysis)
{
    switch (field.recorded) {
    case Recorded::Always:
        return true;
    case Recorded::OfSums:
        return !analysis.onChannel;
    case Recorded::WhereRead:
        return analysis.reads(field);
    default:
        return false;
    }
}

std::vector<HeaderLine> parameterLines(const PulsarRequest &request)
{
    const PulsarParameters &given = request.parameters;
    const PulsarAnalysis &analysis = *findAnalysis(request.action);
    const auto placeOr = [](const QString &what, int place, const std::optional<int> &number) {
        return number ? HeaderLine{what + "_number", QString::number(*number)}
                      : HeaderLine{what + "_place", QString::number(place)};
    };
    std::vector<HeaderLine> lines = {{"action", request.action},
                                     placeOr("module", given.module, request.moduleNumber),
                                     placeOr("ray", given.ray, request.rayNumber)};
    const QString otherStart = given.startTime.isEmpty() ? "--utc" : "--first-point";
    for (const PulsarField &field : pulsarFields()) {
        if (!isRecorded(field, analysis) || field.option == otherStart)
            continue;
        const QString text = headerText(field, field.valueIn(given), takesPoints(analysis.name));
        if (!text.isEmpty())
            lines.push_back({field.key, text});
    }
    return lines;
}

} // namespace

Work pulsarWork(const PulsarRequest &request)
{
    TableRequest table;
    table.command = request.command;
    table.parameters = parameterLines(request);
    table.output = request.output;
    table.memory = [request](const RecordingFile &file) {
        const Accepted accepted = accept(request, file);
        if (accepted.failure) // which the work then says
            return qint64(0);
        return memoryOfRay(file, accepted.needs.end() - accepted.needs.begin()) +
               findBytes(request.action, file.header(), accepted.parameters);
    };
    if (request.action == "sumPeriodOfBands")
        table.rowPicture = "bands";
    table.fill = [request](RecordingFile &file, const Control &control, TableResult &result) {
        return compute(request, file, control, result);
    };
    return tableWork(table);
}

} // namespace Batch
