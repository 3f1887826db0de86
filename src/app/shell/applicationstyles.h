#pragma once

#include <QString>

class QPalette;

/// The style sheet of the application: the resource ":/styles/styles.qss" and, for a palette of
/// light texts on dark ground, what ":/styles/dark.qss" changes in it. Empty where there is no
/// such resource.
QString applicationStyles(const QPalette &palette);

/// Gives it to the application, for its palette. Does nothing where it has that already.
void applyApplicationStyles();
