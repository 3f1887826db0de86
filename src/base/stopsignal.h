#pragma once

/// From now on SIGINT (Ctrl+C) and SIGTERM ask for a clean end; the second one of a kind ends
/// the program at once.
void catchStopSignals();

/// Whether one of them came. May be asked from any thread.
bool isStopRequested();
