#include "data/recordingfile.h"

#include "base/systemmemory.h"
#include "base/timetext.h"
#include "data/recordingtime.h"

#include <QFileInfo>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <new>
#include <numeric>

namespace {

// One line of points is buffered whole; the lists beside it take the room of a few points more.
constexpr qint64 bufferedPoints = 24;
constexpr qint64 handedBytes = qint64(256) << 10;

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

// Where the reading of some runs ended.
struct RunsEnd {
    qint64 point = 0;  // of the file, the first that is not whole
    qint64 target = 0; // its place in the block
};

RunsEnd endOf(const std::vector<PointRun> &runs, qint64 wholePoints)
{
    for (const PointRun &run : runs) {
        if (wholePoints < run.count)
            return {run.point + wholePoints, run.target + wholePoints};
        wholePoints -= run.count;
    }
    return {};
}

} // namespace

ObservationData stretchHeader(const ObservationData &whole, const Stretch &stretch)
{
    ObservationData data = whole;
    data.npoints = stretch.count;
    data.missingPoints = 0;
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

QString dataEndText(const ObservationData &data)
{
    if (data.missingPoints < 1)
        return {};
    const int last = completePoints(data) - 1;
    if (last < 0)
        return QString("None of the %1 points announced is whole.").arg(data.npoints);
    const QDateTime utc = RecordingClock(data).utc(last);
    return QString("The data end at point %1%2, of %3 points announced.")
        .arg(last)
        .arg(utc.isValid() ? textOfTime(utc, "', 'hh:mm:ss.zzz' UTC'") : QString())
        .arg(data.npoints);
}

QString endsEarlyText(const QString &path, const ObservationData &data)
{
    const int held = completePoints(data);
    const QDateTime last = held > 0 ? RecordingClock(data).utc(held - 1) : QDateTime();
    return path + QString(" ends early: of %1 points that its passport announces it holds %2%3. "
                          "Copy the file again.")
                      .arg(data.npoints)
                      .arg(held)
                      .arg(last.isValid() ? textOfTime(last, "', the last at 'hh:mm:ss.zzz' UTC'")
                                          : QString());
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
    record.missingPoints = std::max(0, record.npoints) - wholePointsInFile();
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

int RecordingFile::wholePointsInFile() const
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
    return StretchReading::none(StretchEnd::Refused,
                                QString("%1: %2").arg(file.fileName(), reason));
}

// Why these points cannot be read; empty where all of them are there.
QString RecordingFile::pointsProblem(qint64 first, qint64 count) const
{
    if (first >= 0 && count >= 1 && first + count <= completePoints())
        return {};
    if (completePoints() < 1)
        return "the file ends before its first point. Copy it again.";
    const QString end = record.missingPoints > 0 ? ". " + dataEndText(record) : QString(".");
    return QString("there are no points %1 to %2; the recording has the points 0 to %3%4")
        .arg(first)
        .arg(first + count - 1)
        .arg(completePoints() - 1)
        .arg(end);
}

StretchReading RecordingFile::read(const Stretch &stretch, const SampleReadingHooks &hooks)
{
    const QString refusal = stretch.wraps ? pointsProblem(0, std::min(stretch.count, 1))
                                          : pointsProblem(stretch.first, stretch.count);
    if (!refusal.isEmpty())
        return refused(refusal);
    return readRuns(stretch, runsOf(stretch.first, stretch.count, completePoints()), stretch.count,
                    hooks);
}

StretchReading RecordingFile::readInPlace(const Stretch &stretch, const SampleReadingHooks &hooks)
{
    if (stretch.wraps)
        return refused("a stretch that goes round has no place in the recording.");
    if (const QString refusal = pointsProblem(stretch.first, stretch.count); !refusal.isEmpty())
        return refused(refusal);
    Stretch whole = stretch;
    whole.first = 0;
    whole.count = record.npoints;
    return readRuns(whole, {{stretch.first, stretch.count, stretch.first}}, record.npoints, hooks);
}

StretchReading RecordingFile::read(const SpacedBlocks &spaced, const Stretch &chosen,
                                   const SampleReadingHooks &hooks)
{
    if (const QString refusal = pointsProblem(spaced.first, spaced.count); !refusal.isEmpty())
        return refused(refusal);
    if (spaced.blocks < 1 || spaced.points < 1 || spaced.count < spaced.blocks)
        return refused("there are no such blocks of points.");
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
    try {
        ObservationData part = stretchHeader(record, chosen);
        const SampleSelection selection = {
            chosenOrAll(chosen.modules, record.modules), chosenOrAll(chosen.rays, record.rays),
            withExtraChannel(chosenOrAll(chosen.channels, record.channels), record.channels)};
        // Points that are not read take no memory.
        int read = 0;
        for (const PointRun &run : runs)
            read += run.count;
        const qint64 needed = memoryToRead({read, part.modules, part.channels, part.rays});
        const auto block =
            needed < 0 || (available > 0 && needed > available)
                ? nullptr
                : SampleBlock::allocate(part.modules, part.channels, part.rays, points);
        if (!block)
            return refused(QString("%1 points need %2 of memory, %3 are available. Choose a "
                                   "shorter stretch or close other programs.")
                               .arg(read)
                               .arg(sizeText(needed), sizeText(available)));
        part.sampleMarker = -1.0;
        part.sampleFactor = 0.89;
        const SampleReading end =
            readSamples(file, entries.size, shape(), selection, runs, *block, hooks);
        if (end.end == SampleReadingEnd::Cancelled || end.end == SampleReadingEnd::TooSlow)
            return StretchReading::none(StretchEnd::Cancelled,
                                        QString("Reading %1 was cancelled.").arg(file.fileName()));
        part.samples = Samples(block);
        if (end.end == SampleReadingEnd::Complete)
            return StretchReading::complete(std::move(part));
        const RunsEnd stop = endOf(runs, end.valuesRead * qint64(sizeof(float)) / onePoint);
        part.missingPoints = int(points - stop.target);
        QString reason = file.fileName() +
                         QString(" ends early: its points from %1 on are missing. Copy the file "
                                 "again or use its first part only.")
                             .arg(stop.point);
        if (!end.error.isEmpty())
            reason += " The system says: " + end.error;
        return StretchReading::endedEarly(std::move(part), reason);
    } catch (const std::bad_alloc &) {
        return refused("there is not enough memory. Close other programs.");
    }
}

bool RecordingFile::readPoints(int first, int count,
                               const std::function<bool(const float *values, int points)> &take)
{
    const qint64 onePoint = pointBytes();
    const int block = int(std::clamp<qint64>(handedBytes / onePoint, 1, std::max(count, 1)));
    const auto values =
        std::make_unique_for_overwrite<float[]>(std::size_t(block * onePoint) / sizeof(float));
    bool goes = file.seek(entries.size + onePoint * first);
    for (int done = 0; goes && done < count; done += block) {
        const int points = std::min(block, count - done);
        if (file.read(reinterpret_cast<char *>(values.get()), onePoint * points) !=
            onePoint * points) {
            problem = file.fileName() + QString(" ends early: not all of its points %1 to %2 are "
                                                "there.")
                                            .arg(qint64(first) + done)
                                            .arg(qint64(first) + count - 1);
            return false;
        }
        goes = take(values.get(), points);
    }
    return goes;
}
