#include "coords/angletext.h"

#include <QLocale>
#include <QRegularExpression>
#include <QTime>
#include <cmath>

namespace Tools {

namespace {

QString twoDigits(double whole)
{
    return QString::number(whole, 'f', 0).rightJustified(2, '0');
}

QString twoDigits(const QString &digits)
{
    return digits.rightJustified(2, '0');
}

QString cutOffText(const QString &pattern, double value)
{
    if (!std::isfinite(value))
        return QString::number(value);
    const double size = std::abs(value);
    const double units = std::trunc(size);
    const double minutes = (size - units) * 60;
    const double seconds = (minutes - std::trunc(minutes)) * 60;
    const QString text = pattern.arg(twoDigits(units), twoDigits(std::trunc(minutes)),
                                     twoDigits(std::trunc(seconds)));
    return value < 0 ? "-" + text : text;
}

} // namespace

// The remainder is exact, as taking 24 away in a loop would be. A tiny negative rest plus 24
// rounds to 24.
double wrappedHours(double hours)
{
    double rest = std::fmod(hours, 24);
    if (rest < 0)
        rest += 24;
    return rest == 24 ? 0 : rest;
}

QString hoursToText(double hours)
{
    return cutOffText("%1:%2:%3", hours);
}

QString degreesToText(double degrees)
{
    return cutOffText("%1°%2′%3″", degrees);
}

QString secondsToHms(double seconds)
{
    if (!std::isfinite(seconds))
        return QString::number(seconds);
    const double hours = std::trunc(seconds / 3600);
    const double minutes = std::trunc((seconds - 3600 * hours) / 60);
    return sexagesimalText("%1:%2:%3", hours, minutes, seconds - 3600 * hours - 60 * minutes);
}

QString sexagesimalText(const QString &pattern, double units, double minutes, double seconds)
{
    if (!std::isfinite(seconds))
        return QString::number(seconds);
    const QString text =
        pattern.arg(twoDigits(std::abs(units)), twoDigits(std::abs(minutes)),
                    QString::number(std::abs(seconds), 'f', 2).rightJustified(5, '0'));
    return units < 0 || minutes < 0 || seconds < 0 ? "-" + text : text;
}

QString angleTextFromTime(const QString &text)
{
    // \z, for $ would let a line end follow.
    static const QRegularExpression pattern("^(\\d\\d):(\\d\\d):(\\d\\d)\\z");
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return {};
    return QString("%1°%2′%3″").arg(match.captured(1), match.captured(2), match.captured(3));
}

QString normalisedTime(const QString &text)
{
    const QTime time(text.left(2).toInt(), text.mid(3, 2).toInt(), text.right(2).toInt());
    return text.isEmpty() ? QString() : QLocale::c().toString(time, "hh:mm:ss");
}

QString normalisedLooseTime(const QString &text)
{
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern("(\\d{1,2}):(\\d{1,2}):(\\d{1,2})(\\.\\d+)?"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return text;
    return twoDigits(match.captured(1)) + ":" + twoDigits(match.captured(2)) + ":" +
           twoDigits(match.captured(3)) + match.captured(4);
}

} // namespace Tools
