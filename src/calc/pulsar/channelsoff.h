#pragma once

#include <QString>
#include <optional>
#include <vector>

/// Channels that sums leave out, as a text: their numbers from 1, with commas, "4,21".

/// @param channels  of the recording
/// @return one per channel, true: off; nothing where the text is no such list
std::optional<std::vector<bool>> channelsOff(const QString &text, int channels);

/// The inverse.
QString textOfChannelsOff(const std::vector<bool> &off);
