#include "calc/approximation.h"

#include "base/debugline.h"
#include "base/targetclones.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

namespace {

// Passes of a selection over its shrinking values: more than any series needs that was not
// made to defeat it.
constexpr int maxRounds = 64;

using Matrix = std::vector<std::vector<double>>;

// Whether the sums of i^(2 x degree) over i = 0 .. count - 1 stay finite.
bool powersFit(int degree, int count)
{
    const double largest = std::pow(double(count - 1), 2.0 * degree) * count;
    return largest < std::numeric_limits<double>::max() / 2;
}

// Sums of i^m, m = 0 .. 2 degree, and of i^r in[i], r = 0 .. degree, in one pass.
void sumPowers(const double *in, int count, int degree, double *powerSums, double *productSums)
{
    for (int i = 0; i < count; ++i) {
        double power = 1;
        for (int m = 0; m <= degree; ++m) {
            powerSums[m] += power;
            productSums[m] += power * in[i];
            power *= i;
        }
        for (int m = degree + 1; m <= 2 * degree; ++m) {
            powerSums[m] += power;
            power *= i;
        }
    }
}

// Solves a x = b; elimination in natural order, for stored baselines were made without
// pivoting.
std::vector<double> solve(Matrix a, std::vector<double> b)
{
    const std::size_t size = b.size();
    for (std::size_t r = 0; r < size; ++r) {
        for (std::size_t row = r + 1; row < size; ++row) {
            const double factor = a[row][r] / a[r][r];
            for (std::size_t c = r; c < size; ++c)
                a[row][c] -= factor * a[r][c];
            b[row] -= factor * b[r];
        }
    }
    for (std::size_t r = size; r-- > 0;) {
        for (std::size_t c = r + 1; c < size; ++c)
            b[r] -= a[r][c] * b[c];
        b[r] /= a[r][r];
    }
    return b;
}

// Sum of a[j] x^j, j = 0 .. degree, in this order.
[[gnu::always_inline]] inline double polynomialAt(const double *a, int degree, double x)
{
    double sum = a[0];
    double power = 1;
    for (int j = 1; j <= degree; ++j) {
        power *= x;
        sum += a[j] * power;
    }
    return sum;
}

// The polynomial at 0 .. count - 1.
ZRT_TARGET_CLONES
void evaluate(const double *coefficients, int degree, double *out, int count)
{
    for (int i = 0; i < count; ++i)
        out[i] = polynomialAt(coefficients, degree, i);
}

// Roots of 3 a3 x^2 + 2 a2 x + a1 and the polynomial there.
Approximation::Extrema cubicExtrema(const std::vector<double> &a, int count)
{
    const double root = std::sqrt(2 * a[2] * (2 * a[2]) - 4 * (3 * a[3]) * a[1]);
    Approximation::Extrema found;
    found.firstPosition = (-2 * a[2] - root) / (6 * a[3]);
    found.firstValue = polynomialAt(a.data(), 3, found.firstPosition);
    found.secondPosition = (root - 2 * a[2]) / (6 * a[3]);
    found.secondValue = polynomialAt(a.data(), 3, found.secondPosition);
    const auto choose = [&found, count](double position, double value) {
        if (found.inside || !(position > 0 && position < count))
            return;
        found.position = position;
        found.value = value;
        found.inside = true;
    };
    choose(found.firstPosition, found.firstValue);
    choose(found.secondPosition, found.secondValue);
    return found;
}

// The value of rank `rank` (from 0) of `count` values, which are no not-a-numbers. Selection by
// quickly shrinking copies: a value is stored at both ends of the other half of the workspace
// and kept at one of them, at neither if it equals the pivot, so that no branch depends on it.
//
// @param values  the values, and room for as many behind them; both are overwritten
double ranked(double *values, int count, int rank)
{
    double *from = values;
    double *to = values + count;
    for (int round = 0; round < maxRounds; ++round) {
        const double first = from[count / 4];
        const double middle = from[count / 2];
        const double last = from[count - 1 - count / 4];
        const double pivot =
            std::max(std::min(first, last), std::min(std::max(first, last), middle));
        int below = 0;
        int above = count - 1;
        for (int i = 0; i < count; ++i) {
            const double value = from[i];
            to[below] = value;
            to[above] = value;
            below += int(value < pivot);
            above -= int(value > pivot);
        }
        if (rank >= below && rank <= above)
            return pivot;
        std::swap(from, to);
        if (rank < below) {
            count = below;
        } else {
            const int dropped = above + 1;
            from += dropped;
            rank -= dropped;
            count -= dropped;
        }
    }
    std::nth_element(from, from + rank, from + count);
    return from[rank];
}

// The lower median of a block: rank len/2 - 1, not-a-numbers last.
//
// @param workspace  room for 2 len values
double lowerMedian(const double *block, int len, double *workspace)
{
    int count = 0;
    for (int i = 0; i < len; ++i) {
        workspace[count] = block[i];
        count += int(!std::isnan(block[i]));
    }
    const int rank = len / 2 - 1;
    return rank < count ? ranked(workspace, count, rank) : std::numeric_limits<double>::quiet_NaN();
}

// Straight line through (0, from) and (len, to), at first .. first + points - 1.
ZRT_TARGET_CLONES
void fillLine(double from, double to, int len, int first, double *out, int points)
{
    const double rise = to - from;
    for (int t = 0; t < points; ++t)
        out[t] = from + (first + t) * rise / len;
}

double mean(const double *values, int count)
{
    return std::accumulate(values, values + count, 0.0) / count;
}

std::vector<double> blockMeans(const double *in, int count, int len)
{
    std::vector<double> means(std::size_t(count / len));
    for (std::size_t b = 0; b < means.size(); ++b)
        means[b] = mean(in + b * std::size_t(len), len);
    return means;
}

void writeMedianLine(const double *in, double *out, int count, int len)
{
    const int half = len / 2;
    const int last = count / len - 1;
    std::vector<double> workspace(2 * std::size_t(len));
    double median = lowerMedian(in, len, workspace.data());
    int level = 0; // first point that has the median of the block before
    for (int b = 1; b <= last; ++b) {
        const double next = lowerMedian(in + b * len, len, workspace.data());
        const int line = b * len - half;
        std::fill(out + level, out + line, median);
        fillLine(median, next, len, 0, out + line, 2 * half);
        level = line + 2 * half;
        median = next;
    }
    std::fill(out + level, out + count, median);
}

} // namespace

Approximation::Approximation(const double *inValues, double *outValues, int valueCount)
    : in(inValues), out(outValues), count(inValues && outValues ? std::max(valueCount, 0) : 0)
{}

bool Approximation::polynomial(int degree, bool findExtrema)
{
    if (degree < 1) {
        debugLine("Error: k < 1!");
        return false;
    }
    if (count == 0) {
        debugLine("Error: count = 0!");
        return false;
    }
    if (degree >= count) {
        debugLine("Error: countIn <= k!");
        return false;
    }
    if (!powersFit(degree, count)) {
        debugLine("Error: k is too large! k=", degree, " count=", count);
        return false;
    }

    const std::size_t size = std::size_t(degree) + 1;
    std::vector<double> powerSums(2 * size - 1);
    std::vector<double> productSums(size);
    sumPowers(in, count, degree, powerSums.data(), productSums.data());
    Matrix a(size, std::vector<double>(size));
    for (std::size_t r = 0; r < size; ++r)
        for (std::size_t c = 0; c < size; ++c)
            a[r][c] = powerSums[r + c];
    const std::vector<double> coefficients = solve(std::move(a), std::move(productSums));
    evaluate(coefficients.data(), degree, out, count);
    if (findExtrema && degree == 3)
        found = cubicExtrema(coefficients, count);
    return true;
}

bool Approximation::medianLine(int len)
{
    if (len <= 2) {
        debugLine("Error: len =", len);
        return false;
    }
    if (!in) {
        debugLine("Error: bad dataIn!");
        return false;
    }
    if (!out) {
        debugLine("Error: bad dataOut!");
        return false;
    }
    if (len >= count) {
        debugLine("Error: count <= len!");
        return false;
    }
    writeMedianLine(in, out, count, len);
    return true;
}

bool Approximation::linearLine(int len)
{
    if (refusesMeans(len))
        return false;
    const std::vector<double> means = blockMeans(in, count, len);
    const auto meanOf = [&means](int block) {
        return means[std::min(std::size_t(block), means.size() - 1)];
    };
    const int half = len / 2;
    const int lastOnLine = count - half;
    std::fill(out, out + half, means.front());
    // Each line runs to the point after the next block's centre, where the next one starts:
    // stored baselines were made with this anchor.
    int start = half;
    int from = half;
    for (int s = 0; from <= lastOnLine; ++s) {
        const int end = int(std::min<qint64>(lastOnLine, (s + qint64(1)) * len + half + 1));
        fillLine(meanOf(s), meanOf(s + 1), len, from - start, out + from, end - from + 1);
        start = end;
        from = end + 1;
    }
    std::fill(out + from, out + count, means.back());
    return true;
}

bool Approximation::stepMean(int len)
{
    if (refusesMeans(len))
        return false;
    const std::vector<double> means = blockMeans(in, count, len);
    for (std::size_t b = 0; b < means.size(); ++b)
        std::fill_n(out + b * std::size_t(len), len, means[b]);
    return true;
}

bool Approximation::refusesMeans(int len) const
{
    if (len <= 1)
        debugLine("Error: len =", len);
    else if (count == 0)
        debugLine("Error: count = 0!");
    else if (len >= count)
        debugLine("Error: count <= len!");
    else
        return false;
    return true;
}

namespace Tools {

std::vector<double> approxMedian(const std::vector<double> &values, int len)
{
    const std::size_t count = values.size();
    if (count < 3 || len < 3 || count / std::size_t(len) < 2 ||
        count > std::size_t(std::numeric_limits<int>::max())) {
        debugLine("Error approxMedian(): count=", count, " len =", len);
        return {};
    }
    std::vector<double> line(count);
    writeMedianLine(values.data(), line.data(), int(count), len);
    return line;
}

bool deduct(const double *dataIn1, const double *dataIn2, double *dataOut, int countIn)
{
    if (countIn < 2)
        debugLine("Error: bad countIn!");
    else if (!dataIn1)
        debugLine("Error: bad dataIn1!");
    else if (!dataIn2)
        debugLine("Error: bad dataIn2!");
    else if (!dataOut)
        debugLine("Error: bad dataOut0!");
    else {
        std::transform(dataIn1, dataIn1 + countIn, dataIn2, dataOut, std::minus<>());
        return true;
    }
    return false;
}

void clearResidue(const double *whole, double *rest, int count)
{
    constexpr double residue = 1e-9;
    double largest = 0;
    for (int i = 0; i < count; ++i)
        largest = std::max(largest, std::abs(whole[i]));
    const auto isResidue = [&](double value) { return std::abs(value) <= residue * largest; };
    if (std::all_of(rest, rest + count, isResidue))
        std::fill_n(rest, count, 0.0);
}

double sigma(const double *values, int count)
{
    if (!values || count < 2)
        return 0;
    const double average = mean(values, count);
    double squares = 0;
    for (int i = 0; i < count; ++i)
        squares += (values[i] - average) * (values[i] - average);
    return std::sqrt(squares / (count - 1));
}

bool normalise(double *values, int count)
{
    if (!values || count < 1) {
        debugLine("Tools::normalise(): bad count=", values ? count : 0);
        return false;
    }
    const double divisor = sigma(values, count);
    if (divisor == 0)
        return true;
    for (int i = 0; i < count; ++i)
        values[i] /= divisor;
    return true;
}

} // namespace Tools
