#pragma once

#include <QString>

/// Shows a recording in the form that shows one, in place of the form in the main window.
/// That happens once the event loop runs again, so that a form may call this on itself.
///
/// @param point  comes into the middle of what is shown; 0: all of the recording
void showRecording(const QString &path, int point = 0);
