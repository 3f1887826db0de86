#pragma once

#include <functional>
#include <vector>

namespace Tools {

/// A jump in the level of one channel: a calibration signal switched, a gain changed.
struct LevelJump {
    int point = 0;     ///< first sample of the new level, index within the searched series
    double height = 0; ///< new level less old level, in the samples' units
};

/// Finds the lasting jumps of a series: points where the medians of the 512 samples before
/// and after differ by more than 8 times the robust sigma of the samples, and where the
/// level changes within a few samples. Pulses, impulses and slow drifts are none. Nothing is
/// found in the first and last 512 samples, whose levels cannot be told.
///
/// @param samples  count samples; only read
/// @param goOn     asked every few hundredths of a second, may be empty; false ends the search
/// @return jumps by ascending point; removing them one after the other leaves one level; none
///         when the search was ended
std::vector<LevelJump> findLevelJumps(const float *samples, int count,
                                      const std::function<bool()> &goOn = {});

/// Shifts everything from each jump on by its height, so that the series keeps the level it
/// begins with.
void removeLevelJumps(float *samples, int count, const std::vector<LevelJump> &jumps);

/// Robust standard deviation of the noise of a series: median absolute difference of
/// neighbouring samples x 1.4826 / sqrt(2); of coarse samples see noiseSigma(). Drift, jumps and
/// pulses hardly enter.
///
/// @return 0 for fewer than two samples and for equal ones
double robustSigma(const float *samples, int count);

} // namespace Tools
