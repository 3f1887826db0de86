#pragma once

#include "app/shell/directoryof.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"

#include <QSettings>

/// Lets the save dialogs of a plot or a picture menu start in the folder of the last save, and
/// remembers theirs; a plot's legend is folded and placed as the user left the last one.
///
/// @tparam Saver  has setSaveFolder() and the signal fileSaved()
template <typename Saver>
void shareSaveFolder(Saver *saver)
{
    Settings *const settings = Settings::instance();
    saver->setSaveFolder(startFolder(settings->lastSavePath()));
    QObject::connect(saver, &Saver::fileSaved, settings, [settings](const QString &path) {
        settings->setLastSavePath(directoryOf(path));
        StatusLine::showSaved(path);
    });
    if constexpr (requires(const QString &state) { saver->setLegendState(state); }) {
        saver->setLegendState(Settings::store().value("legend").toString());
        QObject::connect(saver, &Saver::legendChanged, settings,
                         [](const QString &state) { Settings::store().setValue("legend", state); });
    }
}
