#include "forms/days/growthview.h"

#include "picture/plotpainter.h"
#include "results/reporttext.h"

#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>

namespace {

constexpr int leastFont = 9; // pixels
constexpr int mostFont = 20;
constexpr int right = 8; // pixels beside the curve
const QColor measuredColour("#0000FF");
const QColor expectedColour("#606060");

} // namespace

void GrowthView::setGrowth(const std::vector<Days::GrowthPoint> &points)
{
    growth = points;
    update();
}

void GrowthView::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const QString title = growth.empty() ? "Significance over days: choose a line"
                                         : "Sigma over the root of the days";
    painter.setFont(Plot::fontForWidth(Plot::fontWithin(font(), leastFont, mostFont), title,
                                       width() - 8, leastFont));
    painter.setPen(Qt::black);
    const int line = painter.fontMetrics().height() + 2;
    const int left = painter.fontMetrics().horizontalAdvance("100.0") + 4;
    const QRect frame = rect().adjusted(left, line, -right, -line);
    painter.drawText(QRect(4, 0, width() - 8, line), Qt::AlignLeft | Qt::AlignVCenter, title);
    if (growth.empty() || frame.width() < 10 || frame.height() < 10)
        return;
    double highest = 1;
    for (const Days::GrowthPoint &point : growth)
        highest = std::max({highest, point.sigma, point.expected});
    const double widest = std::sqrt(double(growth.back().days));
    const auto place = [&](int days, double sigma) {
        return QPointF(frame.left() + frame.width() * std::sqrt(double(days)) / widest,
                       frame.bottom() - frame.height() * std::max(0.0, sigma) / highest);
    };
    QPolygonF measured;
    QPolygonF expected;
    expected << place(0, 0);
    for (const Days::GrowthPoint &point : growth) {
        measured << place(point.days, point.sigma);
        expected << place(point.days, point.expected);
    }
    painter.drawRect(frame);
    painter.drawText(QRect(0, frame.top() - line / 2, left - 3, line),
                     Qt::AlignRight | Qt::AlignVCenter, QString::number(highest, 'f', 1));
    painter.drawText(QRect(0, frame.bottom() - line / 2, left - 3, line),
                     Qt::AlignRight | Qt::AlignVCenter, "0");
    painter.drawText(QRect(frame.left(), frame.bottom() + 1, frame.width(), line - 2),
                     Qt::AlignRight | Qt::AlignVCenter,
                     ReportText::counted(growth.back().days, "day"));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(expectedColour, 1, Qt::DashLine));
    painter.drawPolyline(expected);
    painter.setPen(QPen(measuredColour, 1.5));
    painter.drawPolyline(measured);
    for (const QPointF &point : qAsConst(measured))
        painter.drawEllipse(point, 1.5, 1.5);
}
