#pragma once

#include "jobs/control.h"

#include <QtGlobal>
#include <condition_variable>
#include <mutex>

namespace Jobs {

/// Lets works begin while the memory that they said they need stays below a limit. One alone
/// always may, so that a wrong estimate holds nobody up for ever.
class MemoryGate {
public:
    /// @param limitBytes  of all works together; 0: nine tenths of what is available now, for the
    ///                    rest of the system and what estimates leave out
    explicit MemoryGate(qint64 limitBytes = 0);

    /// Room for one work while it lives.
    class Pass {
    public:
        /// Waits until there is room or the work is stopped.
        Pass(MemoryGate &memoryGate, qint64 bytes, const Control &control);
        ~Pass();
        Pass(const Pass &) = delete;
        Pass &operator=(const Pass &) = delete;

        /// False when the work was stopped before there was room; it must not begin.
        bool isGranted() const { return granted; }

    private:
        MemoryGate &gate;
        const qint64 taken;
        bool granted = false;
    };

private:
    const qint64 limit;
    std::mutex mutex; // of what follows
    std::condition_variable left;
    qint64 used = 0;
    int works = 0;
};

} // namespace Jobs
