#pragma once

#include "analyses/pulses/pulsesearch.h"
#include "results/resulttable.h"

/// Pulses as tables: what the batch program writes and a form saves.
namespace Pulses {

/// The parameters as lines of a header, those without a value left out.
std::vector<Results::HeaderLine> parameterLines(const PulseParameters &parameters);

/// What was searched and found, as lines of a header.
///
/// @param header  of the recording
std::vector<Results::HeaderLine> searchLines(const ObservationData &header, const PulsePlan &plan,
                                             const std::vector<RayPulses> &rays,
                                             const std::vector<Pulse> &pulses);

/// One row per pulse, in their order. "mjd" is UTC at infinite frequency, "mjd_error" holds what
/// the error of the dispersion adds to that of the time.
///
/// @param tresolution  s
std::vector<Results::Column> pulseColumns(const std::vector<Pulse> &pulses, double tresolution);

/// A row of such a table, as far as joining needs it, with all its fields.
struct TablePulse {
    QStringList fields; ///< in the order of the columns
    double snr = 0;
    double dispersion = unknown;
    double dispersionError = unknown;
    double siderealTime = unknown; ///< hours
    double mjd = unknown;
    int module = 1;
    int ray = 1;
    bool isCandidate = true;
    QString position; ///< "ra dec"; "- -" where unknown
    QString file;
};

/// A whole table read back.
struct PulseTable {
    std::vector<Results::Column> columns; ///< names and units; their values are in the pulses
    std::vector<TablePulse> pulses;
    QString file;                          ///< the recording
    double mjdBegin = unknown;             ///< of the stretch that was searched
    double hours = 0;                      ///< of it
    double siderealBegin = unknown;        ///< hours
    std::vector<std::pair<int, int>> rays; ///< module and ray, numbers
    QString problem;                       ///< empty when it was understood and is whole
};
PulseTable readPulseTable(const QByteArray &bytes);

} // namespace Pulses
