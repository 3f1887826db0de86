#pragma once

#include <QString>

/// Label of the file that a form shows: "File: " and the path with a blank after every slash, so
/// that it can wrap.
inline QString fileLabel(const QString &path)
{
    return "File: " + QString(path).replace("/", "/ ");
}
