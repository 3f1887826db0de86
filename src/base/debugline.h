#pragma once

#include <QDebug>

/// Writes one line to the debug output: the parts joined as they are, with no
/// blanks or quotes between or around them. Numbers appear as QDebug shows them
/// (doubles with 6 significant digits).
template <typename... Parts>
void debugLine(const Parts &...parts)
{
    QDebug line = qDebug().noquote().nospace();
    (line << ... << parts);
}
