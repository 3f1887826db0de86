#include "calc/seriesstatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tools {

SeriesStatistics seriesStatistics(std::vector<double> values)
{
    const auto all = qint64(values.size());
    values.erase(std::remove_if(values.begin(), values.end(),
                                [](double value) { return !std::isfinite(value); }),
                 values.end());
    SeriesStatistics found;
    found.count = qint64(values.size());
    found.missing = all - found.count;
    if (values.empty()) {
        found.mean = found.median = found.sigma = found.min = found.max =
            std::numeric_limits<double>::quiet_NaN();
        return found;
    }
    double sum = 0;
    for (const double value : values)
        sum += value;
    found.mean = sum / double(found.count);
    double squares = 0;
    for (const double value : values)
        squares += (value - found.mean) * (value - found.mean);
    if (found.count > 1)
        found.sigma = std::sqrt(squares / double(found.count - 1));

    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    found.min = *low;
    found.max = *high;
    const auto middle = values.begin() + found.count / 2;
    std::nth_element(values.begin(), middle, values.end());
    found.median = *middle;
    if (found.count % 2 == 0) {
        const double below = *std::max_element(values.begin(), middle);
        found.median = below / 2 + found.median / 2;
    }
    return found;
}

std::vector<qint64> histogram(const std::vector<double> &values, double min, double max, int bins)
{
    const double perUnit = bins / (max - min);
    if (!(max > min) || !std::isfinite(max - min) || !std::isfinite(perUnit) || bins < 1)
        return {};
    std::vector<qint64> counts(static_cast<std::size_t>(bins), 0);
    for (const double value : values) {
        if (value >= min && value <= max)
            ++counts[std::size_t(std::min(int((value - min) * perUnit), bins - 1))];
    }
    return counts;
}

} // namespace Tools
