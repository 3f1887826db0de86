#pragma once

#include <QString>
#include <vector>

/// The channels of a recording that its user has switched off. They are remembered per file in
/// the user's settings folder; the recording itself is never touched.
namespace ChannelSwitches {

/// @param path      path of the recording
/// @param channels  number of its channels; switches remembered for another number are not used
/// @return one per channel, true: off; empty when all are on
std::vector<bool> load(const QString &path, int channels);

/// Remembers the switches. When none is off, the file is forgotten.
void save(const QString &path, const std::vector<bool> &off);

} // namespace ChannelSwitches
