#pragma once

#include "data/passport.h"
#include "data/samplereader.h"
#include "data/stretchresult.h"

#include <QFile>
#include <QString>
#include <functional>
#include <vector>

/// A part of a recording.
struct Stretch {
    int first = 0; ///< point, index within the file
    int count = 0; ///< points, at least 1
    /// Indices from 0, ascending; an empty list means all. The extra last channel always comes
    /// along, so that the bands of the part are those that were named.
    std::vector<int> modules;
    std::vector<int> rays;
    std::vector<int> channels;
    /// Points before the first and after the last one are taken from the other end of what the
    /// file holds, as often as needed. Without it they are refused.
    bool wraps = false;
};

/// Blocks of points at equal distances, for a first look at a long recording.
struct SpacedBlocks {
    int first = 0;  ///< point, index within the file, of the first block
    int count = 0;  ///< points from there that are divided among the blocks
    int blocks = 0; ///< at most `count`
    int points = 0; ///< of each block; all of them together at most `count`
};

/// A part as a recording of its own: `npoints` points, the chosen modules, rays and channels,
/// `point` and the begin those of its first point, so that every analysis works on it as on a
/// whole one. `missingPoints` tells what is missing where the file ends early.
using StretchReading = StretchResult<ObservationData>;

/// A recording that is read in parts. One object belongs to one thread; several objects may
/// read the same file. Parts are taken of the points that the file holds whole: a recording that
/// ends early is read as one of that length.
class RecordingFile {
public:
    /// Opens a file and reads its passport.
    ///
    /// @return false when it is no usable recording; reason() says why
    bool open(const QString &path);

    QString path() const { return file.fileName(); }
    /// Which file, what is wrong with it and what can be done; empty after a success.
    const QString &reason() const { return problem; }
    const Passport &passport() const { return entries; }
    /// What the passport says, without samples; `missingPoints` tells how many of its points the
    /// file lacks.
    const ObservationData &header() const { return record; }

    qint64 size() const { return bytes; } ///< of the file when it was opened, bytes
    /// Bytes that the passport announces, itself included; -1 beyond 63 bits.
    qint64 announcedSize() const;
    /// Points that the file holds whole, at most npoints.
    int completePoints() const { return ::completePoints(record); }
    /// Bytes of one point, all modules, rays and channels; -1 beyond 63 bits.
    qint64 pointBytes() const;

    StretchReading read(const Stretch &stretch, const SampleReadingHooks &hooks = {});

    /// The stretch, which must not wrap, in a record as long as the whole recording: every point
    /// stands at its own index, so that points and times mean what they mean in the file. Those
    /// outside the stretch read as 0 and take no memory worth the name.
    StretchReading readInPlace(const Stretch &stretch, const SampleReadingHooks &hooks = {});

    /// Reads the blocks as one record: block b stands at the points b x points and following,
    /// and holds the points of the file from blockFirst(spaced, b) on.
    StretchReading read(const SpacedBlocks &spaced, const Stretch &chosen,
                        const SampleReadingHooks &hooks = {});

    /// Hands over points as they stand in the file, all values of one after the other, in blocks
    /// that stay in the processor's cache.
    ///
    /// @param take  gets the first value of the first point of a block; false ends the reading
    /// @return false when `take` ended it or the file ends early; reason() then says so
    [[nodiscard]] bool readPoints(int first, int count,
                                  const std::function<bool(const float *values, int points)> &take);

private:
    SampleShape shape() const;
    int wholePointsInFile() const;
    QString pointsProblem(qint64 first, qint64 count) const;
    StretchReading refused(const QString &reason) const;
    StretchReading readRuns(const Stretch &chosen, const std::vector<PointRun> &runs, int points,
                            const SampleReadingHooks &hooks);

    QFile file;
    Passport entries;
    ObservationData record;
    qint64 bytes = 0;
    QString problem;
};

/// Opens a recording for reading, unbuffered; pipes and devices are refused.
///
/// @return false: `reason` says which file, why, and what can be done
bool openRecording(QFile &file, QString &reason);

/// What a user reads of a passport that has a RecordingHeader::problem.
QString badPassport(const QString &path, const QString &headerProblem);

/// Where the data of a recording that ends early end: the last point that is whole and its UTC,
/// of how many; empty where nothing is missing.
QString dataEndText(const ObservationData &data);

/// What is wrong with a recording that lacks points, and what can be done.
QString endsEarlyText(const QString &path, const ObservationData &data);

/// Whether a passport has no end within its limit: where its lines end nobody knows, so that
/// any sample would be a guess.
bool isEndless(const Passport &passport, qint64 fileSize);
QString endlessPassport(const QString &path);

/// Point of the file at which a block begins.
int blockFirst(const SpacedBlocks &spaced, int block);

/// The record of a part without its samples: counts, frequencies, numbers, times.
ObservationData stretchHeader(const ObservationData &whole, const Stretch &stretch);
