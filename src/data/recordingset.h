#pragma once

#include "data/observationdata.h"
#include "jobs/control.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <vector>

/// How far a file can be used.
enum class RecordingState {
    Whole,
    Short,      ///< it ends before the last point that its passport announces
    Damaged,    ///< its passport makes no sense
    Unreadable, ///< a file that cannot be opened, or a folder
};

/// One recording as its header tells it. Numbers of modules and rays: data/truenumbers.h.
struct RecordingEntry {
    QString path;             ///< absolute
    ObservationData header;   ///< without samples
    QDateTime begin;          ///< UTC to the millisecond, see exactBegin(); invalid where unknown
    qint64 size = 0;          ///< bytes of the file
    qint64 announcedSize = 0; ///< bytes by the passport; -1 beyond 63 bits
    int completePoints = 0;   ///< points that the file holds whole
    RecordingState state = RecordingState::Unreadable;
    QString problem; ///< which file, what is wrong, what can be done; empty when Whole

    /// Whether there are samples to analyse.
    bool isUsable() const
    {
        return state == RecordingState::Whole || state == RecordingState::Short;
    }
};

/// The recordings of a folder or of a list, each read no further than its header.
struct RecordingSet {
    /// By begin; those of the same begin by path. Without begin, or unusable: at the end, by path.
    std::vector<RecordingEntry> entries;
    bool wasStopped = false; ///< then there are no entries
};

/// Whether a file is called like a recording: ".pnt" or ".pnthr".
bool hasRecordingName(const QString &fileName);

/// Absolute paths of files, each once, in the order in which they are first named, in whatever way.
QStringList filesOnce(const QStringList &paths);

/// Reads the headers of files, several at once, for a disk answers many questions sooner than one
/// after the other.
///
/// @param control  its remarks are not used
/// @return an entry for every path, in that order; nothing when stopped
std::vector<RecordingEntry> readHeaders(const QStringList &paths,
                                        const Jobs::Control &control = {});

/// The recordings of a list, each once.
RecordingSet recordingsOfFiles(const QStringList &paths, const Jobs::Control &control = {});

/// The recordings of a folder, by their names. A folder that cannot be read has an entry of its
/// own.
///
/// @param withSubfolders  those of its folders too, links included, hidden ones not
RecordingSet recordingsOfFolder(const QString &folder, bool withSubfolders,
                                const Jobs::Control &control = {});
