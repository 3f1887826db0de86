#include "picture/columnruns.h"

#include "base/targetclones.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Plot {

namespace {

// First of `count` points whose column is `column` or further right; `count` when there is none.
// The quotient may be off in its last bit, so the truncation that the curve is drawn with decides.
int firstIndexFrom(const View &view, int column, int count)
{
    const double exact = view.first + (column - marginLeft) / view.step();
    int index = int(std::clamp(std::ceil(exact), 0.0, double(count)));
    while (index > 0 && xPixel(view, index - 1) >= column)
        --index;
    while (index < count && xPixel(view, index) < column)
        ++index;
    return index;
}

class Builder {
public:
    Builder(const View &plotView, const std::vector<float> &samples,
            const BlockExtremes &samplesInBlocks)
        : view(plotView), clip(plotView.clip()), curve(samples), blocks(samplesInBlocks),
          count(std::min(plotView.allPoints, int(samples.size())))
    {
        runs.top.assign(size_t(view.plotWidth()), std::numeric_limits<int>::max());
        runs.bottom.assign(size_t(view.plotWidth()), std::numeric_limits<int>::min());
    }

    ColumnRuns build()
    {
        int begin = firstIndexFrom(view, marginLeft, count);
        addEdge(-1, begin);
        for (int column = 0; column < view.plotWidth() && begin < count; ++column) {
            const int end = firstIndexFrom(view, marginLeft + column + 1, count);
            const Extremes found = blocks.between(curve, size_t(begin), size_t(end));
            if (found.hasNan)
                addBrokenColumn(column, begin, end);
            else if (end - begin > 1)
                addRun(column, yPixel(view, found.low), yPixel(view, found.high));
            if (column > 0)
                addCrossing(column - 1, begin, found.hasNan);
            begin = end;
        }
        addEdge(view.plotWidth() - 1, begin);
        return std::move(runs);
    }

private:
    bool inClip(int row) const { return row >= clip.top() && row <= clip.bottom(); }

    void addRun(int column, int from, int to)
    {
        int &top = runs.top[size_t(column)];
        int &bottom = runs.bottom[size_t(column)];
        top = std::min({top, from, to});
        bottom = std::max({bottom, from, to});
    }

    // Whether a whole block begins at the index and ends before `end`.
    bool isBlock(int index, int end) const
    {
        constexpr int size = int(BlockExtremes::blockSize);
        return index % size == 0 && end - index >= size && size_t(index / size) < blocks.count();
    }

    // The end of the stretch without NaN that begins at the index; its extremes are joined.
    int stretchEnd(int index, int end, float &low, float &high) const
    {
        while (index < end) {
            if (isBlock(index, end)) {
                const Extremes block = blocks[size_t(index) / BlockExtremes::blockSize];
                if (!block.hasNan) {
                    low = std::min(low, block.low);
                    high = std::max(high, block.high);
                    index += int(BlockExtremes::blockSize);
                    continue;
                }
            }
            const float sample = curve[size_t(index)];
            if (std::isnan(sample))
                break;
            low = std::min(low, sample);
            high = std::max(high, sample);
            ++index;
        }
        return index;
    }

    // A column with NaN samples may hold several runs: one for each stretch of two points or
    // more between them.
    void addBrokenColumn(int column, int begin, int end)
    {
        const int x = marginLeft + column;
        for (int i = begin; i < end;) {
            if (isBlock(i, end) && blocks.isAllNan(size_t(i) / BlockExtremes::blockSize)) {
                i += int(BlockExtremes::blockSize);
                continue;
            }
            float low = std::numeric_limits<float>::infinity();
            float high = -low;
            const int next = stretchEnd(i, end, low, high);
            if (next - i > 1)
                runs.lines.append(QLine(x, yPixel(view, low), x, yPixel(view, high)));
            i = next + 1;
        }
    }

    // The segment over an edge of a zoomed plot, from the column left of it to the point `index`.
    void addEdge(int column, int index)
    {
        if (index < 1 || index >= count)
            return;
        const float before = curve[size_t(index) - 1];
        const float after = curve[size_t(index)];
        const int x = marginLeft + column;
        if (!std::isnan(before) && !std::isnan(after))
            runs.lines.append(QLine(x, yPixel(view, before), x + 1, yPixel(view, after)));
    }

    // The segment from the last point of a column to the first point, `index`, of the next. It
    // must not join what the next column leaves apart when that is broken.
    void addCrossing(int column, int index, bool nextIsBroken)
    {
        const float before = curve[size_t(index) - 1];
        const float after = curve[size_t(index)];
        if (std::isnan(before) || std::isnan(after))
            return;
        const int from = yPixel(view, before);
        const int to = yPixel(view, after);
        if (nextIsBroken || !inClip(from) || !inClip(to)) {
            const int x = marginLeft + column;
            runs.lines.append(QLine(x, from, x + 1, to));
            return;
        }
        if (to < from) { // upwards: only the last pixel lies in the right column
            addRun(column, from, to + 1);
            addRun(column + 1, to, to);
            return;
        }
        // Downwards QPainter advances x by 1/rows per row in 16 fraction bits, beginning half
        // an advance to the right; the row at which x reaches the next column divides the two.
        constexpr int wholePixelInBits = 1 << 16;
        const int rows = to - from;
        const int advance = rows > 0 ? wholePixelInBits / rows : wholePixelInBits;
        const int start = advance - (advance >> 1);
        const int lastLeft = std::min((wholePixelInBits - 1 - start) / advance, rows);
        addRun(column, from, from + lastLeft);
        if (lastLeft < rows)
            addRun(column + 1, from + lastLeft + 1, to);
        else if (rows == 0)
            addRun(column + 1, to, to);
    }

    const View &view;
    const QRect clip;
    const std::vector<float> &curve;
    const BlockExtremes &blocks;
    const int count;
    ColumnRuns runs;
};

// Colours the pixels of `columns` neighbouring runs row by row, which meets the memory in its
// own order and lets the compiler treat many columns at once.
ZRT_TARGET_CLONES
void fillBlock(QRgb *pixels, qsizetype stride, const int *top, const int *bottom, int columns,
               int firstRow, int lastRow, QRgb colour)
{
    for (int row = firstRow; row <= lastRow; ++row) {
        QRgb *line = pixels + row * stride;
        for (int k = 0; k < columns; ++k)
            line[k] = (row >= top[k]) & (row <= bottom[k]) ? colour : line[k];
    }
}

} // namespace

bool isDense(const View &view)
{
    return view.plotWidth() > 0 && view.plotHeight() > 0 && view.points > view.plotWidth();
}

ColumnRuns columnRuns(const View &view, const std::vector<float> &curve,
                      const BlockExtremes &blocks)
{
    return Builder(view, curve, blocks).build();
}

void fillRuns(QImage &picture, const ColumnRuns &runs, QRgb colour, const Rows &rows)
{
    constexpr size_t blockColumns = 64; // few enough to follow a smooth curve closely
    const qsizetype stride = picture.bytesPerLine() / qsizetype(sizeof(QRgb));
    auto *pixels = reinterpret_cast<QRgb *>(picture.bits()) + marginLeft;
    for (size_t first = 0; first < runs.top.size(); first += blockColumns) {
        const size_t columns = std::min(blockColumns, runs.top.size() - first);
        const int *top = &runs.top[first];
        const int *bottom = &runs.bottom[first];
        const int firstRow = std::max(rows.first, *std::min_element(top, top + columns));
        const int lastRow = std::min(rows.last, *std::max_element(bottom, bottom + columns));
        fillBlock(pixels + first, stride, top, bottom, int(columns), firstRow, lastRow, colour);
    }
}

} // namespace Plot
