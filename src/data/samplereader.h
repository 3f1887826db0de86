#pragma once

#include "data/samples.h"

#include <QString>
#include <functional>

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
SampleReading readSamples(QIODevice &device, const SampleShape &shape, SampleBlock &block,
                          const SampleReadingHooks &hooks = {});
