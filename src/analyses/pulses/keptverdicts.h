#pragma once

#include "analyses/pulses/pulse.h"
#include "analyses/sky/skysearch.h"
#include "base/wholefile.h"

/// What a person decided on the pulses of a recording, kept from one search to the next.
namespace Pulses {

struct KeptVerdict {
    int module = 1; ///< numbers
    int ray = 1;
    double point = 0; ///< of the recording, centre of the pulse
    double width = 1; ///< points
    double dispersion = unknown;
    double dispersionError = unknown;
    Sky::Verdict verdict = Sky::Verdict::None;
    QString note;
};

class KeptVerdicts {
public:
    /// That of a pulse at the same time, within its width, and at the same dispersion, within
    /// three errors; in whatever ray it is strongest. Null where nothing was decided.
    const KeptVerdict *find(const Pulse &pulse) const;
    /// Neither a verdict nor a note takes away what there is.
    void set(const Pulse &pulse, Sky::Verdict verdict, const QString &note);

    const std::vector<KeptVerdict> &all() const { return kept; }

    QByteArray toBytes() const;
    /// @param problem  becomes why bytes are no such table; empty where they are
    static KeptVerdicts fromBytes(const QByteArray &bytes, QString &problem);

private:
    std::vector<KeptVerdict> kept;
};

/// Where those of a recording are kept: beside it, or in the user's folder where that cannot be
/// written.
QString verdictsPath(const QString &recording);

} // namespace Pulses
