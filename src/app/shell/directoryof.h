#pragma once

#include <QString>

/// The directory part of a path: what stands before its last '/' or '\\'. The user's home
/// directory where there is no separator or the path is one character long.
QString directoryOf(const QString &path);

/// Where a file dialog begins: in the remembered folder where there still is one, else in the
/// user's home directory.
QString startFolder(const QString &remembered);
