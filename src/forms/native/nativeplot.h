#pragma once

#include "forms/native/nativecurves.h"
#include "picture/plotdata.h"

/// The plot of the viewer's curves, over seconds since the begin of the recording, with point
/// numbers, UTC and sidereal time below.
///
/// @param drawn    its curves are moved into the plot
/// @param picture  what the curves were made of
/// @param file     the recording; may go before the plot does
PlotData nativePlot(NativeCurves &drawn, const NativeChoice &choice, const NativePicture &picture,
                    const RecordingFile &file);
