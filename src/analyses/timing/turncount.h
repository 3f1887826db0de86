#pragma once

#include "calc/turnfit.h"
#include "calc/turnsearch.h"

#include <QStringList>

namespace Timing {

/// Pulses whose turns are counted as far as the period allows.
struct TurnCount {
    std::vector<Tools::CountedTime> times; ///< rising, with their clusters
    Tools::TurnFit fit;
    bool hasDerivative = false;  ///< an F-test asked for it
    double derivativeChance = 1; ///< of that test: probability without a change of the period
    int clusters = 0;
    QStringList remarks; ///< which clusters stay apart, and why
};

/// Turns that the period's error times the turns from one day to the next may reach to connect
/// them.
inline constexpr double mostDrift = 0.1;

/// Connects groups, the nearest ones first, where the error of the period times the turns between
/// stays below a tenth of the period; each connection makes the error smaller. A change of the
/// period is fitted where an F-test is sure of it to 0.1 %.
///
/// @param groups  of the search, rising
/// @param turns   of each time since the first of its group
/// @param errors  s, of each time; any equal values where unknown
/// @param names   of the groups, for the remarks
TurnCount connectedTurns(const Tools::TimeGroups &groups, const std::vector<qint64> &turns,
                         const std::vector<double> &errors, const QStringList &names);

} // namespace Timing
