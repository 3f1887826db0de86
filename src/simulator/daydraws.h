#pragma once

#include "simulator/normalcurve.h"

#include <QtGlobal>
#include <random>

namespace Simulator {

/// What the days of a simulation draw by lot. Every purpose has random numbers of its own, so that
/// none moves the others.
enum class Lot : unsigned {
    Missing = 100,
    Begin,
    Noise,
    Gain,
    Scintillation,
    Hum,
    Disturbance,
    Storm,
};

/// The random numbers of one purpose on one day.
class DayDraws {
public:
    /// @param which  of several sources of that purpose
    DayDraws(quint32 seed, Lot lot, int day, unsigned which = 0)
    {
        std::seed_seq sequence{unsigned(seed), unsigned(lot), unsigned(day), which};
        generator.seed(sequence);
    }

    quint32 number() { return quint32(generator()); }
    /// Uniform from 0 to below 1.
    double share() { return number() / 4294967296.0; }
    /// Uniform from -1 to below 1.
    double symmetric() { return 2 * share() - 1; }
    /// Normal with mean 0 and variance 1.
    double normal()
    {
        const quint32 draw = number();
        return double(noiseTable()[draw & 0xffff]) + double(noiseTable()[draw >> 16]);
    }

private:
    std::mt19937 generator;
};

} // namespace Simulator
