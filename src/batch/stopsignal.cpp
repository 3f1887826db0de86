#include "batch/stopsignal.h"

#include <csignal>

namespace Batch {

namespace {

volatile std::sig_atomic_t stopRequested = 0;

void requestStop(int)
{
    stopRequested = 1;
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
    return stopRequested != 0;
}

} // namespace Batch
