#pragma once

#include "app/shell/directoryof.h"
#include "app/shell/settings.h"

#include <QSettings>

/// Lets the save dialogs of a plot or a picture menu start in the folder of the last save, and
/// remembers theirs; a plot's legend is folded and placed as the user left the last one.
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
    if constexpr (requires(const QString &state) { picture->setLegendState(state); }) {
        picture->setLegendState(Settings::store().value("legend").toString());
        QObject::connect(picture, &Picture::legendChanged, settings,
                         [](const QString &state) { Settings::store().setValue("legend", state); });
    }
}
