#pragma once

#include <QtGlobal>
#include <condition_variable>
#include <mutex>

namespace Batch {

/// Lets works begin while the memory that they said they need stays below a limit. One alone
/// always may, so that a wrong estimate holds nobody up for ever.
class MemoryGate {
public:
    explicit MemoryGate(qint64 limitBytes) : limit(limitBytes) {}

    /// Room for one work while it lives; waits for others to leave.
    class Pass {
    public:
        Pass(MemoryGate &memoryGate, qint64 bytes) : gate(memoryGate), taken(bytes)
        {
            std::unique_lock lock(gate.mutex);
            gate.left.wait(lock,
                           [&] { return gate.works == 0 || gate.used + taken <= gate.limit; });
            gate.used += taken;
            ++gate.works;
        }
        ~Pass()
        {
            {
                const std::lock_guard lock(gate.mutex);
                gate.used -= taken;
                --gate.works;
            }
            gate.left.notify_all();
        }
        Pass(const Pass &) = delete;
        Pass &operator=(const Pass &) = delete;

    private:
        MemoryGate &gate;
        const qint64 taken;
    };

private:
    const qint64 limit;
    std::mutex mutex;
    std::condition_variable left;
    qint64 used = 0;
    int works = 0;
};

} // namespace Batch
