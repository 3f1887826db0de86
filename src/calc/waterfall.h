#pragma once

#include "data/observationdata.h"

#include <vector>

namespace Tools {

/// The part of a recording that a picture of time against frequency shows.
struct WaterfallPart {
    int module = 0;        ///< index from 0
    int ray = 0;           ///< index from 0
    int first = 0;         ///< point, index within the record
    int count = 0;         ///< points
    int columns = 0;       ///< of the picture; at most `count`
    double dispersion = 0; ///< pc/cm^3; every band is read by its delay later
    /// Whether the mean of all bands at a time is taken from each of them, which removes what has
    /// no dispersion (Eatough, Keane and Lyne 2009, MNRAS 395, 410).
    bool isZeroDm = false;
    std::vector<bool> channelsOff = {}; ///< bands that do not count in that mean
};

/// Means over time, one row per band (channels 0 to channels - 2), row r beginning at
/// r x columns. Column i of a row is the mean of the points from first + i x count / columns up
/// to where the next column begins, as far as they are finite (NaN of none), all shifted by the
/// delay of the band against the last band, as Tools::sumChannels shifts them, round the end of the
/// record.
///
/// @return empty when the part does not lie within the record, has no columns, or a frequency,
///         the step or a delay is no usable number
std::vector<float> waterfall(const ObservationData &data, const WaterfallPart &part);

/// Makes the rows comparable: each less its median, divided by its spread (see RobustLevel). A row
/// without any variation becomes 0; NaN stays and does not count.
void normaliseRows(std::vector<float> &picture, int rows, int columns);

} // namespace Tools
