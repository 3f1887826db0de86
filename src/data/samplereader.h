#pragma once

#include "data/samples.h"

#include <QString>
#include <functional>
#include <vector>

class QIODevice;

/// Counts of a recording, all at least 1.
struct SampleShape {
    int npoints = 0;
    int modules = 0;
    int channels = 0; ///< the extra last one included
    int rays = 0;
};

/// Bytes of memory taken by reading a recording of this shape; -1 when a count is below 1
/// or the size overflows 63 bits.
qint64 memoryToRead(const SampleShape &shape);

/// What goes on beside the reading. Functions left empty are not called.
struct SampleReadingHooks {
    /// Percent of the points read, 0 to 99: called once for every point whose number is a
    /// multiple of 1000.
    std::function<void(int percent)> progress;
    /// Called every few milliseconds; false cancels.
    std::function<bool()> keepAlive;
    /// Called once, when reading has taken longer than slowReadingSeconds; false gives up.
    std::function<bool()> continueSlow;
    /// Milliseconds since any fixed moment; the default is a steady clock.
    std::function<qint64()> clock;
};

/// Reading may take this long, in whole seconds, before `continueSlow` is asked.
inline constexpr qint64 slowReadingSeconds = 3600;

enum class SampleReadingEnd { Complete, Short, Cancelled, TooSlow };

struct SampleReading {
    SampleReadingEnd end = SampleReadingEnd::Complete;
    qint64 valuesRead = 0; ///< whole float values, all of them stored
    QString error;         ///< the device's own words when it failed instead of ending
};

/// Reads the data section of a recording: float32 values, little-endian, in the order point,
/// module, ray, channel. The device is read in blocks of about 4 MiB, straight into the
/// buffer when it is unbuffered.
///
/// @param device  stands at the first sample; what follows the last one is not read
/// @param block   allocated for `shape`, fresh; after a short device the values that are
///                missing are still zero
[[nodiscard]] SampleReading readSamples(QIODevice &device, const SampleShape &shape,
                                        SampleBlock &block, const SampleReadingHooks &hooks = {});

/// What is taken of every point: indices from 0, ascending, each list with one at least.
struct SampleSelection {
    std::vector<int> modules;
    std::vector<int> rays;
    std::vector<int> channels;
};

/// Points that follow each other in the file, and where the first of them goes in the block.
struct PointRun {
    int point = 0; ///< index within the file
    int count = 0;
    int target = 0; ///< point index within the block
};

/// Reads parts of a data section: some values of some points. The file's values between those
/// are read and passed over, for they share the disk's pages; other points are not read.
///
/// @param device     random access
/// @param dataBegin  byte of the device at which the data section begins
/// @param shape      of the file
/// @param runs       within the file and the block; read in this order
/// @param block      allocated for the chosen counts, fresh; what a short device lacks is zero
/// @return `valuesRead` counts the file's values, chosen or not; a run that lies beyond the
///         device's end makes the reading Short, and the runs after it are not tried
[[nodiscard]] SampleReading readSamples(QIODevice &device, qint64 dataBegin,
                                        const SampleShape &shape, const SampleSelection &chosen,
                                        const std::vector<PointRun> &runs, SampleBlock &block,
                                        const SampleReadingHooks &hooks = {});
