#include "jobs/memorygate.h"

#include "base/systemmemory.h"

#include <algorithm>
#include <chrono>

namespace Jobs {

namespace {

// How often a waiting work looks whether it was stopped.
constexpr std::chrono::milliseconds lookInterval(20);
constexpr qint64 unlimited = qint64(1) << 62;

qint64 limitOf(qint64 wanted)
{
    if (wanted > 0)
        return wanted;
    const qint64 available = availableMemory();
    return available > 0 ? available / 10 * 9 : unlimited;
}

} // namespace

MemoryGate::MemoryGate(qint64 limitBytes) : limit(limitOf(limitBytes))
{}

MemoryGate::Pass::Pass(MemoryGate &memoryGate, qint64 bytes, const Control &control)
    : gate(memoryGate), taken(std::clamp<qint64>(bytes, 0, memoryGate.limit))
{
    std::unique_lock lock(gate.mutex);
    const auto hasRoom = [this] { return gate.works == 0 || gate.used <= gate.limit - taken; };
    while (!control.isStopped()) {
        if (!gate.left.wait_for(lock, lookInterval, hasRoom))
            continue;
        gate.used += taken;
        ++gate.works;
        granted = true;
        return;
    }
}

MemoryGate::Pass::~Pass()
{
    if (!granted)
        return;
    {
        const std::lock_guard lock(gate.mutex);
        gate.used -= taken;
        --gate.works;
    }
    gate.left.notify_all();
}

} // namespace Jobs
