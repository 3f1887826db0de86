#pragma once

#include "data/numberfile.h"

namespace ArrayReading {

/// Whether a file begins as JSON does.
bool isJson(const QString &path);

/// Reads a table of this system that was written as JSON.
///
/// @param limit  bytes; a longer file is left unread, for its end is needed to understand it
NumberFile readJsonTable(const QString &path, qint64 limit);

} // namespace ArrayReading
