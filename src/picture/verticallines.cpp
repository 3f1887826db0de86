#include "picture/verticallines.h"

#include <algorithm>
#include <iterator>
#include <numeric>

namespace Plot {

namespace {

// Lightness of a pixel, 0 to 255, from which on it is ground: the line of value 0 in light grey
// is, every colour of a curve is not.
constexpr int groundLightness = 200;

bool isDrawn(int pixel, const std::vector<int> &dashes, int period)
{
    if (period <= 0)
        return true;
    int rest = pixel % period;
    std::size_t part = 0;
    while (rest >= dashes[part])
        rest -= dashes[part++];
    return part % 2 == 0;
}

} // namespace

void paintBehind(QImage &picture, int column, const Rows &rows, QRgb colour,
                 const std::vector<int> &dashes)
{
    if (column < 0 || column >= picture.width())
        return;
    const int period = std::accumulate(dashes.begin(), dashes.end(), 0);
    const int least = std::max(groundLightness, qGray(colour));
    const int first = std::max(rows.first, 0);
    const int last = std::min(rows.last, picture.height() - 1);
    const qsizetype stride = picture.bytesPerLine() / qsizetype(sizeof(QRgb));
    auto *pixel = reinterpret_cast<QRgb *>(picture.bits()) + first * stride + column;
    for (int row = first; row <= last; ++row, pixel += stride)
        if (qGray(*pixel) > least && isDrawn(row - rows.first, dashes, period))
            *pixel = colour;
}

// Row by row, for that meets the memory in its own order.
void paintBehind(QImage &picture, const std::vector<int> &columns, const Rows &rows, QRgb colour)
{
    std::vector<int> inside;
    std::copy_if(columns.begin(), columns.end(), std::back_inserter(inside),
                 [&](int column) { return column >= 0 && column < picture.width(); });
    const int least = std::max(groundLightness, qGray(colour));
    const int last = std::min(rows.last, picture.height() - 1);
    const qsizetype stride = picture.bytesPerLine() / qsizetype(sizeof(QRgb));
    auto *const pixels = reinterpret_cast<QRgb *>(picture.bits());
    for (int row = std::max(rows.first, 0); row <= last; ++row) {
        QRgb *const line = pixels + row * stride;
        for (const int column : inside)
            if (qGray(line[column]) > least)
                line[column] = colour;
    }
}

std::array<Rows, 2> markerEnds(const View &view)
{
    constexpr int length = 6; // pixels
    const int bottom = view.height - marginBottom;
    return {Rows{marginTop - length, marginTop - 1}, Rows{bottom + 1, bottom + length}};
}

} // namespace Plot
