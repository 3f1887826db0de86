#include "picture/colourbar.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace Plot {

void paintColourBar(QPainter &painter, const QRect &bar, const ColourMap &map)
{
    for (int y = 0; y < bar.height(); ++y) {
        const double share = 1 - double(y) / std::max(1, bar.height() - 1);
        const auto colour = std::size_t(std::lround(share * (colourCount - 1)));
        painter.fillRect(bar.left(), bar.top() + y, bar.width(), 1, QColor(map[colour]));
    }
}

} // namespace Plot
