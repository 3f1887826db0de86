#pragma once

#include "calc/boxcarsearch.h"

#include <vector>

namespace Tools {

/// Joins the boxcars of one pulse: friends of friends in time, dispersion and width.
///
/// Boxcars are friends where they overlap, or nearly so, at dispersions next to each other. Friends
/// are taken by falling S/N; where one joins two groups, these stay apart when the weaker one's
/// best stands out of it: so pulses that follow each other closely stay single ones, though wide
/// boxcars reach over several of them.
///
/// @return the indices of each group, the strongest first, the group with the strongest first
std::vector<std::vector<int>> groupsOfBoxcars(const std::vector<BoxcarEvent> &peaks);

} // namespace Tools
