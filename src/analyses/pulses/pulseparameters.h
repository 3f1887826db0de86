#pragma once

#include "calc/analysis.h"
#include "calc/fieldproblem.h"
#include "data/observationdata.h"

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

/// Search for single pulses: what is asked for, and what a search of a recording will take.
namespace Pulses {

struct PulseParameters {
    QString modules;          ///< the telescope's numbers with commas; empty: all
    QString rays;             ///< the same
    int firstPoint = 0;       ///< of the recording
    int points = 0;           ///< from there on; 0: all
    double dispersionMin = 0; ///< pc/cm^3
    double dispersionMax = 300;
    double dispersionStep = 0; ///< 0: by loss, see Tools::dispersionStep()
    QString widths = "1,2,3,4,6,9,14,20,30,45,70,100,150,220,300"; ///< boxcars, points
    double falseAlarms = 1; ///< pulses that noise is expected to give in the whole recording
    double threshold = 0;   ///< S/N; 0: from the false alarms and the trials
    QString channelsOff;    ///< channels that do not count, "1,5-7", from 1
    bool mask = true;       ///< leave out what is interference in single channels
    bool zeroDm = false;    ///< subtract the mean over the bands from every point
    double clockOffset = 0; ///< s by which the recordings' clock is ahead of UTC
};

using PulseField = Field<PulseParameters>;

struct PulseAnalysis : Analysis<PulseParameters> {
    QString manual;   ///< of the command, in lines of the help
    QString examples; ///< the same
};

/// The one analysis of this kind, with its fields in the order of the help and of headers.
const PulseAnalysis &pulseAnalysis();

/// Everything that is wrong with parameters, whatever the recording is.
std::vector<FieldProblem> problemsOf(const PulseParameters &parameters);

inline constexpr std::size_t mostWidths = 64;
inline constexpr int widestBoxcar = 20000; ///< points

/// A list of numbers from 1 on, ascending, each once; nothing where the text is none.
std::optional<std::vector<int>> numbersOf(const QString &text);

/// The widths of parameters without problems, ascending, each once.
std::vector<int> widthsOf(const PulseParameters &parameters);

/// One ray of a recording.
struct RayPlace {
    int module = 0; ///< index in the recording, from 0
    int ray = 0;    ///< the same
    int moduleNumber = 1;
    int rayNumber = 1;
};

/// What a search of a recording will do, from its header alone.
struct PulsePlan {
    std::vector<RayPlace> rays;
    int firstPoint = 0;
    int points = 0; ///< of each ray
    int bands = 0;
    /// pc/cm^3, ascending. Those whose delay is longer than the stretch are not among them.
    std::vector<double> dispersions;
    bool isDispersionKnown = true; ///< false: one band, or all at one frequency: one dispersion is
                                   ///< tried, and none can be measured
    std::vector<int> widths;       ///< points, ascending
    int longestDelay = 0;          ///< points over the band at the highest dispersion
    double trials = 0;             ///< independent ones in all rays, see Tools::pulseTrials()
    double threshold = 0;          ///< S/N that is used
    double expected = 0;           ///< pulses of noise in all rays above it
    double seconds = 0;            ///< estimate for one thread
    qint64 bytes = 0;              ///< beside the samples, for one ray at a time
    QStringList remarks;           ///< what a user should know before the search runs
    std::vector<FieldProblem> problems; ///< for which nothing of the above can be used
};

/// @param header  of the recording; samples are not looked at
PulsePlan planPulses(const ObservationData &header, const PulseParameters &parameters);

/// "211 dispersions x 15 widths in 8 rays, threshold 6.9, about 2.1 s, 61.2 MiB": what is told
/// before a search runs.
QString planText(const PulsePlan &plan);

} // namespace Pulses
