#pragma once

#include "picture/columnruns.h"

#include <QImage>
#include <array>
#include <vector>

/// Vertical lines that mark a place of the X axis and leave whatever stands there in sight.
namespace Plot {

constexpr QRgb gridColour = 0xffeeeeee;
constexpr QRgb markerColour = 0xff008000; // "green"
constexpr QRgb leftOutColour = 0xffffd6d6;
constexpr QRgb leftOutEndColour = 0xffc00000;

/// Colours the pixels of a column that are lighter than the line, and of these only the ground and
/// pale lines on it: a curve is never interrupted, whatever colour it has.
///
/// @param rows    those outside the picture are left out
/// @param dashes  pixels drawn and left out in turn, from the first row; none: a whole line
void paintBehind(QImage &picture, int column, const Rows &rows, QRgb colour,
                 const std::vector<int> &dashes);

/// The same for many whole lines of one colour.
void paintBehind(QImage &picture, const std::vector<int> &columns, const Rows &rows, QRgb colour);

/// Rows of the short ends that markers have above and below the curves.
std::array<Rows, 2> markerEnds(const View &view);

} // namespace Plot
