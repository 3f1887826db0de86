#include "batch/profilefiles.h"

#include "batch/keyedwork.h"
#include "batch/outputfiles.h"
#include "batch/programname.h"
#include "picture/profileplot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace Batch {

using namespace Results;

namespace {

constexpr char daysTable[] = "days"; // the last one written; it tells what was asked
const QStringList tables = {"average",     "profiles", "growth", "periods",
                            "dispersions", "arrivals", daysTable};
const QStringList pictures = {"average", "growth", "snr", "periods", "dispersions", "days", "both"};

} // namespace

ProfileFiles::ProfileFiles(const ProfileRequest &profileRequest, const RecordingSet &recordings,
                           const Profiles::ProfilePlan &profilePlan)
    : request(profileRequest), set(recordings), plan(profilePlan)
{}

QString ProfileFiles::input() const
{
    return QDir(request.days.folders.front())
        .absoluteFilePath(QString("m%1_r%2").arg(plan.parameters.module).arg(plan.parameters.ray));
}

QString ProfileFiles::pathOf(const QString &what, const QString &extension) const
{
    return outputPath(input(), "profile", request.days.output, what + "." + extension);
}

QString ProfileFiles::tablePath(const QString &what) const
{
    return pathOf(what, extensionOf(request.days.output.format));
}

QStringList ProfileFiles::paths() const
{
    QStringList all;
    for (const QString &what : tables)
        all << tablePath(what);
    all << pathOf("arrivals", "tim");
    if (!request.days.output.picture.isEmpty()) {
        for (const QString &what : pictures)
            all << pathOf(what, request.days.output.picture);
    }
    return all;
}

std::vector<HeaderLine> ProfileFiles::requestLines() const
{
    std::vector<HeaderLine> lines = {{"program", programName()}, {"command", "profile"}};
    for (const QString &folder : request.days.folders)
        lines.push_back({"folder", QDir(folder).absolutePath()});
    lines.push_back({"recordings", stateOf(set)});
    for (const HeaderLine &line : Profiles::parameterLines(plan.parameters))
        lines.push_back(line);
    // A file of the same name may have changed.
    for (const auto &[key, value] : {std::pair("ephemeris_f0", plan.ephemeris.frequency),
                                     std::pair("ephemeris_f1", plan.ephemeris.derivative),
                                     std::pair("ephemeris_f2", plan.ephemeris.second),
                                     std::pair("ephemeris_epoch", plan.ephemeris.epoch)})
        lines.push_back({key, numberText(value)});
    if (!request.days.firstDate.isEmpty() || !request.days.lastDate.isEmpty())
        lines.push_back({"dates", request.days.firstDate + ":" + request.days.lastDate});
    if (!request.days.daysOff.isEmpty())
        lines.push_back({"days_off", request.days.daysOff.join(',')});
    if (!request.days.output.picture.isEmpty())
        lines.push_back(pictureLine(request.days.output));
    return lines;
}

bool ProfileFiles::areDone() const
{
    return areMade(paths(), tablePath(daysTable), requestLines(), request.days.output.format);
}

Failure ProfileFiles::addPictures(const Profiles::ProfileOutcome &outcome,
                                  std::vector<FileContent> &files) const
{
    const OutputOptions &output = request.days.output;
    if (output.picture.isEmpty())
        return {};
    const QString key = requestKey(requestLines());
    std::vector<std::pair<QString, Plot::PictureBytes>> pictures;
    const auto addCurves = [&](const QString &what, PlotData plot) {
        plot.source = QStringList{input(), what};
        pictures.emplace_back(what, pictureOf(plot, output, key));
    };
    addCurves("average", Plot::averagePlot(outcome));
    addCurves("growth", Plot::growthPlot(outcome.stack));
    addCurves("snr", Plot::daysSnrPlot(outcome));
    addCurves("periods", Plot::scanPlot(outcome.scan, Plot::Scanned::Periods));
    addCurves("dispersions", Plot::scanPlot(outcome.scan, Plot::Scanned::Dispersions));
    const auto addRows = [&](const QString &what, Plot::RowPicture picture) {
        picture.key = key;
        pictures.emplace_back(
            what, Plot::drawingBytes(output.picture, Plot::drawingOf(picture, output.pictureSize,
                                                                     output.pictureScale)));
    };
    addRows("days", Plot::dayProfilesPicture(outcome, output.pictureSize));
    addRows("both", Plot::scanPicture(outcome.scan, output.pictureSize));
    for (const auto &[what, picture] : pictures) {
        const QString path = pathOf(what, output.picture);
        if (!picture.problem.isEmpty())
            return {ExitCode::TryLater, path + ": " + picture.problem + "."};
        files.push_back({path, picture.bytes});
    }
    return {};
}

Failure ProfileFiles::write(const Profiles::ProfileOutcome &outcome) const
{
    std::vector<FileContent> files;
    if (Failure failure = addPictures(outcome, files))
        return failure;
    files.push_back({pathOf("arrivals", "tim"), Profiles::timBytes(outcome, plan.parameters.site)});
    for (const auto &[what, table] : Profiles::profileTables(requestLines(), outcome, plan, set))
        files.push_back({tablePath(what), table.toBytes(request.days.output.format)});
    return writeOutputs(files);
}

} // namespace Batch
