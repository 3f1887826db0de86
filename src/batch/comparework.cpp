#include "batch/comparework.h"

#include "analyses/compare/comparetables.h"
#include "analyses/days/stacktables.h"
#include "batch/keyedwork.h"
#include "batch/outputfiles.h"
#include "batch/programname.h"
#include "jobs/items.h"
#include "picture/compareplot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace Batch {

namespace {

using Compare::CompareDay;
using Compare::CompareProducts;
using Results::HeaderLine;
using Results::ResultTable;

class CompareWork {
public:
    CompareWork(const CompareRequest &compareRequest, const RecordingSet &recordings,
                const Compare::ComparePlan &comparePlan, const RunOptions &runOptions)
        : request(compareRequest), set(recordings), plan(comparePlan),
          parameters(Compare::usedParameters(compareRequest.parameters, comparePlan)),
          kept(request.kept.isEmpty() ? Days::keptFolder(request.folders.front())
                                      : Days::KeptFolder{request.kept, false}),
          options(runOptions)
    {}

    QString input() const
    {
        return QDir(request.folders.front())
            .absoluteFilePath(QString("m%1_r%2").arg(parameters.module).arg(parameters.ray));
    }

    Work work() const
    {
        Work made;
        made.command = Compare::compareAnalysis().command;
        made.outputs = [this](const QString &) { return paths(); };
        made.isDone = [this](const QString &) { return areDone(); };
        made.memory = [this](const QString &) { return memory(); };
        made.run = [this](const QString &, const Control &control) { return run(control); };
        return made;
    }

private:
    QString pathOf(const QString &what, const QString &extension) const
    {
        return outputPath(input(), Compare::compareAnalysis().command, request.output,
                          what + "." + extension);
    }

    QString tablePath(const QString &what) const
    {
        return pathOf(what, extensionOf(request.output.format));
    }

    QStringList paths() const
    {
        QStringList all = {tablePath("mean"), tablePath("differences"), tablePath("days")};
        if (!request.output.picture.isEmpty())
            all << pathOf("mean", request.output.picture) << pathOf("days", request.output.picture);
        return all;
    }

    std::vector<HeaderLine> requestLines() const
    {
        std::vector<HeaderLine> lines = {{"program", programName()},
                                         {"command", Compare::compareAnalysis().command}};
        for (const QString &folder : request.folders)
            lines.push_back({"folder", QDir(folder).absolutePath()});
        lines.push_back({"recordings", stateOf(set)});
        for (const HeaderLine &line : Compare::parameterLines(parameters))
            lines.push_back(line);
        if (!request.daysOff.isEmpty())
            lines.push_back({"days_off", request.daysOff.join(',')});
        if (!request.output.picture.isEmpty())
            lines.push_back(pictureLine(request.output));
        return lines;
    }

    bool areDone() const
    {
        return areMade(paths(), tablePath("days"), requestLines(), request.output.format);
    }

    qint64 memory() const
    {
        const qint64 bands = qint64(plan.days.header.fbands.size()) + 1;
        const qint64 points =
            qint64(plan.points()) + plan.days.choice.pointsAfter + plan.days.choice.pointsBefore;
        const int side = options.jobs > 0 ? options.jobs : Jobs::threadCount();
        return Compare::bytesOf(plan) +
               2 * side * points * bands * plan.days.rays * qint64(sizeof(float));
    }

    Failure run(const Control &control) const
    {
        std::vector<bool> counts;
        if (Failure failure = countDays(request.daysOff, plan.days.list, counts))
            return failure;
        CompareProducts products = {parameters, plan, kept, {}};
        if (Failure failure = readDays(control, products))
            return failure;
        const auto comparison =
            Compare::compareDays(products, counts, parameters.byChance, control);
        if (!comparison)
            return stopped();
        // The days are told even where they are too few to be compared.
        if (!comparison->problem.isEmpty()) {
            if (comparison->days == 0)
                return {ExitCode::BadData, comparison->problem + reasonOf(products)};
            control.remark(comparison->problem + reasonOf(products));
        }
        return write(products, *comparison, counts);
    }

    Failure readDays(const Control &control, CompareProducts &products) const
    {
        const auto days = plan.days.list.days.size();
        products.rays.assign(std::size_t(plan.days.rays), std::vector<CompareDay>(days));
        Jobs::Control whole = control;
        whole.progress = [&control](int percent) { control.progress(percent * 9 / 10); };
        const auto endings =
            Jobs::runItems(int(days), options.jobs, whole, [&](int item, const Jobs::Control &own) {
                std::vector<CompareDay> rays =
                    Compare::readDay(set, plan, item, parameters, kept.path, own);
                for (std::size_t ray = 0; ray < rays.size(); ++ray)
                    products.rays[ray][std::size_t(item)] = std::move(rays[ray]);
            });
        for (std::size_t i = 0; i < endings.size(); ++i) {
            if (endings[i].kind == Jobs::Ending::Stopped || control.isStopped())
                return {ExitCode::TryLater, "Stopped; the series that were made are kept."};
            if (endings[i].kind == Jobs::Ending::Failed)
                products.rays.front()[i].problem = endings[i].problem;
        }
        return {};
    }

    // Why the first of the days that fail does.
    static QString reasonOf(const CompareProducts &products)
    {
        for (const CompareDay &day : products.days()) {
            if (!day.problem.isEmpty())
                return " " + day.problem;
        }
        return {};
    }

    Failure write(const CompareProducts &products, const Compare::Comparison &comparison,
                  const std::vector<bool> &counts) const
    {
        ResultTable table;
        table.request = requestLines();
        table.result = Compare::comparisonLines(products, comparison);
        std::vector<std::pair<QString, ResultTable>> tables = {
            {"mean", table}, {"differences", table}, {"days", table}};
        tables[0].second.columns = Compare::meanColumns(plan, comparison);
        tables[1].second.columns = Compare::differencesColumns(products, comparison);
        tables[2].second.columns = Compare::daysColumns(products, comparison, counts);
        for (const HeaderLine &line : Days::leftOutLines(set, plan.days.list))
            tables[2].second.result.push_back(line);
        std::vector<FileContent> files;
        if (Failure failure = addPictures(products, comparison, counts, files))
            return failure;
        for (const auto &[what, written] : tables)
            files.push_back({tablePath(what), {}, [&written, this](WholeFile &out) {
                                 return writeTable(written, request.output.format, out);
                             }});
        return writeOutputs(files);
    }

    Failure addPictures(const CompareProducts &products, const Compare::Comparison &comparison,
                        const std::vector<bool> &counts, std::vector<FileContent> &files) const
    {
        const OutputOptions &output = request.output;
        if (output.picture.isEmpty())
            return {};
        const QString key = requestKey(requestLines());
        PlotData mean = Plot::meanDayPlot(plan, comparison);
        mean.source = QStringList{input(), mean.names.front()};
        Plot::RowPicture days = Plot::comparedDaysPicture(products, counts, output.pictureSize);
        days.title = QString("%1, %2 days").arg(input()).arg(days.rows);
        days.key = key;
        const std::pair<QString, Plot::PictureBytes> pictures[] = {
            {"mean", pictureOf(mean, output, key)},
            {"days", Plot::drawingBytes(output.picture, Plot::drawingOf(days, output.pictureSize,
                                                                        output.pictureScale))}};
        for (const auto &[what, picture] : pictures) {
            const QString path = pathOf(what, output.picture);
            if (!picture.problem.isEmpty())
                return {ExitCode::TryLater, path + ": " + picture.problem + "."};
            files.push_back({path, picture.bytes});
        }
        return {};
    }

    const CompareRequest &request;
    const RecordingSet &set;
    const Compare::ComparePlan &plan;
    const Compare::CompareParameters parameters; // with the module and ray of the plan
    const Days::KeptFolder kept;
    const RunOptions &options;
};

} // namespace

ExitCode compareDays(const CompareRequest &request, const RunOptions &options)
{
    const auto failed = [](const Failure &failure) {
        printError(failure.text);
        return failure.code;
    };
    RecordingSet set;
    if (const Failure failure = readFolders(request.folders, set))
        return failed(failure);
    const Compare::ComparePlan plan = Compare::planCompare(set, request.parameters);
    if (!plan.days.problems.empty())
        return failed(refusalOf(plan.days.problems.front(), Compare::compareAnalysis()));
    const std::vector<Days::Day> &days = plan.days.list.days;
    const bool hasDay = std::any_of(days.begin(), days.end(),
                                    [](const Days::Day &day) { return day.reason.isEmpty(); });
    if (!options.quiet || !hasDay) {
        for (const QString &remark : plan.days.remarks + remarksOn(set, plan.days.list))
            printError(remark);
    }
    if (!hasDay)
        return failed(
            {ExitCode::BadData, QString("None of %1 recordings gives a day that can be used.")
                                    .arg(set.entries.size())});
    const CompareWork compare(request, set, plan, options);
    return runWork(compare.work(), {compare.input()}, options);
}

} // namespace Batch
