#pragma once

#include "forms/native/nativeload.h"
#include "picture/zoom.h"

#include <QStringList>

/// A range of a recording.
struct NativeRange {
    double first = 0;  ///< point, index within the file
    double points = 0; ///< how many
};

/// What the viewer draws of a recording.
enum class NativeShow { Channel, Stack, Sum, Waterfall };

struct NativeChoice {
    NativeShow show = NativeShow::Sum;
    int channel = 0;       ///< index from 0
    double dispersion = 0; ///< pc/cm^3, of the sum
    std::vector<bool> channelsOff;
    // of the picture of time against frequency
    int average = 1;          ///< fewest points in a column
    bool isPerChannel = true; ///< level and sigma are those of each band, not of all
    bool isZeroDm = false;    ///< see Tools::WaterfallPart
};

/// The curves of the plot. Index i of a curve stands for the point first + i x step.
struct NativeCurves {
    std::vector<std::vector<float>> curves;
    QStringList names;
    double first = 0; ///< point, index within the file
    double step = 1;  ///< points
    int count = 0;    ///< of X values
    double min = 0;   ///< over all curves, finite
    double max = 0;
    std::vector<int> markers; ///< indices where a jump of the level was taken out

    /// Value by value what statistics are made of: the channel, or the sum. Empty where the part
    /// is kept as a reduction; `row` then names its row.
    std::vector<double> series;
    int row = 0;
    QString problem; ///< why there are no curves
};

/// Curves of one channel, of all bands one above the other, or of the sum of the bands.
///
/// Stacked bands: band number + (x - median) / (8 robust sigma), channels that are off left out;
/// of a reduction mean and standard deviation stand in for the two. There every column gives two
/// values, the least and the greatest.
NativeCurves nativeCurves(const NativePicture &picture, const NativeChoice &choice);

/// Bands that are on and hold no finite number: while there are any, the curve of the sum has no
/// finite value.
std::vector<int> bandsThatKeepFromSumming(const NativePicture &picture,
                                          const std::vector<bool> &channelsOff);

/// From the least to the greatest finite value of the curves between two indices; both 0 without
/// any.
Plot::Range rangeInSight(const std::vector<std::vector<float>> &curves, double first,
                         double points);

/// Whether the delays of the sum at this dispersion lie within the kept samples.
///
/// @param npoints  of the recording
bool reachesWithin(const NativePicture &picture, double dispersion, int npoints);
