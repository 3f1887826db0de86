#pragma once

#include "data/observationdata.h"

#include <vector>

namespace Tools {

/// A long stretch of one ray in few columns: of every channel, and of the sum of the bands, the
/// least and the greatest sample, the mean and the variance of the points that a column stands
/// for.
///
/// Rows are the channels 0 to channels - 1 and, as row `channels`, the sum. Row r of an array
/// begins at r x columns.
struct Reduction {
    int first = 0;   ///< first point, index within the recording
    int count = 0;   ///< points
    int columns = 0; ///< at most `count`
    int channels = 0;
    std::vector<float> low; ///< NaN where nothing is known yet
    std::vector<float> high;
    std::vector<float> mean;
    std::vector<float> variance; ///< divisor: number of points

    /// Point at which a column begins; that of `columns` is the end.
    int columnFirst(int column) const { return first + int(qint64(column) * count / columns); }
    /// Column that a point of the stretch belongs to.
    int columnOf(int point) const;
    std::size_t index(int row, int column) const
    {
        return std::size_t(row) * std::size_t(columns) + std::size_t(column);
    }
};

/// A reduction that knows nothing yet.
Reduction emptyReduction(int first, int count, int columns, int channels);

/// Fills `columns` columns from `column` on.
///
/// @param data    module 0 and ray 0 of it are taken
/// @param sums    of the bands, one per point of `data`
/// @param offset  point of `data` at which the first of these columns begins; each column takes
///                the points that it stands for, all of them within `data`
void fillColumns(Reduction &reduction, int column, int columns, const ObservationData &data,
                 const std::vector<double> &sums, int offset);

/// Fills columns that are only glanced at: they all get what `points` points of `data` from
/// `offset` on show.
void fillGlance(Reduction &reduction, int column, int columns, const ObservationData &data,
                const std::vector<double> &sums, int offset, int points);

/// Statistics of all known points of a row from one column up to another.
struct RowMoments {
    double mean = 0;
    double sigma = 0; ///< divisor: number of points
    double min = 0;
    double max = 0;
    qint64 points = 0;
};
RowMoments rowMoments(const Reduction &reduction, int row, int beginColumn, int endColumn);

/// The means as a recording of one module and ray, one point per column, with the step of a
/// column, so that sums and pictures can be made of it.
///
/// @param header  of the recording
/// @return without samples when memory is short
ObservationData recordOfMeans(const Reduction &reduction, const ObservationData &header);

} // namespace Tools
