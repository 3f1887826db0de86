#pragma once

/// Progress of a program without a window: dots on the standard output.
class ProgressDots {
public:
    /// Writes one "." for each percentage that differs from the one before, and a line end
    /// after 100.
    void operator()(int percent);

private:
    int last = -1;
};
