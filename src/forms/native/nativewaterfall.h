#pragma once

#include "forms/native/nativecurves.h"
#include "forms/native/waterfallview.h"

/// The viewer's picture of time against frequency: values in robust sigmas from the median, of each
/// band or of all. Bands that are off have no value.
///
/// @param record  the picture's samples, or the means of its reduction where it has none
/// @param range   in sight
/// @param width   most columns
WaterfallView::Picture nativeWaterfall(const NativePicture &picture, const ObservationData &record,
                                       const NativeChoice &wanted, const NativeRange &range,
                                       int width);
