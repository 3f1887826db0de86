#pragma once

#include "data/observationdata.h"

#include <QByteArray>
#include <QString>
#include <functional>

class QIODevice;

/// Result files and recordings as text that one can read.
///
/// A result file has a header of text lines, whose last one begins with "days:", and after it
/// that many blocks of float32 values, little-endian, "points:" of them in each.
namespace Tools {

/// What the header of a result file says.
struct ResultHeader {
    QByteArray text;     ///< all its lines with their ends, as they stand
    int points = 0;      ///< values per block; below 1: this is no result file
    qint64 blocks = -1;  ///< -1: no readable "days:" line ends the header
    bool isFloat = true; ///< false: a "type:" line names something else than float
    QString firstPoint;  ///< text of "first_point:"
    bool isUsable() const { return points > 0 && blocks >= 0 && isFloat; }
};

/// How making a text ended.
struct [[nodiscard]] TextEnd {
    enum class Kind {
        Done,
        BadInput,     ///< the file is damaged or of another kind
        CannotRead,   ///< it is missing or may not be read
        CannotCreate, ///< no place for the text
        CannotWrite,  ///< a full disk, a broken device
        Cancelled,
    };
    Kind kind = Kind::Done;
    QString text; ///< what went wrong, for the user to read; empty when the text stands
};

/// Percentage done, 0 to 100; may be empty.
using TextProgress = std::function<void(int)>;

/// Asked again and again; the work ends without a file once it says true. May be empty.
using TextCancelled = std::function<bool()>;

/// Reads the header and leaves the device at the first block. At most a megabyte is read where
/// the header has no end.
ResultHeader readResultHeader(QIODevice &device);

/// Names the first block that a result file does not hold whole; empty where all are there.
///
/// @param header     usable
/// @param available  bytes behind the header
QString shortBlockText(const ResultHeader &header, qint64 available, const QString &path);

/// Writes a result file as text: its header, then one value per line, with as many digits as
/// bring back the same float. The text appears whole or not at all.
///
/// @param modified  time of change that the text gets; invalid: now
TextEnd resultToText(const QString &inPath, const QString &outPath,
                     const TextProgress &progress = {}, const TextCancelled &cancelled = {},
                     const QDateTime &modified = {});

/// Whether a file is a result file, sound or not, rather than a recording.
bool isResultFile(const QString &path);

/// What resultToText will say against a file before it writes anything; empty where nothing
/// stands against it.
QString resultProblem(const QString &inPath);

/// About how many bytes resultToText will write, from a look at the first values; 0 for what
/// it will refuse.
qint64 resultTextBytes(const QString &inPath);

/// Writes all samples as text, with as many digits as bring back the same float. For every
/// point a line "i=<point, from 0>", then for every module and ray a line
/// "module 1 ray 1: <value of every channel, the extra last one included>". The text appears
/// whole or not at all; memory stays at a megabyte whatever its size.
///
/// @param data      whole recording; only read
/// @param modified  time of change that the text gets; invalid: now
/// @return one debug line as well when the file cannot be opened
TextEnd observationToText(const ObservationData &data, const QString &path,
                          const TextProgress &progress = {}, const TextCancelled &cancelled = {},
                          const QDateTime &modified = {});

/// About how many bytes observationToText will write, from a look at the first points.
qint64 observationTextBytes(const ObservationData &data);

/// The same for a recording that was not read yet; 0 for what is no recording.
qint64 recordingTextBytes(const QString &inPath);

} // namespace Tools
