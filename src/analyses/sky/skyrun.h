#pragma once

#include "analyses/sky/skyproduct.h"
#include "jobs/control.h"

/// The work over the days: each passage is read once, summed at all dispersions from memory, cut
/// into stretches, and every stretch is added to the stack of its cell.
namespace Sky {

struct RunChoice {
    QString folder; ///< that keeps stacks; empty: nothing is kept
    int part = 1;   ///< of so many parts of the days, each with a file of its own
    int parts = 1;
    int threads = 0;    ///< 0: Jobs::threadCount()
    bool isNew = false; ///< leave aside what is kept
    /// Hears of the stack after every passage, on the calling thread: a map fills in.
    std::function<void(const SkyStack &stack)> passageDone = {};
};

struct SkyRun {
    SkyStack stack;
    QString problem;                       ///< why there is none; empty otherwise
    std::vector<FieldProblem> badPassages; ///< name and reason of those that could not be added
    QStringList remarks;
    qint64 bytesRead = 0;    ///< of recordings in this run
    int keptPassages = 0;    ///< that earlier runs had added
    bool wasStopped = false; ///< what was added until then is kept
};

/// Adds the passages of a part that no kept stack of the same request holds. Stopped, it keeps what
/// stands, to a ray and dispersion of the passage it is at; killed, it loses the last seconds.
///
/// The part 1 of 1 begins with the sums of all parts that are kept. Passages that could not be
/// added are tried again by the next run.
SkyRun runSky(const RecordingSet &set, const SkyPlan &plan, const RunChoice &choice,
              const Jobs::Control &control = {});

/// Bytes of memory that the stacks and the work on them take at most.
///
/// @param threads  0: Jobs::threadCount()
qint64 memoryOf(const SkyPlan &plan, int threads);

/// Seconds that the work takes about, by a short trial on this machine.
///
/// @param threads  0: Jobs::threadCount()
double secondsOf(const SkyPlan &plan, int threads);

/// What stands for a request in a stack: parameters, cells, step and bands, and the form of the
/// file.
QByteArray requestOf(const SkyPlan &plan);

/// File of a part of the days.
QString stackFileName(const SkyPlan &plan, int part, int parts);

} // namespace Sky
