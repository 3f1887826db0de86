#pragma once

namespace Tools {

/// Means of so many samples are what the running median is made of: it follows a drift as well as
/// that of all samples would, and a step in the level stands out of the noise of a mean.
inline constexpr int levelBlock = 32;

/// Subtracts its level from a series: the running median of the means of levelBlock samples, on
/// straight lines between their centres. Pulses much shorter than the window hardly enter; one of w
/// points is lowered by w / window.
///
/// @param samples  finite, of a level that does not exceed their noise by far
/// @param window   samples
void subtractRunningLevel(float *samples, int count, int window);

} // namespace Tools
