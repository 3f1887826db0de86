#include "app/shell/timedprogressbar.h"

TimedProgressBar::TimedProgressBar(QWidget *parent) : QProgressBar(parent)
{
    sinceBegin.start();
    connect(this, &QProgressBar::valueChanged, this, [this](int newValue) {
        if (newValue < lastValue)
            sinceBegin.start();
        lastValue = newValue;
    });
}

QString TimedProgressBar::text() const
{
    return remainingText(sinceBegin.elapsed(), value());
}

QString TimedProgressBar::remainingText(qint64 elapsedMs, int percent)
{
    constexpr qint64 leastMs = 2000;
    constexpr int leastPercent = 2;
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    QString text = QString("%1 %").arg(percent);
    if (elapsedMs < leastMs || percent < leastPercent)
        return text;
    const qint64 seconds = (elapsedMs * (100 - percent) / percent + 999) / 1000;
    if (seconds < 2 * minute)
        return text + QString(", %1 s left").arg(seconds);
    if (seconds < 2 * hour)
        return text + QString(", %1 min left").arg((seconds + minute - 1) / minute);
    return text + QString(", %1 h left").arg((seconds + hour - 1) / hour);
}

void TimedProgressBar::showEvent(QShowEvent *event)
{
    sinceBegin.start();
    QProgressBar::showEvent(event);
}
