#include "batch/tablework.h"

#include "batch/keyedwork.h"
#include "batch/outputfiles.h"
#include "picture/resultplot.h"

#include <QFile>
#include <QFileInfo>

namespace Batch {

using namespace Results;

namespace {

std::vector<HeaderLine> requestOf(const TableRequest &request, const QString &input)
{
    std::vector<HeaderLine> parameters = request.parameters;
    if (!request.output.picture.isEmpty())
        parameters.push_back(pictureLine(request.output));
    return Batch::requestOf(request.command, input, parameters);
}

QString tablePath(const TableRequest &request, const QString &input)
{
    return outputPath(input, request.command, request.output, extensionOf(request.output.format));
}

// The files of the plot, and of the rows of colours where there are any.
QStringList picturePaths(const TableRequest &request, const QString &input)
{
    const QString &kind = request.output.picture;
    QStringList paths;
    if (kind.isEmpty())
        return paths;
    paths << outputPath(input, request.command, request.output, kind);
    if (!request.rowPicture.isEmpty())
        paths << outputPath(input, request.command, request.output,
                            request.rowPicture + "." + kind);
    return paths;
}

bool isDone(const TableRequest &request, const QString &input)
{
    const std::vector<HeaderLine> lines = requestOf(request, input);
    const QString key = requestKey(lines);
    for (const QString &path : picturePaths(request, input)) {
        if (!holdsKey(path, key))
            return false;
    }
    QFile file(tablePath(request, input));
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray wanted = requestBytes(lines, request.output.format);
    return file.read(wanted.size()) == wanted;
}

Plot::PictureBytes rowPictureOf(Plot::RowPicture picture, const OutputOptions &output,
                                const QString &key)
{
    picture.key = key;
    return Plot::drawingBytes(output.picture,
                              Plot::drawingOf(picture, output.pictureSize, output.pictureScale));
}

Failure makeTable(const TableRequest &request, const QString &input, const Control &control)
{
    RecordingFile file;
    if (Failure failure = openRecordingFile(file, input, control))
        return failure;
    TableResult result;
    result.table.request = requestOf(request, input);
    if (Failure failure = request.fill(file, control, result))
        return failure;
    if (control.isStopped())
        return stopped();

    for (const auto *const lines : {&result.table.request, &result.table.result})
        if (Failure failure = checkHeader(*lines, input))
            return failure;

    const OutputOptions &output = request.output;
    const QString key = requestKey(result.table.request);
    std::vector<FileContent> files;
    for (const QString &path : picturePaths(request, input)) {
        const Plot::PictureBytes picture =
            files.empty()
                ? pictureOf(result.plot ? *result.plot : Plot::plotOf(result.table), output, key)
                : rowPictureOf(result.rows.value_or(Plot::RowPicture()), output, key);
        if (!picture.problem.isEmpty())
            return {ExitCode::TryLater, input + ": " + picture.problem + "."};
        files.push_back({path, picture.bytes});
    }
    files.push_back({tablePath(request, input), {}, [&](WholeFile &out) {
                         return writeTable(result.table, output.format, out);
                     }});
    return writeOutputs(files);
}

} // namespace

HeaderLine pictureLine(const OutputOptions &output)
{
    const QString scale =
        output.pictureScale == 1 ? QString() : QString("@%1").arg(output.pictureScale);
    return {"picture", QString("%1 %2x%3")
                               .arg(output.picture)
                               .arg(output.pictureSize.width())
                               .arg(output.pictureSize.height()) +
                           scale};
}

Plot::PictureBytes pictureOf(const PlotData &plot, const OutputOptions &output, const QString &key)
{
    const Plot::CurveBlocks blocks = Plot::blocksOf(plot);
    Plot::PictureContent content = {plot, blocks, output.pictureSize};
    content.hasLegend = true;
    content.comment = key;
    content.pngScale = output.pictureScale;
    return Plot::pictureBytes(output.picture, content);
}

QString outputPath(const QString &input, const QString &command, const OutputOptions &output,
                   const QString &extension)
{
    QString name = QFileInfo(input).fileName() + "." + command;
    if (!output.tag.isEmpty())
        name += "." + output.tag;
    return besideOrIn(input, output, name + "." + extension);
}

Work tableWork(const TableRequest &request)
{
    Work work;
    work.command = request.command;
    work.outputs = [request](const QString &input) {
        return QStringList(tablePath(request, input)) + picturePaths(request, input);
    };
    work.isDone = [request](const QString &input) { return isDone(request, input); };
    work.memory = [request](const QString &input) {
        // A recording that ends early is refused; its counts tell nothing of the memory.
        RecordingFile file;
        return file.open(input) && file.header().missingPoints == 0 ? request.memory(file) : 0;
    };
    work.run = [request](const QString &input, const Control &control) {
        return makeTable(request, input, control);
    };
    return work;
}

} // namespace Batch
