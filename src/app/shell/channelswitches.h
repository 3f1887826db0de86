#pragma once

#include <QString>
#include <vector>

/// The channels of a recording that its user has switched off. They are remembered per file in
/// the user's settings folder; the recording itself is never touched.
namespace ChannelSwitches {

/// @param path      of the recording
/// @param channels  that it has; what was remembered for another number is not used
/// @return one per channel, true: off; empty when all are on
std::vector<bool> load(const QString &path, int channels);

/// Remembers the switches; without any that is off, forgets the file.
void save(const QString &path, const std::vector<bool> &off);

} // namespace ChannelSwitches
