#pragma once

#include <QString>

class QWidget;

/// Turns a recording or a result file into text: recognises which of them the file is, asks
/// where to save and, where the text would be longer than a gigabyte, whether to. Shows
/// progress and stops at Esc. The text appears whole or not at all; a recording that ends
/// early gives the points that it has.
///
/// @param path    full path of the file
/// @param window  the main window
/// @return whether a text was written
bool convertBinaryToText(const QString &path, QWidget *window);
