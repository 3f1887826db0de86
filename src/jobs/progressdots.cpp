#include "jobs/progressdots.h"

#include <cstdio>

namespace Jobs {

void ProgressDots::show(int percent)
{
    if (percent == lastShown)
        return;
    std::fputs(percent == 100 ? ".\n" : ".", stdout);
    std::fflush(stdout);
    lastShown = percent;
}

} // namespace Jobs
