#include "forms/days/daysview.h"

#include "base/timetext.h"
#include "picture/colourbar.h"
#include "picture/compareplot.h"
#include "picture/percentiles.h"
#include "picture/plotgeometry.h"
#include "picture/plotmarks.h"
#include "picture/plotpainter.h"
#include "picture/verticallines.h"
#include "plot/handon.h"
#include "plot/pulsargrafik.h"
#include "results/reporttext.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

constexpr int marginTop = 18;
constexpr int marginBottom = 6;
constexpr int barWidth = 8;  // of the scale of colours
constexpr int leastFont = 9; // pixels
constexpr int mostFont = 15; // the margins hold no more
const QColor harmonicsColour(230, 110, 0);
const QColor markColour(255, 255, 255);

QRgb paleOf(QRgb colour)
{
    const auto towards = [](int channel) { return 200 + (channel - 200) / 4; };
    return qRgb(towards(qRed(colour)), towards(qGreen(colour)), towards(qBlue(colour)));
}

// Where a pixel stands for many bins, the greatest of them is high everywhere.
float highestShown(const std::vector<float> &values, int columns, float leastHighest)
{
    constexpr double share = 0.995;
    const std::vector<float> high = Plot::percentilesOfRows(values, columns, {share});
    return high.empty() ? leastHighest : std::max(leastHighest, std::ceil(high[0]));
}

} // namespace

DaysView::DaysView(const StackTexts &texts, QWidget *parent) : QWidget(parent), words(texts)
{
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void DaysView::setPlot(PulsarGrafik *plotBelow)
{
    plot = plotBelow;
    connect(plot, &PulsarGrafik::viewChanged, this, &DaysView::renew);
    connect(plot, &PulsarGrafik::fundamentalChanged, this, qOverload<>(&QWidget::update));
}

void DaysView::setRows(std::vector<Row> newRows, std::shared_ptr<const void> keeper)
{
    rows = std::move(newRows);
    owner = std::move(keeper);
    renew();
}

void DaysView::markDay(int day)
{
    markedDay = day;
    update();
}

QRect DaysView::area() const
{
    return {Plot::marginLeft, marginTop, width() - Plot::marginLeft - Plot::marginRight,
            height() - marginTop - marginBottom};
}

void DaysView::renew()
{
    imageIsStale = true;
    update();
}

void DaysView::renewImage()
{
    imageIsStale = false;
    const QSize size = area().size() * devicePixelRatioF();
    image = QImage();
    if (!plot || rows.empty() || size.width() < 2 || size.height() < 2)
        return;
    const PulsarGrafik::VisibleRange shown = plot->visibleRange();
    const int lines = std::min(int(rows.size()), size.height());
    std::vector<Plot::PictureRow> powers;
    for (const Row &row : rows)
        powers.push_back(row.powers);
    const std::vector<float> values =
        Plot::rowMaxima(powers, {shown.first, shown.first + shown.points}, size.width(), lines);
    findScale(values, size.width());
    image = QImage(size.width(), lines, QImage::Format_RGB32);
    for (int line = 0; line < lines; ++line) {
        const bool isOn = rows[std::size_t(qint64(line) * qint64(rows.size()) / lines)].isOn;
        const float *const from = values.data() + qint64(line) * size.width();
        auto *const pixels = reinterpret_cast<QRgb *>(image.scanLine(line));
        for (int i = 0; i < size.width(); ++i) {
            const QRgb colour = Plot::colourOfValue(from[i], lowest, highest, colours());
            pixels[i] = isOn ? colour : paleOf(colour);
        }
    }
}

const Plot::ColourMap &DaysView::colours() const
{
    return words.isGrey ? Plot::greyMap() : Plot::colourMap();
}

void DaysView::findScale(const std::vector<float> &values, int columns)
{
    if (words.isGrey)
        std::tie(lowest, highest) = Plot::greyRange(values, columns);
    else
        highest = highestShown(values, columns, words.leastHighest);
}

void DaysView::resizeEvent(QResizeEvent * /*event*/)
{
    renew();
}

void DaysView::paintEvent(QPaintEvent * /*event*/)
{
    if (imageIsStale)
        renewImage();
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const QRect inner = area();
    if (inner.width() < 2 || inner.height() < 2)
        return;
    painter.setFont(Plot::fontWithin(font(), leastFont, mostFont));
    if (!image.isNull())
        painter.drawImage(inner, image);
    painter.setPen(Qt::black);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(inner.adjusted(-1, -1, 0, 0));
    paintRows(painter);
    paintLeftOut(painter);
    paintHarmonics(painter);
    paintMarkers(painter);
    paintScale(painter);
}

// The days at the left, as many as there is room for.
void DaysView::paintRows(QPainter &painter) const
{
    const QRect inner = area();
    painter.setPen(Qt::black);
    const int room = inner.left() - 4;
    painter.save();
    painter.setFont(Plot::fontForWidth(painter.font(), "00.00.00", room, leastFont));
    const double rowHeight = double(inner.height()) / double(std::max<std::size_t>(1, rows.size()));
    const int high = painter.fontMetrics().height();
    int last = inner.top() - high;
    for (int row = 0; row < int(rows.size()); ++row) {
        const int middle = inner.top() + int((row + 0.5) * rowHeight);
        const int y = std::max(inner.top() + high / 2, middle);
        if (y - last < high)
            continue;
        painter.drawText(QRect(0, y - high / 2, room, high), Qt::AlignRight | Qt::AlignVCenter,
                         textOfTime(rows[std::size_t(row)].begin, "dd.MM.yy"));
        last = y;
    }
    painter.restore();
    for (int row = 0; row < int(rows.size()); ++row) {
        if (rows[std::size_t(row)].day != markedDay)
            continue;
        painter.setPen(QPen(words.isGrey ? harmonicsColour : markColour, 1));
        painter.drawRect(QRectF(inner.left(), inner.top() + row * rowHeight, inner.width() - 1,
                                std::max(2.0, rowHeight)));
    }
}

// What the plot shows, over the height of the picture.
Plot::View DaysView::view() const
{
    const PulsarGrafik::VisibleRange shown = plot->visibleRange();
    Plot::View view;
    view.width = width();
    view.height = height();
    view.first = shown.first;
    view.points = shown.points;
    view.allPoints = plot->data().numPoints;
    return view;
}

// Pale where the stack does not count, as in the plot.
void DaysView::paintLeftOut(QPainter &painter) const
{
    if (!plot || plot->data().messageMode)
        return;
    constexpr int endLength = 3; // pixels
    QColor pale(Plot::leftOutColour);
    pale.setAlpha(190);
    const QRect inner = area();
    for (const Plot::Range &part : Plot::leftOutInSight(plot->data(), view())) {
        const QRectF place(QPointF(part.min, inner.top()), QPointF(part.max, inner.bottom() + 1));
        painter.fillRect(place, pale);
        painter.fillRect(QRectF(place.topLeft(), QSizeF(place.width(), endLength)),
                         QColor(Plot::leftOutEndColour));
    }
}

void DaysView::paintHarmonics(QPainter &painter) const
{
    if (!plot || !plot->fundamental())
        return;
    const QRect inner = area();
    for (const Plot::Harmonic &harmonic :
         Plot::harmonicsInSight(plot->data(), view(), *plot->fundamental())) {
        QColor colour = harmonicsColour;
        colour.setAlpha(harmonic.number == 1 ? 255 : 150);
        painter.setPen(colour);
        const double x = std::trunc(harmonic.x);
        if (x >= inner.left() && x <= inner.right())
            painter.drawLine(QLineF(x, inner.top(), x, inner.bottom()));
    }
}

// Those of the plot below, without their names.
void DaysView::paintMarkers(QPainter &painter) const
{
    if (!plot)
        return;
    const PulsarGrafik::VisibleRange shown = plot->visibleRange();
    const QRect inner = area();
    painter.setPen(harmonicsColour);
    for (const int marker : plot->data().markers) {
        const double x = inner.left() + (marker - shown.first) * inner.width() / shown.points;
        if (x >= inner.left() && x <= inner.right())
            painter.drawLine(QLineF(std::trunc(x), inner.top(), std::trunc(x), inner.bottom()));
    }
}

void DaysView::paintScale(QPainter &painter) const
{
    const QRect inner = area();
    const QRect bar(width() - Plot::marginRight + 5, inner.top(), barWidth, inner.height());
    Plot::paintColourBar(painter, bar, colours());
    painter.setPen(Qt::black);
    const QString scale =
        words.isGrey ? words.scale.arg(double(lowest), 0, 'f', 1).arg(double(highest), 0, 'f', 1)
                     : words.scale.arg(double(highest));
    const QString title = words.picture.arg(
        rows.empty() ? QString("the days") : ReportText::counted(qint64(rows.size()), "day"));
    const QRect line(4, 0, width() - 8, marginTop);
    painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, scale);
    const int left = line.width() - painter.fontMetrics().horizontalAdvance(scale) - 2 * barWidth;
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(title, Qt::ElideRight, left));
}

std::optional<int> DaysView::rowAt(const QPoint &pixel) const
{
    const QRect inner = area();
    if (rows.empty() || !inner.contains(pixel))
        return {};
    const auto count = int(rows.size());
    return std::clamp(int(qint64(pixel.y() - inner.top()) * count / inner.height()), 0, count - 1);
}

void DaysView::mousePressEvent(QMouseEvent *event)
{
    pressPoint = event->pos();
    if (!plot)
        return;
    plot->setFocus(Qt::MouseFocusReason); // its keys work after a click here too
    Plot::handOn(*event, *plot, 0);
}

void DaysView::mouseMoveEvent(QMouseEvent *event)
{
    if (!plot)
        return;
    Plot::handOn(*event, *plot, 1); // the cursors' keys need the place of the pointer
    const std::optional<int> row = rowAt(event->pos());
    if (!row || event->buttons() != Qt::NoButton)
        return;
    const QRect inner = area();
    const PulsarGrafik::VisibleRange shown = plot->visibleRange();
    const double index =
        shown.first + (event->localPos().x() - inner.left()) * shown.points / inner.width();
    emit pointed(rows[std::size_t(*row)].day, index);
}

void DaysView::mouseReleaseEvent(QMouseEvent *event)
{
    if (!plot)
        return;
    const std::optional<int> row = rowAt(event->pos());
    if (row && event->button() == Qt::LeftButton && event->pos() == pressPoint) {
        Plot::handOn(*event, *plot, 0); // a click, not a rectangle
        emit dayClicked(rows[std::size_t(*row)].day);
        return;
    }
    Plot::handOn(*event, *plot, 1);
}

void DaysView::wheelEvent(QWheelEvent *event)
{
    if (plot)
        Plot::handOn(*event, *plot);
}
