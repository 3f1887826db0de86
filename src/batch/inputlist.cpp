#include "batch/inputlist.h"

#include "base/stopsignal.h"
#include "data/recordingset.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace Batch {

namespace {

constexpr qint64 longestList = qint64(1) << 29; // bytes; some millions of paths
constexpr int writerWaits = 20;                 // times that a writer of a pipe is waited for
constexpr std::chrono::milliseconds writerWait(50);

Failure cannotOpen(const QString &path, const QString &reason)
{
    return {ExitCode::NoInput,
            path + " cannot be opened: " + reason + ". Check the path and the permissions."};
}

Failure tooLong(const QString &path)
{
    return {ExitCode::BadData, path + " is too long for a list or a table."};
}

bool isPipe(const QString &path)
{
    struct stat state = {};
    return stat(QFile::encodeName(path).constData(), &state) == 0 && S_ISFIFO(state.st_mode);
}

// Opened without waiting, an empty pipe tells the difference: reading finds an end where nobody
// writes and would have to wait where somebody does.
Failure readPipe(const QString &path, qint64 most, QByteArray &bytes)
{
    const int handle = open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK);
    if (handle < 0)
        return cannotOpen(path, QString::fromLocal8Bit(std::strerror(errno)));
    QFile closesIt;
    closesIt.open(handle, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    bool hasWriter = false;
    int waits = 0;
    QByteArray block(1 << 16, Qt::Uninitialized);
    while (!isStopRequested() && bytes.size() <= most) {
        const ssize_t count = read(handle, block.data(), std::size_t(block.size()));
        if (count > 0) {
            bytes.append(block.constData(), int(count));
            hasWriter = true;
        } else if (count < 0 && errno == EAGAIN) {
            hasWriter = true;
            pollfd waiting = {handle, POLLIN, 0};
            poll(&waiting, 1, -1);
        } else if (count < 0 && errno != EINTR) {
            return {ExitCode::InputOutput, path + " cannot be read: " +
                                               QString::fromLocal8Bit(std::strerror(errno)) + "."};
        } else if (count == 0 && hasWriter) {
            return {};
        } else if (count == 0 && waits++ == writerWaits) {
            return {ExitCode::NoInput, path + " is a pipe that nothing comes from."};
        } else if (count == 0) {
            std::this_thread::sleep_for(writerWait);
        }
    }
    return isStopRequested() ? stopped() : tooLong(path);
}

// Paths of a list.
Failure readList(const QString &name, QStringList &paths)
{
    QByteArray text;
    if (name == "-") {
        QFile file;
        if (!file.open(stdin, QIODevice::ReadOnly))
            return {ExitCode::NoInput, "The standard input cannot be read."};
        text = file.readAll();
    } else if (Failure failure = readInput(name, longestList, text)) {
        failure.text = "The list " + failure.text;
        return failure;
    }
    for (const QByteArray &line : text.split('\n')) {
        const QByteArray path = line.trimmed();
        if (!path.isEmpty() && !path.startsWith('#'))
            paths << QFile::decodeName(path);
    }
    return {};
}

// Recordings of a folder.
Failure readFolder(const QString &path, QStringList &paths)
{
    const QDir folder(path);
    const int before = paths.size();
    // No filter of names: its patterns fail on names that are not UTF-8.
    for (const QString &name : folder.entryList(QDir::Files | QDir::Readable, QDir::Name)) {
        if (hasRecordingName(name))
            paths << folder.filePath(name);
    }
    if (paths.size() > before)
        return {};
    return {ExitCode::NoInput, "The folder " + path + " holds no recordings (.pnt, .pnthr)."};
}

} // namespace

Failure openInput(QFile &file)
{
    const QFileInfo info(file.fileName());
    if (info.exists() && !info.isFile())
        return {ExitCode::NoInput, file.fileName() + " is not an ordinary file."};
    if (!file.open(QIODevice::ReadOnly))
        return cannotOpen(file.fileName(), file.errorString());
    return {};
}

Failure readInput(const QString &path, qint64 most, QByteArray &bytes)
{
    if (isPipe(path))
        return readPipe(path, most, bytes);
    QFile file(path);
    if (Failure failure = openInput(file))
        return failure;
    if (file.size() > most)
        return tooLong(path);
    bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return {ExitCode::InputOutput, path + " cannot be read: " + file.errorString() + "."};
    return {};
}

InputList expandInputs(const QStringList &arguments)
{
    InputList list;
    QStringList named;
    for (const QString &argument : arguments) {
        if (argument.startsWith('@'))
            list.failure = readList(argument.mid(1), named);
        else if (QFileInfo(argument).isDir())
            list.failure = readFolder(argument, named);
        else
            named << argument;
        if (list.failure)
            return list;
    }

    list.paths = filesOnce(named);
    return list;
}

} // namespace Batch
