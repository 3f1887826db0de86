#include "analyses/pulses/pulsesearch.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <tuple>

// Pulses of different rays that are one.

namespace Pulses {

namespace {

constexpr std::size_t fewestRaysToTell = 8;
constexpr std::size_t fewestRaysAtOnce = 5;
constexpr double raysShare = 1.0 / 3;
constexpr double sigmasApart = 3;

struct Member {
    const Pulse *pulse;
    double begin; // of its points
    double end;
};

class Joining {
public:
    Joining(const std::vector<RayPulses> &rays, const PulsePlan &pulsePlan) : plan(pulsePlan)
    {
        pointsPerDispersion =
            plan.dispersions.empty() || !plan.isDispersionKnown || plan.dispersions.back() <= 0
                ? 0
                : plan.longestDelay / plan.dispersions.back();
        for (const RayPulses &ray : rays) {
            for (const Pulse &pulse : ray.pulses) {
                const double first = pulse.firstPoint;
                members.push_back({&pulse, first, first + pulse.width});
                longest = std::max(longest, double(pulse.width));
            }
        }
        std::sort(members.begin(), members.end(),
                  [](const Member &a, const Member &b) { return a.begin < b.begin; });
    }

    std::vector<Pulse> run()
    {
        std::vector<std::size_t> order(members.size());
        for (std::size_t i = 0; i < order.size(); ++i)
            order[i] = i;
        std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            const Pulse &one = *members[a].pulse;
            const Pulse &other = *members[b].pulse;
            return std::tuple(-one.snr, one.module, one.ray, one.firstPoint) <
                   std::tuple(-other.snr, other.module, other.ray, other.firstPoint);
        });
        std::vector<bool> isJoined(members.size(), false);
        std::vector<Pulse> joined;
        for (const std::size_t i : order) {
            if (isJoined[i])
                continue;
            isJoined[i] = true;
            joined.push_back(withOtherRays(i, isJoined));
        }
        sortPulses(joined);
        return joined;
    }

private:
    Pulse withOtherRays(std::size_t index, std::vector<bool> &isJoined) const
    {
        const Member &own = members[index];
        Pulse pulse = *own.pulse;
        std::set<std::pair<int, int>> atOnce = {{pulse.module, pulse.ray}};
        std::set<std::pair<int, int>> same = atOnce;
        auto other = std::lower_bound(
            members.begin(), members.end(), own.begin - 2 * longest - slack(own, own),
            [](const Member &member, double begin) { return member.begin < begin; });
        for (; other != members.end() && other->begin <= own.end + longest + slack(own, own);
             ++other) {
            const Pulse &found = *other->pulse;
            const std::pair ray(found.module, found.ray);
            if (ray == std::pair(pulse.module, pulse.ray) || !isAtOnce(own, *other))
                continue;
            atOnce.insert(ray);
            const std::size_t place = std::size_t(other - members.begin());
            if (isJoined[place] || !isSameDispersion(own, *other))
                continue;
            isJoined[place] = true;
            if (same.insert(ray).second)
                pulse.rays.push_back({found.module, found.ray, found.snr});
        }
        std::sort(
            pulse.rays.begin() + 1, pulse.rays.end(), [](const PulseInRay &a, const PulseInRay &b) {
                return std::tuple(-a.snr, a.module, a.ray) < std::tuple(-b.snr, b.module, b.ray);
            });
        judge(atOnce.size(), pulse);
        return pulse;
    }

    void judge(std::size_t atOnce, Pulse &pulse) const
    {
        const std::size_t rays = plan.rays.size();
        if (rays < fewestRaysToTell || atOnce < fewestRaysAtOnce ||
            double(atOnce) <= raysShare * double(rays))
            return;
        pulse.verdict = {VerdictKind::ManyRays,
                         QString("In %1 of %2 rays at once.").arg(atOnce).arg(rays)};
    }

    static double slack(const Member &a, const Member &b)
    {
        return 2 + std::max(a.pulse->width, b.pulse->width) / 2.0;
    }

    static bool isAtOnce(const Member &a, const Member &b)
    {
        return a.begin <= b.end + slack(a, b) && b.begin <= a.end + slack(a, b);
    }

    bool isSameDispersion(const Member &a, const Member &b) const
    {
        if (!plan.isDispersionKnown)
            return true;
        const double apart = std::abs(a.pulse->dispersion.value - b.pulse->dispersion.value);
        const double errors = std::hypot(a.pulse->dispersion.error, b.pulse->dispersion.error);
        return apart * pointsPerDispersion <=
               2.0 * std::max(a.pulse->width, b.pulse->width) +
                   (std::isfinite(errors) ? sigmasApart * errors * pointsPerDispersion : 0);
    }

    const PulsePlan &plan;
    std::vector<Member> members;
    double longest = 0;
    double pointsPerDispersion = 0;
};

} // namespace

std::vector<Pulse> joinRays(const std::vector<RayPulses> &rays, const PulsePlan &plan)
{
    return Joining(rays, plan).run();
}

} // namespace Pulses
