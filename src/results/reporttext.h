#pragma once

#include <QString>

/// Numbers as reports write them.
namespace ReportText {

/// General notation with 6 significant digits.
inline QString general(double value)
{
    return QString::number(value, 'g', 6);
}

/// A number of things: "1 day", "3 days".
inline QString counted(qint64 count, const QString &thing, const QString &ofMany = "s")
{
    return QString("%1 %2%3").arg(count).arg(thing, count == 1 ? QString() : ofMany);
}

/// An expected number of things: "none" below a hundredth, "about" two digits where it is small and
/// a whole number where it is not.
inline QString count(double expected)
{
    if (expected < 0.01)
        return "none";
    return "about " +
           (expected < 10 ? QString::number(expected, 'g', 2) : QString::number(expected, 'f', 0));
}

/// A value and its error, both to the second digit of the error.
struct WithError {
    QString value;
    QString error;
};
WithError rounded(double value, double error);

/// The same as one text: "26.21 +- 0.13".
QString withError(double value, double error);

} // namespace ReportText
