#include "forms/showrecording.h"

#include "app/shell/settings.h"
#include "forms/native/nativegrafik.h"

void showRecording(const QString &path, int point)
{
    QWidget *const window = Settings::instance()->ui().centralwidget->window();
    const auto open = [path, point, window] {
        auto *const form = new NativeGrafik(path, 0, window);
        if (point > 0)
            form->lookAt(point);
    };
    QMetaObject::invokeMethod(window, open, Qt::QueuedConnection);
}
