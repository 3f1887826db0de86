#pragma once

#include "data/observationdata.h"

#include <QByteArray>
#include <functional>

class QTemporaryDir;

namespace TestSupport {

/// Counts of a small recording; `channels` includes the extra last one.
struct Shape {
    int npoints = 100;
    int modules = 1;
    int channels = 33;
    int rays = 1;
};

/// Value of one sample; all indices from 0.
using SampleFunction = std::function<float(int point, int module, int channel, int ray)>;

/// A recording in memory: bands from 120.0 MHz upward in steps of 0.078125 MHz (2.5 MHz over
/// 32 bands), step 12.4928 ms, begin 2015-04-01 12:00:00 UTC.
ObservationData makeRecording(const Shape &shape, const SampleFunction &sample);

/// The same recording as the bytes of a ".pnt" file: passport, then samples in the order
/// point, module, ray, channel.
QByteArray recordingBytes(const Shape &shape, const SampleFunction &sample);

/// A passport: the line count that belongs to the lines, then the lines, each with its end.
QByteArray passportBytes(const QList<QByteArray> &lines);

/// Writes a file into a folder; ends the test program when it cannot.
///
/// @return its full path
QString writeFile(const QTemporaryDir &folder, const QString &name, const QByteArray &bytes);

/// Path of a real recording, or an empty text where the machine has none of that name.
QString realRecording(const QString &fileName);

} // namespace TestSupport
