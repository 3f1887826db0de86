#include "forms/ffa/foldview.h"

#include "picture/colourmap.h"
#include "picture/percentiles.h"
#include "picture/resultplot.h"

#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>

namespace {

constexpr int turns = 2;
constexpr double paleShare = 0.05;  // of the values that are all white
constexpr double darkShare = 0.995; // of the values that are not all black
const QColor curveColour("#0000FF");
const QColor frameColour("#c4cad0");
const QColor markColour("#FF0000");

// Grey levels of rows of values, the first on top, high values dark; the highest few share the
// black.
QImage greyPicture(const std::vector<float> &rows, int bins)
{
    const std::vector<float> limits = Plot::percentiles(rows, {paleShare, darkShare});
    QImage picture(bins, int(rows.size()) / bins, QImage::Format_RGB32);
    picture.fill(Qt::white);
    if (limits.empty())
        return picture;
    const float *value = rows.data();
    for (int row = 0; row < picture.height(); ++row) {
        auto *const line = reinterpret_cast<QRgb *>(picture.scanLine(row));
        for (int b = 0; b < bins; ++b, ++value)
            if (std::isfinite(*value))
                line[b] = Plot::colourOfValue(*value, limits[0], limits[1], Plot::greyMap());
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
    setMouseTracking(true);
}

void FoldView::showFold(const FfaFold &fold, double length)
{
    asFolded = fold;
    shown = fold;
    shownBands.reset();
    seconds = length;
    const int bins = int(fold.profile.size());
    if (bins > 0) { // the pulse comes to the middle
        const int pulse = int(std::lround(fold.phase * bins - 0.5));
        shift = ((pulse - bins / 2) % bins + bins) % bins;
        std::rotate(shown.profile.begin(), shown.profile.begin() + shift, shown.profile.end());
        for (auto row = shown.picture.begin(); row != shown.picture.end(); row += bins)
            std::rotate(row, row + shift, row + bins);
    }
    std::vector<float> rows; // the latest part on top
    for (int part = shown.parts - 1; part >= 0; --part) {
        const auto row = shown.picture.begin() + std::ptrdiff_t(part) * bins;
        rows.insert(rows.end(), row, row + bins);
    }
    greys = bins > 0 ? greyPicture(rows, bins) : QImage();
    update();
}

void FoldView::showBands(std::shared_ptr<const BandFold> fold)
{
    if (!fold || fold->bins != int(shown.profile.size()))
        return;
    shownBands = std::move(fold);
    bandOrder = Plot::bandsFromHighest(*shownBands);
    std::vector<float> rows;
    for (const int band : bandOrder) {
        std::vector<float> row = shownBands->profile(band);
        std::rotate(row.begin(), row.begin() + shift, row.end());
        rows.insert(rows.end(), row.begin(), row.end());
    }
    greys = greyPicture(rows, shownBands->bins);
    update();
}

void FoldView::clear()
{
    asFolded = {};
    shown = {};
    shownBands.reset();
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
    const Frames places = frames();
    paintProfile(painter, places.profile);
    paintPicture(painter, places.picture);
    paintWidths(painter, places.widths);
}

// Left of each frame stand its upper and lower value and what they are, where no curve runs; below
// it a line of texts.
FoldView::Frames FoldView::frames() const
{
    const int line = fontMetrics().height();
    const int left = fontMetrics().horizontalAdvance("-0.0000");
    const int room = height() - 3 * line - 16;
    const QRect area(left, 6, width() - left - 8, room);
    Frames places;
    places.profile = QRect(area.left(), area.top(), area.width(), room * 3 / 10);
    places.picture = QRect(area.left(), places.profile.bottom() + 5, area.width(), room * 4 / 10);
    places.widths = QRect(area.left(), places.picture.bottom() + line + 7, area.width(),
                          room - places.profile.height() - places.picture.height());
    return places;
}

// Phase of the fold, 0 to 1, so many turns from the left edge.
double FoldView::phaseOf(double turn) const
{
    const double phase = turn + double(shift) / double(shown.profile.size());
    return phase - std::floor(phase);
}

void FoldView::mouseMoveEvent(QMouseEvent *event)
{
    const QString text = shown.profile.empty() ? QString() : textAt(event->pos());
    if (text.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(event->globalPos(), text, this);
}

QString FoldView::textAt(const QPoint &pixel) const
{
    const Frames places = frames();
    const auto shareOf = [&](const QRect &frame) {
        return std::clamp((pixel.x() - frame.left() + 0.5) / frame.width(), 0.0, 1.0);
    };
    if (places.widths.contains(pixel))
        return widthTextAt(shareOf(places.widths));
    const bool isProfile = places.profile.contains(pixel);
    if (!isProfile && !places.picture.contains(pixel))
        return {};
    const auto bins = double(shown.profile.size());
    const double turn = std::fmod(shareOf(places.profile) * turns, 1.0);
    const auto bin = std::size_t(std::min(std::floor(turn * bins), bins - 1));
    const double phase = phaseOf(double(bin) / bins);
    QString text = QString("phase %1,  %2 ms\nperiod %3 s,  %4 Hz\n")
                       .arg(phase, 0, 'f', 3)
                       .arg(1000 * phase * shown.period, 0, 'f', 2)
                       .arg(shown.period, 0, 'g', 9)
                       .arg(1 / shown.period, 0, 'g', 9);
    if (isProfile)
        return text + QString("mean %1 sigma").arg(shown.profile[bin], 0, 'f', 3);
    const double share =
        double(pixel.y() - places.picture.top()) / std::max(1, places.picture.height());
    return text + rowTextAt(share, bin);
}

// share  of the picture's height, from its top
QString FoldView::rowTextAt(double share, std::size_t bin) const
{
    const int count = shownBands ? shownBands->bands() : shown.parts;
    const int row = std::clamp(int(share * count), 0, count - 1);
    const auto textOf = [](float value) {
        return std::isfinite(value) ? QString::number(double(value), 'f', 3) + " sigma"
                                    : QString("no value");
    };
    if (shownBands) {
        const int band = bandOrder[std::size_t(row)];
        const std::size_t place = (bin + std::size_t(shift)) % shown.profile.size();
        return QString("band %1, %2 MHz:  %3")
            .arg(band + 1)
            .arg(shownBands->frequencies[std::size_t(band)], 0, 'g', 7)
            .arg(textOf(shownBands->profile(band)[place]));
    }
    const int part = shown.parts - 1 - row;
    return QString("part %1 of %2, from %3 s:  %4")
        .arg(part + 1)
        .arg(shown.parts)
        .arg(seconds * part / shown.parts, 0, 'f', 1)
        .arg(textOf(shown.picture[std::size_t(part) * shown.profile.size() + bin]));
}

// share  of the frame's width
QString FoldView::widthTextAt(double share) const
{
    const double wanted = std::pow(double(shown.widths.back()), share);
    std::size_t nearest = 0;
    for (std::size_t i = 1; i < shown.widths.size(); ++i)
        if (std::abs(std::log(shown.widths[i] / wanted)) <
            std::abs(std::log(shown.widths[nearest] / wanted)))
            nearest = i;
    const int width = shown.widths[nearest];
    return QString("width %1 of %2 bins,  %3 ms\nS/N %4")
        .arg(width)
        .arg(shown.profile.size())
        .arg(1000 * width * shown.period / double(shown.profile.size()), 0, 'f', 2)
        .arg(shown.snr[nearest], 0, 'f', 1);
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
    drawText(painter, texts, Qt::AlignRight | Qt::AlignVCenter, "sigma");
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
    const auto megahertz = [this](int band) {
        return QString::number(shownBands->frequencies[std::size_t(band)], 'f', 1);
    };
    drawText(painter, texts, Qt::AlignRight | Qt::AlignTop,
             shownBands ? megahertz(bandOrder.front())
                        : QString::number(seconds, 'f', seconds < 100 ? 1 : 0) + " s");
    drawText(painter, texts, Qt::AlignRight | Qt::AlignBottom,
             shownBands ? megahertz(bandOrder.back()) : QString("0"));
    if (shownBands)
        drawText(painter, texts, Qt::AlignRight | Qt::AlignVCenter, "MHz");
    const QRect below(frame.left(), frame.bottom() + 2, frame.width(), fontMetrics().height());
    drawText(painter, below, Qt::AlignLeft | Qt::AlignTop,
             "phase " + QString::number(phaseOf(0), 'f', 3));
    drawText(painter, below, Qt::AlignHCenter | Qt::AlignTop, "+1");
    drawText(painter, below, Qt::AlignRight | Qt::AlignTop, QString("+%1").arg(turns));
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
    drawText(painter, texts, Qt::AlignRight | Qt::AlignVCenter, "S/N");
    const QRect below(frame.left(), frame.bottom() + 2, frame.width(), fontMetrics().height());
    drawText(painter, below, Qt::AlignLeft | Qt::AlignTop, "1");
    drawText(painter, below, Qt::AlignHCenter | Qt::AlignTop, "width, bins");
    drawText(painter, below, Qt::AlignRight | Qt::AlignTop, QString::number(shown.widths.back()));
}
