#pragma once

class QLabel;

/// Keeps room for so many lines in a label, whatever its text and font are, so that what stands
/// below it does not move when the text gets longer.
void keepLines(QLabel *label, int lines);
