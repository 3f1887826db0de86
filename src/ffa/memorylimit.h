#pragma once

#include <QtGlobal>

namespace Ffa {

/// Bytes that can be taken now without swapping. Where the system does not tell, a bound
/// that refuses nothing that could be addressed.
qint64 availableMemory();

} // namespace Ffa
