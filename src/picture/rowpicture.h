#pragma once

#include "picture/plotexport.h"

#include <QRect>
#include <QStringList>
#include <functional>
#include <vector>

namespace Plot {

/// The largest of neighbouring values for each of so many columns: a narrow line stays in sight
/// however many values a pixel stands for. NaN does not count.
///
/// @param columns  at least 1; with fewer values than columns each value fills several
std::vector<float> columnMaxima(const std::vector<float> &values, int columns);

/// Rows of colours, the first on top, over an axis of X: a spectrum per day.
struct RowPicture {
    std::vector<float> values; ///< row r begins at r x columns; NaN has no colour
    int rows = 0;
    int columns = 0;
    QStringList rowNames; ///< one per row, shown where there is room
    QString rowsName;     ///< what they are, below them
    double firstX = 0;    ///< at the left edge
    double lastX = 0;
    QString xName;                          ///< with its unit
    std::function<QString(double x)> xText; ///< what stands at a place of X; none: the number
    QString scaleName;
    float low = 0; ///< value of the first colour
    float high = 1;
    bool isGrey = false; ///< from white to black in place of colours
    QString title;
    QString key; ///< kept in the file, for programs
};

/// Where the colours stand in a picture of that size, between its margins.
QRect rowPictureArea(const QSize &size);
/// Pixels across between them.
int columnsOf(const QSize &size);

/// The picture with its labels and its scale of colours; it must outlive the drawing.
Drawing drawingOf(const RowPicture &picture, const QSize &size, int pngScale);

} // namespace Plot
