#pragma once

#include "analyses/sky/skyproduct.h"
#include "jobs/control.h"

/// One passage: from its samples to the stacks of all cells.
namespace Sky {

/// The samples of a passage with the places of the rays in them.
struct PassageSamples {
    ObservationData data;
    std::vector<int> modules; ///< index of the module of each ray of the plan
    std::vector<int> rays;    ///< index of the ray of each ray of the plan
};

struct PassageEnd {
    bool wasStopped = false;
    QString problem;     ///< why it adds nothing; empty otherwise
    QStringList remarks; ///< rays that do not count, stretches that are disturbed
};

/// Adds a passage, or what is missing of it, to a stack. What was added when it is stopped stays
/// marked as such, and the next call goes on there.
///
/// @param samples  all points of the passage, of all rays of the plan
/// @param threads  0: Jobs::threadCount()
PassageEnd addPassage(const PassageSamples &samples, const Passage &passage, const SkyPlan &plan,
                      int threads, const Jobs::Control &control, SkyStack &stack);

/// The samples of a passage from its files, each byte once.
struct PassageReading {
    PassageSamples samples;
    bool wasStopped = false;
    QString problem; ///< which file, what is wrong; empty: they are whole
};
PassageReading readPassage(const RecordingSet &set, const Passage &passage, const SkyPlan &plan,
                           const Jobs::Control &control);

} // namespace Sky
