#include "forms/days/growthview.h"

#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>

namespace {

constexpr int left = 34; // pixels around the curve
constexpr int right = 8;
constexpr int top = 18;
constexpr int bottom = 18;
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
    QFont small = font();
    small.setPixelSize(11);
    painter.setFont(small);
    painter.setPen(Qt::black);
    const QRect frame = rect().adjusted(left, top, -right, -bottom);
    painter.drawText(QRect(4, 0, width() - 8, top), Qt::AlignLeft | Qt::AlignVCenter,
                     growth.empty() ? "Significance over days: choose a line"
                                    : "Sigma over the root of the days");
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
    painter.drawText(QRect(0, frame.top() - 8, left - 3, 16), Qt::AlignRight | Qt::AlignVCenter,
                     QString::number(highest, 'f', 1));
    painter.drawText(QRect(0, frame.bottom() - 8, left - 3, 16), Qt::AlignRight | Qt::AlignVCenter,
                     "0");
    painter.drawText(QRect(frame.left(), frame.bottom() + 1, frame.width(), bottom - 2),
                     Qt::AlignRight | Qt::AlignVCenter, QString("%1 days").arg(growth.back().days));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(expectedColour, 1, Qt::DashLine));
    painter.drawPolyline(expected);
    painter.setPen(QPen(measuredColour, 1.5));
    painter.drawPolyline(measured);
    for (const QPointF &point : qAsConst(measured))
        painter.drawEllipse(point, 1.5, 1.5);
}
