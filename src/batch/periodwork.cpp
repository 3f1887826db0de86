#include "batch/periodwork.h"

#include "analyses/timing/periodtables.h"
#include "batch/inputlist.h"
#include "batch/keyedwork.h"
#include "batch/outputfiles.h"
#include "batch/programname.h"
#include "picture/periodplot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace Batch {

using namespace Results;

namespace {

constexpr qint64 largestFile = qint64(1) << 26;
const QStringList curveFiles = {"rank", "residuals"};

QString commandName()
{
    return Timing::periodAnalysis().command;
}

std::vector<HeaderLine> requestLines(const PeriodRequest &request, const QString &input)
{
    std::vector<HeaderLine> parameters = Timing::parameterLines(request.parameters);
    if (!request.output.picture.isEmpty())
        parameters.push_back(pictureLine(request.output));
    if (request.parameters.times.isEmpty())
        return requestOf(commandName(), input, parameters);
    std::vector<HeaderLine> lines = {{"program", programName()}, {"command", commandName()}};
    lines.insert(lines.end(), parameters.begin(), parameters.end());
    return lines;
}

QString pathOf(const PeriodRequest &request, const QString &input, const QString &extension)
{
    return outputPath(input, commandName(), request.output, extension);
}

QString tablePath(const PeriodRequest &request, const QString &input, const QString &what = {})
{
    return pathOf(request, input,
                  (what.isEmpty() ? QString() : what + ".") + extensionOf(request.output.format));
}

// The table of candidates is written last: it says that the others are there.
QStringList outputsOf(const PeriodRequest &request, const QString &input)
{
    QStringList paths;
    for (const QString &what : curveFiles)
        paths << tablePath(request, input, what);
    if (!request.output.picture.isEmpty()) {
        for (const QString &what : curveFiles)
            paths << pathOf(request, input, what + "." + request.output.picture);
    }
    return paths << tablePath(request, input);
}

bool isDone(const PeriodRequest &request, const QString &input)
{
    const QByteArray wanted = requestBytes(requestLines(request, input), request.output.format);
    const QStringList all = outputsOf(request, input);
    QFile file(tablePath(request, input));
    return std::all_of(all.begin(), all.end(),
                       [](const QString &path) { return QFileInfo(path).isFile(); }) &&
           file.open(QIODevice::ReadOnly) && file.read(wanted.size()) == wanted;
}

Failure addPictures(const PeriodRequest &request, const QString &input,
                    const Timing::PeriodSearch &search, std::vector<FileContent> &files)
{
    const QString key = requestKey(requestLines(request, input));
    const PlotData plots[] = {Plot::periodRanks(search, request.parameters.chance),
                              Plot::periodResiduals(search)};
    for (int i = 0; i < curveFiles.size(); ++i) {
        const QString path = pathOf(request, input, curveFiles[i] + "." + request.output.picture);
        const Plot::PictureBytes picture = pictureOf(plots[i], request.output, key);
        if (!picture.problem.isEmpty())
            return {ExitCode::TryLater, path + ": " + picture.problem + "."};
        files.push_back({path, picture.bytes});
    }
    return {};
}

Failure write(const PeriodRequest &request, const QString &input,
              const Timing::PeriodSearch &search)
{
    ResultTable table;
    table.request = requestLines(request, input);
    table.result = Timing::outcomeLines(search);
    std::vector<FileContent> files;
    const auto add = [&](const QString &what, const std::vector<Column> &columns) {
        table.columns = columns;
        files.push_back({tablePath(request, input, what), table.toBytes(request.output.format)});
    };
    add(curveFiles[0], Timing::curveColumns(search));
    add(curveFiles[1], Timing::timeColumns(search));
    if (!request.output.picture.isEmpty()) {
        if (Failure failure = addPictures(request, input, search, files))
            return failure;
    }
    add({}, Timing::familyColumns(search));
    return writeOutputs(files);
}

Failure findPeriod(const PeriodRequest &request, const QString &input, const Control &control)
{
    QByteArray bytes;
    const QString name = request.parameters.times.isEmpty() ? input : QString("--times");
    if (request.parameters.times.isEmpty()) {
        if (Failure failure = readInput(input, largestFile, bytes))
            return failure;
    }
    const Timing::ArrivalTimes times = Timing::timesFor(request.parameters, bytes);
    if (!times.problem.isEmpty())
        return {ExitCode::BadData, name + ": " + times.problem};
    const Timing::PeriodSearch search = Timing::searchPeriod(times, request.parameters, control);
    if (search.isStopped)
        return stopped();
    if (!search.problem.isEmpty())
        return {ExitCode::BadData, name + ": " + search.problem};
    for (const QString &remark : search.remarks + search.count.remarks)
        control.remark(remark);
    control.print(QFileInfo(name).fileName() + ": " + search.verdict + "\n");
    return write(request, input, search);
}

} // namespace

Work periodWork(const PeriodRequest &request)
{
    Work work;
    work.command = commandName();
    work.outputs = [request](const QString &input) { return outputsOf(request, input); };
    work.isDone = [request](const QString &input) { return isDone(request, input); };
    work.memory = [](const QString &) { return qint64(0); };
    work.run = [request](const QString &input, const Control &control) {
        return findPeriod(request, input, control);
    };
    return work;
}

QString typedTimesName()
{
    return "typed-times";
}

} // namespace Batch
