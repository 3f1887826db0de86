#include "batch/outputfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSaveFile>
#include <QSet>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <unistd.h>

namespace Batch {

namespace {

Failure cannotCreate(const QString &path, const QString &reason)
{
    return {ExitCode::CannotCreate,
            QString("%1 cannot be made: %2. Check the folder and its permissions, or choose "
                    "another with --output.")
                .arg(path, reason)};
}

Failure cannotWrite(const QString &path, const QString &reason)
{
    return {ExitCode::InputOutput, QString("%1 cannot be written: %2. Nothing of it was kept; make "
                                           "room on the disk and run the same command again.")
                                       .arg(path, reason)};
}

QString systemReason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

// A rename is lasting once the folder itself is on the disk.
void syncFolder(const QString &path)
{
    const int folder =
        open(QFile::encodeName(QFileInfo(path).absolutePath()).constData(), O_RDONLY | O_DIRECTORY);
    if (folder >= 0) {
        fsync(folder);
        close(folder);
    }
}

} // namespace

Failure OutputWriter::open(const QString &path)
{
    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder))
        return cannotCreate(path, QString("the folder %1 cannot be made").arg(folder));
    file = std::make_unique<QSaveFile>(path);
    // Unbuffered, so that the system's reason of a failure is that of the write.
    if (!file->open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return cannotCreate(path, file->errorString());
    // The lock tells later runs that the file is not abandoned.
    flock(file->handle(), LOCK_EX | LOCK_NB);
    return {};
}

Failure OutputWriter::write(const char *bytes, qint64 count)
{
    errno = 0;
    if (file->write(bytes, count) != count)
        return cannotWrite(file->fileName(), errno ? systemReason() : file->errorString());
    return {};
}

Failure OutputWriter::flush()
{
    if (!file->flush())
        return cannotWrite(file->fileName(), file->errorString());
    // Pipes and some network folders know no flushing.
    if (fsync(file->handle()) != 0 && errno != EINVAL && errno != ENOTSUP)
        return cannotWrite(file->fileName(), systemReason());
    return {};
}

Failure OutputWriter::commit()
{
    if (Failure failure = flush())
        return failure;
    if (!file->commit())
        return cannotWrite(file->fileName(), file->errorString());
    syncFolder(file->fileName());
    return {};
}

void removeAbandoned(const QStringList &paths)
{
    constexpr int randomLetters = 6; // behind the name of a file being saved
    QMap<QString, QSet<QString>> namesByFolder;
    for (const QString &path : paths)
        namesByFolder[QFileInfo(path).absolutePath()].insert(QFileInfo(path).fileName());
    for (auto folder = namesByFolder.begin(); folder != namesByFolder.end(); ++folder) {
        for (const QString &name : QDir(folder.key()).entryList(QDir::Files)) {
            const int point = name.size() - randomLetters - 1;
            if (point < 1 || name[point] != '.' || !folder->contains(name.left(point)))
                continue;
            const QByteArray file = QFile::encodeName(folder.key() + "/" + name);
            const int handle = open(file.constData(), O_RDWR);
            if (handle < 0)
                continue;
            if (flock(handle, LOCK_EX | LOCK_NB) == 0)
                unlink(file.constData());
            close(handle);
        }
    }
}

Failure writeTogether(const std::vector<OutputFile> &files)
{
    std::vector<OutputWriter> writers(files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (Failure failure = writers[i].open(files[i].path))
            return failure;
        if (Failure failure = writers[i].write(files[i].bytes))
            return failure;
        if (Failure failure = files[i].rest ? files[i].rest(writers[i]) : Failure())
            return failure;
        if (Failure failure = writers[i].flush())
            return failure;
    }
    if (files.size() > 1)
        QFile::remove(files.back().path);
    for (OutputWriter &writer : writers) {
        if (Failure failure = writer.commit())
            return failure;
    }
    return {};
}

} // namespace Batch
