#pragma once

#include "batch/resulttable.h"
#include "calc/pulsar/pulsarresult.h"

namespace Batch {

/// Header lines that say what the rows of a table stand for: "x", "x_first", "x_step" and, for
/// phases, "x_period".
void addAxis(const PulsarAxis &axis, std::vector<HeaderLine> &lines);

/// The same as a column.
Column axisColumn(const PulsarAxis &axis, int rows);

/// The axis of such lines; nothing but points from 0 on where there are none.
PulsarAxis axisOf(const std::vector<HeaderLine> &lines);

/// Value of the first line with that key; empty where there is none.
QString valueOf(const std::vector<HeaderLine> &lines, const QString &key);

} // namespace Batch
