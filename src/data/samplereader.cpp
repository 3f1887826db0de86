#include "data/samplereader.h"

#include "data/turnpoints.h"

#include <QElapsedTimer>
#include <QIODevice>
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <numeric>
#include <vector>

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "samples are copied as they stand in the file");

namespace {

constexpr qint64 blockBytes = qint64(4) << 20;
constexpr qint64 pageBytes = 4096;
constexpr qint64 keepAliveInterval = 5; // ms
constexpr qint64 progressStep = 1000;   // points

qint64 valuesPerPoint(const SampleShape &shape)
{
    return qint64(shape.modules) * shape.rays * shape.channels;
}

// Points that the buffer holds: as many whole cache lines of points as make about 4 MiB,
// but at least one line, so that no ray's line is ever written in parts.
qint64 pointsPerBuffer(const SampleShape &shape)
{
    const qint64 lineBytes = valuesPerPoint(shape) * pointsPerLine * qint64(sizeof(float));
    const qint64 lines = std::max(qint64(1), blockBytes / lineBytes);
    return std::min(lines * pointsPerLine, qint64(shape.npoints));
}

qint64 bufferBytes(const SampleShape &shape)
{
    return pointsPerBuffer(shape) * valuesPerPoint(shape) * qint64(sizeof(float));
}

// Begins on a page: the system copies the file in whole pages.
using PageBuffer = std::unique_ptr<float, decltype(&std::free)>;

PageBuffer allocateBuffer(qint64 bytes)
{
    const qint64 pages = (bytes + pageBytes - 1) / pageBytes;
    void *const memory = std::aligned_alloc(pageBytes, std::size_t(pages * pageBytes));
    if (!memory)
        throw std::bad_alloc();
    return PageBuffer(static_cast<float *>(memory), &std::free);
}

std::vector<int> allIndices(int count)
{
    std::vector<int> indices(std::size_t(count), 0);
    std::iota(indices.begin(), indices.end(), 0);
    return indices;
}

// Neighbouring values of a point, and the first of the rays that they go to.
struct ValueRun {
    qint64 offset = 0;
    qint64 values = 0;
    std::size_t firstRay = 0;
};

// One reading of a data section or of runs of its points.
class SampleReader {
public:
    SampleReader(QIODevice &source, const SampleShape &counts, const SampleSelection &chosen,
                 SampleBlock &target, const SampleReadingHooks &callbacks)
        : device(source), shape(counts), hooks(callbacks), pointValues(valuesPerPoint(counts)),
          buffer(allocateBuffer(bufferBytes(counts)))
    {
        steadyClock.start();
        for (std::size_t m = 0; m < chosen.modules.size(); ++m)
            for (std::size_t r = 0; r < chosen.rays.size(); ++r)
                for (std::size_t c = 0; c < chosen.channels.size(); ++c) {
                    const qint64 ray = qint64(chosen.modules[m]) * shape.rays + chosen.rays[r];
                    addValue(ray * shape.channels + chosen.channels[c]);
                    rays.push_back(target.ray(int(m), int(c), int(r)));
                }
    }

    // Runs as in readSamples(); without a place in the device it is read on from where it stands.
    SampleReading run(const std::vector<PointRun> &runs, qint64 dataBegin = -1)
    {
        startTime = now();
        lastKeepAlive = startTime - keepAliveInterval;
        for (const PointRun &part : runs)
            allPoints += part.count;
        const qint64 step = pointsPerBuffer(shape);
        const qint64 pointBytes = pointValues * qint64(sizeof(float));
        keepAlive();
        qint64 pointsBefore = 0;
        for (const PointRun &part : runs) {
            if (dataBegin >= 0 && going() && !device.seek(dataBegin + part.point * pointBytes))
                fail();
            for (qint64 done = 0; done < part.count && going(); done += step) {
                reportProgress(pointsBefore + done);
                const qint64 wanted = std::min(step, part.count - done) * pointValues;
                const qint64 values = fillBuffer(wanted);
                if (result.end == SampleReadingEnd::Complete ||
                    result.end == SampleReadingEnd::Short)
                    store(part.target + done, pointsBefore + done, values);
            }
            pointsBefore += part.count;
        }
        return result;
    }

private:
    void addValue(qint64 offset)
    {
        if (valueRuns.empty() || valueRuns.back().offset + valueRuns.back().values != offset)
            valueRuns.push_back({offset, 0, rays.size()});
        ++valueRuns.back().values;
    }

    void fail()
    {
        result.end = SampleReadingEnd::Short;
        result.error = device.errorString();
    }

    bool going() const { return result.end == SampleReadingEnd::Complete; }

    qint64 now() const { return hooks.clock ? hooks.clock() : steadyClock.elapsed(); }

    void keepAlive()
    {
        if (!hooks.keepAlive || now() - lastKeepAlive < keepAliveInterval)
            return;
        if (!hooks.keepAlive() && going())
            result.end = SampleReadingEnd::Cancelled;
        lastKeepAlive = now();
    }

    void askWhenSlow()
    {
        if (askedWhenSlow || (now() - startTime) / 1000 <= slowReadingSeconds)
            return;
        askedWhenSlow = true;
        if (hooks.continueSlow && !hooks.continueSlow())
            result.end = SampleReadingEnd::TooSlow;
    }

    // Reports every multiple of 1000 up to and including the point that is begun.
    void reportProgress(qint64 begunPoint)
    {
        for (; nextReport <= begunPoint && nextReport < allPoints; nextReport += progressStep) {
            if (hooks.progress)
                hooks.progress(int(nextReport * 100 / allPoints));
        }
    }

    // Returns the whole values that the buffer then holds.
    qint64 fillBuffer(qint64 values)
    {
        char *const bytes = reinterpret_cast<char *>(buffer.get());
        const qint64 wanted = values * qint64(sizeof(float));
        qint64 filled = 0;
        while (filled < wanted && going()) {
            const qint64 got = device.read(bytes + filled, std::min(blockBytes, wanted - filled));
            if (got <= 0) {
                result.end = SampleReadingEnd::Short;
                if (got < 0)
                    fail();
                break;
            }
            filled += got;
            askWhenSlow();
            keepAlive();
        }
        return filled / qint64(sizeof(float));
    }

    // Turns the buffer's points of one run of values, the rest of a point included.
    void store(const ValueRun &run, qint64 firstPoint, qint64 points, qint64 restValues)
    {
        float *const *const targets = rays.data() + run.firstRay;
        const float *const from = buffer.get() + run.offset;
        // What does not begin on a line of the rays goes there point by point.
        const qint64 head = std::min(points, -firstPoint & (pointsPerLine - 1));
        for (qint64 v = 0; v < run.values; ++v)
            for (qint64 p = 0; p < head; ++p)
                targets[v][firstPoint + p] = from[p * pointValues + v];
        // In slices of a block, for a line of very large points must not hold up the events.
        const qint64 sliceValues = blockBytes / qint64(sizeof(float)) / pointsPerLine;
        for (qint64 v = 0; v < run.values; v += sliceValues) {
            turnPoints(from + head * pointValues + v, pointValues,
                       std::min(sliceValues, run.values - v), targets + v, firstPoint + head,
                       points - head);
            keepAlive();
            if (result.end == SampleReadingEnd::Cancelled)
                return;
        }
        const qint64 rest = std::min(run.values, restValues - run.offset);
        for (qint64 v = 0; v < rest; ++v)
            targets[v][firstPoint + points] = from[points * pointValues + v];
    }

    void store(qint64 target, qint64 pointsBefore, qint64 values)
    {
        const qint64 points = values / pointValues;
        for (const ValueRun &run : valueRuns) {
            store(run, target, points, values % pointValues);
            if (result.end == SampleReadingEnd::Cancelled)
                return;
        }
        result.valuesRead += values;
        reportProgress(pointsBefore + points);
    }

    QIODevice &device;
    const SampleShape shape;
    const SampleReadingHooks &hooks;
    const qint64 pointValues;
    PageBuffer buffer;
    std::vector<float *> rays; // of the chosen values, in the order of the file
    std::vector<ValueRun> valueRuns;
    qint64 allPoints = 0;
    QElapsedTimer steadyClock;
    SampleReading result;
    qint64 startTime = 0;
    qint64 lastKeepAlive = 0;
    qint64 nextReport = 0;
    bool askedWhenSlow = false;
};

} // namespace

qint64 memoryToRead(const SampleShape &shape)
{
    const qint64 block =
        SampleBlock::bytesNeeded(shape.modules, shape.channels, shape.rays, shape.npoints);
    if (block < 0)
        return -1;
    // The buffer and one pointer a ray are far below the block and cannot overflow.
    const qint64 beside = bufferBytes(shape) + valuesPerPoint(shape) * qint64(sizeof(float *));
    qint64 bytes = 0;
    return __builtin_add_overflow(block, beside, &bytes) ? -1 : bytes;
}

SampleReading readSamples(QIODevice &device, const SampleShape &shape, SampleBlock &block,
                          const SampleReadingHooks &hooks)
{
    const SampleSelection all = {allIndices(shape.modules), allIndices(shape.rays),
                                 allIndices(shape.channels)};
    return SampleReader(device, shape, all, block, hooks).run({{0, shape.npoints, 0}});
}

SampleReading readSamples(QIODevice &device, qint64 dataBegin, const SampleShape &shape,
                          const SampleSelection &chosen, const std::vector<PointRun> &runs,
                          SampleBlock &block, const SampleReadingHooks &hooks)
{
    return SampleReader(device, shape, chosen, block, hooks).run(runs, dataBegin);
}
