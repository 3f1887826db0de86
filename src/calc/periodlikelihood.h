#pragma once

#include <functional>
#include <vector>

namespace Tools {

/// Pulses that come at one period.
struct PulseTrain {
    double period = 0; ///< samples, at least 2
    double phase = 0;  ///< of a pulse's centre against the middle of the series, turns
    double width = 0;  ///< full width at half maximum, turns
    double snr = 0;    ///< of all pulses together
};

struct LikelyPeriod {
    double period = 0; ///< samples; 0: ended by `progress`
    double error = 0;  ///< samples, one sigma
};

/// Mean and scatter of all periods round a known one, each as likely as it makes the series.
///
/// The pulses are Gaussians that the sampling has averaged, in white noise. Of the Gaussian
/// phase, width and height are free: with the height fitted, a trial is exp(S/N^2 / 2) times as
/// likely as noise alone, and phases and logarithms of widths are equally likely beforehand. At
/// the best width the S/N falls off round its maximum as it does for a pulse of any shape, so that
/// the scatter is true for other shapes as well.
///
/// Pulses no wider than a sample differ from the Gaussian by up to 12 % of their height, by chance
/// in each sample; that counts as noise. Where heights change with time as those of a source that
/// crosses the beam, and S/N^2 grows by 16 with it, the samples are weighed by the Gaussian in time
/// that suits best. What the period hangs on otherwise, eight parts of the series tell: where some
/// have higher pulses than others the error grows.
///
/// In simulations of steady pulses of 0.3 samples to 30 % of the period, S/N 7 and 60, 60 seeds
/// each, one error held in 58 to 82 % of cases and two in 90 to 98 %.
///
/// @param series    of mean 0
/// @param variance  of its noise
/// @param drift     turns over the series that belong to the farthest period to either side
/// @param progress  called with 0 to 100 before every fold; false ends it
LikelyPeriod likelyPeriod(const std::vector<double> &series, double variance, PulseTrain train,
                          double drift, const std::function<bool(int percent)> &progress = {});

} // namespace Tools
