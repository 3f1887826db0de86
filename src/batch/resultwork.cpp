#include "base/wholefile.h"
#include "batch/filework.h"
#include "batch/inputlist.h"
#include "batch/keyedwork.h"
#include "batch/outputfiles.h"
#include "data/resulttotext.h"
#include "picture/resultplot.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

// totext and plot.

namespace Batch {

using namespace Results;

namespace {

// A result is far smaller; what is not is no result.
constexpr qint64 largestResult = qint64(1) << 29;

Failure failureOf(const Tools::TextEnd &end, const QString &input)
{
    using Kind = Tools::TextEnd::Kind;
    const QString text = input + ": " + QString(end.text).replace('\n', ' ');
    switch (end.kind) {
    case Kind::BadInput:
        return {ExitCode::BadData, text};
    case Kind::CannotCreate:
        return {ExitCode::CannotCreate, text};
    case Kind::CannotRead:
    case Kind::CannotWrite:
        return {ExitCode::InputOutput, text};
    case Kind::Cancelled:
        return stopped();
    case Kind::Done:
        break;
    }
    return {};
}

Failure recordingToText(const QString &input, const QString &output, const QDateTime &modified,
                        const Control &control)
{
    RecordingFile file;
    if (Failure failure = openRecordingFile(file, input, control))
        return failure;
    SampleReadingHooks hooks;
    hooks.keepAlive = [&control] { return !control.isStopped(); };
    Stretch all;
    all.count = file.header().npoints;
    const StretchReading reading = file.read(all, hooks);
    if (!reading.whole())
        return Batch::failureOf(reading.end(), reading.reason());
    return failureOf(Tools::observationToText(*reading.whole(), output, control.progress,
                                              control.isStopped, modified),
                     input);
}

} // namespace

Work textWork(const OutputOptions &output)
{
    const auto textOf = [output](const QString &input) {
        return besideOrIn(input, output, QFileInfo(input).fileName() + ".txt");
    };
    Work work;
    work.command = "totext";
    work.outputs = [textOf](const QString &input) { return QStringList(textOf(input)); };
    // A text has no room for a key. It has the time of change of what it was made of instead.
    work.isDone = [textOf](const QString &input) {
        const QFileInfo text(textOf(input));
        return text.isFile() && QFileInfo(input).isFile() &&
               text.lastModified() == QFileInfo(input).lastModified();
    };
    work.memory = [](const QString &input) {
        RecordingFile file;
        if (Tools::isResultFile(input) || !file.open(input))
            return qint64(0);
        const ObservationData &header = file.header();
        return std::max<qint64>(
            0, memoryToRead({header.npoints, header.modules, header.channels, header.rays}));
    };
    work.run = [textOf](const QString &input, const Control &control) -> Failure {
        const QString path = textOf(input);
        const QDateTime modified = QFileInfo(input).lastModified();
        QFile file(input);
        if (Failure failure = openInput(file))
            return failure;
        // Says in plain words what speaks against an output.
        if (Failure failure = makeFolderOf(path))
            return failure;
        WholeFile probe;
        if (Failure failure = failureOf(probe.open(path)))
            return failure;
        if (!Tools::isResultFile(input))
            return recordingToText(input, path, modified, control);
        return failureOf(
            Tools::resultToText(input, path, control.progress, control.isStopped, modified), input);
    };
    return work;
}

Work plotWork(const OutputOptions &output)
{
    const auto pathOf = [output](const QString &input) {
        return besideOrIn(input, output,
                          QFileInfo(input).completeBaseName() + "." + output.picture);
    };
    const std::vector<HeaderLine> parameters = {pictureLine(output)};
    Work work = keyedWork(
        "plot", parameters, [pathOf](const QString &input) { return QStringList(pathOf(input)); },
        pathOf);
    work.run = [=](const QString &input, const Control &control) -> Failure {
        const QString key = requestKey(requestOf("plot", input, parameters));
        QFile file(input);
        if (Failure failure = openInput(file))
            return failure;
        const ReadTable read = file.size() > largestResult ? ReadTable{{}, "it is too long", {}}
                                                           : readTable(file.readAll());
        if (!read.problem.isEmpty())
            return {ExitCode::BadData, input + " cannot be drawn: " + read.problem + "."};
        if (!Plot::canBeDrawn(read.table))
            return {ExitCode::BadData,
                    input + " cannot be drawn: it holds neither curves nor candidates."};
        const PlotData plot = Plot::plotOf(read.table);
        control.progress(50);
        const Plot::PictureBytes picture = pictureOf(plot, output, key);
        if (!picture.problem.isEmpty())
            return {ExitCode::TryLater, input + ": " + picture.problem + "."};
        return writeOutputs({{pathOf(input), picture.bytes}});
    };
    return work;
}

} // namespace Batch
