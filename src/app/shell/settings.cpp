#include "app/shell/settings.h"

#include <QProgressBar>

namespace {

constexpr char organisation[] = "zrt";
constexpr char application[] = "ZRT-Analytics-2_visual";

void setIfNotEmpty(QString &stored, const QString &text)
{
    if (!text.isEmpty())
        stored = text;
}

void writeIfNotEmpty(QSettings &store, const QString &key, const QString &text)
{
    if (!text.isEmpty())
        store.setValue(key, text);
}

} // namespace

Settings *Settings::instance()
{
    // Never destroyed: forms may still ask for it while the application object goes.
    static Settings *const settings = new Settings;
    return settings;
}

void Settings::setLastOpenFile(const QString &path)
{
    setIfNotEmpty(openFile, path);
}

void Settings::setLastOpenPath(const QString &path)
{
    setIfNotEmpty(openPath, path);
}

void Settings::setLastSavePath(const QString &path)
{
    setIfNotEmpty(savePath, path);
}

QSettings Settings::store()
{
    return {QSettings::NativeFormat, QSettings::UserScope, organisation, application};
}

void Settings::restore(QWidget *geometryOwner)
{
    const QSettings values = store();
    geometryOwner->restoreGeometry(values.value("geometry").toByteArray());
    if (values.value("isMaximized").toBool())
        geometryOwner->setWindowState(geometryOwner->windowState() | Qt::WindowMaximized);
    setLastOpenFile(values.value("lastOpenFile").toString());
    setLastOpenPath(values.value("lastOpenPath").toString());
    setLastSavePath(values.value("lastSavePath").toString());
    graphWidth = values.value("graphWidth").toString();
    graphHeight = values.value("graphHeight").toString();
}

void Settings::save(const QWidget *geometryOwner) const
{
    QSettings values = store();
    writeIfNotEmpty(values, "lastOpenFile", openFile);
    writeIfNotEmpty(values, "lastOpenPath", openPath);
    writeIfNotEmpty(values, "lastSavePath", savePath);
    if (!geometryOwner->isMaximized())
        values.setValue("geometry", geometryOwner->saveGeometry());
    values.setValue("isMaximized", geometryOwner->isMaximized());
    values.setValue("graphWidth", graphWidth);
    values.setValue("graphHeight", graphHeight);
}

void Settings::setProgress(int value)
{
    if (bar) {
        if (value == 100) {
            bar->hide();
        } else {
            bar->show();
            bar->setValue(value);
        }
        return;
    }
    dots(value);
}
