#include "batch/inputlist.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <cstdio>

namespace Batch {

namespace {

// Paths of a list; false when it cannot be read.
bool readList(const QString &name, QStringList &paths)
{
    QFile file(name);
    const bool isOpen =
        name == "-" ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!isOpen)
        return false;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (!line.isEmpty() && !line.startsWith('#'))
            paths << QFile::decodeName(line);
    }
    return file.error() == QFileDevice::NoError;
}

} // namespace

InputList expandInputs(const QStringList &arguments)
{
    InputList list;
    QStringList named;
    for (const QString &argument : arguments) {
        if (argument.startsWith('@')) {
            const QString name = argument.mid(1);
            if (!readList(name, named)) {
                list.failure = {ExitCode::NoInput,
                                QString("The list %1 cannot be read. Check its path.").arg(name)};
                return list;
            }
        } else if (QFileInfo(argument).isDir()) {
            const QDir folder(argument);
            const QStringList names =
                folder.entryList({"*.pnt", "*.pnthr"}, QDir::Files | QDir::Readable, QDir::Name);
            if (names.isEmpty()) {
                list.failure = {
                    ExitCode::NoInput,
                    QString("The folder %1 holds no recordings (.pnt, .pnthr).").arg(argument)};
                return list;
            }
            for (const QString &name : names)
                named << folder.filePath(name);
        } else {
            named << argument;
        }
    }

    QSet<QString> seen;
    for (const QString &path : std::as_const(named)) {
        const QFileInfo info(path);
        const QString canonical = info.canonicalFilePath();
        const QString key = canonical.isEmpty() ? info.absoluteFilePath() : canonical;
        if (seen.contains(key))
            continue;
        seen.insert(key);
        list.paths << QDir::cleanPath(info.absoluteFilePath());
    }
    return list;
}

} // namespace Batch
