#pragma once

#include "base/version.h"

#include <QString>

namespace Batch {

/// "zrt-batch 2.0.0", as results name what made them.
inline QString programName()
{
    return QString("zrt-batch ") + Version::number;
}

} // namespace Batch
