#pragma once

#include <QString>

/// The line of text in the status bar of the window.
namespace StatusLine {

/// Shows a line for a quarter of a minute.
void show(const QString &text);
/// Shows a line until the next one or clear().
void keep(const QString &text);
void clear();

/// Says that a file was written, or several of one folder.
void showSaved(const QString &path);

/// Puts a command on the clipboard and says so.
void copyCommand(const QString &command);

} // namespace StatusLine
