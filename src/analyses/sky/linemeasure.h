#pragma once

#include "analyses/sky/skysearch.h"

/// What the stacks around a line tell of its source.
namespace Sky {

/// Frequencies, period, dispersion and position of a line, with errors that hold for a point on the
/// sky that crosses a Gaussian beam of the plan's widths.
///
/// Each is found by least squares from the neighbours in its own direction: bins, dispersions,
/// starts, rays, at the harmonics that stand out. Where there is one start, ray or dispersion only,
/// the place is that of the cell and the error is not a number.
void measureLine(const SkyStack &stack, const SkyPlan &plan, const CellLine &line,
                 SkyCandidate &candidate);

} // namespace Sky
