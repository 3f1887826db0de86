#pragma once

#include "picture/zoom.h"

#include <QString>

class QPainter;
class QRect;

/// The X axis below a small picture: round numbers, and what they are of at the right end.
///
/// @param x     of the left and the right edge of the frame
/// @param room  pixels below the frame
void paintSmallAxis(QPainter &painter, const QRect &frame, const Plot::Range &x,
                    const QString &name, int room);
