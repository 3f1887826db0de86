#pragma once

#include "base/wholefile.h"
#include "data/recordingfile.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// A passport as it stands in a file: the line that counts the lines, then the lines, each a
/// key, a blank and a value.
QByteArray passportText(const QStringList &lines);

/// Writes a recording: its passport, then float32 samples, little-endian, in the order point,
/// module, ray, channel. The file appears whole with commit() or not at all.
class RecordingWriter {
public:
    WriteFailure open(const QString &path, const QByteArray &passport);
    WriteFailure write(const float *values, qint64 count);
    WriteFailure commit() { return file.commit(); }

private:
    WholeFile file;
    std::vector<float> turned;
};

/// The passport of a stretch of a recording as a derived file: every key of the recording, with
/// `npoints`, the sidereal time and the end times those of the stretch, and the keys
/// "native_datetime" (begin, UTC), "file_path" (of the parent recording), "point" (its first
/// point there) and "dispersion" (a whole number of pc/cm^3). The date and time of begin stay
/// the parent's, because readers advance them by "point".
QByteArray stretchPassport(const RecordingFile &file, int first, int count, double dispersion);

/// Saves a stretch of a recording, all modules, rays and channels of it, as a ".pnthr" file.
///
/// @param progress  called with the percentage, 0 to 99; false stops without a file. May be empty
/// @return what went wrong, for the user to read; empty when the file stands or it was stopped
QString saveStretch(RecordingFile &file, int first, int count, double dispersion,
                    const QString &path, const std::function<bool(int percent)> &progress = {});
