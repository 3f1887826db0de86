#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

/// Text of a time with the digits 0 to 9, whatever digits the user's language has; it may stand in
/// files that others read.
///
/// @param format  as of QDateTime::toString()
inline QString textOfTime(const QDateTime &time, const QString &format)
{
    return QLocale::c().toString(time, format);
}
