#include "batch/recordings.h"

#include "data/batchtexts.h"
#include "data/recordingtime.h"

#include <QDateTime>
#include <QFileInfo>
#include <algorithm>

namespace Batch {

Failure openRecordingFile(RecordingFile &file, const QString &path, const Control &control)
{
    const QFileInfo info(path);
    if (!file.open(path)) {
        const bool isMissing = !info.isFile() || !info.isReadable();
        return {isMissing ? ExitCode::NoInput : ExitCode::BadData, file.reason()};
    }
    if (file.header().missingPoints > 0) {
        if (control.print)
            control.print(QString::asprintf(BatchTexts::wrongSize, path.toLocal8Bit().constData()));
        const QDateTime last = RecordingClock(file.header()).utc(file.completePoints() - 1);
        const QString upTo = file.completePoints() > 0 && last.isValid()
                                 ? last.toString("', the last at 'hh:mm:ss.zzz' UTC'")
                                 : QString();
        return {ExitCode::BadData,
                QString("%1 ends early: of %2 points that its passport announces it holds %3%4. "
                        "Copy the file again.")
                    .arg(path)
                    .arg(file.header().npoints)
                    .arg(file.completePoints())
                    .arg(upTo)};
    }
    return {};
}

Failure findRay(const RecordingFile &file, int module, int ray)
{
    const ObservationData &data = file.header();
    if (module < 1 || module > data.modules)
        return {ExitCode::BadData,
                QString("%1: module %2 is not in the recording. Allowed: 1 to %3.")
                    .arg(file.path())
                    .arg(module)
                    .arg(data.modules)};
    if (ray < 1 || ray > data.rays)
        return {ExitCode::BadData, QString("%1: ray %2 is not in the recording. Allowed: 1 to %3.")
                                       .arg(file.path())
                                       .arg(ray)
                                       .arg(data.rays)};
    return {};
}

Failure readRays(RecordingFile &file, const RaySelection &selection, qint64 first, qint64 end,
                 const Control &control, ObservationData &data)
{
    const qint64 npoints = file.header().npoints;
    Stretch stretch;
    stretch.first = int(std::clamp<qint64>(first, 0, npoints - 1));
    stretch.count = int(std::clamp<qint64>(end - stretch.first, 1, npoints - stretch.first));
    for (const int module : selection.modules)
        stretch.modules.push_back(module - 1);
    for (const int ray : selection.rays)
        stretch.rays.push_back(ray - 1);
    const QString path = file.path();
    bool isSlow = false;
    SampleReadingHooks hooks;
    hooks.keepAlive = [&control] { return !control.isStopped(); };
    hooks.continueSlow = [&] {
        control.print(QString::asprintf(BatchTexts::tooSlow, path.toLocal8Bit().constData()));
        isSlow = true;
        return false;
    };
    const StretchReading reading = file.readInPlace(stretch, hooks);
    if (const ObservationData *const whole = reading.whole()) {
        data = *whole;
        return {};
    }
    if (isSlow)
        return {ExitCode::InputOutput,
                QString("%1: reading took more than an hour and was given up. Copy the file to a "
                        "faster disk.")
                    .arg(path)};
    return failureOf(reading.end(), reading.reason());
}

Failure failureOf(StretchEnd end, const QString &reason)
{
    switch (end) {
    case StretchEnd::Complete:
        return {};
    case StretchEnd::Short:
        return {ExitCode::InputOutput, reason};
    case StretchEnd::Cancelled:
        return {ExitCode::TryLater, "Stopped."};
    case StretchEnd::Refused:
        break;
    }
    return {ExitCode::TryLater, reason};
}

qint64 memoryOfRay(const RecordingFile &file, qint64 points)
{
    const ObservationData &data = file.header();
    const int count = int(std::clamp<qint64>(points, 1, std::max(1, data.npoints)));
    return std::max<qint64>(0, memoryToRead({count, 1, data.channels, 1}));
}

std::vector<HeaderLine> inputHeader(const QString &command, const QString &path)
{
    const QFileInfo info(path);
    return {{"program", "zrt-batch " ZRT_VERSION},
            {"command", command},
            {"file", path},
            {"file_size", QString::number(info.size()) + " bytes"},
            {"file_time", info.lastModified().toUTC().toString(Qt::ISODateWithMs)}};
}

} // namespace Batch
