#include "data/samplereader.h"

#include "data/turnpoints.h"

#include <QElapsedTimer>
#include <QIODevice>
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
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

// One reading of a data section, from the first point to the last.
class SampleReader {
public:
    SampleReader(QIODevice &source, const SampleShape &counts, SampleBlock &target,
                 const SampleReadingHooks &callbacks)
        : device(source), shape(counts), hooks(callbacks), pointValues(valuesPerPoint(counts)),
          buffer(allocateBuffer(bufferBytes(counts)))
    {
        steadyClock.start();
        rays.reserve(std::size_t(pointValues));
        for (int m = 0; m < shape.modules; ++m)
            for (int r = 0; r < shape.rays; ++r)
                for (int c = 0; c < shape.channels; ++c)
                    rays.push_back(target.ray(m, c, r));
    }

    SampleReading run()
    {
        startTime = now();
        lastKeepAlive = startTime - keepAliveInterval;
        const qint64 step = pointsPerBuffer(shape);
        keepAlive();
        for (qint64 point = 0; point < shape.npoints && going(); point += step) {
            reportProgress(point);
            const qint64 wanted = std::min(step, shape.npoints - point) * pointValues;
            const qint64 values = fillBuffer(wanted);
            if (result.end == SampleReadingEnd::Complete || result.end == SampleReadingEnd::Short)
                store(point, values);
        }
        return result;
    }

private:
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
        for (; nextReport <= begunPoint && nextReport < shape.npoints; nextReport += progressStep) {
            if (hooks.progress)
                hooks.progress(int(nextReport * 100 / shape.npoints));
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
                    result.error = device.errorString();
                break;
            }
            filled += got;
            askWhenSlow();
            keepAlive();
        }
        return filled / qint64(sizeof(float));
    }

    void store(qint64 firstPoint, qint64 values)
    {
        const qint64 points = values / pointValues;
        const qint64 rest = values % pointValues;
        // In slices of a block, for a line of very large points must not hold up the events.
        const qint64 sliceValues = blockBytes / qint64(sizeof(float)) / pointsPerLine;
        for (qint64 v = 0; v < pointValues; v += sliceValues) {
            turnPoints(buffer.get() + v, pointValues, std::min(sliceValues, pointValues - v),
                       rays.data() + v, firstPoint, points);
            keepAlive();
            if (result.end == SampleReadingEnd::Cancelled)
                return;
        }
        const float *const last = buffer.get() + points * pointValues;
        for (qint64 v = 0; v < rest; ++v)
            rays[std::size_t(v)][firstPoint + points] = last[v];
        result.valuesRead += values;
        reportProgress(firstPoint + points);
    }

    QIODevice &device;
    const SampleShape shape;
    const SampleReadingHooks &hooks;
    const qint64 pointValues;
    PageBuffer buffer;
    std::vector<float *> rays; // in the order of the file: module, ray, channel
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
    return SampleReader(device, shape, block, hooks).run();
}
