#include "forms/ffa/foldview.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace {

constexpr int turns = 2;
constexpr double darkShare = 0.995; // of the values that are not all black
const QColor curveColour("#0000FF");
const QColor frameColour("#c4cad0");
const QColor markColour("#FF0000");

// Grey levels of a picture, high values dark; the highest few share the black.
QImage greyPicture(const FfaFold &fold)
{
    const int bins = int(fold.profile.size());
    std::vector<float> values;
    std::copy_if(fold.picture.begin(), fold.picture.end(), std::back_inserter(values),
                 [](float value) { return std::isfinite(value); });
    QImage picture(bins, fold.parts, QImage::Format_Grayscale8);
    picture.fill(Qt::white);
    if (values.empty())
        return picture;
    std::sort(values.begin(), values.end());
    const float low = values[values.size() / 20];
    const float high = values[std::size_t(double(values.size() - 1) * darkShare)];
    for (int part = 0; part < fold.parts; ++part) {
        uchar *const line = picture.scanLine(fold.parts - 1 - part);
        for (int b = 0; b < bins; ++b) {
            const float value =
                fold.picture[std::size_t(part) * std::size_t(bins) + std::size_t(b)];
            const float level = high > low ? (value - low) / (high - low) : 0;
            line[b] = std::isfinite(level) ? uchar(255 - 255 * std::clamp(level, 0.0F, 1.0F)) : 255;
        }
    }
    return picture;
}

void drawText(QPainter &painter, const QRect &frame, int alignment, const QString &text)
{
    painter.drawText(frame, alignment | Qt::TextDontClip, text);
}

} // namespace

FoldView::FoldView(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void FoldView::showFold(const FfaFold &fold, double length)
{
    shown = fold;
    seconds = length;
    greys = greyPicture(fold);
    update();
}

void FoldView::clear()
{
    shown = {};
    greys = {};
    update();
}

QSize FoldView::sizeHint() const
{
    return {420, 320};
}

QSize FoldView::minimumSizeHint() const
{
    return {280, 220};
}

void FoldView::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    painter.setPen(frameColour);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    if (shown.profile.empty())
        return;
    // Left of each frame its upper and lower value, below it a line of texts.
    const int line = fontMetrics().height();
    const int left = fontMetrics().horizontalAdvance("-0.0000");
    const int room = height() - 3 * line - 16;
    const QRect area(left, 6, width() - left - 8, room);
    const QRect profile(area.left(), area.top(), area.width(), room * 3 / 10);
    const QRect picture(area.left(), profile.bottom() + 5, area.width(), room * 4 / 10);
    const QRect widths(area.left(), picture.bottom() + line + 7, area.width(),
                       room - profile.height() - picture.height());
    paintProfile(painter, profile);
    paintPicture(painter, picture);
    paintWidths(painter, widths);
}

void FoldView::paintProfile(QPainter &painter, const QRect &frame) const
{
    const auto [low, high] = std::minmax_element(shown.profile.begin(), shown.profile.end());
    const double range = *high > *low ? *high - *low : 1;
    const int bins = int(shown.profile.size());
    QPolygonF steps;
    for (int i = 0; i <= turns * bins; ++i) {
        const double x = frame.left() + double(frame.width()) * i / (turns * bins);
        if (!steps.isEmpty())
            steps << QPointF(x, steps.last().y());
        if (i == turns * bins)
            break;
        const double value = shown.profile[std::size_t(i % bins)];
        steps << QPointF(x, frame.bottom() - (value - *low) / range * frame.height());
    }
    painter.setPen(frameColour);
    painter.drawRect(frame);
    painter.setPen(curveColour);
    painter.drawPolyline(steps);
    painter.setPen(Qt::black);
    const QRect texts(0, frame.top(), frame.left() - 4, frame.height());
    drawText(painter, texts, Qt::AlignRight | Qt::AlignTop, QString::number(*high, 'f', 2));
    drawText(painter, texts, Qt::AlignRight | Qt::AlignBottom, QString::number(*low, 'f', 2));
    drawText(painter, frame.adjusted(4, 0, 0, 0), Qt::AlignLeft | Qt::AlignTop, "mean, sigma");
}

void FoldView::paintPicture(QPainter &painter, const QRect &frame) const
{
    const int half = frame.width() / turns;
    for (int turn = 0; turn < turns; ++turn) {
        const int begin = frame.left() + turn * half;
        const int end = turn + 1 == turns ? frame.right() + 1 : begin + half;
        painter.drawImage(QRect(begin, frame.top(), end - begin, frame.height()), greys);
    }
    painter.setPen(frameColour);
    painter.drawRect(frame);
    painter.setPen(Qt::black);
    const QRect texts(0, frame.top(), frame.left() - 4, frame.height());
    drawText(painter, texts, Qt::AlignRight | Qt::AlignTop,
             QString::number(seconds, 'f', seconds < 100 ? 1 : 0) + " s");
    drawText(painter, texts, Qt::AlignRight | Qt::AlignBottom, "0");
    const QRect below(frame.left(), frame.bottom() + 2, frame.width(), fontMetrics().height());
    drawText(painter, below, Qt::AlignLeft | Qt::AlignTop, "0");
    drawText(painter, below, Qt::AlignHCenter | Qt::AlignTop, "phase 1");
    drawText(painter, below, Qt::AlignRight | Qt::AlignTop, QString::number(turns));
}

// Widths are drawn by their logarithm, as they are tried.
void FoldView::paintWidths(QPainter &painter, const QRect &frame) const
{
    painter.setPen(frameColour);
    painter.drawRect(frame);
    const double highest = std::max(shown.snr[std::size_t(shown.best)], 1e-9);
    const double range = std::max(std::log(double(shown.widths.back())), 1e-9);
    const auto place = [&](std::size_t i) {
        return QPointF(frame.left() + std::log(double(shown.widths[i])) / range * frame.width(),
                       frame.bottom() - std::max(shown.snr[i], 0.0) / highest * frame.height());
    };
    QPolygonF curve;
    for (std::size_t i = 0; i < shown.widths.size(); ++i)
        curve << place(i);
    painter.setPen(markColour);
    const double best = place(std::size_t(shown.best)).x();
    painter.drawLine(QPointF(best, frame.top()), QPointF(best, frame.bottom()));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(curveColour);
    painter.drawPolyline(curve);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(Qt::black);
    const QRect texts(0, frame.top(), frame.left() - 4, frame.height());
    drawText(painter, texts, Qt::AlignRight | Qt::AlignTop, QString::number(highest, 'f', 1));
    drawText(painter, texts, Qt::AlignRight | Qt::AlignBottom, "0");
    drawText(painter, frame.adjusted(4, 0, -4, 0), Qt::AlignRight | Qt::AlignTop, "S/N");
    const QRect below(frame.left(), frame.bottom() + 2, frame.width(), fontMetrics().height());
    drawText(painter, below, Qt::AlignLeft | Qt::AlignTop, "1");
    drawText(painter, below, Qt::AlignHCenter | Qt::AlignTop, "width, bins");
    drawText(painter, below, Qt::AlignRight | Qt::AlignTop, QString::number(shown.widths.back()));
}
