#pragma once

#include "base/wholefile.h"
#include "data/observationdata.h"
#include "simulator/simulation.h"

#include <QByteArray>
#include <functional>

namespace Simulator {

/// Local sidereal time at the telescope as "h:m:s", whole seconds.
QString siderealTime(const QDateTime &utc);

/// The passport of a simulated recording, all lines with their ends.
QByteArray passport(const Simulation &simulation);

/// Writes a ".pnt" file: the passport, then float32 little-endian samples. The file appears
/// whole or not at all; memory stays at a few megabytes whatever its size.
///
/// @param simulation  not refused
/// @param progress    called with the percentage written, 0 to 100; false stops without a file.
///                    May be empty
WriteFailure writeRecording(const Simulation &simulation, const QString &path,
                            const std::function<bool(int)> &progress = {});

/// The same recording in memory, its record filled as from the file.
///
/// @return npoints 0 and no samples when the simulation is refused or memory is short
ObservationData makeRecording(const Simulation &simulation);

} // namespace Simulator
