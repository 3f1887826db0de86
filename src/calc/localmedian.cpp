#include "calc/localmedian.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Tools {

namespace {

// Number of values below `value`. Without branches, which a processor could not foresee.
std::ptrdiff_t countBelow(const std::vector<double> &sorted, double value)
{
    const double *begin = sorted.data();
    std::size_t count = sorted.size();
    while (count > 1) {
        const std::size_t half = count / 2;
        begin += half * std::size_t(begin[half - 1] < value);
        count -= half;
    }
    return begin - sorted.data() + (*begin < value);
}

// Puts a new value in the place of an old one, and both where they belong. Moving the values in
// between, a third of the window on average, costs less than any tree that would avoid it.
void replace(std::vector<double> &sorted, double oldValue, double newValue)
{
    const auto from = sorted.begin() + countBelow(sorted, oldValue);
    const auto to = sorted.begin() + countBelow(sorted, newValue);
    if (to > from) {
        std::move(from + 1, to, from);
        *(to - 1) = newValue;
    } else {
        std::move_backward(to, from, from + 1);
        *to = newValue;
    }
}

int usableWindow(std::size_t values, int window)
{
    const int largest = int(std::min<std::size_t>(values, std::numeric_limits<int>::max()));
    const int wanted = std::clamp(window, 1, std::max(1, largest));
    return wanted % 2 == 1 ? wanted : wanted - 1;
}

} // namespace

std::vector<double> localMedian(const std::vector<double> &values, int window, std::size_t first)
{
    if (values.empty())
        return {};
    const std::size_t skipped = std::min(first, values.size() - 1);
    std::vector<double> ordered(values.begin() + std::ptrdiff_t(skipped), values.end());
    for (double &value : ordered) {
        if (std::isnan(value))
            value = std::numeric_limits<double>::infinity();
    }
    const std::size_t width = std::size_t(usableWindow(ordered.size(), window));
    const std::size_t half = width / 2;
    std::vector<double> sorted(ordered.begin(), ordered.begin() + std::ptrdiff_t(width));
    std::sort(sorted.begin(), sorted.end());
    std::vector<double> medians(values.size(), sorted[half]);
    for (std::size_t end = width; end < ordered.size(); ++end) {
        replace(sorted, ordered[end - width], ordered[end]);
        medians[skipped + end - half] = sorted[half];
    }
    std::fill(medians.end() - std::ptrdiff_t(half), medians.end(), sorted[half]);
    return medians;
}

double expectedMedian(NoiseLaw law, int window)
{
    const int middle = (window + 1) / 2;
    if (law == NoiseLaw::Exponential) {
        double sum = 0;
        for (int k = window; k >= middle; --k)
            sum += 1.0 / k;
        return sum;
    }
    // The middle one of uniform values has the density u^m (1 - u)^m, m = window / 2, over a
    // constant; at the share u of values below it a Rayleigh value is sqrt(-2 ln(1 - u)).
    constexpr int cells = 4000;
    double weights = 0;
    double sum = 0;
    for (int i = 0; i < cells; ++i) {
        const double u = (i + 0.5) / cells;
        const double weight = std::pow(4 * u * (1 - u), window / 2);
        weights += weight;
        sum += weight * std::sqrt(-2 * std::log1p(-u));
    }
    return sum / weights;
}

std::vector<double> localNoise(const std::vector<double> &values, int window, NoiseLaw law)
{
    std::vector<double> noise = localMedian(values, window);
    const double expected = expectedMedian(law, usableWindow(values.size(), window));
    for (double &level : noise)
        level /= expected;
    return noise;
}

} // namespace Tools
