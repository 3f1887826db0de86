#pragma once

#include <vector>

/// Baselines of the pulsar analyses: degree of the polynomial, and the points of a block of the
/// median line and of the line through means.
inline constexpr int baselineDegree = 5;
inline constexpr int baselineMedianBlock = 256;
inline constexpr int baselineMeanBlock = 128;

/// Smooth approximations of a series: the noise baselines that are subtracted before a
/// spectrum or a profile is computed. Works over the caller's arrays, which stay the
/// caller's and must outlive the object.
///
/// Every operation writes all of `out`, except where it says otherwise, or returns false
/// after a debug line that names the bad value and leaves `out` untouched. `in` and `out`
/// may be the same array.
class Approximation {
public:
    /// Where the fitted polynomial of degree 3 turns round. A position or value that does not
    /// exist is not a number.
    struct Extrema {
        double firstPosition = 0; ///< (-2 a2 - sqrt(D)) / (6 a3), in samples
        double firstValue = 0;
        double secondPosition = 0; ///< (sqrt(D) - 2 a2) / (6 a3), in samples
        double secondValue = 0;
        double position = 0; ///< the first of the two strictly between 0 and count; else 0
        double value = 0;    ///< of the polynomial there; else 0
        bool inside = false; ///< whether there is one
    };

    /// @param in     count values; only read
    /// @param out    room for count values
    /// @param count  taken as 0 when an array is null or the count is negative
    Approximation(const double *in, double *out, int count);

    /// Least-squares polynomial of the given degree k in the index i = 0 .. count - 1.
    ///
    /// Normal equations A a = b with A[r][c] = sum of i^(r+c), b[r] = sum of i^r in[i], solved
    /// by Gaussian elimination in natural order without pivoting. Sums run over i in rising
    /// order and over j = 0 .. k in out[i] = sum of a[j] i^j. Powers are formed by repeated
    /// multiplication, i^0 = 1, i^1 = i, i^m = i^(m-1) x i, each rounded to double, so the
    /// result equals that of the formulas as they stand to the last bit.
    ///
    /// @param degree       1 .. count - 1, and small enough for (count - 1)^(2 x degree), summed,
    ///                     to stay below the largest double
    /// @param findExtrema  with degree 3, finds extrema(); without effect for other degrees
    bool polynomial(int degree, bool findExtrema);

    /// Results of the last polynomial() of degree 3 with findExtrema; all 0 before it.
    const Extrema &extrema() const { return found; }

    /// Straight lines between the centres of neighbouring blocks of len values, through the
    /// lower median of each (the value of rank len/2 - 1 from 0, not-a-numbers last). Before the
    /// first centre and from the last whole block's centre on, that block's median; so too at
    /// the centre of a block of odd length.
    ///
    /// @param len  above 2 and below count
    bool medianLine(int len);

    /// Straight lines through the means of neighbouring blocks of len values: from len/2 on
    /// through (len/2, m_0) and (len + len/2, m_1); the line through m_s and m_(s+1) starts at
    /// the index after (s x len + len/2), not at the block's centre. Level before len/2 and
    /// behind count - len/2, and where a line would need the mean of a block that is not
    /// there, on the last whole block's mean.
    ///
    /// @param len  above 1 and below count
    bool linearLine(int len);

    /// Each whole block of len values filled with its mean. Writes whole blocks only.
    ///
    /// @param len  above 1 and below count
    bool stepMean(int len);

private:
    bool refusesMeans(int len) const;

    const double *const in;
    double *const out;
    const int count;
    Extrema found;
};

namespace Tools {

/// The line of Approximation::medianLine as a new series.
///
/// @return as many values as came in; empty, after a debug line, below 3 values, for a len
///         below 3 or with fewer than two whole blocks
std::vector<double> approxMedian(const std::vector<double> &values, int len);

/// dataOut[i] = dataIn1[i] - dataIn2[i]; the arrays may be the same.
///
/// @return false, after a debug line, below 2 values or without an array
bool deduct(const double *dataIn1, const double *dataIn2, double *dataOut, int countIn);

/// Sets all values of `rest`, what a baseline left of `whole`, to 0 when none exceeds a thousand
/// millionth of the largest of `whole`: float samples differ by more or not at all, so that this is
/// the rounding of the baseline, not noise.
void clearResidue(const double *whole, double *rest, int count);

/// Sample standard deviation: root of the sum of squared deviations from the mean over
/// count - 1, sums in rising order.
///
/// @return 0 below 2 values or without an array
double sigma(const double *values, int count);

/// Divides every value by the sigma of all. A series of sigma 0 stays as it is.
///
/// @return false, after a debug line, without values
bool normalise(double *values, int count);

} // namespace Tools
