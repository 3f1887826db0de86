#include "forms/native/bandpassview.h"

#include "forms/native/nativetexts.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>

namespace {

// The user's font, as far as there is room.
QFont titleFont(QFont font)
{
    constexpr int least = 9; // pixels
    constexpr int most = 15;
    font.setPixelSize(std::clamp(QFontInfo(font).pixelSize(), least, most));
    return font;
}

} // namespace

BandpassView::BandpassView(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void BandpassView::setValues(std::vector<double> means, std::vector<double> sigmas)
{
    mean = std::move(means);
    sigma = std::move(sigmas);
    current = std::clamp(current, 0, std::max(0, int(mean.size()) - 1));
    update();
}

void BandpassView::setChannelsOff(const std::vector<bool> &channels)
{
    off = channels;
    update();
}

void BandpassView::mouseMoveEvent(QMouseEvent *event)
{
    QToolTip::showText(event->globalPos(), channelText(channelAt(event->x())), this);
}

int BandpassView::channelAt(int x) const
{
    const int channels = int(mean.size());
    return channels == 0
               ? -1
               : std::clamp(int(qint64(x) * channels / std::max(1, width())), 0, channels - 1);
}

bool BandpassView::isOff(int channel) const
{
    return std::size_t(channel) < off.size() && off[std::size_t(channel)];
}

QString BandpassView::channelText(int channel) const
{
    if (channel < 0)
        return {};
    const std::size_t i = std::size_t(channel);
    QString text = QString("channel %1").arg(channel + 1);
    if (i < frequencies.size())
        text += QString(", %1 MHz").arg(frequencies[i]);
    return text +
           QString("\nmean %1, sigma %2\n%3")
               .arg(NativeTexts::valueText(mean[i]), NativeTexts::valueText(sigma[i]),
                    isOff(channel) ? "off; a click switches it on" : "a click switches it off");
}

// From three standard deviations below the mean of the channels that are on to three above: one
// channel full of interference does not flatten all others.
std::optional<Plot::Range> BandpassView::scaleOf(const std::vector<double> &values) const
{
    constexpr double deviations = 3;
    double sum = 0;
    double squares = 0;
    double count = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!std::isfinite(values[i]) || isOff(int(i)))
            continue;
        ++count;
        const double difference = values[i] - sum;
        sum += difference / count; // the mean so far
        squares += difference * (values[i] - sum);
    }
    if (count == 0)
        return std::nullopt;
    const double deviation = std::sqrt(squares / count);
    const double reach =
        deviation > 0 ? deviations * deviation : std::max(1e-9, std::abs(sum) / 10);
    return Plot::Range{sum - reach, sum + reach};
}

void BandpassView::paintBars(QPainter &painter, const std::vector<double> &values,
                             const QRect &place, const QColor &colour) const
{
    const std::optional<Plot::Range> scale = scaleOf(values);
    if (!scale)
        return;
    const double barWidth = double(width()) / double(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!std::isfinite(values[i]))
            continue;
        const double share = std::clamp((values[i] - scale->min) / scale->extent(), 0.02, 1.0);
        const double height = place.height() * share;
        painter.fillRect(QRectF(double(i) * barWidth, place.bottom() + 1 - height,
                                barWidth > 3 ? barWidth - 1 : barWidth, height),
                         isOff(int(i)) ? QColor(220, 220, 220) : colour);
    }
    painter.setPen(QColor(150, 150, 150));
    painter.drawLine(place.left(), place.center().y(), place.right(), place.center().y());
}

QString BandpassView::titleOf(const QString &name, const std::vector<double> &values) const
{
    const std::optional<Plot::Range> scale = scaleOf(values);
    if (!scale)
        return name;
    const auto number = [](double value) { return QString::number(value, 'g', 4); };
    return QString("%1: %2, scale +- %3")
        .arg(name, number((scale->min + scale->max) / 2), number(scale->extent() / 2));
}

void BandpassView::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    if (mean.empty())
        return;
    const double barWidth = double(width()) / double(mean.size());
    for (std::size_t i = 0; i < mean.size(); ++i)
        if (isOff(int(i)))
            painter.fillRect(QRectF(double(i) * barWidth, 0, barWidth, height()),
                             QColor(244, 204, 204));
    painter.setFont(titleFont(font()));
    const int titleHeight = painter.fontMetrics().ascent() + 4;
    const int half = height() / 2;
    const QRect upper(0, titleHeight, width(), half - titleHeight);
    const QRect lower(0, half + titleHeight, width(), height() - half - titleHeight);
    paintBars(painter, mean, upper, QColor("#0000FF"));
    paintBars(painter, sigma, lower, QColor("#009900"));
    painter.setPen(Qt::black);
    painter.drawText(4, titleHeight - 3, titleOf("mean", mean));
    painter.drawText(4, half + titleHeight - 3, titleOf("sigma", sigma));
    if (hasFocus()) {
        painter.setPen(QColor(0, 50, 200));
        painter.drawRect(QRectF(current * barWidth, 0, std::max(1.0, barWidth - 1), height() - 1));
    }
}

void BandpassView::mousePressEvent(QMouseEvent *event)
{
    const int channel = channelAt(event->x());
    if (event->button() != Qt::LeftButton || channel < 0)
        return;
    current = channel;
    emit toggled(channel);
}

void BandpassView::keyPressEvent(QKeyEvent *event)
{
    const int last = int(mean.size()) - 1;
    if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) {
        current =
            std::clamp(current + (event->key() == Qt::Key_Left ? -1 : 1), 0, std::max(0, last));
        QToolTip::showText(mapToGlobal(QPoint(0, height())), channelText(last < 0 ? -1 : current),
                           this);
        update();
    } else if (event->key() == Qt::Key_Space && last >= 0) {
        emit toggled(current);
    } else {
        QWidget::keyPressEvent(event);
    }
}
