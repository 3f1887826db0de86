#include "data/recordingfile.h"

#include "base/systemmemory.h"
#include "data/recordingtime.h"

#include <QFileInfo>
#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <functional>
#include <new>
#include <numeric>

namespace {

// One line of points is buffered whole; the lists beside it take the room of a few points more.
constexpr qint64 bufferedPoints = 24;
constexpr qint64 copiedBytes = qint64(4) << 20;

QString sizeText(qint64 bytes)
{
    return bytes < 0 ? QString("more than 8 EiB") : QLocale::c().formattedDataSize(bytes);
}

bool isAscendingBelow(const std::vector<int> &indices, int count)
{
    const auto notAscending =
        std::adjacent_find(indices.begin(), indices.end(), std::greater_equal<>());
    return notAscending == indices.end() &&
           (indices.empty() || (indices.front() >= 0 && indices.back() < count));
}

std::vector<int> chosenOrAll(const std::vector<int> &chosen, int count)
{
    if (!chosen.empty())
        return chosen;
    std::vector<int> all(std::size_t(count), 0);
    std::iota(all.begin(), all.end(), 0);
    return all;
}

std::vector<int> withExtraChannel(std::vector<int> channels, int count)
{
    if (channels.back() != count - 1)
        channels.push_back(count - 1);
    return channels;
}

// Runs of the file that make up the points `first` .. `first + count - 1` of a recording that
// goes round.
std::vector<PointRun> runsOf(int first, int count, int npoints)
{
    std::vector<PointRun> runs;
    const int rest = first % npoints;
    int point = rest < 0 ? rest + npoints : rest;
    for (int done = 0; done < count;) {
        const int run = std::min(count - done, npoints - point);
        runs.push_back({point, run, done});
        done += run;
        point = 0;
    }
    return runs;
}

} // namespace

ObservationData stretchHeader(const ObservationData &whole, const Stretch &stretch)
{
    ObservationData data = whole;
    data.npoints = stretch.count;
    moveBegin(data, stretch.first);
    const std::vector<int> modules = chosenOrAll(stretch.modules, whole.modules);
    const std::vector<int> rays = chosenOrAll(stretch.rays, whole.rays);
    const std::vector<int> channels =
        withExtraChannel(chosenOrAll(stretch.channels, whole.channels), whole.channels);
    data.modules = int(modules.size());
    data.rays = int(rays.size());
    data.channels = int(channels.size());

    data.moduleNumbers.clear();
    for (const int module : modules) {
        if (std::size_t(module) < whole.moduleNumbers.size())
            data.moduleNumbers.push_back(whole.moduleNumbers[std::size_t(module)]);
    }
    if (!data.moduleNumbers.empty())
        data.firstModule = data.moduleNumbers.front();
    if (data.modules == 1 && whole.modules > 1)
        data.module = data.firstModule;
    if (data.rays == 1 && whole.rays > 1)
        data.ray = rays.front() + 1;

    data.fbands.clear();
    for (const int channel : channels) {
        if (channel < whole.channels - 1 && std::size_t(channel) < whole.fbands.size())
            data.fbands.push_back(whole.fbands[std::size_t(channel)]);
    }
    return data;
}

bool openRecording(QFile &file, QString &reason)
{
    const QFileInfo info(file.fileName());
    // A pipe or a device is refused before it is opened, for opening a pipe waits for a writer.
    if (info.exists() && !info.isFile()) {
        reason = QString("%1 is not an ordinary file. Choose a recording (.pnt or .pnthr).")
                     .arg(file.fileName());
        return false;
    }
    // Unbuffered: the blocks go straight into the reader's own buffer.
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        reason = QString("%1 cannot be opened: %2. Check the path and the permissions.")
                     .arg(file.fileName(), file.errorString());
        return false;
    }
    return true;
}

QString badPassport(const QString &path, const QString &headerProblem)
{
    return QString("%1 is not a usable recording: %2. Check that it is a .pnt or .pnthr file and "
                   "was copied completely.")
        .arg(path, headerProblem);
}

bool isEndless(const Passport &passport, qint64 fileSize)
{
    return !passport.complete && fileSize > passportSizeLimit;
}

QString endlessPassport(const QString &path)
{
    return QString("%1 is damaged: its first line announces more passport lines than can be. Copy "
                   "the file again.")
        .arg(path);
}

int blockFirst(const SpacedBlocks &spaced, int block)
{
    return spaced.first + int(qint64(block) * spaced.count / spaced.blocks);
}

bool RecordingFile::open(const QString &path)
{
    file.close();
    file.setFileName(path);
    record = ObservationData();
    entries = Passport();
    problem.clear();
    if (!openRecording(file, problem))
        return false;

    bytes = file.size();
    entries = readPassport(file);
    const RecordingHeader header = recordingHeader(entries, path);
    record = header.data;
    if (!header.problem.isEmpty())
        problem = badPassport(path, header.problem);
    else if (isEndless(entries, bytes))
        problem = endlessPassport(path);
    else if (record.modules < 1)
        problem = QString("%1 has no samples: its passport lists no modules.").arg(path);
    return problem.isEmpty();
}

qint64 RecordingFile::pointBytes() const
{
    qint64 product = sizeof(float);
    for (const int count : {record.modules, record.rays, record.channels}) {
        if (__builtin_mul_overflow(product, qint64(count), &product))
            return -1;
    }
    return product;
}

qint64 RecordingFile::announcedSize() const
{
    qint64 size = pointBytes();
    if (size < 0 || __builtin_mul_overflow(size, qint64(record.npoints), &size) ||
        __builtin_add_overflow(size, entries.size, &size))
        return -1;
    return size;
}

int RecordingFile::completePoints() const
{
    const qint64 onePoint = pointBytes();
    if (onePoint < 1 || bytes <= entries.size)
        return 0;
    return int(std::min<qint64>(record.npoints, (bytes - entries.size) / onePoint));
}

SampleShape RecordingFile::shape() const
{
    return {record.npoints, record.modules, record.channels, record.rays};
}

StretchReading RecordingFile::refused(const QString &reason) const
{
    StretchReading reading;
    reading.reason = QString("%1: %2").arg(file.fileName(), reason);
    return reading;
}

StretchReading RecordingFile::read(const Stretch &stretch, const SampleReadingHooks &hooks)
{
    if (record.npoints < 1 || stretch.count < 1 ||
        (!stretch.wraps &&
         (stretch.first < 0 || qint64(stretch.first) + stretch.count > record.npoints)))
        return refused(
            QString("there are no points %1 to %2; the recording has the points 0 to %3.")
                .arg(stretch.first)
                .arg(qint64(stretch.first) + stretch.count - 1)
                .arg(record.npoints - 1));
    return readRuns(stretch, runsOf(stretch.first, stretch.count, record.npoints), stretch.count,
                    hooks);
}

StretchReading RecordingFile::readInPlace(const Stretch &stretch, const SampleReadingHooks &hooks)
{
    if (stretch.wraps || stretch.first < 0 || stretch.count < 1 ||
        qint64(stretch.first) + stretch.count > record.npoints)
        return refused("the stretch does not lie within the recording.");
    Stretch whole = stretch;
    whole.first = 0;
    whole.count = record.npoints;
    return readRuns(whole, {{stretch.first, stretch.count, stretch.first}}, record.npoints, hooks);
}

StretchReading RecordingFile::read(const SpacedBlocks &spaced, const Stretch &chosen,
                                   const SampleReadingHooks &hooks)
{
    if (spaced.first < 0 || spaced.blocks < 1 || spaced.points < 1 ||
        spaced.count < spaced.blocks || qint64(spaced.first) + spaced.count > record.npoints)
        return refused("the blocks do not lie within the recording.");
    const qint64 points = qint64(spaced.blocks) * spaced.points;
    if (points > spaced.count)
        return refused("the blocks hold more points than they are taken from.");
    std::vector<PointRun> runs;
    runs.reserve(std::size_t(spaced.blocks));
    for (int b = 0; b < spaced.blocks; ++b)
        runs.push_back({blockFirst(spaced, b), spaced.points, b * spaced.points});
    Stretch part = chosen;
    part.first = spaced.first;
    part.count = int(points);
    return readRuns(part, runs, int(points), hooks);
}

StretchReading RecordingFile::readRuns(const Stretch &chosen, const std::vector<PointRun> &runs,
                                       int points, const SampleReadingHooks &hooks)
{
    for (const auto &[indices, count] :
         {std::pair(&chosen.modules, record.modules), std::pair(&chosen.rays, record.rays),
          std::pair(&chosen.channels, record.channels)}) {
        if (!isAscendingBelow(*indices, count))
            return refused("a module, ray or channel is not in the recording.");
    }
    // A passport may announce counts whose lists alone would fill the memory.
    const qint64 onePoint = pointBytes();
    const qint64 available = availableMemory();
    if (onePoint < 0 || (available > 0 && onePoint > available / bufferedPoints))
        return refused(QString("one point takes %1 by the passport, more than memory allows. If "
                               "the file is far smaller, its passport is damaged.")
                           .arg(sizeText(onePoint)));
    StretchReading reading;
    try {
        reading.data = stretchHeader(record, chosen);
        const SampleSelection selection = {
            chosenOrAll(chosen.modules, record.modules), chosenOrAll(chosen.rays, record.rays),
            withExtraChannel(chosenOrAll(chosen.channels, record.channels), record.channels)};
        // Points that are not read take no memory.
        int read = 0;
        for (const PointRun &run : runs)
            read += run.count;
        const qint64 needed =
            memoryToRead({read, reading.data.modules, reading.data.channels, reading.data.rays});
        const auto block = needed < 0 || (available > 0 && needed > available)
                               ? nullptr
                               : SampleBlock::allocate(reading.data.modules, reading.data.channels,
                                                       reading.data.rays, points);
        if (!block)
            return refused(QString("%1 points need %2 of memory, %3 are available. Choose a "
                                   "shorter stretch or close other programs.")
                               .arg(read)
                               .arg(sizeText(needed), sizeText(available)));
        reading.data.sampleMarker = -1.0;
        reading.data.sampleFactor = 0.89;
        const SampleReading end =
            readSamples(file, entries.size, shape(), selection, runs, *block, hooks);
        if (end.end == SampleReadingEnd::Cancelled || end.end == SampleReadingEnd::TooSlow) {
            reading.end = StretchEnd::Cancelled;
            reading.reason = QString("Reading %1 was cancelled.").arg(file.fileName());
            return reading;
        }
        reading.data.samples = Samples(block);
        reading.end = StretchEnd::Complete;
        if (end.end == SampleReadingEnd::Short) {
            reading.end = StretchEnd::Short;
            reading.reason = QString("%1 ends early: of the points from %2 on some are missing and "
                                     "read as 0. Copy the file again or use its first part only.")
                                 .arg(file.fileName())
                                 .arg(chosen.first);
            if (!end.error.isEmpty())
                reading.reason += " The system says: " + end.error;
        }
    } catch (const std::bad_alloc &) {
        return refused("there is not enough memory. Close other programs.");
    }
    return reading;
}

bool RecordingFile::readBytes(int first, int count,
                              const std::function<bool(const QByteArray &)> &take)
{
    const qint64 onePoint = pointBytes();
    qint64 left = onePoint * count;
    bool goes = file.seek(entries.size + onePoint * first);
    while (goes && left > 0) {
        const QByteArray some = file.read(std::min(left, copiedBytes));
        if (some.isEmpty()) {
            problem = QString("%1 ends early: %2 of its points %3 to %4 are missing.")
                          .arg(file.fileName(), sizeText(left))
                          .arg(first)
                          .arg(qint64(first) + count - 1);
            return false;
        }
        left -= some.size();
        goes = take(some);
    }
    return goes;
}
