#pragma once

#include <QLocale>
#include <QString>

/// As few digits as it takes to read the same number back, in every language alike.
inline QString exactText(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}
