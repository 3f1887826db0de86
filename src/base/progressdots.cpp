#include "base/progressdots.h"

#include <cstdio>

void ProgressDots::operator()(int percent)
{
    if (percent == last)
        return;
    last = percent;
    std::fputs(percent == 100 ? ".\n" : ".", stdout);
    std::fflush(stdout);
}
