#pragma once

#include "calc/finitesamples.h"
#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"

#include <vector>

/// What an action takes in of a recording.
struct PulsarNeeds {
    int module = 1;                  ///< from 1
    int ray = 1;                     ///< from 1
    std::vector<SampleRange> ranges; ///< ascending by channel and begin, apart from each other

    /// The points of all ranges; `end` is not included.
    int begin() const;
    int end() const;
};

/// Which samples an action takes in that accepts its parameters for a recording.
PulsarNeeds findNeeds(const QString &action, const ObservationData &header,
                      const PulsarParameters &parameters);

/// Memory that the action takes beside the record, at most: copies of samples that are replaced or
/// freed of jumps, its series and its result. Only where it accepts the parameters.
qint64 findBytes(const QString &action, const ObservationData &header,
                 const PulsarParameters &parameters);
