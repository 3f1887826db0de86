#include "batch/profilefiles.h"

#include "analyses/days/fourierdays.h"
#include "analyses/days/stacktables.h"
#include "batch/keyedwork.h"
#include "batch/outputfiles.h"
#include "batch/profilepictures.h"
#include "batch/programname.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace Batch {

using namespace Results;

namespace {

constexpr char daysTable[] = "days"; // the last one written; it tells what was asked
constexpr char profileTable[] = "average";
const QStringList curveTables = {profileTable, "growth", "periods", "dispersions"};
const QStringList colourPictures = {"days", "both"};

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
    for (const QString &what : curveTables)
        all << tablePath(what);
    all << tablePath("arrivals") << pathOf("arrivals", "tim") << tablePath(daysTable);
    if (!request.days.output.picture.isEmpty()) {
        for (const QString &what : curveTables + colourPictures)
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
    const QByteArray wanted = requestBytes(requestLines(), request.days.output.format);
    QFile file(tablePath(daysTable));
    const QStringList all = paths();
    return std::all_of(all.begin(), all.end(),
                       [](const QString &path) { return QFileInfo(path).isFile(); }) &&
           file.open(QIODevice::ReadOnly) && file.read(wanted.size()) == wanted;
}

std::vector<std::pair<QString, ResultTable>>
ProfileFiles::tablesOf(const Profiles::ProfileOutcome &outcome) const
{
    ResultTable table;
    table.request = requestLines();
    table.result = Profiles::outcomeLines(outcome, plan);
    std::vector<std::pair<QString, ResultTable>> tables;
    const auto add = [&](const QString &what, const std::vector<Column> &columns) {
        tables.emplace_back(what, table);
        tables.back().second.columns = columns;
    };
    add(profileTable, Profiles::profileColumns(outcome.stack));
    add("growth", Profiles::growthColumns(outcome.stack));
    add("periods", Profiles::scanColumns(outcome.scan.periods, "period", "s"));
    add("dispersions", Profiles::scanColumns(outcome.scan.dispersions, "dispersion", "pc/cm^3"));
    add("arrivals", Profiles::arrivalColumns(outcome, plan.parameters.site));
    add(daysTable, Profiles::daysColumns(outcome));
    for (const HeaderLine &line : Days::leftOutLines(set, plan.days.list))
        tables.back().second.result.push_back(line);
    return tables;
}

Failure ProfileFiles::addPictures(const std::vector<std::pair<QString, ResultTable>> &tables,
                                  const Profiles::ProfileOutcome &outcome,
                                  std::vector<FileContent> &files) const
{
    const OutputOptions &output = request.days.output;
    if (output.picture.isEmpty())
        return {};
    const QString key = requestKey(requestLines());
    std::vector<std::pair<QString, Plot::PictureBytes>> pictures;
    for (const auto &[what, table] : tables) {
        if (curveTables.contains(what))
            pictures.emplace_back(what, profileCurves(table, what, input(), output, key));
    }
    pictures.emplace_back("days", profileRows(outcome, input(), output, key));
    pictures.emplace_back("both", periodsAndDispersions(outcome, input(), output, key));
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
    const auto tables = tablesOf(outcome);
    std::vector<FileContent> files;
    if (Failure failure = addPictures(tables, outcome, files))
        return failure;
    QStringList names;
    for (const Profiles::ProfileDay &product : outcome.products)
        names << Days::dayName(product.begin);
    files.push_back({pathOf("arrivals", "tim"),
                     Profiles::timBytes(outcome.arrivals, names, plan.parameters.site)});
    for (const auto &[what, table] : tables)
        files.push_back({tablePath(what), table.toBytes(request.days.output.format)});
    return writeOutputs(files);
}

} // namespace Batch
