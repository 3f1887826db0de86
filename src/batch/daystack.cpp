#include "analyses/days/stacktables.h"
#include "batch/dayswork.h"
#include "batch/keyedwork.h"
#include "batch/outputfiles.h"
#include "batch/programname.h"
#include "jobs/items.h"
#include "picture/rowpicture.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <limits>

// stack: spectra of all days, which of them count, their sum, and the files that tell it.

namespace Batch {

using namespace Results;

namespace {

constexpr char noList[] = "none";

// Size and time of all recordings in few digits: the same files give the same stack.
QString stateOf(const RecordingSet &set)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const RecordingEntry &entry : set.entries) {
        const QFileInfo file(entry.path);
        hash.addData(entry.path.toUtf8() + '\n' + QByteArray::number(file.size()) + ' ' +
                     QByteArray::number(file.lastModified().toMSecsSinceEpoch()) + '\n');
    }
    constexpr int digits = 24;
    return QString("%1 recordings, %2")
        .arg(set.entries.size())
        .arg(QString::fromLatin1(hash.result().toHex().left(digits)));
}

class StackWork {
public:
    StackWork(const DaysRequest &daysRequest, const FoundDays &foundDays,
              const std::vector<Days::Interference> &leftOut, const RunOptions &runOptions)
        : request(daysRequest), found(foundDays), interference(leftOut), options(runOptions)
    {
        parameters = request.parameters;
        parameters.module = found.plan.choice.module;
        parameters.ray = found.plan.choice.ray;
    }

    // Stands for all that is stacked; its name is that of the results.
    QString input() const
    {
        return QDir(request.folders.front())
            .absoluteFilePath(QString("m%1_r%2").arg(parameters.module).arg(parameters.ray));
    }

    Work work()
    {
        Work made;
        made.command = "stack";
        made.outputs = [this](const QString &) { return paths(); };
        made.isDone = [this](const QString &) { return isDone(); };
        made.memory = [this](const QString &) { return memory(); };
        made.run = [this](const QString &, const Control &control) { return run(control); };
        return made;
    }

private:
    QString pathOf(const QString &what, const QString &extension) const
    {
        return outputPath(input(), "stack", request.output, what + "." + extension);
    }
    QString tablePath(const QString &what) const
    {
        return pathOf(what, extensionOf(request.output.format));
    }

    QStringList paths() const
    {
        QStringList all = {tablePath("spectrum"), tablePath("lines"), tablePath("days")};
        if (!request.output.picture.isEmpty())
            all << pathOf("spectrum", request.output.picture)
                << pathOf("days", request.output.picture);
        return all;
    }

    std::vector<HeaderLine> requestLines() const
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

    bool isDone() const
    {
        const QByteArray wanted = requestBytes(requestLines(), request.output.format);
        QFile file(tablePath("days"));
        const QStringList all = paths();
        return std::all_of(all.begin(), all.end(),
                           [](const QString &path) { return QFileInfo(path).isFile(); }) &&
               file.open(QIODevice::ReadOnly) && file.read(wanted.size()) == wanted;
    }

    qint64 memory() const
    {
        const Days::FourierDaysAnalysis &analysis = Days::fourierDaysAnalyses().front();
        const qint64 products =
            analysis.bytes(parameters, int(found.plan.list.days.size())) * found.plan.rays;
        const qint64 bands = qint64(found.plan.header.fbands.size()) + 1;
        const qint64 points = qint64(parameters.points) + found.plan.choice.pointsAfter +
                              found.plan.choice.pointsBefore;
        const int side = options.jobs > 0 ? options.jobs : Jobs::threadCount();
        return products + 2 * side * points * bands * found.plan.rays * qint64(sizeof(float));
    }

    Failure run(const Control &control)
    {
        if (Failure failure = readDays(control))
            return failure;
        if (Failure failure = chooseDays())
            return failure;
        stackRays();
        if (!stack.problem.isEmpty())
            return {ExitCode::BadData, stack.problem};
        if (control.isStopped())
            return stopped();
        return write();
    }

    Failure readDays(const Control &control)
    {
        const std::vector<Days::Day> &list = found.plan.list.days;
        rays.assign(std::size_t(found.plan.rays), std::vector<Days::FourierDay>(list.size()));
        Jobs::Control whole = control;
        whole.progress = [&control](int percent) { control.progress(percent * 9 / 10); };
        const auto endings = Jobs::runItems(
            int(list.size()), options.jobs, whole, [&](int item, const Jobs::Control &own) {
                const std::vector<Days::FourierDay> products =
                    Days::readRays(found.set, found.plan, list[std::size_t(item)], parameters,
                                   found.kept.path, own);
                for (std::size_t ray = 0; ray < products.size(); ++ray)
                    rays[ray][std::size_t(item)] = products[ray];
            });
        for (std::size_t i = 0; i < endings.size(); ++i) {
            if (endings[i].kind == Jobs::Ending::Stopped || control.isStopped())
                return {ExitCode::TryLater, "Stopped; the series that were made are kept."};
            if (endings[i].kind == Jobs::Ending::Failed)
                rays.front()[i].problem = endings[i].problem;
        }
        return {};
    }

    Failure chooseDays()
    {
        const std::vector<Days::FourierDay> &own = rays.front();
        verdicts =
            Days::proposeDays(own, Days::ruleOf(request.parameters, found.plan, interference));
        choice = Days::choiceOf(found.plan, parameters);
        choice.leftOut = interference;
        choice.days.assign(own.size(), false);
        QStringList unknown = request.daysOff;
        for (std::size_t i = 0; i < own.size(); ++i) {
            const QString name = Days::dayName(own[i].begin);
            const QString date = name.section('T', 0, 0);
            const bool isOff = request.daysOff.contains(name) || request.daysOff.contains(date);
            unknown.removeAll(name);
            unknown.removeAll(date);
            if (isOff && verdicts[i].reason.isEmpty())
                verdicts[i].reason = "switched off";
            choice.days[i] = own[i].isWhole() && !isOff && (request.allDays || verdicts[i].isGood);
        }
        if (!unknown.isEmpty())
            return {ExitCode::Usage,
                    "--days-off: there is no day " + unknown.join(", ") + " among those found."};
        const bool hasOne =
            std::find(choice.days.begin(), choice.days.end(), true) != choice.days.end();
        if (!hasOne)
            return {ExitCode::BadData, noDayLeft()};
        return {};
    }

    // Which reasons left no day to stack, the first of them.
    QString noDayLeft() const
    {
        const auto whole = [](const Days::FourierDay &day) { return day.isWhole(); };
        const std::vector<Days::FourierDay> &own = rays.front();
        const auto first = std::find_if(own.begin(), own.end(), whole);
        if (first == own.end())
            return "No day has a spectrum. " + own.front().problem;
        const auto i = std::size_t(first - own.begin());
        const QString name = Days::dayName(first->begin);
        return QString("No day is left to stack. %1: %2.%3")
            .arg(name, verdicts[i].reason,
                 request.allDays ? "" : " Give --all-days to count days in spite of the rule.");
    }

    void stackRays()
    {
        const std::vector<int> others = Days::otherRaysOf(parameters, found.plan);
        for (std::size_t i = 0; i < others.size(); ++i)
            choice.otherRays.push_back(
                Days::otherRayOf(parameters.module, others[i], rays[i + 1], choice));
        stack = Days::combineDays(rays.front(), choice);
    }

    ResultTable tableOf(std::vector<Column> columns) const
    {
        ResultTable table;
        table.request = requestLines();
        table.result = Days::stackLines(stack, found.plan, choice);
        table.columns = std::move(columns);
        return table;
    }

    ResultTable daysTable() const
    {
        ResultTable table = tableOf(Days::daysColumns(rays.front(), verdicts, choice.days));
        for (const HeaderLine &line : Days::leftOutLines(found.set, found.plan.list))
            table.result.push_back(line);
        return table;
    }

    Plot::PictureBytes spectrumPicture() const
    {
        PlotData plot;
        plot.graphs = {stack.sigma};
        std::fill_n(plot.graphs[0].begin(),
                    std::min<std::size_t>(plot.graphs[0].size(), Days::lowestBin),
                    std::numeric_limits<float>::quiet_NaN());
        plot.names << QString("%1 days").arg(stack.days);
        plot.numPoints = int(stack.sigma.size());
        plot.x = {"frequency", "Hz", 0, stack.binWidth, {}};
        plot.textX1 = [this](int index) { return QString::number(stack.frequency(index), 'g', 5); };
        plot.yName = "significance";
        plot.yUnit = "sigma";
        const Plot::Range range = Plot::verticalRange(plot);
        plot.yMin = range.min;
        plot.yMax = range.max;
        plot.source = QStringList{input(), QString("stack of %1 days").arg(stack.days)};
        return pictureOf(plot, request.output, requestKey(requestLines()));
    }

    Plot::PictureBytes daysPicture() const
    {
        Plot::RowPicture picture;
        picture.columns = Plot::columnsOf(request.output.pictureSize);
        for (std::size_t i = 0; i < rays.front().size(); ++i) {
            const Days::FourierDay &day = rays.front()[i];
            if (!day.isWhole())
                continue;
            const std::vector<float> row = Plot::columnMaxima(day.powers, picture.columns);
            picture.values.insert(picture.values.end(), row.begin(), row.end());
            picture.rowNames << Days::dayName(day.begin) + (choice.days[i] ? "" : " off");
            ++picture.rows;
        }
        picture.lastX = stack.frequency(double(stack.powers.size()));
        picture.xName = "frequency at the telescope, Hz";
        picture.scaleName = "power";
        constexpr float leastHigh = 12;
        std::vector<float> sorted = picture.values;
        const auto high = sorted.begin() + std::ptrdiff_t(double(sorted.size()) * 0.999);
        std::nth_element(sorted.begin(), high, sorted.end());
        picture.high = std::max(leastHigh, std::round(*high));
        picture.title = QString("%1, %2 days").arg(input()).arg(picture.rows);
        picture.key = requestKey(requestLines());
        return Plot::drawingBytes(
            request.output.picture,
            Plot::drawingOf(picture, request.output.pictureSize, request.output.pictureScale));
    }

    Failure addPictures(std::vector<FileContent> &files) const
    {
        const QString &kind = request.output.picture;
        if (kind.isEmpty())
            return {};
        for (const auto &[what, picture] : {std::pair(QString("spectrum"), spectrumPicture()),
                                            std::pair(QString("days"), daysPicture())}) {
            if (!picture.problem.isEmpty())
                return {ExitCode::TryLater, pathOf(what, kind) + ": " + picture.problem + "."};
            files.push_back({pathOf(what, kind), picture.bytes});
        }
        return {};
    }

    Failure write() const
    {
        std::vector<FileContent> files;
        if (Failure failure = addPictures(files))
            return failure;
        if (request.savesSpectra) {
            const QFileInfo beside(tablePath("days"));
            files.push_back({beside.dir().filePath(Days::spectraFileName(rays.front(), parameters)),
                             Days::spectraBytes(rays.front(), parameters)});
        }
        const std::vector<std::pair<QString, ResultTable>> tables = {
            {"spectrum", tableOf(Days::spectrumColumns(stack))},
            {"lines", tableOf(Days::linesColumns(stack))},
            {"days", daysTable()}};
        for (const auto &[what, table] : tables) {
            const ResultTable &written = table;
            files.push_back({tablePath(what), {}, [&written, this](WholeFile &out) {
                                 return writeTable(written, request.output.format, out);
                             }});
        }
        return writeOutputs(files);
    }

    const DaysRequest &request;
    const FoundDays &found;
    const std::vector<Days::Interference> &interference;
    const RunOptions &options;
    Days::FourierDaysParameters parameters;          // with the module and ray of the plan
    std::vector<std::vector<Days::FourierDay>> rays; // the own one first
    std::vector<Days::DayVerdict> verdicts;
    Days::FourierDaysChoice choice;
    Days::FourierStack stack;
};

} // namespace

ExitCode stackDays(const DaysRequest &request, const RunOptions &options)
{
    const FoundDays found = findDays(request, options.quiet);
    if (found.failure)
        return found.failure.code;
    Days::InterferenceList list;
    if (request.interference != noList) {
        const bool isOwn = request.interference.isEmpty();
        const QString path = isOwn ? Days::interferencePath() : request.interference;
        if (!isOwn && !QFileInfo::exists(path)) {
            printError(path + " does not exist. Give the list of interference, or none.");
            return ExitCode::NoInput;
        }
        list = Days::readInterference(path);
    }
    if (!list.problem.isEmpty()) {
        printError(list.problem);
        return ExitCode::BadData;
    }
    StackWork stack(request, found, list.entries, options);
    return runWork(stack.work(), {stack.input()}, options);
}

} // namespace Batch
