#pragma once

#include <QtGlobal>
#include <vector>

/// What numbers have in common. NaN and infinite ones do not count.
struct SeriesStatistics {
    qint64 count = 0;   ///< finite numbers; of none the rest is NaN
    qint64 missing = 0; ///< the others
    double mean = 0;
    double median = 0; ///< mean of the two in the middle where their count is even
    double sigma = 0;  ///< sample standard deviation, over count - 1; 0 of one number
    double min = 0;
    double max = 0;
};

namespace Tools {

SeriesStatistics seriesStatistics(std::vector<double> values);

/// How many of the finite values fall into each of `bins` equal parts of the range from min to
/// max; max itself belongs to the last one. Values outside do not count.
///
/// @return empty without an extent or bins
std::vector<qint64> histogram(const std::vector<double> &values, double min, double max, int bins);

} // namespace Tools
