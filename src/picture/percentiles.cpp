#include "picture/percentiles.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Plot {

std::vector<float> percentiles(std::vector<float> values, std::initializer_list<double> shares)
{
    values.erase(std::remove_if(values.begin(), values.end(),
                                [](float value) { return !std::isfinite(value); }),
                 values.end());
    std::vector<float> found;
    if (values.empty())
        return found;
    for (const double share : shares) {
        const auto place = values.begin() + std::ptrdiff_t(share * double(values.size() - 1));
        std::nth_element(values.begin(), place, values.end());
        found.push_back(*place);
    }
    return found;
}

std::vector<float> percentilesOfRows(const std::vector<float> &values, int columns,
                                     std::initializer_list<double> shares)
{
    std::vector<std::vector<float>> ofRows(shares.size()); // of each share
    const auto width = std::ptrdiff_t(columns);
    for (auto row = values.begin(); values.end() - row >= width; row += width) {
        const std::vector<float> found = percentiles({row, row + width}, shares);
        for (std::size_t i = 0; i < found.size(); ++i)
            ofRows[i].push_back(found[i]);
    }
    std::vector<float> medians;
    for (std::vector<float> &all : ofRows) {
        const std::vector<float> median = percentiles(std::move(all), {0.5});
        medians.insert(medians.end(), median.begin(), median.end());
    }
    return medians;
}

} // namespace Plot
