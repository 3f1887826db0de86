#pragma once

#include "picture/colourmap.h"

#include <QRect>

class QPainter;

namespace Plot {

/// Fills a bar with all colours of a map, that of high values on top.
void paintColourBar(QPainter &painter, const QRect &bar, const ColourMap &map = colourMap());

} // namespace Plot
