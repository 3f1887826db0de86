#include "batch/tablework.h"

#include "batch/outputfiles.h"
#include "batch/picture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace Batch {

namespace {

std::vector<HeaderLine> requestOf(const TableRequest &request, const QString &input)
{
    std::vector<HeaderLine> lines = inputHeader(request.command, input);
    lines.insert(lines.end(), request.parameters.begin(), request.parameters.end());
    if (!request.output.picture.isEmpty())
        lines.push_back({"picture", QString("%1 %2x%3")
                                        .arg(request.output.picture)
                                        .arg(request.output.pictureSize.width())
                                        .arg(request.output.pictureSize.height())});
    return lines;
}

QString tablePath(const TableRequest &request, const QString &input)
{
    return outputPath(input, request.command, request.output, extensionOf(request.output.format));
}

QString picturePath(const TableRequest &request, const QString &input)
{
    return outputPath(input, request.command, request.output, request.output.picture);
}

bool isDone(const TableRequest &request, const QString &input)
{
    if (!request.output.picture.isEmpty() && !QFile::exists(picturePath(request, input)))
        return false;
    QFile file(tablePath(request, input));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray wanted = requestBytes(requestOf(request, input), request.output.format);
    return file.read(wanted.size()) == wanted;
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
        return {ExitCode::TryLater, "Stopped."};

    const OutputOptions &output = request.output;
    std::vector<OutputFile> files;
    if (!output.picture.isEmpty())
        files.push_back({picturePath(request, input),
                         pictureBytes(result.plot ? *result.plot : plotOf(result.table),
                                      output.picture, output.pictureSize)});
    files.push_back({tablePath(request, input), result.table.toBytes(output.format)});
    return writeTogether(files);
}

} // namespace

QString outputPath(const QString &input, const QString &command, const OutputOptions &output,
                   const QString &extension)
{
    const QFileInfo info(input);
    QString name = info.fileName() + "." + command;
    if (!output.tag.isEmpty())
        name += "." + output.tag;
    const QDir folder(output.folder.isEmpty() ? info.absolutePath() : output.folder);
    return QDir::cleanPath(folder.absoluteFilePath(name + "." + extension));
}

Work tableWork(const TableRequest &request)
{
    Work work;
    work.command = request.command;
    work.outputs = [request](const QString &input) {
        QStringList paths = {tablePath(request, input)};
        if (!request.output.picture.isEmpty())
            paths << picturePath(request, input);
        return paths;
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
