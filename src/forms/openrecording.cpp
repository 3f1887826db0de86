#include "forms/openrecording.h"

#include "app/shell/settings.h"
#include "forms/native/nativegrafik.h"

void openRecording(const QString &path)
{
    QWidget *const window = Settings::instance()->ui().centralwidget->window();
    const auto open = [path, window] { new NativeGrafik(path, 0, window); };
    QMetaObject::invokeMethod(window, open, Qt::QueuedConnection);
}
