#include "forms/pulsar/pulsartexts.h"

#include <QRegularExpression>
#include <cmath>

namespace PulsarTexts {

namespace {

constexpr qint64 msPerDay = 24LL * 3600 * 1000;

QString withTrueNumber(int number, int trueNumber)
{
    const QString text = QString::number(number);
    return number == trueNumber ? text : text + QString(" (number %1)").arg(trueNumber);
}

// One digit beyond the step: neighbouring values differ, and no digit is noise.
int decimalsOfStep(double step)
{
    return std::clamp(int(std::ceil(-std::log10(step))) + 1, 0, 12);
}

AxisLabels timeLabels(const PulsarAxis &axis, int count, const ObservationData &data)
{
    AxisLabels labels;
    labels.row1.reserve(count);
    for (int i = 0; i < count; ++i)
        labels.row1 << QString::number(axis.first + i * axis.step, 'f', 0);
    if (!data.beginTime.isValid())
        return labels;
    labels.row2.reserve(count);
    const double msPerPoint = data.tresolution * 1000;
    for (int i = 0; i < count; ++i) {
        const double ms = std::floor((axis.first + i * axis.step) * msPerPoint);
        labels.row2 << data.beginTime.addMSecs(qint64(ms)).toString("hh:mm:ss.zzz");
    }
    return labels;
}

AxisLabels spectrumLabels(const PulsarAxis &axis, int count)
{
    AxisLabels labels;
    const int decimals = decimalsOfStep(axis.step);
    labels.row1.reserve(count);
    labels.row2.reserve(count);
    for (int i = 0; i < count; ++i) {
        const double frequency = axis.first + i * axis.step;
        labels.row1 << QString::number(frequency, 'f', decimals) + " Hz";
        labels.row2 << (frequency > 0 ? QString::number(1 / frequency, 'g', 6) + " s" : "-");
    }
    return labels;
}

AxisLabels dispersionLabels(const PulsarAxis &axis, int count)
{
    AxisLabels labels;
    const int decimals = decimalsOfStep(axis.step);
    for (int i = 0; i < count; ++i)
        labels.row1 << QString::number(axis.first + i * axis.step, 'f', decimals) + " pc/cm^3";
    return labels;
}

// Labels stand for the begin of each bin.
AxisLabels phaseLabels(const PulsarAxis &axis, int count)
{
    AxisLabels labels;
    for (int i = 0; i < count; ++i) {
        const double phase = axis.first + i * axis.step;
        labels.row1 << QString::number(phase, 'f', decimalsOfStep(axis.step));
        labels.row2 << QString::number(phase * axis.period, 'f',
                                       decimalsOfStep(axis.step * axis.period)) +
                           " s";
    }
    return labels;
}

} // namespace

QString fileLabel(const QString &path)
{
    return "File: " + QString(path).replace("/", "/ ");
}

std::vector<double> numbers(const QString &text)
{
    std::vector<double> values;
    const QStringList items = text.split(QRegularExpression("\\s+"), Qt::SkipEmptyParts);
    for (const QString &item : items) {
        bool ok = false;
        const double value = item.toDouble(&ok);
        if (!ok || !std::isfinite(value))
            return {};
        values.push_back(value);
    }
    return values;
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

    const qint64 sinceBegin = data.beginTime.time().msecsTo(wanted);
    const double ms = double(sinceBegin < 0 ? sinceBegin + msPerDay : sinceBegin);
    // The tiny surplus keeps a time that is a whole number of steps on its own point.
    const double point = std::floor(ms / (data.tresolution * 1000) + 1e-6);
    if (point >= data.npoints) {
        const qint64 length = qint64(data.npoints * data.tresolution * 1000);
        return {0, QString("%1 UTC is not in the recording.\nAllowed: %2 to %3.")
                       .arg(time, data.beginTime.toString("hh:mm:ss"),
                            data.beginTime.addMSecs(length).toString("hh:mm:ss"))};
    }
    return {int(point), {}};
}

QString selection(const QString &action, const ObservationData &data,
                  const PulsarParameters &parameters, int points)
{
    const int trueModule = data.firstModule + parameters.module - 1;
    const int trueRay = data.ray > 0 && data.rays == 1 ? data.ray : parameters.ray;
    return "Action:" + action + "\nModule:" + withTrueNumber(parameters.module, trueModule) +
           "\nChannel:" + QString::number(parameters.channel) +
           "\nRay:" + withTrueNumber(parameters.ray, trueRay) +
           "\nPoints:" + QString::number(points);
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

AxisLabels axisLabels(const PulsarAxis &axis, int count, const ObservationData &data)
{
    switch (axis.kind) {
    case PulsarAxis::Kind::Frequency:
        return spectrumLabels(axis, count);
    case PulsarAxis::Kind::Dispersion:
        return dispersionLabels(axis, count);
    case PulsarAxis::Kind::Phase:
        return phaseLabels(axis, count);
    default:
        return timeLabels(axis, count, data);
    }
}

int labelDecimals(double range)
{
    if (!(range > 0) || std::isinf(range))
        return 3;
    return std::clamp(2 - int(std::floor(std::log10(range))), 0, 9);
}

} // namespace PulsarTexts
