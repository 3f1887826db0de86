#include "batch/info.h"

#include "base/bytetext.h"
#include "base/stopsignal.h"
#include "batch/inputlist.h"
#include "batch/programname.h"
#include "batch/runner.h"
#include "data/recordingset.h"
#include "data/truenumbers.h"

#include <cstdio>

namespace Batch {

using namespace Results;

namespace {

// The step is milliseconds of the passport divided by 1000: its last digits mean nothing.
QString seconds(double value)
{
    return QString::number(value, 'g', 12) + " s";
}

QString sizeCheck(const RecordingEntry &entry)
{
    switch (entry.state) {
    case RecordingState::Whole:
        return entry.size == entry.announcedSize
                   ? QString("as announced")
                   : QString("%1 bytes more than announced").arg(entry.size - entry.announcedSize);
    case RecordingState::Short:
        return QString("too short, %1 of %2 points")
            .arg(entry.completePoints)
            .arg(entry.header.npoints);
    default:
        return "no recording";
    }
}

// Rows of what is told of a recording; modules and rays by the numbers of the passport, as results
// tell them.
std::vector<HeaderLine> infoOf(const RecordingEntry &entry)
{
    const ObservationData &data = entry.header;
    const bool isRecording = entry.isUsable();
    const auto text = [&](const QString &value) { return isRecording ? value : QString("-"); };
    const QString bands =
        data.fbands.empty()
            ? QString("-")
            : QString("%1 to %2 MHz").arg(data.fbands.front()).arg(data.fbands.back());
    return {
        {"file", entry.path},
        {"points", text(QString::number(data.npoints))},
        {"step", text(seconds(data.tresolution))},
        {"length", text(seconds(data.npoints * data.tresolution))},
        {"begin", entry.begin.isValid() ? entry.begin.toString(Qt::ISODateWithMs) : QString("-")},
        {"modules", text(moduleNumbersText(data))},
        {"rays", text(rayNumbersText(data))},
        {"bands", text(QString::number(data.channels - 1))},
        {"frequencies", bands},
        {"bytes", QString::number(entry.size)},
        {"size", sizeCheck(entry)},
    };
}

ExitCode codeOf(RecordingState state)
{
    switch (state) {
    case RecordingState::Whole:
        return ExitCode::Done;
    case RecordingState::Unreadable:
        return ExitCode::NoInput;
    default:
        return ExitCode::BadData;
    }
}

} // namespace

ExitCode printInfo(const QStringList &names, Format format)
{
    const InputList list = expandInputs(names);
    if (list.failure) {
        printError(list.failure.text);
        return list.failure.code;
    }
    Jobs::Control control;
    control.isStopped = [] { return isStopRequested(); };
    const std::vector<RecordingEntry> entries = readHeaders(list.paths, control);
    if (isStopRequested()) {
        printError(stopped().text);
        return ExitCode::TryLater;
    }
    ExitCode code = ExitCode::Done;
    ResultTable table;
    table.request = {{"program", programName()}, {"command", "info"}};
    QByteArray text;
    for (const RecordingEntry &entry : entries) {
        if (!entry.problem.isEmpty())
            printError(entry.problem);
        if (code == ExitCode::Done)
            code = codeOf(entry.state);
        const std::vector<HeaderLine> lines = infoOf(entry);
        if (table.columns.empty())
            for (const HeaderLine &line : lines)
                table.columns.push_back({line.key, {}, QStringList()});
        for (std::size_t i = 0; i < lines.size(); ++i) {
            std::get<QStringList>(table.columns[i].values) << lines[i].value;
            text += bytesOfText(lines[i].key.leftJustified(12) + " " + lines[i].value + "\n");
        }
        text += "\n";
    }
    if (format != Format::Text)
        text = table.toBytes(format);
    const bool isWritten = std::fwrite(text.constData(), 1, std::size_t(text.size()), stdout) ==
                               std::size_t(text.size()) &&
                           std::fflush(stdout) == 0;
    if (isWritten)
        return code;
    printError("The standard output cannot be written.");
    return ExitCode::InputOutput;
}

} // namespace Batch
