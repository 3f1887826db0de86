#include "forms/savefolder.h"

#include "app/shell/errorbox.h"
#include "plot/savedialog.h"

QString askSavePath(QWidget *form, const QString &title, const QString &name,
                    const QString &filters)
{
    return Plot::askForPath(form, title, startFolder(Settings::instance()->lastSavePath()), name,
                            filters);
}

void endSave(QWidget *form, const QString &path, const QString &refusal, const QString &failure)
{
    if (!failure.isEmpty()) {
        showError(form->window(), refusal, failure);
        return;
    }
    Settings::instance()->setLastSavePath(directoryOf(path));
    StatusLine::showSaved(path);
}
