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

} // namespace Plot
