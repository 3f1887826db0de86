#pragma once

#include <cstddef>
#include <vector>

namespace Tools {

/// Whether the values of a spectrum are independent.
enum class Padding {
    None,
    Doubled, ///< the series was padded with as many zeros: neighbouring values go together
};

/// Powers of a spectrum as multiples of the noise around them.
///
/// The power of a line is P = ln 2 (S / median)^2 with the median of the amplitudes in a window
/// around it. A median of few values scatters, which makes great P of noise too frequent: twice
/// too frequent above 10 with a window of 129. As the median's own law is known (Renyi 1953, Acta
/// Math. Hung. 4, 191), the scatter is divided out: for r = (S / median)^2 the power given is
///
///     P = sum of ln(1 + r / j), j from m to 2 m, m = (window - 1) / 2,
///
/// which tends to r ln 2 for wide windows. Below the median, where S itself is one of those that
/// hold the median up, the sum begins at m + 1; the median itself gets the mean of both. So P of
/// white noise exceeds x with the probability exp(-x), exactly where the values are independent: it
/// has mean 1 and variance 1. In the spectrum of a padded series a high value raises its own median
/// by way of its neighbours, and the median scatters more; what that changes was simulated and is
/// taken off. Beyond P = 30, where no noise is, P grows in proportion to the power.
class Whitening {
public:
    /// @param window  values that give a median, odd, at least 3; 129 to 513 fit most spectra
    explicit Whitening(int window, Padding padding = Padding::None);

    int window() const { return width; }

    /// P of a power that is `ratio` times the median of the powers around it.
    double power(double ratio) const;

    /// P of each line of an amplitude spectrum; 0 where the median is 0 or no number.
    ///
    /// @param first  of localMedian()
    std::vector<float> powers(const std::vector<double> &amplitudes, std::size_t first = 0) const;

private:
    int width;
    double lastSlope = 0;
    // P at multiples of a small step of the ratio, up to the median and from there on
    std::vector<double> below;
    std::vector<double> above;
};

} // namespace Tools
