#include "batch/info.h"

#include "base/bytetext.h"
#include "batch/inputlist.h"
#include "batch/programname.h"
#include "batch/recordings.h"
#include "data/recordingtime.h"

#include <QDateTime>
#include <QFileInfo>
#include <cstdio>

namespace Batch {

using namespace Results;

namespace {

struct Info {
    std::vector<HeaderLine> lines;
    Failure failure;
};

QString numbersOf(const std::vector<int> &numbers)
{
    QStringList texts;
    for (const int number : numbers)
        texts << QString::number(number);
    return texts.join(' ');
}

// The step is milliseconds of the passport divided by 1000: its last digits mean nothing.
QString seconds(double value)
{
    return QString::number(value, 'g', 12) + " s";
}

QString sizeCheck(const RecordingFile &file)
{
    const qint64 announced = file.announcedSize();
    if (file.size() == announced)
        return "as announced";
    if (announced < 0 || file.size() < announced)
        return QString("too short, %1 of %2 points")
            .arg(file.completePoints())
            .arg(file.header().npoints);
    return QString("%1 bytes more than announced").arg(file.size() - announced);
}

Info infoOf(const QString &path)
{
    Info info;
    RecordingFile file;
    info.failure = openRecordingFile(file, path, {});
    const ObservationData &data = file.header();
    const bool isRecording = file.reason().isEmpty();
    const auto text = [&](const QString &value) { return isRecording ? value : QString("-"); };
    const QString bands =
        data.fbands.empty()
            ? QString("-")
            : QString("%1 to %2 MHz").arg(data.fbands.front()).arg(data.fbands.back());
    info.lines = {
        {"file", path},
        {"points", text(QString::number(data.npoints))},
        {"step", text(seconds(data.tresolution))},
        {"length", text(seconds(data.npoints * data.tresolution))},
        {"begin",
         data.beginTime.isValid() ? exactBegin(data).toString(Qt::ISODateWithMs) : QString("-")},
        {"modules", text(numbersOf(data.moduleNumbers))},
        {"rays",
         text(data.ray > 0 ? QString("1 (number %1)").arg(data.ray) : QString::number(data.rays))},
        {"bands", text(QString::number(data.channels - 1))},
        {"frequencies", bands},
        {"bytes", QString::number(file.size())},
        {"size", isRecording ? sizeCheck(file) : QString("no recording")},
    };
    return info;
}

} // namespace

ExitCode printInfo(const QStringList &names, Format format)
{
    const InputList list = expandInputs(names);
    if (list.failure) {
        printError(list.failure.text);
        return list.failure.code;
    }
    ExitCode code = ExitCode::Done;
    ResultTable table;
    table.request = {{"program", programName()}, {"command", "info"}};
    QByteArray text;
    for (const QString &path : list.paths) {
        const Info info = infoOf(path);
        if (info.failure)
            printError(info.failure.text);
        if (info.failure && code == ExitCode::Done)
            code = info.failure.code;
        if (table.columns.empty())
            for (const HeaderLine &line : info.lines)
                table.columns.push_back({line.key, {}, QStringList()});
        for (std::size_t i = 0; i < info.lines.size(); ++i) {
            std::get<QStringList>(table.columns[i].values) << info.lines[i].value;
            text +=
                bytesOfText(info.lines[i].key.leftJustified(12) + " " + info.lines[i].value + "\n");
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
