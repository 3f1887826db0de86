#pragma once

#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"

namespace Pulsar {

/// Where in a recording a sum of the bands has every band: what checks and remarks tell of that.
/// Lives no longer than the recording and the parameters that it is asked about.
struct SumReach {
    const ObservationData &header;
    const PulsarParameters &parameters;
    int points = 0;        ///< of the sum
    double dispersion = 0; ///< pc/cm^3; the largest one where there are several

    /// Last first point whose sum has every sample of every band; -1 when the recording is too
    /// short for one.
    int lastFullStart() const;
    /// Points at the begin of a stretch that lack a band whose shifted samples lie before the
    /// recording: with falling frequencies, or in the sum with opposite delays.
    int pointsWithoutAllBands(int firstPoint) const;
    /// Which starts give sums with every band whole.
    QString fullStartText() const;

private:
    int longestReading(int sign) const;
};

/// A point as the user chose the start: by number, or as a time.
QString pointText(const ObservationData &header, const PulsarParameters &parameters, int point);

} // namespace Pulsar
