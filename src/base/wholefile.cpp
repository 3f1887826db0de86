#include "base/wholefile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRandomGenerator>
#include <QSet>
#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

// Behind the name of a file that is being written: a point and random letters.
constexpr int temporaryEnding = 7;

QString systemReason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

// Whether an ending is one of those random ones: letters of both cases, not just a capital in
// front, so that nobody's "table.txt.backup" is taken for one.
bool isTemporary(const QString &ending)
{
    const auto isLetter = [](QChar c) { return c.unicode() < 0x80 && c.isLetter(); };
    const QString letters = ending.mid(1);
    return ending.startsWith('.') && std::all_of(letters.begin(), letters.end(), isLetter) &&
           letters.mid(1) != letters.mid(1).toLower() && letters != letters.toUpper();
}

QString randomEnding()
{
    QString ending = ".";
    do {
        ending.truncate(1);
        while (ending.size() < temporaryEnding) {
            const int letter = QRandomGenerator::global()->bounded(52);
            ending += QChar(letter < 26 ? 'a' + letter : 'A' + letter - 26);
        }
    } while (!isTemporary(ending));
    return ending;
}

// What fails a file that could be made otherwise.
bool isOfTheDisk(int error)
{
    constexpr std::array errors = {ENOSPC, EDQUOT, EFBIG, EIO};
    return std::find(errors.begin(), errors.end(), error) != errors.end();
}

// Why the path can be no output, before anything is tried; empty where nothing speaks against it.
QString refusal(const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir())
        return "it is a folder";
    if (info.exists() && !info.isFile())
        return "it is not an ordinary file";
    if (QFile::encodeName(info.fileName()).size() + temporaryEnding > NAME_MAX)
        return QString("%1. Its name takes %2 bytes, %3 at most can be written")
            .arg(systemReason(ENAMETOOLONG))
            .arg(QFile::encodeName(info.fileName()).size())
            .arg(NAME_MAX - temporaryEnding);
    return {};
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

QString WriteFailure::text() const
{
    switch (kind) {
    case Kind::CannotCreate:
        return path + " cannot be made: " + reason + ".";
    case Kind::CannotWrite:
        return path + " cannot be written: " + reason + ".";
    case Kind::Stopped:
        return path + " was not written: stopped.";
    case Kind::None:
        break;
    }
    return {};
}

WriteFailure WholeFile::open(const QString &path)
{
    target = path;
    if (const QString reason = refusal(path); !reason.isEmpty())
        return {WriteFailure::Kind::CannotCreate, path, reason};
    file = std::make_unique<QSaveFile>(path);
    errno = 0;
    // Unbuffered, so that the system's reason of a failure is that of the write, and so that
    // nothing is left to be written when the file takes its place.
    if (!file->open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return {isOfTheDisk(errno) ? WriteFailure::Kind::CannotWrite
                                   : WriteFailure::Kind::CannotCreate,
                path, errno ? systemReason(errno) : file->errorString()};
    // The lock tells later runs that the file is not abandoned.
    flock(file->handle(), LOCK_EX | LOCK_NB);
    return {};
}

WriteFailure WholeFile::write(const char *bytes, qint64 count)
{
    errno = 0;
    if (file->write(bytes, count) != count)
        return {WriteFailure::Kind::CannotWrite, target,
                errno ? systemReason(errno) : file->errorString()};
    return {};
}

WriteFailure WholeFile::flush()
{
    errno = 0;
    const bool isFlushed = file->flush();
    // Some network folders know no flushing.
    if (!isFlushed || (fsync(file->handle()) != 0 && errno != EINVAL && errno != ENOTSUP))
        return {WriteFailure::Kind::CannotWrite, target,
                errno ? systemReason(errno) : file->errorString()};
    return {};
}

WriteFailure WholeFile::commit(const QDateTime &modified)
{
    if (WriteFailure failure = flush())
        return failure;
    if (modified.isValid())
        file->setFileTime(modified, QFileDevice::FileModificationTime);
    errno = 0;
    if (!file->commit())
        return {WriteFailure::Kind::CannotWrite, target,
                errno ? systemReason(errno) : file->errorString()};
    syncFolder(target);
    return {};
}

WriteFailure writeTogether(const std::vector<FileContent> &files)
{
    std::vector<WholeFile> writers(files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (WriteFailure failure = writers[i].open(files[i].path))
            return failure;
        if (WriteFailure failure = writers[i].write(files[i].bytes))
            return failure;
        if (WriteFailure failure = files[i].rest ? files[i].rest(writers[i]) : WriteFailure())
            return failure;
        if (WriteFailure failure = writers[i].flush())
            return failure;
    }
    if (files.size() > 1)
        QFile::remove(files.back().path);
    for (WholeFile &writer : writers) {
        if (WriteFailure failure = writer.commit())
            return failure;
    }
    return {};
}

WriteFailure writeWhole(const QString &path, const QByteArray &bytes)
{
    return writeTogether({{path, bytes}});
}

bool writeReplaceable(const QString &path, const QByteArray &bytes)
{
    if (!refusal(path).isEmpty())
        return false;
    QFile file(path + randomEnding());
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return false;
    flock(file.handle(), LOCK_EX | LOCK_NB);
    const bool isWritten = file.write(bytes) == bytes.size() &&
                           std::rename(QFile::encodeName(file.fileName()).constData(),
                                       QFile::encodeName(path).constData()) == 0;
    if (!isWritten)
        file.remove();
    return isWritten;
}

void removeAbandoned(const QStringList &paths)
{
    QMap<QString, QSet<QString>> namesByFolder;
    for (const QString &path : paths)
        namesByFolder[QFileInfo(path).absolutePath()].insert(QFileInfo(path).fileName());
    for (auto folder = namesByFolder.begin(); folder != namesByFolder.end(); ++folder) {
        for (const QString &name : QDir(folder.key()).entryList(QDir::Files)) {
            if (!isTemporary(name.right(temporaryEnding)) ||
                !folder->contains(name.chopped(temporaryEnding)))
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
