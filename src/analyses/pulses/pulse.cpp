#include "analyses/pulses/pulse.h"

#include <algorithm>
#include <tuple>

namespace Pulses {

QString nameOf(VerdictKind kind)
{
    switch (kind) {
    case VerdictKind::Candidate:
        return "candidate";
    case VerdictKind::ManyRays:
        return "in many rays";
    case VerdictKind::NotDispersed:
        return "not dispersed";
    case VerdictKind::OneChannel:
        break;
    }
    return "one channel";
}

void sortPulses(std::vector<Pulse> &pulses)
{
    std::sort(pulses.begin(), pulses.end(), [](const Pulse &a, const Pulse &b) {
        const auto key = [](const Pulse &pulse) {
            return std::tuple(!pulse.verdict.isCandidate(), -pulse.snr, pulse.module, pulse.ray,
                              pulse.firstPoint);
        };
        return key(a) < key(b);
    });
}

} // namespace Pulses
