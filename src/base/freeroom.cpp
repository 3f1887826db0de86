#include "base/freeroom.h"

#include "base/systemmemory.h"

#include <QFileInfo>
#include <QStorageInfo>

WriteFailure missingRoom(const QString &path, qint64 bytes)
{
    const QFileInfo info(path);
    const QStorageInfo disk(info.isDir() ? info.absoluteFilePath() : info.absolutePath());
    if (!disk.isValid() || disk.bytesTotal() <= 0 || disk.bytesAvailable() >= bytes)
        return {};
    return {WriteFailure::Kind::CannotWrite, path,
            QString("there is no room on the disk. It takes %1, free are %2")
                .arg(sizeText(bytes), sizeText(disk.bytesAvailable()))};
}
