#pragma once

#include "calc/pulsar/pulsarresult.h"
#include "results/resulttable.h"

namespace Batch {

/// Header lines that say what the rows of a table stand for: "x", "x_first", "x_step" and, for
/// phases, "x_period".
void addAxis(const PulsarAxis &axis, std::vector<Results::HeaderLine> &lines);

/// The same as a column.
Results::Column axisColumn(const PulsarAxis &axis, int rows);

/// The axis of such lines; nothing but points from 0 on where there are none.
PulsarAxis axisOf(const std::vector<Results::HeaderLine> &lines);

} // namespace Batch
