#include "forms/native/bandpassview.h"

#include "forms/native/nativetexts.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>

namespace {

constexpr int titleHeight = 15;

} // namespace

BandpassView::BandpassView(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
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

bool BandpassView::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        auto *const help = static_cast<QHelpEvent *>(event);
        QToolTip::showText(help->globalPos(), channelText(channelAt(help->x())), this);
        return true;
    }
    return QWidget::event(event);
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

// Bars from the least value up to each; a tenth of the height remains below the least.
void BandpassView::paintBars(QPainter &painter, const std::vector<double> &values,
                             const QRect &place, const QColor &colour) const
{
    double least = INFINITY;
    double greatest = -INFINITY;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!std::isfinite(values[i]) || isOff(int(i)))
            continue;
        least = std::min(least, values[i]);
        greatest = std::max(greatest, values[i]);
    }
    if (!std::isfinite(least))
        return;
    const double extent = greatest > least ? greatest - least : 1;
    const double barWidth = double(width()) / double(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!std::isfinite(values[i]))
            continue;
        const double share = std::clamp((values[i] - least) / extent, 0.0, 1.0);
        const double height = place.height() * (0.1 + 0.9 * share);
        painter.fillRect(QRectF(double(i) * barWidth, place.bottom() + 1 - height,
                                barWidth > 3 ? barWidth - 1 : barWidth, height),
                         isOff(int(i)) ? QColor(220, 220, 220) : colour);
    }
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
    const int half = height() / 2;
    const QRect upper(0, titleHeight, width(), half - titleHeight);
    const QRect lower(0, half + titleHeight, width(), height() - half - titleHeight);
    paintBars(painter, mean, upper, QColor("#0000FF"));
    paintBars(painter, sigma, lower, QColor("#009900"));
    QFont small = font();
    small.setPixelSize(11);
    painter.setFont(small);
    painter.setPen(Qt::black);
    painter.drawText(4, titleHeight - 3, "mean");
    painter.drawText(4, half + titleHeight - 3, "sigma");
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
