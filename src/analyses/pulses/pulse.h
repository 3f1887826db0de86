#pragma once

#include "coords/skyposition.h"

#include <QDateTime>
#include <QString>
#include <limits>
#include <vector>

/// What a search for single pulses finds.
namespace Pulses {

inline constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

/// A boxcar of one ray at one dispersion that lies above the threshold and above its neighbours in
/// time.
struct PulseEvent {
    int point = 0;      ///< of the recording, the first of the boxcar, in the last band
    int width = 1;      ///< points
    int dispersion = 0; ///< index in PulsePlan::dispersions
    float snr = 0;
};

enum class VerdictKind {
    Candidate,    ///< nothing speaks against it
    ManyRays,     ///< in too many rays at once: not the sky
    NotDispersed, ///< at least as strong at dispersion 0
    OneChannel,   ///< one channel carries more than half of it
};

struct Verdict {
    VerdictKind kind = VerdictKind::Candidate;
    QString reason; ///< one sentence with its numbers; empty of a candidate

    bool isCandidate() const { return kind == VerdictKind::Candidate; }
};

/// "candidate", "in many rays", "not dispersed", "one channel": in tables.
QString nameOf(VerdictKind kind);

/// A value with its standard deviation; no numbers where it cannot be measured.
struct Measured {
    double value = unknown;
    double error = unknown;
};

/// A ray that has the pulse.
struct PulseInRay {
    int module = 1; ///< number
    int ray = 1;    ///< number
    double snr = 0;
};

/// All events of one pulse. Points are those of the recording, from 0; times are in the last band,
/// the reference of all sums, unless said otherwise.
struct Pulse {
    int module = 1;                 ///< number of the strongest ray, where all below was measured
    int ray = 1;                    ///< the same
    double snr = 0;                 ///< of the best boxcar in the sum of Tools::sumChannels()
    int firstPoint = 0;             ///< of that boxcar
    int width = 1;                  ///< of that boxcar, points: the best averaging
    Measured dispersion;            ///< pc/cm^3
    Measured point;                 ///< centre of the pulse
    Measured fwhm;                  ///< full width at half maximum, points; at least one
    double snrAtZero = 0;           ///< best S/N at dispersion 0 around it
    double channelShare = 0;        ///< of the pulse that its strongest channel carries
    QDateTime utc;                  ///< of `point`; invalid where the recording has no begin
    QDateTime infiniteUtc;          ///< at infinite frequency
    double infiniteError = unknown; ///< s; holds what the error of the dispersion adds
    double infiniteMjd = unknown;   ///< UTC
    Tools::SkyPosition position;    ///< of 2000; no numbers where the beam is not known
    QString knownSource;            ///< pulsar in the beam at this dispersion; empty: none
    std::vector<PulseInRay> rays;   ///< that have it, the strongest first
    std::vector<PulseEvent> events; ///< in the strongest ray, the strongest first, mostEvents
    int eventCount = 0;             ///< of all of them
    Verdict verdict;

    double infinitePoint = unknown; ///< `point` at infinite frequency
};

inline constexpr int mostEvents = 1000; ///< that a pulse keeps

/// Candidates first, the strongest S/N first among them; equal ones by place and point.
void sortPulses(std::vector<Pulse> &pulses);

} // namespace Pulses
