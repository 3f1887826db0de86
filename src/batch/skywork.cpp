#include "batch/skywork.h"

#include "analyses/days/stacktables.h"
#include "analyses/sky/skyproduct.h"
#include "analyses/sky/skyrun.h"
#include "analyses/sky/skytables.h"
#include "batch/dayswork.h"
#include "batch/keyedwork.h"
#include "batch/outputfiles.h"
#include "batch/programname.h"
#include "jobs/items.h"
#include "picture/mappicture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

// map and search: stacks of all cells, and what is made of them.

namespace Batch {

using namespace Results;

namespace {

constexpr char defaultName[] = "sky";
constexpr double bytesPerMegabyte = 1e6;

Days::DayList leftOutOf(const Sky::SkyPlan &plan)
{
    Days::DayList list;
    list.leftOut = plan.leftOut;
    return list;
}

class SkyWork {
public:
    SkyWork(const SkyRequest &skyRequest, const RecordingSet &recordings,
            const Sky::SkyPlan &skyPlan, const QString &keptFolder, const RunOptions &runOptions)
        : request(skyRequest), set(recordings), plan(skyPlan), kept(keptFolder), options(runOptions)
    {}

    // Stands for all that is added up; its name is that of the results.
    QString input() const { return QDir(request.folders.front()).absoluteFilePath(defaultName); }

    Work work()
    {
        Work made;
        made.command = command();
        made.outputs = [this](const QString &) { return paths(); };
        made.isDone = [this](const QString &) { return isDone(); };
        made.memory = [this](const QString &) { return Sky::memoryOf(plan, options.jobs); };
        made.run = [this](const QString &, const Control &control) { return run(control); };
        return made;
    }

    // What a user wants to know before hours of work begin.
    QString announcement() const
    {
        const int side = options.jobs > 0 ? options.jobs : Jobs::threadCount();
        return QString("%1 days, %2 rays, %3 starts, %4 dispersions: %5 MB are read, %6 MB of "
                       "memory taken, about %7 of work for %8 threads, less what is kept in %9.")
            .arg(plan.passages.size())
            .arg(plan.rays.size())
            .arg(plan.starts)
            .arg(plan.dispersions.size())
            .arg(double(plan.bytesRead(set)) / bytesPerMegabyte, 0, 'f', 0)
            .arg(double(Sky::memoryOf(plan, options.jobs)) / bytesPerMegabyte, 0, 'f', 0)
            .arg(timeText(Sky::secondsOf(plan, options.jobs)))
            .arg(side)
            .arg(kept);
    }

private:
    static QString timeText(double seconds)
    {
        constexpr double minute = 60;
        constexpr double hour = 3600;
        if (seconds < 2 * minute)
            return QString("%1 s").arg(seconds, 0, 'f', 0);
        if (seconds < 2 * hour)
            return QString("%1 min").arg(seconds / minute, 0, 'f', 0);
        return QString("%1 h").arg(seconds / hour, 0, 'f', 1);
    }

    QString command() const { return request.analysis->command; }
    QString suffix() const { return plan.product == Sky::Product::Ffa ? "-ffa" : ""; }
    bool isMap() const { return request.analysis->flags.map; }
    bool isPart() const { return request.parts > 1; }
    QString name() const { return request.name.isEmpty() ? defaultName + suffix() : request.name; }

    // The name of a map does not depend on what is in it, so that it is known before the work.
    QString mapPath() const
    {
        Sky::SkyMap map;
        map.columns = Sky::methodOf(plan.product).columns(plan);
        map.rows.resize(std::size_t(request.parameters.over == "dms" ? plan.dispersions.size()
                                                                     : std::size_t(plan.starts)));
        QString file = Sky::mapFileName(plan, map, name());
        if (file.isEmpty())
            file = name() + ".txt";
        const QFileInfo parts(file);
        const QString tag = request.output.tag.isEmpty() ? QString() : "." + request.output.tag;
        return besideOrIn(input(), request.output,
                          parts.completeBaseName() + tag + "." +
                              extensionOf(request.output.format));
    }

    QString tablePath() const
    {
        return isMap() ? mapPath()
                       : outputPath(input(), command() + suffix(), request.output,
                                    "candidates." + extensionOf(request.output.format));
    }

    QString picturePath() const
    {
        const QFileInfo table(tablePath());
        return table.dir().filePath(table.completeBaseName() + "." + request.output.picture);
    }

    bool hasPicture() const { return isMap() && !request.output.picture.isEmpty(); }

    QStringList paths() const
    {
        if (isPart())
            return {QDir(kept).filePath(Sky::stackFileName(plan, request.part, request.parts))};
        return hasPicture() ? QStringList{tablePath(), picturePath()} : QStringList{tablePath()};
    }

    std::vector<HeaderLine> requestLines() const
    {
        std::vector<HeaderLine> lines = {{"program", programName()}, {"command", command()}};
        for (const QString &folder : request.folders)
            lines.push_back({"folder", QDir(folder).absolutePath()});
        for (const std::vector<HeaderLine> &more :
             {Sky::stateLines(set, plan),
              Sky::parameterLines(*request.analysis, request.parameters)})
            lines.insert(lines.end(), more.begin(), more.end());
        if (hasPicture())
            lines.push_back(pictureLine(request.output));
        return lines;
    }

    bool isDone() const
    {
        if (isPart())
            return false; // the run looks itself what its stack holds
        return areMade(paths(), tablePath(), requestLines(), request.output.format);
    }

    Failure run(const Control &control)
    {
        Sky::RunChoice choice;
        choice.folder = kept;
        choice.part = request.part;
        choice.parts = request.parts;
        choice.threads = options.jobs;
        choice.isNew = options.force;
        const Sky::SkyRun done = Sky::runSky(set, plan, choice, control);
        if (!done.problem.isEmpty())
            return {ExitCode::BadData, done.problem};
        for (const FieldProblem &bad : done.badPassages)
            control.remark(bad.field + ": " + bad.text);
        if (!options.quiet)
            control.remark(QString("%1 MB of recordings were read; %2 days were kept.")
                               .arg(double(done.bytesRead) / bytesPerMegabyte, 0, 'f', 1)
                               .arg(done.keptPassages));
        if (done.wasStopped || control.isStopped())
            return {ExitCode::TryLater, "Stopped; what was added up is kept."};
        if (isPart())
            return partEnd(done);
        return isMap() ? writeMap(done) : writeSearch(done, control);
    }

    Failure partEnd(const Sky::SkyRun &done) const
    {
        const QString path = paths().front();
        if (done.stack.added.empty() && !done.badPassages.empty())
            return {ExitCode::BadData, done.badPassages.front().text};
        if (!done.stack.added.empty() && !QFileInfo::exists(path))
            return {ExitCode::CannotCreate,
                    path + " was not written. Check the folder, its permissions and the room on "
                           "the disk, or choose another with --kept."};
        return {};
    }

    ResultTable tableOf(const Sky::SkyRun &done, const std::vector<HeaderLine> &lines,
                        std::vector<Column> columns) const
    {
        ResultTable table;
        table.request = requestLines();
        table.result = Sky::planLines(plan, done);
        table.result.insert(table.result.end(), lines.begin(), lines.end());
        for (const HeaderLine &line : Days::leftOutLines(set, leftOutOf(plan)))
            table.result.push_back(line);
        table.columns = std::move(columns);
        return table;
    }

    FileContent fileOf(const ResultTable &table) const
    {
        return {tablePath(), {}, [&table, this](WholeFile &out) {
                    return writeTable(table, request.output.format, out);
                }};
    }

    Failure writeSearch(const Sky::SkyRun &done, const Control &control) const
    {
        Sky::SkySearch search = Sky::searchSky(done.stack, plan, options.jobs, control);
        if (control.isStopped())
            return {ExitCode::TryLater, "Stopped; what was added up is kept."};
        if (!search.problem.isEmpty())
            return {ExitCode::BadData, search.problem};
        takeVerdicts(search, control);
        const ResultTable table =
            tableOf(done, Sky::searchLines(search), Sky::candidateColumns(search.candidates, plan));
        return writeOutputs({fileOf(table)});
    }

    // What a person wrote into the table that stands there already.
    void takeVerdicts(Sky::SkySearch &search, const Control &control) const
    {
        QFile file(tablePath());
        if (!file.open(QIODevice::ReadOnly))
            return;
        const Sky::CandidatesTable older = Sky::readCandidates(file.readAll(), plan);
        if (older.problem.isEmpty())
            Sky::takeVerdicts(older, plan, search);
        else
            control.remark(tablePath() + ": " + older.problem +
                           " Its verdicts are not taken over.");
    }

    Plot::PictureBytes pictureOf(const std::shared_ptr<const Sky::SkyMap> &map) const
    {
        Plot::MapPicture picture = Plot::mapPicture(plan, {map});
        picture.key = requestKey(requestLines());
        return Plot::drawingBytes(
            request.output.picture,
            Plot::mapDrawing(picture, request.output.pictureSize, request.output.pictureScale));
    }

    Failure writeMap(const Sky::SkyRun &done) const
    {
        const auto map = std::make_shared<const Sky::SkyMap>(
            Sky::mapOf(done.stack, plan, Sky::mapChoiceOf(plan).choice));
        if (!map->problem.isEmpty())
            return {ExitCode::BadData, map->problem};
        const ResultTable table = tableOf(done, Sky::mapLines(*map, plan), Sky::mapColumns(*map));
        std::vector<FileContent> files;
        if (hasPicture()) {
            const Plot::PictureBytes picture = pictureOf(map);
            if (!picture.problem.isEmpty())
                return {ExitCode::TryLater, picturePath() + ": " + picture.problem + "."};
            files.push_back({picturePath(), picture.bytes});
        }
        files.push_back(fileOf(table));
        return writeOutputs(files);
    }

    const SkyRequest &request;
    const RecordingSet &set;
    const Sky::SkyPlan &plan;
    const QString kept;
    const RunOptions &options;
};

// Why the request cannot be worked on at all.
Failure refusal(const SkyRequest &request, const RecordingSet &set, const Sky::SkyPlan &plan)
{
    std::vector<FieldProblem> problems = plan.problems;
    if (problems.empty() && plan.passages.empty())
        return {
            ExitCode::BadData,
            QString("None of %1 recordings gives a day that can be used.").arg(set.entries.size())};
    if (problems.empty() && request.analysis->flags.map)
        problems = Sky::mapChoiceOf(plan).problems;
    if (problems.empty() && request.analysis->flags.map && request.name.isEmpty() &&
        Sky::mapFileName(plan, {}, defaultName).isEmpty())
        problems.push_back({"", "--name: with this base line a map has no name of its own. Give "
                                "one."});
    if (problems.empty())
        return {};
    return refusalOf(problems.front(), *request.analysis);
}

} // namespace

ExitCode workOnSky(const SkyRequest &request, const RunOptions &options)
{
    const auto told = [](const Failure &failure) {
        printError(failure.text);
        return failure.code;
    };
    RecordingSet set;
    if (const Failure failure = readFolders(request.folders, set))
        return told(failure);
    Sky::SkyPlan plan =
        Sky::planSky(set, request.parameters, request.analysis->product, request.dates);
    if (const Failure failure = readInterference(request.interference, plan.interference))
        return told(failure);
    const Failure refused = refusal(request, set, plan);
    if (!options.quiet || refused) {
        for (const QString &remark : plan.remarks + remarksOn(set, leftOutOf(plan)))
            printError(remark);
    }
    if (refused)
        return told(refused);
    const QString kept =
        request.kept.isEmpty() ? Days::keptFolder(request.folders.front()).path : request.kept;
    SkyWork sky(request, set, plan, kept, options);
    if (!options.quiet)
        printError(sky.announcement());
    return runWork(sky.work(), {sky.input()}, options);
}

} // namespace Batch
