#pragma once

#include "forms/native/nativecurves.h"
#include "forms/native/waterfallview.h"

/// How the viewer's picture of time against frequency is made.
struct NativeWaterfall {
    NativeRange range;             ///< in sight
    double dispersion = 0;         ///< pc/cm^3
    int average = 1;               ///< fewest points in a column
    int width = 0;                 ///< most columns
    std::vector<bool> channelsOff; ///< bands that are left without a value
    bool isPerChannel = true;      ///< level and sigma are those of each band, not of all
    bool isZeroDm = false;         ///< see Tools::WaterfallPart
};

/// The values of the picture in robust sigmas from the median, of each band or of all.
///
/// @param record  the picture's samples, or the means of its reduction where it has none
WaterfallView::Picture nativeWaterfall(const NativePicture &picture, const ObservationData &record,
                                       const NativeWaterfall &wanted);
