#include "analyses/compare/medianday.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace Compare {

namespace {

constexpr float none = std::numeric_limits<float>::quiet_NaN();

float middle(float below, float above)
{
    return below + (above - below) / 2;
}

// The three order statistics that decide the median of all values and of all but one.
class Medians {
public:
    // Sorts the values.
    explicit Medians(std::vector<float> &values) : isOdd(values.size() % 2 == 1)
    {
        std::sort(values.begin(), values.end());
        const std::size_t half = values.size() / 2;
        central = values[half];
        below = half > 0 ? values[half - 1] : central;
        above = half + 1 < values.size() ? values[half + 1] : central;
    }

    float ofAll() const { return isOdd ? central : middle(below, central); }

    float without(float value) const
    {
        if (!isOdd)
            return value >= central ? below : central;
        if (value > central)
            return middle(below, central);
        return value < central ? middle(central, above) : middle(below, above);
    }

private:
    bool isOdd;
    float below, central, above;
};

} // namespace

double varianceOfMedian(int count)
{
    if (count <= 2)
        return 1.0 / std::max(1, count);
    const double shift = count % 2 == 1 ? 0.43 + 0.21 / count : 1.43 - 0.66 / count;
    return std::numbers::pi / (2 * (count + shift));
}

MedianDay medianDay(const std::vector<const float *> &days, int points,
                    const Jobs::Control &control)
{
    MedianDay result;
    result.median.assign(std::size_t(points), none);
    result.differences.resize(days.size());
    for (std::size_t day = 0; day < days.size(); ++day) {
        if (days[day])
            result.differences[day].assign(std::size_t(points), none);
    }
    std::vector<float> scales(days.size() + 1); // 1 over the scatter of a difference, by other days
    for (int others = 1; others < int(scales.size()); ++others)
        scales[std::size_t(others)] = float(1 / std::sqrt(1 + varianceOfMedian(others)));
    std::vector<float> values;
    constexpr int pointsBetweenQuestions = 4096;
    for (int point = 0; point < points; ++point) {
        if (point % pointsBetweenQuestions == 0 && control.isStopped())
            return {};
        values.clear();
        for (const float *const day : days) {
            if (day && std::isfinite(day[point]))
                values.push_back(day[point]);
        }
        if (values.empty())
            continue;
        const Medians medians(values);
        result.median[std::size_t(point)] = medians.ofAll();
        const std::size_t others = values.size() - 1;
        if (others < std::size_t(fewestOthers))
            continue;
        for (std::size_t day = 0; day < days.size(); ++day) {
            if (days[day] && std::isfinite(days[day][point]))
                result.differences[day][std::size_t(point)] =
                    (days[day][point] - medians.without(days[day][point])) * scales[others];
        }
    }
    return result;
}

} // namespace Compare
