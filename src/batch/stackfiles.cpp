#include "batch/stackfiles.h"

#include "analyses/days/stacktables.h"
#include "batch/keyedwork.h"
#include "batch/outputfiles.h"
#include "batch/programname.h"
#include "batch/stackpictures.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace Batch {

using namespace Results;

StackFiles::StackFiles(const DaysRequest &daysRequest, const FoundDays &foundDays,
                       const Days::FourierDaysParameters &ofPlan,
                       const std::vector<Days::Interference> &leftOut)
    : request(daysRequest), found(foundDays), parameters(ofPlan), interference(leftOut)
{}

QString StackFiles::input() const
{
    return QDir(request.folders.front())
        .absoluteFilePath(QString("m%1_r%2").arg(parameters.module).arg(parameters.ray));
}

QString StackFiles::pathOf(const QString &what, const QString &extension) const
{
    return outputPath(input(), parameters.isFfa ? "stack-ffa" : "stack", request.output,
                      what + "." + extension);
}

QString StackFiles::tablePath(const QString &what) const
{
    return pathOf(what, extensionOf(request.output.format));
}

QString StackFiles::curveName() const
{
    return parameters.isFfa ? "periods" : "spectrum";
}

QStringList StackFiles::paths() const
{
    QStringList all = {tablePath(curveName()), tablePath("lines"), tablePath("days")};
    if (!request.output.picture.isEmpty())
        all << pathOf(curveName(), request.output.picture)
            << pathOf("days", request.output.picture);
    return all;
}

std::vector<HeaderLine> StackFiles::requestLines() const
{
    std::vector<HeaderLine> lines = {{"program", programName()}, {"command", "stack"}};
    for (const QString &folder : request.folders)
        lines.push_back({"folder", QDir(folder).absolutePath()});
    lines.push_back({"recordings", stateOf(found.set)});
    for (const HeaderLine &line : Days::parameterLines(parameters))
        lines.push_back(line);
    if (!request.firstDate.isEmpty() || !request.lastDate.isEmpty())
        lines.push_back({"dates", request.firstDate + ":" + request.lastDate});
    lines.push_back({"all_days", request.allDays ? "yes" : "no"});
    if (!request.daysOff.isEmpty())
        lines.push_back({"days_off", request.daysOff.join(',')});
    for (const Days::Interference &entry : interference)
        lines.push_back({"interference", entry.text()});
    lines.push_back({"saves_spectra", request.savesSpectra ? "yes" : "no"});
    if (!request.output.picture.isEmpty())
        lines.push_back(pictureLine(request.output));
    return lines;
}

bool StackFiles::areDone() const
{
    return areMade(paths(), tablePath("days"), requestLines(), request.output.format);
}

Failure StackFiles::addPictures(const Days::DaySpectra &spectra, const Days::StackOutcome &outcome,
                                std::vector<FileContent> &files) const
{
    const OutputOptions &output = request.output;
    if (output.picture.isEmpty())
        return {};
    const StackPictureText text = {input(), requestKey(requestLines())};
    const std::pair<QString, Plot::PictureBytes> pictures[] = {
        {curveName(), curvePicture(outcome.stack, output, text)},
        {"days", daysPicture(spectra.days(), outcome.choice.days, outcome.stack, output, text)}};
    for (const auto &[what, picture] : pictures) {
        const QString path = pathOf(what, output.picture);
        if (!picture.problem.isEmpty())
            return {ExitCode::TryLater, path + ": " + picture.problem + "."};
        files.push_back({path, picture.bytes});
    }
    return {};
}

Failure StackFiles::write(const Days::DaySpectra &spectra, const Days::StackOutcome &outcome) const
{
    std::vector<FileContent> files;
    if (Failure failure = addPictures(spectra, outcome, files))
        return failure;
    if (request.savesSpectra) {
        const QFileInfo beside(tablePath("days"));
        files.push_back({beside.dir().filePath(Days::spectraFileName(spectra.days(), parameters)),
                         Days::spectraBytes(spectra.days(), parameters)});
    }
    const auto tables = Days::stackTables(requestLines(), spectra, outcome, found.set);
    for (const auto &[what, table] : tables) {
        const ResultTable &written = table;
        files.push_back({tablePath(what), {}, [&written, this](WholeFile &out) {
                             return writeTable(written, request.output.format, out);
                         }});
    }
    return writeOutputs(files);
}

} // namespace Batch
