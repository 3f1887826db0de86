#include "forms/transient/pulseimage.h"

#include "forms/smallaxis.h"
#include "picture/colourmap.h"
#include "picture/percentiles.h"

#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>

namespace {

constexpr int left = 44; // pixels around the picture
constexpr int right = 8;
constexpr int top = 17;
constexpr int bottom = 17;
const QColor markColour(230, 110, 0);
const QColor pointerColour(0, 128, 0);
constexpr double msPerSecond = 1000;

QImage greysOf(const Pulses::PulseRows &rows)
{
    constexpr double paleShare = 0.05;
    constexpr double darkShare = 0.999;
    const std::vector<float> limits = Plot::percentiles(rows.values, {paleShare, darkShare});
    const int height = int(rows.rows.size());
    QImage image(rows.columns, height, QImage::Format_RGB32);
    image.fill(Qt::white);
    if (limits.empty())
        return image;
    const float *value = rows.values.data();
    for (int row = 0; row < height; ++row) {
        auto *const line = reinterpret_cast<QRgb *>(image.scanLine(height - 1 - row));
        for (int i = 0; i < rows.columns; ++i, ++value) {
            line[i] = std::isfinite(*value)
                          ? Plot::colourOfValue(*value, limits[0], limits[1], Plot::greyMap())
                          : Plot::noValueColour;
        }
    }
    return image;
}

} // namespace

PulseImage::PulseImage(const QString &emptyTitle, QWidget *parent)
    : QWidget(parent), message(emptyTitle)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setMouseTracking(true);
}

void PulseImage::setContent(Content next)
{
    content = std::move(next);
    greys = content.rows.isEmpty() ? QImage() : greysOf(content.rows);
    message.clear();
    update();
}

void PulseImage::showMessage(const QString &text)
{
    content = {};
    greys = {};
    message = text;
    update();
}

void PulseImage::setPointer(std::optional<double> time)
{
    pointer = time;
    update();
}

QRect PulseImage::frame() const
{
    return rect().adjusted(left, top, -right, -bottom);
}

void PulseImage::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    QFont small = font();
    small.setPixelSize(11);
    painter.setFont(small);
    painter.setPen(Qt::black);
    const QString title = greys.isNull() ? message : content.title;
    painter.drawText(QRect(4, 0, width() - 8, top), Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(title, Qt::ElideRight, width() - 8));
    const QRect place = frame();
    if (greys.isNull() || place.width() < 10 || place.height() < 10)
        return;
    painter.drawImage(place, greys);
    paintFrame(painter, place);
    paintCurve(painter, place);
}

void PulseImage::paintFrame(QPainter &painter, const QRect &place) const
{
    const Pulses::PulseRows &rows = content.rows;
    painter.setPen(Qt::black);
    painter.drawRect(place);
    const QRect texts(0, place.top(), left - 4, place.height());
    const auto number = [](double value) { return QString::number(value, 'g', 5); };
    painter.drawText(texts, Qt::AlignRight | Qt::AlignTop, number(rows.rows.back()));
    painter.drawText(texts, Qt::AlignRight | Qt::AlignBottom, number(rows.rows.front()));
    if (place.height() > 4 * painter.fontMetrics().height())
        painter.drawText(texts, Qt::AlignRight | Qt::AlignVCenter, content.rowName);
    paintSmallAxis(painter, place, {msPerSecond * rows.firstTime, msPerSecond * rows.lastTime()},
                   "ms", bottom);
}

void PulseImage::paintCurve(QPainter &painter, const QRect &place) const
{
    const Pulses::PulseRows &rows = content.rows;
    const auto xOf = [&](double time) {
        return place.left() +
               (time - rows.firstTime) / (rows.lastTime() - rows.firstTime) * place.width();
    };
    const double height = double(place.height()) / double(rows.rows.size());
    painter.setPen(markColour);
    // Beside the pulse, which stays in sight.
    constexpr int beside = 6;
    for (std::size_t row = 0; row < content.curve.size(); ++row) {
        const double y = place.bottom() - double(row) * height;
        for (const int side : {-beside, beside}) {
            const double x = xOf(content.curve[row]) + side;
            painter.drawLine(QPointF(x, y), QPointF(x, y - height));
        }
    }
    if (content.markedRow && rows.rows.back() > rows.rows.front()) {
        const double share =
            (*content.markedRow - rows.rows.front()) / (rows.rows.back() - rows.rows.front());
        const double y = place.bottom() - height / 2 - share * (place.height() - height);
        painter.drawLine(QPointF(place.left() - 5, y), QPointF(place.left() + 12, y));
        painter.drawLine(QPointF(place.right() - 12, y), QPointF(place.right() + 5, y));
    }
    if (pointer && *pointer >= rows.firstTime && *pointer <= rows.lastTime()) {
        painter.setPen(pointerColour);
        painter.drawLine(QPointF(xOf(*pointer), place.top()),
                         QPointF(xOf(*pointer), place.bottom()));
    }
}

void PulseImage::mouseMoveEvent(QMouseEvent *event)
{
    const QRect place = frame();
    if (greys.isNull() || !place.contains(event->pos())) {
        emit pointed(std::nullopt);
        QToolTip::hideText();
        return;
    }
    const Pulses::PulseRows &rows = content.rows;
    const double share = (event->x() - place.left() + 0.5) / place.width();
    const int count = int(rows.rows.size());
    const int row =
        std::clamp(int(double(place.bottom() - event->y()) / place.height() * count), 0, count - 1);
    const int column = std::clamp(int(share * rows.columns), 0, rows.columns - 1);
    const double time = rows.firstTime + share * (rows.lastTime() - rows.firstTime);
    const float value =
        rows.values[std::size_t(row) * std::size_t(rows.columns) + std::size_t(column)];
    QToolTip::showText(event->globalPos(),
                       QString("%1 ms, %2 %3: %4 sigma")
                           .arg(msPerSecond * time, 0, 'f', 1)
                           .arg(rows.rows[std::size_t(row)], 0, 'g', 6)
                           .arg(content.rowName)
                           .arg(double(value), 0, 'f', 2),
                       this);
    emit pointed(time);
}

void PulseImage::leaveEvent(QEvent *event)
{
    emit pointed(std::nullopt);
    QWidget::leaveEvent(event);
}
