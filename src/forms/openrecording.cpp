#include "forms/openrecording.h"

#include "app/settings.h"
#include "forms/pulsar/pulsarform.h"

void openRecording(const QString &path)
{
    QWidget *const window = Settings::instance()->ui().centralwidget->window();
    const auto open = [path, window] { new PulsarForm(path, window); };
    QMetaObject::invokeMethod(window, open, Qt::QueuedConnection);
}
