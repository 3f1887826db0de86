#include "simulator/simulation.h"

#include <cmath>
#include <random>

namespace Simulator {

namespace {

// Generators beside those of noise, drift and impulses: what they draw must not move these.
enum Stream : unsigned { rratStream = 3, lightningStream = 4 };

std::mt19937 generatorOf(quint32 seed, Stream stream)
{
    std::seed_seq sequence{unsigned(seed), unsigned(stream)};
    return std::mt19937(sequence);
}

// Uniform from 0 to below 1.
double draw(std::mt19937 &generator)
{
    return double(generator()) / 4294967296.0;
}

} // namespace

DrawnPulses drawPulses(const Simulation &simulation)
{
    DrawnPulses drawn;
    const double length = simulation.npoints * simulation.msPerPoint / 1000;
    std::mt19937 turns = generatorOf(simulation.seed, rratStream);
    for (const Rrat &rrat : simulation.rrats) {
        const double phase =
            rrat.pulse.time - std::floor(rrat.pulse.time / rrat.period) * rrat.period;
        for (qint64 turn = 0; phase + double(turn) * rrat.period < length; ++turn) {
            const bool hasPulse = draw(turns) < rrat.share;
            const double part = 1 + rrat.scatter * (2 * draw(turns) - 1);
            if (!hasPulse)
                continue;
            SinglePulse pulse = rrat.pulse;
            pulse.time = phase + double(turn) * rrat.period;
            pulse.strength *= part;
            drawn.ofRays.push_back(pulse);
        }
    }
    std::mt19937 sparks = generatorOf(simulation.seed, lightningStream);
    for (const Lightning &lightning : simulation.lightning) {
        for (int i = 0; i < lightning.count; ++i) {
            SinglePulse pulse;
            pulse.time = draw(sparks) * length;
            pulse.width = lightning.width;
            pulse.strength = lightning.strength * (1 + 2 * draw(sparks)) / 3;
            drawn.everywhere.push_back(pulse);
        }
    }
    return drawn;
}

} // namespace Simulator
