#include "base/freeroom.h"

#include "base/systemmemory.h"

#include <QFileInfo>
#include <QStorageInfo>

WriteFailure missingRoom(const QString &path, qint64 bytes)
{
    QFileInfo place(path);
    while (!place.exists() && !place.isRoot())
        place.setFile(place.absolutePath());
    const QStorageInfo disk(place.absoluteFilePath());
    if (!disk.isValid() || disk.bytesTotal() <= 0 || disk.bytesAvailable() >= bytes)
        return {};
    return {WriteFailure::Kind::CannotWrite, path,
            QString("there is no room on the disk. It takes %1, free are %2")
                .arg(sizeText(bytes), sizeText(disk.bytesAvailable()))};
}
