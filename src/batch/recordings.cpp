#include "batch/recordings.h"

#include "batch/programname.h"
#include "data/batchtexts.h"
#include "data/recordingtime.h"
#include "data/truenumbers.h"

#include <QDateTime>
#include <QFileInfo>
#include <algorithm>

namespace Batch {

using namespace Results;

namespace {

constexpr qint64 hugePage = qint64(2) << 20; // bytes
constexpr int mostNamed = 32;                // modules or rays in a message

} // namespace

Failure openRecordingFile(RecordingFile &file, const QString &path, const Control &control)
{
    const QFileInfo info(path);
    if (!file.open(path)) {
        const bool isMissing = !info.isFile() || !info.isReadable();
        return {isMissing ? ExitCode::NoInput : ExitCode::BadData, file.reason()};
    }
    if (file.header().missingPoints > 0) {
        if (control.print)
            control.print(QString(BatchTexts::wrongSize).replace("%s", path));
        return {ExitCode::BadData, endsEarlyText(path, file.header())};
    }
    return {};
}

Failure findRay(const RecordingFile &file, int module, int ray)
{
    const ObservationData &data = file.header();
    if (module < 1 || module > data.modules)
        return {ExitCode::BadData,
                file.path() + QString(": module %1 is not in the recording. Allowed: 1 to %2.")
                                  .arg(module)
                                  .arg(data.modules)};
    if (ray < 1 || ray > data.rays)
        return {ExitCode::BadData,
                file.path() + QString(": ray %1 is not in the recording. Allowed: 1 to %2.")
                                  .arg(ray)
                                  .arg(data.rays)};
    return {};
}

Failure findPlaces(const RecordingFile &file, Numbered what, const std::vector<int> &numbers,
                   std::vector<int> &places)
{
    const bool isRay = what == Numbered::Ray;
    const ObservationData &header = file.header();
    QStringList known;
    places.assign(numbers.size(), 0);
    const int count = isRay ? header.rays : header.modules;
    for (int index = 0; index < count; ++index) {
        const int number = isRay ? rayNumber(header, index) : moduleNumber(header, index);
        if (index < mostNamed)
            known << QString::number(number);
        else if (index == mostNamed)
            known << "...";
        for (std::size_t i = 0; i < numbers.size(); ++i)
            if (numbers[i] == number && places[i] == 0)
                places[i] = index + 1;
    }
    const auto missing = std::find(places.begin(), places.end(), 0);
    if (missing == places.end())
        return {};
    return {ExitCode::BadData,
            file.path() + QString(": there is no %1 number %2 in the recording. It has %3.")
                              .arg(isRay ? "ray" : "module")
                              .arg(numbers[std::size_t(missing - places.begin())])
                              .arg(known.join(", "))};
}

Failure findPlace(const RecordingFile &file, Numbered what, const std::optional<int> &number,
                  int &place)
{
    if (!number)
        return {};
    std::vector<int> places;
    Failure failure = findPlaces(file, what, {*number}, places);
    if (!failure)
        place = places[0];
    return failure;
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
        control.print(QString(BatchTexts::tooSlow).replace("%s", path));
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
                path + ": reading took more than an hour and was given up. Copy the file to a "
                       "faster disk."};
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
        return stopped();
    case StretchEnd::Refused:
        break;
    }
    return {ExitCode::TryLater, reason};
}

qint64 memoryOfRay(const RecordingFile &file, qint64 points)
{
    const ObservationData &data = file.header();
    const auto bytesOf = [&data](qint64 count) {
        return std::max<qint64>(0, memoryToRead({int(count), 1, data.channels, 1}));
    };
    const qint64 all = std::max(1, data.npoints);
    const qint64 whole = bytesOf(all);
    // Each row of the record begins and ends within a page.
    return std::min(whole,
                    bytesOf(std::clamp<qint64>(points, 1, all)) + 2 * hugePage * data.channels);
}

std::vector<RaySelection> groupsOf(const RaySelection &all, qint64 bytesOfRay)
{
    constexpr qint64 memoryAtOnce = qint64(1) << 30;
    const qint64 most = std::max<qint64>(1, memoryAtOnce / std::max<qint64>(1, bytesOfRay));
    if (all.count() <= most)
        return {all};
    std::vector<RaySelection> groups;
    for (const int module : all.modules) {
        for (std::size_t ray = 0; ray < all.rays.size(); ray += std::size_t(most)) {
            const std::size_t end = std::min(all.rays.size(), ray + std::size_t(most));
            groups.push_back(
                {{module},
                 {all.rays.begin() + std::ptrdiff_t(ray), all.rays.begin() + std::ptrdiff_t(end)}});
        }
    }
    return groups;
}

std::vector<HeaderLine> inputHeader(const QString &command, const QString &path)
{
    const QFileInfo info(path);
    return {{"program", programName()},
            {"command", command},
            {"file", path},
            {"file_size", QString::number(info.size()) + " bytes"},
            {"file_time", info.lastModified().toUTC().toString(Qt::ISODateWithMs)}};
}

HeaderLine beginLine(const ObservationData &header)
{
    const bool isKnown = header.beginTime.isValid();
    return {"begin", isKnown ? exactBegin(header).toString(Qt::ISODateWithMs) : QString("unknown")};
}

std::vector<HeaderLine> rayLines(const ObservationData &header, int module, int ray)
{
    return {{"module", QString::number(moduleNumber(header, module - 1))},
            {"ray", QString::number(rayNumber(header, ray - 1))},
            beginLine(header)};
}

Failure checkHeader(const std::vector<HeaderLine> &lines, const QString &path)
{
    for (const HeaderLine &line : lines) {
        if (line.value.isEmpty())
            return {ExitCode::InputOutput, path + ": the line \"" + line.key +
                                               "\" of the result came out empty. Nothing was "
                                               "written; run the same command again."};
    }
    return {};
}

} // namespace Batch
