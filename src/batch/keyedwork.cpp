#include "batch/keyedwork.h"

#include "batch/recordings.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace Batch {

using namespace Results;

namespace {

constexpr qint64 searched = 1 << 16; // bytes at the begin of a file
constexpr int digits = 24;

// The texts of a PDF are of 16 bits.
QByteArray bigEndian(const QString &text)
{
    QByteArray bytes;
    for (const QChar c : text)
        bytes.append(char(c.unicode() >> 8)).append(char(c.unicode() & 0xFF));
    return bytes;
}

} // namespace

bool areMade(const QStringList &paths, const QString &table, const std::vector<HeaderLine> &request,
             Format format)
{
    const QByteArray wanted = requestBytes(request, format);
    QFile file(table);
    return std::all_of(paths.begin(), paths.end(),
                       [](const QString &path) { return QFileInfo(path).isFile(); }) &&
           file.open(QIODevice::ReadOnly) && file.read(wanted.size()) == wanted;
}

bool holdsKey(const QString &path, const QString &key)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray begin = file.read(searched);
    return begin.contains(key.toLatin1()) || begin.contains(bigEndian(key));
}

QString besideOrIn(const QString &input, const OutputOptions &output, const QString &name)
{
    const QDir folder(output.folder.isEmpty() ? QFileInfo(input).absolutePath() : output.folder);
    return QDir::cleanPath(folder.absoluteFilePath(name));
}

std::vector<HeaderLine> requestOf(const QString &command, const QString &input,
                                  const std::vector<HeaderLine> &parameters)
{
    std::vector<HeaderLine> request = inputHeader(command, input);
    request.insert(request.end(), parameters.begin(), parameters.end());
    return request;
}

QString requestKey(const std::vector<HeaderLine> &request)
{
    const QByteArray hash =
        QCryptographicHash::hash(requestBytes(request, Format::Text), QCryptographicHash::Sha256);
    return "zrt-request-" + QString::fromLatin1(hash.toHex().left(digits));
}

Work keyedWork(const QString &command, const std::vector<HeaderLine> &parameters,
               const std::function<QStringList(const QString &)> &outputs,
               const std::function<QString(const QString &)> &keyFile)
{
    Work work;
    work.command = command;
    work.outputs = outputs;
    work.isDone = [=](const QString &input) {
        const QStringList paths = outputs(input);
        return holdsKey(keyFile(input), requestKey(requestOf(command, input, parameters))) &&
               std::all_of(paths.begin(), paths.end(),
                           [](const QString &path) { return QFileInfo(path).isFile(); });
    };
    work.memory = [](const QString &) { return qint64(0); };
    return work;
}

} // namespace Batch
