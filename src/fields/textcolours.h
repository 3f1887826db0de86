#pragma once

#include <QColor>

class QPalette;

/// Colours of texts that mean something, each readable on the ground of the palette.
namespace TextColours {

/// Whether the texts of the palette are lighter than their ground, as on a dark desktop.
bool areLight(const QPalette &palette);

/// Red: what is wrong.
QColor problem(const QPalette &palette);

} // namespace TextColours
