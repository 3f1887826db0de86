#pragma once

#include <QStringList>
#include <vector>

/// Blocks of single channels that hold interference.
namespace Pulses {

enum class MaskReason { Variance, Kurtosis, Correlation, Dead };

struct MaskedBlock {
    int channel = 0; ///< from 0
    int first = 0;   ///< point of the recording
    int count = 0;
    MaskReason reason = MaskReason::Variance;
    double sigmas = 0; ///< by which it stands out
};

struct ChannelMask {
    std::vector<MaskedBlock> blocks; ///< by channel and point
    double share = 0;                ///< of all samples
};

inline constexpr int maskBlockPoints = 1024;
inline constexpr int fewestBandsToMask = 8; ///< fewer do not tell a pulse from interference
inline constexpr double maskSigmas = 7;

/// Finds the blocks whose variance, excess kurtosis or correlation of neighbouring samples stands
/// out by maskSigmas robust sigmas among the channel's other blocks, and as far beyond twice that
/// of the neighbouring channels around the same time: what all channels have is no interference of
/// one. The strongest 64 of the 1024 points of a block do not count, so that no short pulse is
/// masked. Spectral kurtosis proper would need the true zero and the number of summed spectra,
/// which recordings lack.
///
/// @param bands       of `count` finite samples each
/// @param firstPoint  of the recording
/// @return nothing for fewer than fewestBandsToMask bands
ChannelMask findInterference(const std::vector<const float *> &bands, int count, int firstPoint);

/// "channel 5 at points 2048 to 4095: variance, 12.3 sigma": one line for each run of blocks.
QStringList maskLines(const ChannelMask &mask);

} // namespace Pulses
