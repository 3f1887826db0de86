#pragma once

#include "calc/pulsar/actions.h"

namespace Pulsar {

/// A series to be folded.
struct FoldedSeries {
    std::vector<double> series; ///< without its base line
    double tresolution = 0;     ///< s
    double sampleSigma = 0;     ///< noise of a sample
};

/// Whether a period can be folded over so many points.
Problems checkFoldPeriod(const ObservationData &header, const PulsarParameters &given, int count);

/// Folds a series on the typed period: the curve, its axis, and what the report says of the pulse
/// and of what noise does in its place. Stopped by `control`, the result is as far as it came.
void addFold(const FoldedSeries &folded, const PulsarParameters &given, const Control &control,
             PulsarResult &result);

} // namespace Pulsar
