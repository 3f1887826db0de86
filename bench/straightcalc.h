#pragma once

#include "calc/banddelays.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

// The computations as they are written down, in the order of their formulas and without any
// haste: what the fast ones are timed against and must equal to the last bit.

/// The sums of the bands, each sample tested for the wrap.
inline std::vector<double> straightSum(const ObservationData &data, double dispersion, int module,
                                       int ray)
{
    const int reference = data.channels - 2;
    std::vector<double> sums;
    sums.reserve(std::size_t(data.npoints));
    for (int i = 0; i < data.npoints; ++i)
        sums.push_back(double(data.samples[module][reference][ray][i]));
    for (int c = reference - 1; c >= 0; --c) {
        const int shift = int(Tools::roundedDelay(
            Tools::dispersionDelay(data.fbands[std::size_t(c)], data.fbands[std::size_t(reference)],
                                   dispersion, data.tresolution),
            Tools::ShiftRounding::WholeRecording));
        for (int i = 0; i < data.npoints; ++i) {
            int j = i + shift;
            while (j >= data.npoints)
                j -= data.npoints;
            while (j < 0)
                j += data.npoints;
            sums[std::size_t(i)] += double(data.samples[module][c][ray][j]);
        }
    }
    return sums;
}

/// Straight lines between the lower medians of fully sorted blocks of len values.
inline void straightMedianLine(const std::vector<double> &in, std::vector<double> &out, int len)
{
    const int half = len / 2;
    double before = 0;
    for (int begin = 0; begin + len <= int(in.size()); begin += len) {
        std::vector<double> block(in.begin() + begin, in.begin() + begin + len);
        std::sort(block.begin(), block.end());
        const double median = block[std::size_t(half - 1)];
        for (int t = 0; begin > 0 && t < 2 * half; ++t)
            out[std::size_t(begin - half + t)] = before + t * (median - before) / len;
        // Up to the centre of the next block, or to the end when there is none.
        const int level = begin > 0 ? begin + half : 0;
        const bool last = begin + 2 * len > int(in.size());
        std::fill(out.begin() + level, last ? out.end() : out.begin() + begin + len + half, median);
        before = median;
    }
}

/// Least-squares polynomial. `power(double, int)` is called for every term of every sum; the
/// last column of the equations is their right-hand side.
template <typename Power>
void straightPolynomial(const std::vector<double> &in, std::vector<double> &out, int degree,
                        Power power)
{
    const int count = int(in.size());
    const std::size_t size = std::size_t(degree) + 1;
    std::vector<std::vector<double>> a(size, std::vector<double>(size + 1));
    for (int r = 0; r <= degree; ++r) {
        double *const row = a[std::size_t(r)].data();
        for (int c = 0; c <= degree; ++c)
            for (int i = 0; i < count; ++i)
                row[c] += power(double(i), r + c);
        for (int i = 0; i < count; ++i)
            row[size] += power(double(i), r) * in[std::size_t(i)];
    }
    for (std::size_t r = 0; r < size; ++r)
        for (std::size_t row = r + 1; row < size; ++row) {
            const double factor = a[row][r] / a[r][r];
            for (std::size_t c = r; c <= size; ++c)
                a[row][c] -= factor * a[r][c];
        }
    for (std::size_t r = size; r-- > 0; a[r][size] /= a[r][r])
        for (std::size_t c = r + 1; c < size; ++c)
            a[r][size] -= a[r][c] * a[c][size];
    for (int i = 0; i < count; ++i) {
        double sum = 0;
        for (int j = 0; j <= degree; ++j)
            sum += a[std::size_t(j)][size] * power(double(i), j);
        out[std::size_t(i)] = sum;
    }
}

/// Amplitude spectrum by the triple loop of the textbooks: stages, twiddle factors, butterflies.
inline void straightSpectrum(const double *dataIn, double *dataOut, int countIn, int countOut)
{
    std::vector<double> data(2 * std::size_t(countIn));
    double *const values = data.data();
    for (int i = 0; i < countIn; ++i)
        values[2 * i + 1] = dataIn[i];
    for (int i = 0, j = 0; i < countIn; ++i) {
        if (j > i) {
            std::swap(values[2 * i], values[2 * j]);
            std::swap(values[2 * i + 1], values[2 * j + 1]);
        }
        int bit = countIn / 2;
        for (; bit >= 1 && (j & bit); bit /= 2)
            j -= bit;
        j += bit;
    }
    for (int length = 2; length <= countIn; length *= 2) {
        const double theta = -6.283185307179586 / length;
        const double halfSine = std::sin(0.5 * theta);
        const double stepRe = -2 * halfSine * halfSine;
        const double stepIm = std::sin(theta);
        double wRe = 1;
        double wIm = 0;
        for (int m = 0; m < length / 2; ++m) {
            for (int i = m; i < countIn; i += length) {
                const int j = i + length / 2;
                const double re = wRe * values[2 * j] - wIm * values[2 * j + 1];
                const double im = wRe * values[2 * j + 1] + wIm * values[2 * j];
                values[2 * j] = values[2 * i] - re;
                values[2 * j + 1] = values[2 * i + 1] - im;
                values[2 * i] += re;
                values[2 * i + 1] += im;
            }
            const double oldRe = wRe;
            wRe = wRe * stepRe - wIm * stepIm + wRe;
            wIm = wIm * stepRe + oldRe * stepIm + wIm;
        }
    }
    for (int k = 0; k < countOut; ++k)
        dataOut[k] =
            2 * std::sqrt(values[2 * k] * values[2 * k] + values[2 * k + 1] * values[2 * k + 1]) /
            countIn;
}
