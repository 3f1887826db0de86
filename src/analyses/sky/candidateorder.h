#pragma once

#include "analyses/sky/skysearch.h"

#include <vector>

namespace Sky {

/// Days::placeOfRay() of a ray of the plan.
///
/// @param ray  index
int placeOfRay(const SkyPlan &plan, int ray);

/// Candidates as a table shows them: what stands at a small fraction of the frequency of a stronger
/// one follows it (nothing steady follows what a few days brought), and bases that look like a
/// signal of the sky come before those that are marked as interference.
///
/// @param found  any order
std::vector<SkyCandidate> orderedCandidates(std::vector<SkyCandidate> found, const SkyPlan &plan);

} // namespace Sky
