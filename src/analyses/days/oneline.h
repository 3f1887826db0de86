#pragma once

#include <QByteArray>
#include <QString>

namespace Days {

/// A text for a line of a header, or a field of one between tabs.
inline QByteArray toOneLine(const QString &text)
{
    return QString(text).replace('%', "%25").replace('\n', "%0A").replace('\t', "%09").toUtf8();
}

inline QString fromOneLine(const QByteArray &line)
{
    return QString::fromUtf8(line).replace("%09", "\t").replace("%0A", "\n").replace("%25", "%");
}

} // namespace Days
