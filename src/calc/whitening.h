#pragma once

#include <cstddef>
#include <vector>

namespace Tools {

/// Powers of a spectrum as multiples of the noise around them.
///
/// The power of a line is P = ln 2 (S / median)^2 with the median of the amplitudes in a window
/// around it. A median of few values scatters, which makes great P of noise too frequent: twice
/// too frequent above 10 with a window of 129. As the median's own law is known (Renyi 1953, Acta
/// Math. Hung. 4, 191), the scatter is divided out: for r = (S / median)^2 the power given is
///
///     P = sum of ln(1 + r / j), j from m to 2 m, m = (window - 1) / 2,
///
/// which tends to r ln 2 for wide windows. So P of white noise has mean 1 and exceeds x with the
/// probability exp(-x), exactly for r > 1 where the values are independent and within 4 % down to
/// 1e-4 in the spectrum of a series padded to double its length. Beyond P = 30, where no noise is,
/// P grows in proportion to the power.
class Whitening {
public:
    /// @param window  values that give a median, odd, at least 3; 129 to 513 fit most spectra
    explicit Whitening(int window);

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
    std::vector<double> table; // P at multiples of a small step of the ratio
};

/// The sum of `shape` powers of noise that half of all such sums exceed. A single power is the
/// median of its own window more often than any other value, and is then ln(2 + 1 / m): the law of
/// an exponential tail would be 0.6 % low with a window of 257. Sums of more do not feel that.
///
/// @param shape   whole number of powers, or what a weighted sum counts as
/// @param window  of their Whitening
double medianWhitenedPower(double shape, int window);

} // namespace Tools
