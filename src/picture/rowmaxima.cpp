#include "picture/rowmaxima.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Plot {

namespace {

// Eight at a time, so that one comparison need not wait for the one before.
float maximumOf(const float *values, int count)
{
    constexpr int lanes = 8;
    float most[lanes];
    std::fill_n(most, lanes, values[0]);
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        for (int lane = 0; lane < lanes; ++lane)
            most[lane] = most[lane] < values[i + lane] ? values[i + lane] : most[lane];
    }
    for (; i < count; ++i)
        most[0] = most[0] < values[i] ? values[i] : most[0];
    return *std::max_element(most, most + lanes);
}

void addRow(const PictureRow &row, const Range &x, int columns, float *line)
{
    const double perColumn = x.extent() / columns * row.ratio;
    const double first = x.min * row.ratio;
    for (int column = 0; column < columns; ++column) {
        // Value k stands for the places from k - 1/2 to k + 1/2.
        const double left = std::floor(first + column * perColumn + 0.5);
        const double right = std::floor(first + (column + 1) * perColumn + 0.5);
        if (!(left >= 0) || !(left < row.count))
            continue;
        const int begin = int(left);
        const int end = int(std::clamp(right, left + 1, double(row.count)));
        const float most = maximumOf(row.values + begin, end - begin);
        if (!(line[column] >= most))
            line[column] = most;
    }
}

} // namespace

std::vector<float> rowMaxima(const std::vector<PictureRow> &rows, const Range &x, int columns,
                             int lines)
{
    std::vector<float> maxima(std::size_t(columns) * std::size_t(lines),
                              std::numeric_limits<float>::quiet_NaN());
    const auto count = qint64(rows.size());
    for (qint64 row = 0; row < count; ++row) {
        const qint64 line = row * lines / count;
        addRow(rows[std::size_t(row)], x, columns, maxima.data() + line * columns);
    }
    return maxima;
}

} // namespace Plot
