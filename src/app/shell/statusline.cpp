#include "app/shell/statusline.h"

#include "app/shell/settings.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QStatusBar>

namespace StatusLine {

namespace {

// Null without a window.
QStatusBar *bar()
{
    return Settings::instance()->ui().statusbar;
}

} // namespace

void show(const QString &text)
{
    constexpr int shownMs = 15000;
    if (bar())
        bar()->showMessage(text, shownMs);
}

void keep(const QString &text)
{
    if (bar())
        bar()->showMessage(text);
}

void clear()
{
    if (bar())
        bar()->clearMessage();
}

void showSaved(const QString &path)
{
    show("Saved: " + QDir::toNativeSeparators(path));
}

void copyCommand(const QString &command)
{
    QGuiApplication::clipboard()->setText(command);
    show("Copied: " + command.simplified());
}

} // namespace StatusLine
