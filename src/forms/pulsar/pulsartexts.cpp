#include "forms/pulsar/pulsartexts.h"

#include "base/timetext.h"
#include "calc/pulsar/computedon.h"
#include "data/recordingtime.h"

#include <algorithm>
#include <cmath>

namespace FormTexts {

namespace {

constexpr qint64 msPerDay = 24LL * 3600 * 1000;

// One digit beyond the step: neighbouring values differ, and no digit is noise.
int decimalsOfStep(double step)
{
    return int(std::clamp(std::ceil(-std::log10(step)) + 1, 0.0, 12.0));
}

AxisTexts timeTexts(const PulsarAxis &axis, int count, const ObservationData &data)
{
    AxisTexts texts;
    texts.row1 = [axis](int i) { return QString::number(qint64(axis.first + i * axis.step)); };
    const RecordingClock clock(data);
    if (clock.utc(axis.first + count * axis.step).isValid())
        texts.row2 = [axis, clock](int i) {
            return timeOfDay(clock.msOfDay(axis.first + i * axis.step));
        };
    return texts;
}

AxisTexts spectrumTexts(const PulsarAxis &axis)
{
    AxisTexts texts;
    texts.row1 = [axis, decimals = decimalsOfStep(axis.step)](int i) {
        return QString::number(axis.first + i * axis.step, 'f', decimals) + " Hz";
    };
    texts.row2 = [axis](int i) {
        const double frequency = axis.first + i * axis.step;
        return frequency > 0 ? QString::number(1 / frequency, 'g', 6) + " s" : QString("-");
    };
    return texts;
}

AxisTexts dispersionTexts(const PulsarAxis &axis)
{
    AxisTexts texts;
    texts.row1 = [axis, decimals = decimalsOfStep(axis.step)](int i) {
        return QString::number(axis.first + i * axis.step, 'f', decimals) + " pc/cm^3";
    };
    return texts;
}

// The texts stand for the begin of each bin.
AxisTexts phaseTexts(const PulsarAxis &axis)
{
    AxisTexts texts;
    texts.row1 = [axis, decimals = decimalsOfStep(axis.step)](int i) {
        return QString::number(axis.first + i * axis.step, 'f', decimals);
    };
    texts.row2 = [axis, decimals = decimalsOfStep(axis.step * axis.period)](int i) {
        return QString::number((axis.first + i * axis.step) * axis.period, 'f', decimals) + " s";
    };
    return texts;
}

} // namespace

// Formatting by date-time objects would take most of the time of long plots.
QString timeOfDay(qint64 ms)
{
    ms = (ms % msPerDay + msPerDay) % msPerDay;
    const int parts[] = {int(ms / 3600000), int(ms / 60000 % 60), int(ms / 1000 % 60)};
    QString text;
    text.reserve(12);
    for (const int part : parts) {
        if (!text.isEmpty())
            text += ':';
        text += QChar('0' + part / 10);
        text += QChar('0' + part % 10);
    }
    const int fraction = int(ms % 1000);
    text += '.';
    text += QChar('0' + fraction / 100);
    text += QChar('0' + fraction / 10 % 10);
    text += QChar('0' + fraction % 10);
    return text;
}

QString fileLabel(const QString &path)
{
    return "File: " + QString(path).replace("/", "/ ");
}

StartPoint pointAtUtc(const ObservationData &data, const QString &time)
{
    if (!data.beginTime.isValid())
        return {0, "The passport has no begin time, so that no UTC time can be found in the "
                   "recording.\nChoose \"First point\" instead."};
    QTime wanted = QTime::fromString(time.trimmed(), "h:m:s");
    if (!wanted.isValid())
        wanted = QTime::fromString(time.trimmed(), "h:m:s.z");
    if (!wanted.isValid())
        return {0, "\"" + time + "\" is no time.\nType ZRT UTC as hh:mm:ss."};

    const RecordingClock clock(data);
    if (!(data.tresolution > 0) || !clock.isKnown())
        return {0,
                QString("The passport gives a step of %1 ms (tresolution), so that no time can be "
                        "found in the recording.\nChoose \"First point\" instead.")
                    .arg(data.tresolution * 1000)};

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
        return {0, QString("%1 UTC is not in the recording.\nAllowed: %2 to %3.")
                       .arg(time, textOfTime(clock.utc(0), "hh:mm:ss.zzz"),
                            textOfTime(clock.utc(last), "hh:mm:ss.zzz"))};
    return {int(point), {}};
}

QString selection(const QString &action, const ObservationData &data,
                  const PulsarParameters &parameters, int points)
{
    return "Action:" + action + "\nModule:" + moduleText(data, parameters.module) +
           "\nChannel:" + QString::number(parameters.channel) +
           "\nRay:" + rayText(data, parameters.ray) + "\nPoints:" + QString::number(points);
}

AxisTitles axisTitles(const PulsarAxis &axis)
{
    switch (axis.kind) {
    case PulsarAxis::Kind::Frequency:
        return {"frequency, Hz", "period, s"};
    case PulsarAxis::Kind::Dispersion:
        return {"dispersion, pc/cm^3", {}};
    case PulsarAxis::Kind::Phase:
        return {"phase", "s"};
    default:
        return {"point", "UTC"};
    }
}

AxisTexts axisTexts(const PulsarAxis &axis, int count, const ObservationData &data)
{
    switch (axis.kind) {
    case PulsarAxis::Kind::Frequency:
        return spectrumTexts(axis);
    case PulsarAxis::Kind::Dispersion:
        return dispersionTexts(axis);
    case PulsarAxis::Kind::Phase:
        return phaseTexts(axis);
    default:
        return timeTexts(axis, count, data);
    }
}

PlotAxis plotAxis(const PulsarAxis &axis, double tresolution)
{
    switch (axis.kind) {
    case PulsarAxis::Kind::Frequency:
        return {"frequency", "Hz", axis.first, axis.step, {}};
    case PulsarAxis::Kind::Dispersion:
        return {"dispersion", "pc/cm^3", axis.first, axis.step, {}};
    case PulsarAxis::Kind::Phase:
        return {"phase", "", axis.first, axis.step, {}};
    default:
        if (!(tresolution > 0) || std::isinf(tresolution))
            return {"point", "", axis.first, axis.step, {}};
        return {"time", "s", axis.first * tresolution, axis.step * tresolution, {}};
    }
}

int labelDecimals(double range)
{
    if (!(range > 0) || std::isinf(range))
        return 3;
    return std::clamp(2 - int(std::floor(std::log10(range))), 0, 9);
}

} // namespace FormTexts
