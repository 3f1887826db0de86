#pragma once

#include <QString>

/// The directory part of a path: what stands before its last '/' or '\\'. The user's home
/// directory where there is no separator or the path is one character long.
QString directoryOf(const QString &path);
