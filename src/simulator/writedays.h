#pragma once

#include "base/wholefile.h"
#include "simulator/dayssimulation.h"

#include <functional>

namespace Simulator {

/// How the writing of a folder of days ended.
struct DaysWritten {
    int files = 0;        ///< that stand whole
    int allFiles = 0;     ///< that were to be written
    WriteFailure failure; ///< the first one; of kind Stopped when `progress` wanted no more
};

/// Writes the files of all days into a folder, several at once; what they hold does not depend on
/// how many. Each appears whole or not at all; files of the same names are replaced, others stay.
/// Nothing is written where the disk has no room for all.
///
/// @param days      not refused
/// @param folder    made where it is missing
/// @param progress  called with the percentage written, 0 to 100, many times each, from any
///                  thread, one call at a time; false stops. May be empty
/// @param threads   at most; 0: as many as the machine gives
DaysWritten writeDays(const DaysSimulation &days, const QString &folder,
                      const std::function<bool(int)> &progress = {}, int threads = 0);

} // namespace Simulator
