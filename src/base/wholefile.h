#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QSaveFile>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

/// Why a file was not written.
struct [[nodiscard]] WriteFailure {
    enum class Kind {
        None,
        CannotCreate, ///< there is no place for it: no folder, no permission, no ordinary file
        CannotWrite,  ///< the writing failed on the way: a full disk, a broken device
        Stopped,      ///< nothing is wrong, the user wants it no more
    };
    Kind kind = Kind::None;
    QString path;
    QString reason; ///< the cause alone, "No space left on device"

    explicit operator bool() const { return kind != Kind::None; }
    /// File and cause, one sentence for the user; empty when nothing failed.
    QString text() const;
};

/// One file that is written piece by piece and appears whole or not at all: under a temporary
/// name in its folder until commit(). What stood under its name stays until then. Whatever is
/// written for a user goes through here, so that a disk that is full or fails is always told.
///
/// The name of an existing file that is none of the ordinary ones, a device or a pipe, is
/// refused, for the new file would take its place.
class WholeFile {
public:
    /// The folder must be there.
    WriteFailure open(const QString &path);
    /// Not buffered: small pieces are collected before.
    WriteFailure write(const char *bytes, qint64 count);
    WriteFailure write(const QByteArray &bytes) { return write(bytes.constData(), bytes.size()); }
    /// Everything is on the disk afterwards, still under the temporary name.
    WriteFailure flush();
    /// Puts the file in its place. Without it nothing appears.
    ///
    /// @param modified  time of change that the file gets; invalid: now
    WriteFailure commit(const QDateTime &modified = {});

    QString path() const { return target; }

private:
    std::unique_ptr<QSaveFile> file;
    QString target;
};

struct FileContent {
    QString path;
    QByteArray bytes;
    /// Writes what follows the bytes, piece by piece; empty: nothing does.
    std::function<WriteFailure(WholeFile &file)> rest = {};
};

/// Writes files that belong together, each whole or not at all: all are on the disk under
/// temporary names before the first takes its place. The last one says that the others are
/// there: an older one of its name goes before the first new file comes. Folders are not made.
WriteFailure writeTogether(const std::vector<FileContent> &files);

/// Writes one file, whole or not at all.
WriteFailure writeWhole(const QString &path, const QByteArray &bytes);

/// Writes a file that can be made again: whole or not at all for every program that looks, but
/// without waiting for the disk, so that a power failure may leave anything under its name. Its
/// reader has to notice.
///
/// @return false where it was not written
bool writeReplaceable(const QString &path, const QByteArray &bytes);

/// Removes what killed programs left behind of files that were written under temporary names
/// beside these paths. What a living process still writes is kept. Looks into each folder once.
void removeAbandoned(const QStringList &paths);
