#pragma once

#include <QtGlobal>

/// Bytes of memory that this machine can give to one more user without swapping, what the
/// file cache would make room for included. The limit of a container or of a batch system's job
/// counts.
///
/// @return 0 when the system does not say
qint64 availableMemory();

/// Whether so many bytes can be taken. Of a few, up to 32 MiB, this is not asked: it takes as
/// long as a short computation.
bool hasMemoryFor(double bytes);
