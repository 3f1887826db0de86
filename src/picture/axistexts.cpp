#include "picture/axistexts.h"

#include "data/recordingtime.h"

#include <algorithm>
#include <cmath>

namespace Plot {

namespace {

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
    constexpr qint64 msPerDay = 24LL * 3600 * 1000;
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

QStringList rowNames(const PulsarAxis &axis)
{
    switch (axis.kind) {
    case PulsarAxis::Kind::Frequency:
        return {"frequency", "period"};
    case PulsarAxis::Kind::Dispersion:
        return {"dispersion"};
    case PulsarAxis::Kind::Phase:
        return {"phase", "time"};
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

} // namespace Plot
