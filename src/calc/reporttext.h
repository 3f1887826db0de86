#pragma once

#include <QLocale>
#include <QString>

/// Numbers as reports write them.
namespace ReportText {

/// General notation with 6 significant digits.
inline QString general(double value)
{
    return QString::number(value, 'g', 6);
}

/// As many digits as it takes to read the same number back.
inline QString exact(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

/// An expected number of things: two digits where it is small, whole where it is not.
inline QString count(double expected)
{
    return expected < 10 ? QString::number(expected, 'g', 2) : QString::number(qRound(expected));
}

/// A value with its error, both to the second digit of the error: "26.21 +- 0.13".
QString withError(double value, double error);

} // namespace ReportText
