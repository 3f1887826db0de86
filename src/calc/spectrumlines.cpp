#include "calc/spectrumlines.h"

#include "calc/localmedian.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tools {

std::vector<double> amplitudeNoise(const std::vector<double> &spectrum, int window)
{
    if (spectrum.size() < 2)
        return std::vector<double>(spectrum.size(), 0.0);
    const std::vector<double> lines(spectrum.begin() + 1, spectrum.end());
    std::vector<double> levels = localNoise(lines, window, NoiseLaw::Rayleigh);
    levels.insert(levels.begin(), levels.front());
    return levels;
}

std::vector<SpectrumLine> strongestLines(const std::vector<double> &spectrum,
                                         const std::vector<double> &levels, int count)
{
    std::vector<SpectrumLine> lines;
    for (std::size_t i = 1; i < spectrum.size(); ++i) {
        const bool isPeak = (i == 1 || spectrum[i] > spectrum[i - 1]) &&
                            (i + 1 == spectrum.size() || spectrum[i] >= spectrum[i + 1]);
        if (isPeak && levels[i] > 0)
            lines.push_back({int(i), spectrum[i], spectrum[i] / levels[i]});
    }
    const auto isStronger = [](const SpectrumLine &a, const SpectrumLine &b) {
        return a.snr != b.snr ? a.snr > b.snr : a.number < b.number;
    };
    const std::size_t kept = std::min(lines.size(), std::size_t(std::max(count, 0)));
    std::partial_sort(lines.begin(), lines.begin() + std::ptrdiff_t(kept), lines.end(), isStronger);
    lines.resize(kept);
    return lines;
}

double expectedAbove(const std::vector<double> &levels, double amplitude)
{
    double expected = 0;
    for (std::size_t i = 1; i < levels.size(); ++i) {
        if (levels[i] > 0)
            expected += std::exp(-std::pow(amplitude / levels[i], 2) / 2);
    }
    return expected;
}

} // namespace Tools
