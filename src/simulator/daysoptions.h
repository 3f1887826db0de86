#pragma once

#include "simulator/dayssimulation.h"

#include <QCommandLineParser>

namespace Simulator {

/// Gives the parser the options that describe the days of a simulation, with the manual of each.
void addDaysOptions(QCommandLineParser &parser);

/// Changes the simulation by the options that the parser has read, those of its recording
/// included; sources are added to those it already has.
///
/// @return what is wrong with an option, in plain words; empty when all were read
QString readDaysOptions(const QCommandLineParser &parser, DaysSimulation &days);

/// The first option given that makes no sense without "--days"; empty where there is none.
QString daysOptionGiven(const QCommandLineParser &parser);

} // namespace Simulator
