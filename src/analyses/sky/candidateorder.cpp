#include "analyses/sky/candidateorder.h"

#include "analyses/sky/fourierproduct.h"

#include <algorithm>
#include <cmath>

namespace Sky {

namespace {

bool isInterference(const SkyCandidate &candidate)
{
    return candidate.isFewDays || candidate.isInOtherRays || candidate.isSolar || candidate.isHum;
}

class Relations {
public:
    explicit Relations(const SkyPlan &skyPlan) : plan(skyPlan), method(methodOf(skyPlan.product)) {}

    // Whether one is a small fraction of the other, and if so which.
    bool relate(SkyCandidate &candidate, const SkyCandidate &base) const
    {
        // What comes back day by day is no harmonic of what a few days brought.
        if (!areNear(candidate, base) || (base.isFewDays && !candidate.isFewDays))
            return false;
        constexpr int highest = 16;
        const double own = binOf(candidate);
        const double other = binOf(base);
        // What the sky sends may stand by chance at some fraction of an interfering line: only its
        // harmonics, and the sums that they make, go with it.
        const bool isOnlyWhole = isInterference(base) && !isInterference(candidate);
        for (int q = 1; q <= highest; ++q) {
            const int p = int(std::lround(own * q / other));
            // Either is right to a bin over its harmonics.
            const double tolerance = method.tolerance(plan, candidate.line) +
                                     double(p) / q * method.tolerance(plan, base.line);
            if (p < 1 || p > highest || (isOnlyWhole && p > 1 && q > 1) ||
                std::abs(own - other * p / q) > std::min(1.0, tolerance))
                continue;
            candidate.relatedP = p;
            candidate.relatedQ = q;
            return true;
        }
        return false;
    }

private:
    bool areNear(const SkyCandidate &one, const SkyCandidate &other) const
    {
        if (one.isInOtherRays && other.isInOtherRays)
            return true;
        return std::abs(one.start - other.start) <= 2 &&
               std::abs(placeOfRay(plan, one.ray) - placeOfRay(plan, other.ray)) <= 1;
    }

    double binOf(const SkyCandidate &candidate) const
    {
        return method.frequencyAt(plan, candidate.line.position) / binWidth(plan);
    }

    const SkyPlan &plan;
    const SkyMethod &method;
};

} // namespace

int placeOfRay(const SkyPlan &plan, int ray)
{
    const SkyRay &one = plan.rays[std::size_t(ray)];
    return Days::placeOfRay(one.module, one.ray);
}

std::vector<SkyCandidate> orderedCandidates(std::vector<SkyCandidate> found, const SkyPlan &plan)
{
    std::stable_sort(found.begin(), found.end(), [](const SkyCandidate &a, const SkyCandidate &b) {
        return a.sigma > b.sigma;
    });
    const Relations relations(plan);
    std::vector<std::vector<std::size_t>> followers(found.size());
    std::vector<std::size_t> bases;
    for (std::size_t i = 0; i < found.size(); ++i) {
        const auto base = std::find_if(bases.begin(), bases.end(), [&](std::size_t one) {
            return relations.relate(found[i], found[one]);
        });
        if (base != bases.end())
            followers[*base].push_back(i);
        else
            bases.push_back(i);
    }
    std::stable_partition(bases.begin(), bases.end(),
                          [&](std::size_t base) { return !isInterference(found[base]); });
    std::vector<SkyCandidate> ordered;
    for (const std::size_t base : bases) {
        const int place = int(ordered.size());
        ordered.push_back(found[base]);
        for (const std::size_t follower : followers[base]) {
            found[follower].relatedTo = place;
            ordered.push_back(found[follower]);
        }
    }
    return ordered;
}

} // namespace Sky
