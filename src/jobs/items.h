#pragma once

#include "jobs/control.h"

#include <functional>
#include <vector>

namespace Jobs {

/// Threads that work may take: what a batch system gave to this process (Slurm, PBS, Grid
/// Engine), else the processors it may use.
int threadCount();

/// Works on the items 0 to `count` - 1, several of them side by side, begun in their order. The
/// calling thread takes part and returns when all have ended.
///
/// The `control` that an item gets counts its own 0 to 100 percent. That of the whole hears the
/// mean over all items, each percentage once, ascending, and one voice at a time; its isStopped()
/// is asked by several threads at once. Where memory counts, an item takes a MemoryGate::Pass once
/// it knows its size.
///
/// @param threads  at most so many items side by side; 0: threadCount()
/// @param work     called from several threads at once, each with another item
/// @return how each item ended: Stopped for those that were under way, or not begun yet, when
///         the whole was stopped; Failed for those that threw, which stops no other
std::vector<Ending> runItems(int count, int threads, const Control &control,
                             const std::function<void(int item, const Control &control)> &work);

} // namespace Jobs
