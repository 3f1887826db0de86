#pragma once

#include "app/shell/directoryof.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"

#include <QSettings>

/// Asks for the name of a file in the folder of the last save; empty where the user cancels.
QString askSavePath(QWidget *form, const QString &title, const QString &name,
                    const QString &filters);

/// Ends a save: remembers the folder and says in the status bar what was saved, or tells in a box
/// why nothing was.
///
/// @param path     the file, or several of one folder
/// @param refusal  first line of the box
/// @param failure  cause; empty where all went well
void endSave(QWidget *form, const QString &path, const QString &refusal, const QString &failure);

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
