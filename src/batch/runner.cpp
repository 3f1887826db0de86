#include "batch/runner.h"

#include "base/stopsignal.h"
#include "base/wholefile.h"
#include "jobs/items.h"
#include "jobs/memorygate.h"
#include "results/resulttable.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSet>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <unistd.h>
#include <vector>

namespace Batch {

using namespace Results;

namespace {

enum class Status { Waiting, Done, Skipped, Failed };

struct Outcome {
    Status status = Status::Waiting;
    Failure failure;
    double seconds = 0;
};

QString statusText(Status status)
{
    switch (status) {
    case Status::Done:
        return "done";
    case Status::Skipped:
        return "skipped";
    case Status::Failed:
        return "failed";
    default:
        return "waiting";
    }
}

// Lines that several processes may append to the same file: each goes out in one write.
class JsonLines {
public:
    Failure open(const QString &path)
    {
        if (path.isEmpty())
            return {};
        // Without waiting: opening a pipe that nobody reads from would never end.
        handle = ::open(QFile::encodeName(path).constData(),
                        O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK, 0666);
        if (handle < 0)
            return {ExitCode::CannotCreate,
                    QString("%1 cannot be opened: %2. Choose another file with --json.")
                        .arg(path, QString::fromLocal8Bit(std::strerror(errno)))};
        fcntl(handle, F_SETFL, O_APPEND);
        return {};
    }

    ~JsonLines()
    {
        if (handle >= 0)
            close(handle);
    }

    /// Values by their names, as JSON already.
    bool write(const QMap<QByteArray, QByteArray> &values)
    {
        if (handle < 0)
            return true;
        QByteArray line;
        for (auto value = values.begin(); value != values.end(); ++value)
            line += (line.isEmpty() ? "{\"" : ",\"") + value.key() + "\":" + value.value();
        line += "}\n";
        errno = 0;
        if (::write(handle, line.constData(), std::size_t(line.size())) == line.size())
            return true;
        reason = QString::fromLocal8Bit(errno ? std::strerror(errno) : "No space left");
        return false;
    }

    QString reason; ///< of the last failure

private:
    int handle = -1;
};

// Everything that the threads of a run share and show.
class Run {
public:
    Run(const Work &runWork, const QStringList &runInputs, const RunOptions &runOptions)
        : work(runWork), inputs(runInputs), options(runOptions),
          outcomes(std::size_t(inputs.size())), gate(runOptions.memory)
    {}

    ExitCode go()
    {
        if (Failure failure = lines.open(options.jsonPath)) {
            printError(failure.text);
            return failure.code;
        }
        Jobs::Control control;
        control.isStopped = [] { return isStopRequested(); };
        control.progress = [this](int percent) {
            if (!options.quiet) // hundred, which ends the line, comes with the summary
                options.progress(std::min(percent, 99));
        };
        const std::vector<Jobs::Ending> endings =
            Jobs::runItems(inputs.size(), options.jobs, control,
                           [this](int index, const Jobs::Control &own) { take(index, own); });
        for (std::size_t i = 0; i < endings.size(); ++i) {
            if (endings[i].kind == Jobs::Ending::Failed)
                outcomes[i] = {Status::Failed, {ExitCode::TryLater, endings[i].problem}, 0};
        }
        return finish();
    }

private:
    void take(int index, const Jobs::Control &own)
    {
        QElapsedTimer time;
        time.start();
        Outcome outcome = workOn(index, own);
        outcome.seconds = double(time.elapsed()) / 1000;
        report(index, outcome);
    }

    Outcome workOn(int index, const Jobs::Control &own)
    {
        const QString &input = inputs[index];
        try {
            if (!options.force && work.isDone(input))
                return {Status::Skipped, {}, 0};
            const Jobs::MemoryGate::Pass pass(gate, work.memory(input), own);
            if (!pass.isGranted())
                return {Status::Waiting, {}, 0};
            const Failure failure = work.run(input, controlOf(own));
            if (failure && isStopRequested() && failure.code == ExitCode::TryLater)
                return {Status::Waiting,
                        {ExitCode::TryLater, input + " was stopped; nothing of it was kept."},
                        0};
            return {failure ? Status::Failed : Status::Done, failure, 0};
        } catch (const std::bad_alloc &) {
            return {Status::Failed,
                    {ExitCode::TryLater,
                     QString("%1 needs more memory than there is. Use fewer --jobs.").arg(input)},
                    0};
        }
    }

    Control controlOf(const Jobs::Control &own)
    {
        Control control;
        control.progress = own.progress;
        control.isStopped = own.isStopped;
        control.remark = [](const QString &text) { printError(text); };
        control.print = [this](const QString &text) {
            if (options.quiet)
                return;
            const std::lock_guard lock(mutex);
            const QByteArray bytes = text.toLocal8Bit();
            std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stdout);
            std::fflush(stdout);
        };
        return control;
    }

    void report(int index, const Outcome &outcome)
    {
        const QString &input = inputs[index];
        outcomes[std::size_t(index)] = outcome;
        if (outcome.failure)
            printError(outcome.failure.text);
        if (outcome.status == Status::Waiting)
            return;
        if (outcome.status == Status::Skipped && !options.quiet)
            printError(
                QString("%1 is done with the same parameters already; --force does it again.")
                    .arg(input));
        QByteArray outputs;
        for (const QString &output : outcome.failure ? QStringList() : work.outputs(input))
            outputs += (outputs.isEmpty() ? "" : ",") + jsonText(output);
        const QMap<QByteArray, QByteArray> line = {
            {"command", jsonText(work.command)},
            {"file", jsonText(input)},
            {"status", jsonText(statusText(outcome.status))},
            {"code", QByteArray::number(int(outcome.failure.code))},
            {"outputs", "[" + outputs + "]"},
            {"message", jsonText(outcome.failure.text)},
            {"seconds", numberText(outcome.seconds)}};
        const std::lock_guard lock(mutex);
        isJsonWhole = lines.write(line) && isJsonWhole;
    }

    ExitCode finish()
    {
        if (!options.quiet)
            options.progress(100);
        const auto count = [this](Status status) {
            return std::count_if(outcomes.begin(), outcomes.end(),
                                 [=](const Outcome &outcome) { return outcome.status == status; });
        };
        const auto waiting = count(Status::Waiting);
        QString summary = QString("%1: %2 done, %3 skipped, %4 failed")
                              .arg(work.command)
                              .arg(count(Status::Done))
                              .arg(count(Status::Skipped))
                              .arg(count(Status::Failed));
        if (waiting > 0)
            summary += QString(", %1 not begun or stopped; the same command goes on from here")
                           .arg(waiting);
        if (waiting > 0 || (!options.quiet && inputs.size() > 1))
            printError(summary + ".");
        if (!isJsonWhole) {
            printError(options.jsonPath + " could not be written whole: " + lines.reason + ".");
            return ExitCode::InputOutput;
        }
        if (waiting > 0)
            return ExitCode::TryLater;
        const auto failed =
            std::find_if(outcomes.begin(), outcomes.end(),
                         [](const Outcome &outcome) { return bool(outcome.failure); });
        return failed == outcomes.end() ? ExitCode::Done : failed->failure.code;
    }

    const Work &work;
    const QStringList &inputs;
    const RunOptions &options;
    std::vector<Outcome> outcomes; // each written by the thread that took the input

    std::mutex mutex; // of what follows and of the standard output
    JsonLines lines;
    bool isJsonWhole = true;

    Jobs::MemoryGate gate;
};

// A file by whatever name it is called.
QString canonicalPath(const QString &path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? path : canonical;
}

// Inputs of one name from different folders would overwrite each other's results, and a result
// may take no input's place. What killed runs left behind of the outputs is removed.
Failure prepareOutputs(const Work &work, const QStringList &inputs, const QString &jsonPath)
{
    QSet<QString> sources;
    for (const QString &input : inputs)
        sources.insert(canonicalPath(input));
    if (!jsonPath.isEmpty() && sources.contains(canonicalPath(jsonPath)))
        return {ExitCode::Usage, jsonPath + " is an input. Choose another file with --json."};
    QHash<QString, QString> inputOf;
    for (const QString &input : inputs) {
        for (const QString &output : work.outputs(input)) {
            if (sources.contains(canonicalPath(output)))
                return {ExitCode::Usage, output + ", made of " + input +
                                             ", would take the place of an input. Choose another "
                                             "folder with --output."};
            if (inputOf.contains(output))
                return {
                    ExitCode::Usage,
                    QString("%1 and %2 would both be written to %3. Give each folder an --output "
                            "of its own.")
                        .arg(inputOf[output], input, output)};
            inputOf[output] = input;
        }
    }
    removeAbandoned(inputOf.keys());
    return {};
}

} // namespace

ExitCode runWork(const Work &work, const QStringList &inputs, const RunOptions &options)
{
    if (Failure failure = prepareOutputs(work, inputs, options.jsonPath)) {
        printError(failure.text);
        return failure.code;
    }
    return Run(work, inputs, options).go();
}

void printError(const QString &text)
{
    // One write a message, so that those of several threads do not mix.
    const QByteArray line = ("zrt-batch: " + text + "\n").toLocal8Bit();
    std::fwrite(line.constData(), 1, std::size_t(line.size()), stderr);
}

} // namespace Batch
