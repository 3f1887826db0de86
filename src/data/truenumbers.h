#pragma once

#include "data/observationdata.h"

#include <QString>
#include <algorithm>
#include <limits>

/// The telescope numbers its modules and rays; a recording may hold some of them only. Fields and
/// options count what is in the file, results tell the telescope's numbers.

/// Number of a module by the passport; its place from 1 where the passport gives it none.
///
/// @param module  index from 0
inline int moduleNumber(const ObservationData &data, int module)
{
    const auto index = std::size_t(module);
    if (index >= data.moduleNumbers.size())
        return int(
            std::min<qint64>(qint64(data.firstModule) + module, std::numeric_limits<int>::max()));
    return data.moduleNumbers[index] > 0 ? data.moduleNumbers[index] : module + 1;
}

/// Number of a ray by the passport; its place from 1 where the passport gives it none.
///
/// @param ray  index from 0
inline int rayNumber(const ObservationData &data, int ray)
{
    return data.ray > 0 && data.rays == 1 ? data.ray : ray + 1;
}

/// Whether a recording has the module and, of it, the ray of these numbers.
inline bool holdsRay(const ObservationData &header, int module, int ray)
{
    bool hasModule = false;
    for (int i = 0; i < header.modules; ++i)
        hasModule = hasModule || moduleNumber(header, i) == module;
    bool hasRay = false;
    for (int i = 0; i < header.rays; ++i)
        hasRay = hasRay || rayNumber(header, i) == ray;
    return hasModule && hasRay;
}

/// All of them as a text: "1 3 4", or "1 to 8" where more than two follow on each other.
QString moduleNumbersText(const ObservationData &data);
QString rayNumbersText(const ObservationData &data);
