#include "calc/pulsar/startpoint.h"

#include "base/timetext.h"
#include "data/recordingtime.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr qint64 msPerDay = 24LL * 3600 * 1000;

StartPoint noPoint(const QString &text, bool isWithoutTimes = false)
{
    return {0, {"zrtUtc", text}, isWithoutTimes};
}

} // namespace

StartPoint pointAtUtc(const ObservationData &data, const QString &time)
{
    if (!data.beginTime.isValid())
        return noPoint(
            "The passport has no begin time, so that no UTC time can be found in the recording.",
            true);
    QTime wanted = QTime::fromString(time.trimmed(), "h:m:s");
    if (!wanted.isValid())
        wanted = QTime::fromString(time.trimmed(), "h:m:s.z");
    if (!wanted.isValid())
        return noPoint("\"" + time + "\" is no time.\nType ZRT UTC as hh:mm:ss.");

    const RecordingClock clock(data);
    if (!(data.tresolution > 0) || !clock.isKnown())
        return noPoint(
            QString("The passport gives a step of %1 ms (tresolution), so that no time can be "
                    "found in the recording.")
                .arg(data.tresolution * 1000),
            true);

    // A time of whole seconds is that of the begin in the begin's own second.
    const QTime begin = exactBegin(data).time();
    const bool isBegin = wanted.msec() == 0 && wanted.secsTo(begin) == 0 && wanted < begin;
    const qint64 ms = (isBegin ? begin : wanted).msecsSinceStartOfDay();
    const bool isNextDay = !isBegin && wanted < begin;
    // The tiny surplus keeps a time that is a whole number of steps on its own point.
    const double point =
        std::max(0.0, std::floor(clock.pointAt(isNextDay ? ms + msPerDay : ms) + 1e-6));
    const int last = completePoints(data) - 1;
    if (point > last)
        return noPoint(QString("%1 UTC is not in the recording.\nAllowed: %2 to %3.")
                           .arg(time, textOfTime(clock.utc(0), "hh:mm:ss.zzz"),
                                textOfTime(clock.utc(last), "hh:mm:ss.zzz")));
    return {int(point), {}};
}
