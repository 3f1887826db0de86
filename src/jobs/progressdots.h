#pragma once

namespace Jobs {

/// Progress of a program without a window: one "." on the standard output for each new percentage
/// and a line end after 100.
class ProgressDots {
public:
    void show(int percent);

private:
    int lastShown = -1;
};

} // namespace Jobs
