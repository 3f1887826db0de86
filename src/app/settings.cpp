#include "app/settings.h"

#include <QProgressBar>
#include <QSettings>
#include <cstdio>

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

void Settings::restore(QWidget *geometryOwner)
{
    const QSettings store(QSettings::NativeFormat, QSettings::UserScope, organisation, application);
    geometryOwner->restoreGeometry(store.value("geometry").toByteArray());
    setLastOpenFile(store.value("lastOpenFile").toString());
    setLastOpenPath(store.value("lastOpenPath").toString());
    setLastSavePath(store.value("lastSavePath").toString());
    graphWidth = store.value("graphWidth").toString();
    graphHeight = store.value("graphHeight").toString();
}

void Settings::save(const QWidget *geometryOwner) const
{
    QSettings store(QSettings::NativeFormat, QSettings::UserScope, organisation, application);
    writeIfNotEmpty(store, "lastOpenFile", openFile);
    writeIfNotEmpty(store, "lastOpenPath", openPath);
    writeIfNotEmpty(store, "lastSavePath", savePath);
    if (!geometryOwner->isMaximized())
        store.setValue("geometry", geometryOwner->saveGeometry());
    store.setValue("graphWidth", graphWidth);
    store.setValue("graphHeight", graphHeight);
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
    if (value == lastPrinted)
        return;
    std::fputs(value == 100 ? ".\n" : ".", stdout);
    std::fflush(stdout);
    lastPrinted = value;
}
