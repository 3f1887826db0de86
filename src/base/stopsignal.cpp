#include "base/stopsignal.h"

#include <atomic>
#include <csignal>

namespace {

std::atomic<bool> stopRequested = false; // set by a signal, asked by every thread
static_assert(std::atomic<bool>::is_always_lock_free, "a signal may not wait for a lock");

void requestStop(int)
{
    stopRequested = true;
}

} // namespace

void catchStopSignals()
{
    struct sigaction action = {};
    action.sa_handler = requestStop;
    action.sa_flags = int(SA_RESETHAND) | SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool isStopRequested()
{
    return stopRequested;
}
