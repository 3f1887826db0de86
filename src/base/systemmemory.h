#pragma once

#include <QString>

/// Bytes of memory that this machine can give to one more user without swapping, what the
/// file cache would make room for included. The limit of a container or of a batch system's job
/// counts.
///
/// @return 0 when the system does not say
qint64 availableMemory();

/// What the control groups of this process, and those around them, leave of their limits. Batch
/// systems and containers hold a job to its share of the machine with them.
///
/// @param groups  file that names the groups, one a line: "0::/path" of version 2,
///                "4:memory:/path" of version 1
/// @param mount   folder of the groups of version 2; those of version 1 are in "memory" below it
/// @return bytes; the largest number where there is no limit
qint64 groupMemoryLeft(const QString &groups = "/proc/self/cgroup",
                       const QString &mount = "/sys/fs/cgroup");

/// A number of bytes as a user reads it: "1.50 GiB"; a negative one stands for more than 63 bits.
QString sizeText(qint64 bytes);

/// Whether so many bytes can be taken. Up to 32 MiB the system is not asked, because asking takes
/// as long as a short computation.
bool hasMemoryFor(double bytes);
