#include "ffa/straightffa.h"

#include "base/targetclones.h"
#include "ffa/downsample.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace StraightFfa {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

ZRT_TARGET_CLONES
void downsampleInto(const float *x, std::uint64_t size, double f, float *out)
{
    const auto n = std::uint64_t(std::floor(double(size) / f));
    for (std::uint64_t i = 0; i < n; ++i) {
        const double start = double(i) * f;
        const double end = start + f;
        const auto istart = std::uint64_t(std::floor(start));
        const auto iend = std::min(std::uint64_t(std::floor(end)), size - 1);
        float sum = float(double(istart + 1) - start) * x[istart];
        for (std::uint64_t j = istart + 1; j < iend; ++j)
            sum += x[j];
        sum += float(end - double(iend)) * x[iend];
        out[i] = sum;
    }
}

ZRT_TARGET_CLONES
void addRolled(const float *x, const float *y, int n, int shift, float *out)
{
    const int s = shift % n;
    for (int i = 0; i < n - s; ++i)
        out[i] = x[i] + y[i + s];
    for (int i = n - s; i < n; ++i)
        out[i] = x[i] + y[i - (n - s)];
}

void transformInto(const float *in, float *scratch, float *out, int r, int c)
{
    if (r == 1) {
        std::copy(in, in + c, out);
        return;
    }
    if (r == 2) {
        addRolled(in, in + c, c, 0, out);
        addRolled(in, in + c, c, 1, out + c);
        return;
    }
    const int mh = r / 2;
    const int mt = r - mh;
    float *const tail = scratch + std::ptrdiff_t(mh) * c;
    transformInto(in, out, scratch, mh, c);
    transformInto(in + std::ptrdiff_t(mh) * c, out + std::ptrdiff_t(mh) * c, tail, mt, c);
    const float kh = float(mh - 1) / float(r - 1);
    const float kt = float(mt - 1) / float(r - 1);
    for (int s = 0; s < r; ++s) {
        const int ih = int(float(s) * kh + 0.5f);
        const int it = int(float(s) * kt + 0.5f);
        addRolled(scratch + std::ptrdiff_t(ih) * c, tail + std::ptrdiff_t(it) * c, c, s - it,
                  out + std::ptrdiff_t(s) * c);
    }
}

ZRT_TARGET_CLONES
void boxcarInto(const float *profile, int b, const std::uint64_t *widths, int nwidths,
                float stdnoise, float *prefix, float *out)
{
    const int wmax = int(*std::max_element(widths, widths + nwidths));
    double sum = 0;
    for (int i = 0; i < b; ++i) {
        sum += profile[i];
        prefix[i] = float(sum);
    }
    const float total = prefix[b - 1];
    for (int i = b; i < b + wmax; ++i)
        prefix[i] = prefix[i % b] + float(i / b) * total;
    for (int j = 0; j < nwidths; ++j) {
        const float w = float(widths[j]);
        const float h = std::sqrt((float(b) - w) / (float(b) * w));
        const float beta = w * h / (float(b) - w);
        const float *const ahead = prefix + widths[j];
        float dmax = ahead[0] - prefix[0];
        for (int i = 1; i < b; ++i)
            dmax = std::max(dmax, ahead[i] - prefix[i]);
        out[j] = ((h + beta) * dmax - beta * total) / stdnoise;
    }
}

struct Fold {
    double factor;
    int bins;
    int rows;
    int evaluated;
};

std::vector<Fold> foldsOf(std::uint64_t size, double tsamp, double periodMin, double periodMax,
                          int binsMin, int binsMax)
{
    std::vector<Fold> folds;
    const double start = periodMin / (tsamp * binsMin);
    const double geo = (double(binsMax) + 1) / binsMin;
    const auto steps = int(std::ceil(std::log(periodMax / periodMin) / std::log(geo)));
    for (int i = 0; i < steps; ++i) {
        const double f = start * std::pow(geo, i);
        const double n = std::floor(double(size) / f);
        const double pmax = periodMax / (tsamp * f);
        const int bmax = int(std::min({n, double(binsMax), std::trunc(pmax)}));
        for (int b = binsMin; b <= bmax; ++b) {
            const double m = std::floor(n / b);
            const double rows =
                std::min(m, std::ceil(b * (m - 1) * (1 - b / std::min(double(b) + 1, pmax))));
            folds.push_back({f, b, int(m), int(rows)});
        }
    }
    return folds;
}

} // namespace

Result search(const std::vector<float> &data, double tsamp,
              const std::vector<std::uint64_t> &widths, double periodMin, double periodMax,
              int binsMin, int binsMax, Times *times)
{
    const auto folds = foldsOf(data.size(), tsamp, periodMin, periodMax, binsMin, binsMax);
    std::uint64_t count = 0;
    for (const Fold &fold : folds)
        count += std::uint64_t(fold.evaluated);
    Result result;
    result.snr.resize(count * widths.size());
    std::vector<float> series = data;
    std::vector<float> scratch(data.size());
    std::vector<float> out(data.size());
    std::vector<float> prefix(std::uint64_t(binsMax) +
                              *std::max_element(widths.begin(), widths.end()));
    Times unused;
    Times &spent = times ? *times : unused;
    double factor = 1;
    float *snr = result.snr.data();
    for (const auto &[f, b, m, evaluated] : folds) {
        auto begin = Clock::now();
        if (f != factor)
            downsampleInto(data.data(), data.size(), f, series.data());
        factor = f;
        spent.downsampling += secondsSince(begin);
        begin = Clock::now();
        transformInto(series.data(), scratch.data(), out.data(), m, b);
        spent.transform += secondsSince(begin);
        begin = Clock::now();
        const float stdnoise = float(std::sqrt(m * Ffa::downsampledVariance(data.size(), f)));
        for (int s = 0; s < evaluated; ++s) {
            boxcarInto(out.data() + std::ptrdiff_t(s) * b, b, widths.data(), int(widths.size()),
                       stdnoise, prefix.data(), snr);
            snr += widths.size();
            result.foldbins.push_back(std::uint32_t(b));
            result.periods.push_back((b * tsamp * f * b) / (b - s / (m - 1.0)));
        }
        spent.boxcar += secondsSince(begin);
    }
    return result;
}

} // namespace StraightFfa
