#pragma once

#include "forms/native/nativecurves.h"
#include "forms/native/nativetexts.h"

#include <QStringList>

/// What the viewer's panel tells of a part of a recording, without widgets.

/// Statistics of what is drawn between two points: value by value where the samples are kept,
/// from the moments of the reduction elsewhere.
///
/// @param range       within what is drawn
/// @param isSelected  the user has selected the range, so that a signal is looked for in it
/// @return without the name
NativeTexts::StatisticsPart nativeStatistics(const NativePicture &picture,
                                             const NativeCurves &drawn, const NativeRange &range,
                                             bool isSelected, double tresolution);

/// Mean and standard deviation of every band; NaN where nothing is known.
struct NativeBandpass {
    std::vector<double> mean;
    std::vector<double> sigma;
};
NativeBandpass nativeBandpass(const NativePicture &picture, const NativeRange &range);

/// What a user should know of what is shown: how it was read, level steps, samples that are no
/// numbers.
QStringList nativeNotes(const NativePicture &picture, const NativeCurves &drawn,
                        const std::vector<bool> &channelsOff);
