#pragma once

#include "base/wholefile.h"

/// Whether the disk has room for so many bytes, asked before a long writing begins. A disk that
/// does not tell its free room has enough.
///
/// @param path  of the file, or the folder of several, that is to be written
/// @return a failure that names what is needed and what is free
WriteFailure missingRoom(const QString &path, qint64 bytes);
