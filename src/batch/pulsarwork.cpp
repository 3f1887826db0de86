#include "batch/pulsarwork.h"

#include "batch/axis.h"
#include "calc/channelsum.h"
#include "calc/pulsarcalculate.h"
#include "data/recordingtime.h"
#include "forms/pulsar/pulsartexts.h"

#include <algorithm>
#include <cmath>

namespace Batch {

namespace {

// Samples beside a stretch that its levels are judged by.
constexpr int levelMargin = 1024;
// As many points are read beyond the longest delay, so that a sum finds the point after its last.
constexpr int spare = 2;
// A scan of dispersions reaches twice the given one, at least to this.
constexpr double smallestTop = 20; // pc/cm^3
constexpr int mostStarts = 8;

struct PointRange {
    qint64 first = 0;
    qint64 end = 0;
};

bool worksOnChannel(const QString &action)
{
    return action == "showNative" || action == "sumPeriod";
}

// The largest dispersion that an action sums with.
double largestDispersion(const PulsarRequest &request)
{
    const PulsarParameters &given = request.parameters;
    if (request.action == "sum4Dispersions")
        return *std::max_element(given.dispersions.begin(), given.dispersions.end());
    const bool scans = request.command == "dmscan";
    return scans ? std::max(2 * given.dispersion, smallestTop) : given.dispersion;
}

// Longest delay of a band in points, at most the recording.
qint64 longestDelay(const ObservationData &header, double dispersion)
{
    double longest = 0;
    const int bands = std::min(int(header.fbands.size()), PulsarCalculate::sumBands);
    for (int band = 0; band < bands; ++band) {
        const double delay = std::abs(Tools::dispersionDelay(header.fbands[std::size_t(band)],
                                                             header.fbands[std::size_t(bands - 1)],
                                                             dispersion, header.tresolution));
        // What is no number is refused by the action.
        longest = std::max(longest, std::min(delay, double(header.npoints)));
    }
    return qint64(std::ceil(longest));
}

// The points that an action takes in: all others may as well be 0.
PointRange neededPoints(const PulsarRequest &request, const ObservationData &header)
{
    const PulsarParameters &given = request.parameters;
    const qint64 first = given.firstPoint;
    if (request.action == "sumPeriod")
        return {first - levelMargin, header.npoints};
    if (request.action == "showNative") {
        const qint64 count = given.points > 0 ? given.points : PulsarCalculate::fixedPoints;
        return {first - levelMargin, first + count + levelMargin};
    }
    const qint64 reach = longestDelay(header, largestDispersion(request)) + levelMargin + spare;
    const qint64 count = request.sumLength > 0 ? request.sumLength : PulsarCalculate::fixedPoints;
    qint64 end = first + count + reach;
    if (request.action == "sumTimeDispersions") {
        const double delta = given.startDelta > 0 ? given.startDelta : header.npoints / 16.0;
        end += qint64(std::ceil(std::min(delta, double(header.npoints)) * (mostStarts - 1)));
    }
    return {first - reach, end};
}

// The action's own words, in one line.
Failure refusalOf(const PulsarCalculate &calculate, const QString &path)
{
    return {ExitCode::BadData, path + ": " + QString(calculate.failure()).replace('\n', ' ')};
}

// What the action would refuse of the recording as it is, asked before anything is read.
Failure checkSelection(const PulsarRequest &request, const RecordingFile &file)
{
    const ObservationData &header = file.header();
    PulsarParameters parameters = request.parameters;
    parameters.deleteStep = false;
    PulsarCalculate calculate(header, parameters);
    calculate.run(request.action);
    // Without samples every action fails; what it says of a parameter it would say anyway.
    if (calculate.failedParameter().isEmpty())
        return {};
    return refusalOf(calculate, file.path());
}

Failure findStart(PulsarParameters &parameters, const RecordingFile &file)
{
    if (parameters.startTime.isEmpty())
        return {};
    const FormTexts::StartPoint start = FormTexts::pointAtUtc(file.header(), parameters.startTime);
    if (!start.error.isEmpty())
        return {ExitCode::BadData, file.path() + ": " +
                                       QString(start.error)
                                           .replace("\nChoose \"First point\" instead.",
                                                    " Give --first-point instead.")
                                           .replace('\n', ' ')};
    parameters.firstPoint = start.point;
    return {};
}

// A sum of another length than the form's.
Failure sumOfLength(const PulsarRequest &request, PulsarCalculate &calculate,
                    const ObservationData &data, const QString &path, PulsarResult &result)
{
    const PulsarParameters &given = request.parameters;
    const int count = request.sumLength;
    const qint64 last = qint64(data.npoints) - count - 1;
    if (last < 0)
        return {ExitCode::BadData, QString("%1 has %2 points; a sum of %3 needs more.")
                                       .arg(path)
                                       .arg(data.npoints)
                                       .arg(count)};
    if (given.firstPoint < 0 || given.firstPoint > last)
        return {ExitCode::BadData,
                QString("%1: first point %2 leaves no %3 points before the end of the recording. "
                        "Allowed: 0 to %4.")
                    .arg(path)
                    .arg(given.firstPoint)
                    .arg(count)
                    .arg(last)};
    std::vector<double> sum(std::size_t(count), 0.0);
    const bool isSummed = given.deductNoise
                              ? calculate.sumWithoutNoise(sum.data(), count, given.dispersion)
                              : calculate.sumChannels(sum.data(), count, given.dispersion, true);
    if (!isSummed)
        return {ExitCode::BadData,
                QString("%1: its %2 bands cannot be summed over %3 points at dispersion %4. Sums "
                        "need %5 bands with their frequencies, base lines some hundred points.")
                    .arg(path)
                    .arg(data.channels - 1)
                    .arg(count)
                    .arg(given.dispersion)
                    .arg(PulsarCalculate::sumBands)};
    result.curves.emplace_back(sum.begin(), sum.end());
    result.visible = {true};
    result.names << (given.deductNoise ? "minus noise base line" : "sum on canals");
    result.points = count;
    result.stretch = count;
    result.axis.first = given.firstPoint;
    if (calculate.bandsSummed() < PulsarCalculate::sumBands)
        result.remarks << QString(
                              "The recording ends before the delayed samples of every band: the "
                              "sum holds %1 of the %2 bands whole.")
                              .arg(calculate.bandsSummed())
                              .arg(PulsarCalculate::sumBands);
    return {};
}

QString reportOf(const PulsarResult &result)
{
    return (result.description.split('\n', Qt::SkipEmptyParts) + result.remarks).join('\n');
}

// What is the same for every table of a ray: how its numbers can be placed in time and frequency.
void addRayHeader(const ObservationData &data, double dispersion, int firstPoint, bool isSum,
                  int channel, std::vector<HeaderLine> &lines)
{
    lines.push_back({"first_point", QString::number(firstPoint)});
    lines.push_back({"disp", QString::number(std::lround(dispersion))});
    lines.push_back({"tresolution", numberText(data.tresolution) + " s"});
    if (data.beginTime.isValid())
        lines.push_back({"begin", exactBegin(data).toString(Qt::ISODateWithMs)});
    const int band = isSum ? PulsarCalculate::sumBands : channel;
    if (band >= 1 && band <= int(data.fbands.size()))
        lines.push_back(
            {"reference_frequency", numberText(data.fbands[std::size_t(band - 1)]) + " MHz"});
}

Failure compute(const PulsarRequest &request, RecordingFile &file, const Control &control,
                ResultTable &table)
{
    PulsarRequest work = request;
    const ObservationData &header = file.header();
    if (Failure failure = findStart(work.parameters, file))
        return failure;
    // A sum of another length has other limits, checked by itself.
    Failure refused = work.sumLength > 0
                          ? findRay(file, work.parameters.module, work.parameters.ray)
                          : checkSelection(work, file);
    if (refused)
        return refused;

    ObservationData data;
    const PointRange range = neededPoints(work, header);
    if (Failure failure = readRays(file, {{work.parameters.module}, {work.parameters.ray}},
                                   range.first, range.end, control, data))
        return failure;
    control.progress(30);

    PulsarParameters parameters = work.parameters;
    parameters.module = 1;
    parameters.ray = 1;
    PulsarCalculate calculate(data, parameters);
    QObject::connect(&calculate, &PulsarCalculate::progress, &calculate, [&](int percent) {
        control.progress(30 + percent * 7 / 10);
        if (control.isStopped())
            calculate.cancel();
    });
    PulsarResult ownResult;
    if (work.sumLength > 0) {
        if (Failure failure = sumOfLength(work, calculate, data, file.path(), ownResult))
            return failure;
    } else if (!calculate.run(work.action)) {
        if (calculate.wasCancelled())
            return {ExitCode::TryLater, "Stopped."};
        return refusalOf(calculate, file.path());
    }
    const PulsarResult &result = work.sumLength > 0 ? ownResult : calculate.result();

    addRayHeader(data, work.parameters.dispersion, work.parameters.firstPoint,
                 !worksOnChannel(work.action), work.parameters.channel, table.result);
    addAxis(result.axis, table.result);
    QStringList markers;
    for (const int marker : result.markers)
        markers << QString::number(marker);
    if (!markers.isEmpty())
        table.result.push_back({"steps_at", markers.join(' ')});
    table.result.push_back({"report", reportOf(result)});
    if (request.output.format == Format::Csv)
        table.columns.push_back(axisColumn(result.axis, result.points));
    for (std::size_t i = 0; i < result.curves.size(); ++i)
        table.columns.push_back({result.names[int(i)], {}, result.curves[i]});
    return {};
}

std::vector<HeaderLine> parameterLines(const PulsarRequest &request)
{
    const PulsarParameters &given = request.parameters;
    const QString &action = request.action;
    const auto yesNo = [](bool is) { return QString(is ? "yes" : "no"); };
    std::vector<HeaderLine> lines = {{"action", action},
                                     {"module", QString::number(given.module)},
                                     {"ray", QString::number(given.ray)}};
    if (worksOnChannel(action)) {
        lines.push_back({"channel", QString::number(given.channel)});
        lines.push_back({"count", given.points > 0 ? QString::number(given.points) : "all"});
    } else {
        lines.push_back({"dispersion", numberText(given.dispersion) + " pc/cm^3"});
        lines.push_back(
            {"count", QString::number(request.sumLength > 0 ? request.sumLength
                                                            : PulsarCalculate::fixedPoints)});
    }
    if (!given.startTime.isEmpty())
        lines.push_back({"start_utc", given.startTime});
    else
        lines.push_back({"start_point", QString::number(given.firstPoint)});
    if (action == "sumPeriod" || action == "sumChannelsAndFourier")
        lines.push_back({"period", numberText(given.period) + " s"});
    lines.push_back({"noise", given.noise});
    lines.push_back({"normalise", yesNo(given.normalise)});
    lines.push_back({"deduct", yesNo(given.deductNoise)});
    lines.push_back({"delete_step", yesNo(given.deleteStep)});
    if (!worksOnChannel(action)) {
        lines.push_back({"average", QString::number(given.averageCount)});
        lines.push_back({"with_null", yesNo(given.withNull)});
        lines.push_back({"harmonic", QString::number(given.harmonicNum)});
    }
    if (action == "sumChannelsAndFourier")
        lines.push_back({"sigma", QString::number(given.sigmaMultiple)});
    if (action == "sum4Dispersions") {
        QStringList dispersions;
        for (const double dispersion : given.dispersions)
            dispersions << numberText(dispersion);
        lines.push_back({"dispersions", dispersions.join(' ') + " pc/cm^3"});
    }
    if (action == "sumTimeDispersions")
        lines.push_back({"delta", numberText(given.startDelta) + " points"});
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
        const PointRange range = neededPoints(request, file.header());
        // The series of doubles of an action take less than the 33 channels it comes from; a
        // copy without steps takes as much again.
        const qint64 ray = memoryOfRay(file, range.end - range.first);
        return (request.parameters.deleteStep ? 3 : 2) * ray;
    };
    table.fill = [request](RecordingFile &file, const Control &control, TableResult &result) {
        return compute(request, file, control, result.table);
    };
    return tableWork(table);
}

} // namespace Batch
