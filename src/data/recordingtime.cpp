#include "data/recordingtime.h"

#include <QRegularExpression>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double longestTime = 1e15; // ms; beyond it a step is no time
// A sum of steps that is a whole number of milliseconds may come out a trace below it.
constexpr double trace = 1e-6; // ms

qint64 roundedDown(double ms)
{
    return qint64(std::floor(ms + trace));
}

// The sidereal clock so many seconds later; unreadable texts stay.
QString laterSiderealTime(const QString &text, double seconds)
{
    const std::optional<int> begin = siderealSeconds(text);
    if (!begin)
        return text;
    constexpr int daySeconds = 86400;
    const double clock = *begin + seconds * siderealRate;
    const int whole = int(clock - daySeconds * std::floor(clock / daySeconds)) % daySeconds;
    return QString("%1:%2:%3").arg(whole / 3600).arg(whole / 60 % 60).arg(whole % 60);
}

} // namespace

QDateTime exactBegin(const ObservationData &data)
{
    return data.beginTime.isValid() ? data.beginTime.addMSecs(roundedDown(data.beginRest))
                                    : QDateTime();
}

RecordingClock::RecordingClock(const ObservationData &data)
    : rest(data.beginRest), msPerPoint(data.tresolution * 1000)
{
    if (std::abs(data.npoints * msPerPoint) < longestTime) // not so for NaN either
        begin = data.beginTime;
}

qint64 RecordingClock::msSinceBegin(double point) const
{
    return roundedDown(rest + point * msPerPoint);
}

QDateTime RecordingClock::utc(double point) const
{
    if (!isKnown() || !(std::abs(point * msPerPoint) < longestTime))
        return {};
    return begin.addMSecs(msSinceBegin(point));
}

qint64 RecordingClock::msOfDay(double point) const
{
    if (!isKnown() || !(std::abs(point * msPerPoint) < longestTime))
        return 0;
    return begin.time().msecsSinceStartOfDay() + msSinceBegin(point);
}

double RecordingClock::pointAt(qint64 msOfDay) const
{
    return (double(msOfDay - begin.time().msecsSinceStartOfDay()) - rest) / msPerPoint;
}

std::optional<int> siderealSeconds(const QString &text)
{
    static const QRegularExpression pattern("^(\\d{1,2}):(\\d{1,2}):(\\d{1,2})(?:\\.\\d+)?$");
    const QRegularExpressionMatch match = pattern.match(text.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(1).toInt() * 3600 + match.captured(2).toInt() * 60 +
           match.captured(3).toInt();
}

void advanceBegin(ObservationData &data)
{
    const double seconds = double(data.point) * data.tresolution;
    if (!data.beginTime.isValid() || !(std::abs(seconds) * 1000 < longestTime)) {
        data.beginTime = {};
        return;
    }
    data.beginTime = data.beginTime.addSecs(qint64(seconds));
    data.beginRest += (seconds - std::trunc(seconds)) * 1000;
}

void moveBegin(ObservationData &data, qint64 points)
{
    const double before = double(data.point) * data.tresolution;
    const double after = (double(data.point) + double(points)) * data.tresolution;
    constexpr qint64 most = std::numeric_limits<int>::max();
    data.point = int(std::clamp<qint64>(data.point + points, -most, most));
    if (!(std::abs(before) * 1000 < longestTime) || !(std::abs(after) * 1000 < longestTime))
        return;
    // Whole seconds of "point" stand in `beginTime`, as the reader has them; the rest beside it.
    const double seconds = std::trunc(after) - std::trunc(before);
    const double fractions = (after - std::trunc(after)) - (before - std::trunc(before));
    data.starTime = laterSiderealTime(data.starTime, after - before);
    if (!data.beginTime.isValid())
        return;
    data.beginTime = data.beginTime.addSecs(qint64(seconds));
    data.beginRest += fractions * 1000;
}
