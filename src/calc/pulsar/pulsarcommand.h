#pragma once

#include "calc/pulsar/pulsarresult.h"

#include <QString>

/// What the pulsar form starts with; the batch program takes it for what is not given.
PulsarParameters pulsarPresets();

/// The dispersions that are compared where none are chosen, pc/cm^3: none, half, the given one and
/// twice that; of the given one 0, steps of 10.
std::array<double, 4> comparedDispersions(double dispersion);

/// The call of the batch program that computes what the pulsar form does, ready for a shell.
/// Parameters that stand at their presets are left out.
///
/// @param action  name of an action of PulsarCalculate
/// @return empty for an unknown action
QString pulsarCommand(const QString &action, const PulsarParameters &parameters,
                      const QString &recording);

/// The same for a fast folding search, its candidates and their table.
QString ffaCommand(const PulsarParameters &parameters, const QString &recording);
