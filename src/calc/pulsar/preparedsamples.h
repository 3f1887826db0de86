#pragma once

#include "calc/problems.h"
#include "calc/pulsar/needs.h"
#include "jobs/control.h"

/// What an action computes with: a recording whose samples, where the action takes them in, are all
/// finite, and whose levels do not jump where that was asked for.
struct PreparedSamples {
    ObservationData data; ///< with these samples; all its points are whole
    Samples recorded;     ///< as they were before
    int points = 0;       ///< of the stretch that the action works on

    std::vector<int> jumpPoints; ///< where jumps that were taken out show, indices within the
                                 ///< recording, ascending
    int jumps = 0;               ///< jumps taken out, those of all channels counted
    QString nonFinite;           ///< which samples were no finite numbers; empty where all were
    QString remark;              ///< what else the report should tell; or empty

    Problems problems; ///< why there is nothing to compute with; empty otherwise
};

/// Looks through what the action takes in. Samples that are no finite numbers become the median of
/// what is taken in of their channel; a channel without any finite one is a problem.
///
/// @param data  with samples, all points whole; only read
/// @return of no use when `control` was stopped meanwhile
PreparedSamples prepareSamples(const QString &action, const ObservationData &data,
                               const PulsarParameters &parameters, const Jobs::Control &control);
