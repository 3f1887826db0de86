#pragma once

#include "simulator/simulation.h"

#include <QCommandLineParser>

namespace Simulator {

/// Gives the parser the options that describe a simulation, with the manual of each.
void addOptions(QCommandLineParser &parser);

/// Changes the simulation by the options that the parser has read; sources are added to
/// those it already has.
///
/// @return what is wrong with an option, in plain words; empty when all were read
QString readOptions(const QCommandLineParser &parser, Simulation &simulation);

} // namespace Simulator
