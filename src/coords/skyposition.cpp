#include "coords/skyposition.h"

#include <QRegularExpression>
#include <QStringList>
#include <cmath>
#include <limits>

namespace Tools {

namespace {

constexpr double degree = M_PI / 180;
constexpr double hour = 15 * degree;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

double decimal(double units, double minutes, double seconds)
{
    return units + minutes / 60 + seconds / 3600;
}

// "12 30 15.5" as 12.504; every part but the first below 60, all but the last without decimals.
double decimalOf(const QString &parts)
{
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        "(\\d{1,3})(?: ([0-5]?\\d)(?: ([0-5]?\\d))?)?(\\.\\d*)?"));
    const QRegularExpressionMatch match = pattern.match(parts);
    if (!match.hasMatch())
        return notANumber;
    double unit = 1;
    double value = 0;
    double smallest = 1;
    for (int group = 1; group <= 3; ++group, unit /= 60) {
        if (match.captured(group).isEmpty())
            continue;
        value += match.captured(group).toDouble() * unit;
        smallest = unit;
    }
    const QString decimals = match.captured(4);
    return decimals.size() > 1 ? value + ("0" + decimals).toDouble() * smallest : value;
}

QString withBlanks(QString text, const QString &marks)
{
    for (const QChar mark : marks)
        text.replace(mark, ' ', Qt::CaseInsensitive);
    return text.simplified();
}

// Units, minutes and seconds of a value that is not negative, rounded to `decimals`.
QString rounded(double value, int decimals)
{
    const double perUnit = 3600 * std::pow(10.0, decimals);
    const qint64 all = std::llround(value * perUnit);
    const qint64 perMinute = qint64(perUnit) / 60;
    const double seconds = double(all % perMinute) / std::pow(10.0, decimals);
    return QString("%1:%2:%3")
        .arg(all / qint64(perUnit), 2, 10, QChar('0'))
        .arg(all / perMinute % 60, 2, 10, QChar('0'))
        .arg(QString::number(seconds, 'f', decimals)
                 .rightJustified(decimals > 0 ? decimals + 3 : 2, '0'));
}

} // namespace

bool SkyPosition::isNumber() const
{
    return std::isfinite(alfa) && std::isfinite(delta);
}

SkyPosition skyPosition(const CoordinatePair &position)
{
    const HourAngleValue &alfa = position.alfa;
    const AngleValue &delta = position.delta;
    return {decimal(alfa.hours, alfa.minutes, alfa.seconds) * hour,
            decimal(delta.degrees, delta.minutes, delta.seconds) * degree};
}

CoordinatePair coordinatePair(const SkyPosition &position)
{
    if (!position.isNumber())
        return {{0, 0, notANumber}, {0, 0, notANumber}};
    const double hours = position.alfa / hour;
    const double degrees = position.delta / degree;
    const auto minutesOf = [](double value) { return (value - std::trunc(value)) * 60; };
    const double alfaMinutes = minutesOf(hours);
    const double deltaMinutes = minutesOf(degrees);
    return {{int(hours), int(alfaMinutes), minutesOf(alfaMinutes)},
            {int(degrees), int(deltaMinutes), minutesOf(deltaMinutes)}};
}

// The form with the arc tangent is exact for small and for large angles.
double separation(const SkyPosition &one, const SkyPosition &other)
{
    const double alfa = other.alfa - one.alfa;
    const double east = std::cos(other.delta) * std::sin(alfa);
    const double north = std::cos(one.delta) * std::sin(other.delta) -
                         std::sin(one.delta) * std::cos(other.delta) * std::cos(alfa);
    const double along = std::sin(one.delta) * std::sin(other.delta) +
                         std::cos(one.delta) * std::cos(other.delta) * std::cos(alfa);
    return std::atan2(std::hypot(east, north), along);
}

double rightAscensionOf(const QString &text)
{
    const double hours = decimalOf(withBlanks(text, ":hms"));
    return hours < 24 ? hours * hour : notANumber;
}

double declinationOf(const QString &text)
{
    QString parts = withBlanks(text, QString::fromUtf8(":°′″'\"dms"));
    // Some tables print the minus sign of typography.
    const bool isSouth = parts.startsWith('-') || parts.startsWith(QChar(0x2212));
    if (isSouth || parts.startsWith('+'))
        parts = parts.mid(1).trimmed();
    const double degrees = decimalOf(parts);
    if (!(degrees <= 90))
        return notANumber;
    return (isSouth ? -degrees : degrees) * degree;
}

QString rightAscensionText(double alfa)
{
    if (!std::isfinite(alfa))
        return "-";
    const QString text = rounded(alfa / hour, 1);
    return text == "24:00:00.0" ? "00:00:00.0" : text;
}

QString declinationText(double delta)
{
    if (!std::isfinite(delta))
        return "-";
    return (delta < 0 ? "-" : "+") + rounded(std::abs(delta) / degree, 0);
}

} // namespace Tools
