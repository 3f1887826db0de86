#pragma once

#include "data/observationdata.h"

#include <QByteArray>
#include <QMap>
#include <QString>

class QIODevice;

/// The text header of a recording: its lines as key and value, still uninterpreted.
struct Passport {
    QMap<QString, QString> entries; ///< keys as spelt; of a repeated key the last value
    qint64 size = 0;                ///< bytes up to the first sample
    bool complete = false;          ///< every line that the first one announces was found
    qint64 lines = 0;               ///< that the first one announces, itself included
    QString lineBeyond;             ///< a line of text where the samples begin; empty: none
    qint64 noText = 0;              ///< number of the first line that is no text; 0: none
};

/// What a passport says about its recording.
struct RecordingHeader {
    ObservationData data; ///< without samples; npoints 0 or -1 where `problem` is set
    QString problem;      ///< what makes the passport unusable; empty when it is sound
};

/// Longest passport that is read, bytes. Real ones take a few kilobytes.
inline constexpr qint64 passportSizeLimit = qint64(1) << 20;

/// Splits the beginning of a recording into passport entries.
///
/// Line 1 ends in the number of passport lines, itself included; "\n" ends a line and a
/// "\r" before it is dropped. Every other line is a key, a blank (or tab) and a value. Text
/// that is not UTF-8 keeps its bytes, see base/bytetext.h.
///
/// @param bytes  any bytes, from the first of the file
/// @return the lines that are there; `complete` is false when `bytes` ends before the last
Passport parsePassport(const QByteArray &bytes);

/// Reads the passport from the start of a device, page by page, and leaves the device at
/// the first sample. Gives up, with an incomplete passport, at the end of the device and at
/// `passportSizeLimit`.
Passport readPassport(QIODevice &device);

/// Gives the passport entries their meaning. Writes the debug lines about missing channels
/// and modules.
///
/// @param path  full path of the recording
/// @return times in UTC, step in s, frequencies in MHz; npoints is -1 when channels or
///         modules are missing and 0 when a count cannot be used. `modules` may be 0, from an
///         empty list: such a recording has no samples.
RecordingHeader recordingHeader(const Passport &passport, const QString &path);
