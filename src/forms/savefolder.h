#pragma once

#include "app/shell/directoryof.h"
#include "app/shell/settings.h"

/// Lets the save dialogs of a plot or a picture menu start in the folder of the last save, and
/// remembers theirs.
///
/// @tparam Picture  has setSaveFolder() and the signal fileSaved()
template <typename Picture>
void shareSaveFolder(Picture *picture)
{
    Settings *const settings = Settings::instance();
    picture->setSaveFolder(startFolder(settings->lastSavePath()));
    QObject::connect(picture, &Picture::fileSaved, settings, [settings](const QString &path) {
        settings->setLastSavePath(directoryOf(path));
    });
}
