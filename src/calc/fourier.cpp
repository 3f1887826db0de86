#include "calc/fourier.h"

#include "base/debugline.h"
#include "base/targetclones.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>

// Before a loop whose steps touch different elements of one array, which the compiler cannot
// see from the distances between them.
#if defined(__GNUC__) && !defined(__clang__)
#define INDEPENDENT_STEPS _Pragma("GCC ivdep")
#else
#define INDEPENDENT_STEPS
#endif

namespace Tools {

namespace {

constexpr double twoPi = 6.283185307179586;
constexpr int maxPower = 1 << 20;
constexpr int minAveragedPoints = 64;
constexpr int minHalvedPoints = 16;

// Side of the square tiles that are reordered together, and length of the stages done on them.
constexpr int tile = 32;
constexpr int minTiledCount = 4 * tile * tile;
// Values whose stages are finished before the next ones are touched: both parts of them and
// their twiddle factors stay in the first-level cache.
constexpr int cachedCount = 1024;

constexpr int lineDoubles = 8; // of a cache line

// Complex numbers as two arrays, so that neighbours share one vector instruction.
struct Complex {
    double *re = nullptr;
    double *im = nullptr;

    Complex operator+(int offset) const { return {re + offset, im + offset}; }
};

// What one transform works on. The values lie in rows of a power of two, with a gap behind
// each: without it, neighbours in the upper stages and the runs of a tile would share a few
// sets of the cache and drive each other out.
struct Work {
    static constexpr int rowGap = 3 * lineDoubles;

    Complex values;
    Complex twiddles; // those of the stage of length 2h at h .. 2h - 1
    int rowBits = 0;

    Complex at(int index) const { return values + (index + (index >> rowBits) * rowGap); }
    // Values of a stage of length 2h or above that follow each other without a gap.
    int runLength(int h) const { return std::min(h, 1 << rowBits); }
};

// exp(i m theta), m = 0, 1, ..., theta = -2 pi / stageLength, by the recurrence
// w += w (exp(i theta) - 1), which needs two sines.
class Rotation {
public:
    explicit Rotation(int stageLength)
    {
        const double theta = -twoPi / stageLength;
        const double halfSine = std::sin(0.5 * theta);
        stepRe = -2 * halfSine * halfSine;
        stepIm = std::sin(theta);
    }

    void store(Complex twiddles, int index) const
    {
        twiddles.re[index] = re;
        twiddles.im[index] = im;
    }

    void advance()
    {
        const double oldRe = re;
        re = re * stepRe - im * stepIm + re;
        im = im * stepRe + oldRe * stepIm + im;
    }

private:
    double stepRe = 0;
    double stepIm = 0;
    double re = 1;
    double im = 0;
};

// Twiddle factors of all stages up to length `count`. A step of the recurrence waits for the one
// before, so the longest stage, which has one factor more than all others together, runs side by
// side with them.
void fillTwiddles(Complex twiddles, int count)
{
    const int half = count / 2;
    Rotation longest(count);
    int m = half;
    for (int h = half / 2; h >= 1; h /= 2) {
        Rotation rotation(2 * h);
        for (int k = h; k < 2 * h; ++k, ++m) {
            rotation.store(twiddles, k);
            rotation.advance();
            longest.store(twiddles, m);
            longest.advance();
        }
    }
    longest.store(twiddles, m);
}

// One radix-2 butterfly on values i of a and b with factor k: a + w b and a - w b.
struct Butterfly {
    double sumRe, sumIm, differenceRe, differenceIm;

    [[gnu::always_inline]] Butterfly(double aRe, double aIm, double bRe, double bIm, double wRe,
                                     double wIm)
    {
        const double re = wRe * bRe - wIm * bIm;
        const double im = wRe * bIm + wIm * bRe;
        sumRe = aRe + re;
        sumIm = aIm + im;
        differenceRe = aRe - re;
        differenceIm = aIm - im;
    }
};

// The stage of length 2h on `count` values from `begin` on.
ZRT_TARGET_CLONES
void oneStage(const Work &work, int begin, int count, int h)
{
    const int run = work.runLength(h);
    for (int block = begin; block < begin + count; block += 2 * h) {
        for (int from = 0; from < h; from += run) {
            const Complex a = work.at(block + from);
            const Complex b = work.at(block + h + from);
            const Complex w = work.twiddles + (h + from);
            INDEPENDENT_STEPS
            for (int m = 0; m < run; ++m) {
                const Butterfly ab(a.re[m], a.im[m], b.re[m], b.im[m], w.re[m], w.im[m]);
                a.re[m] = ab.sumRe;
                a.im[m] = ab.sumIm;
                b.re[m] = ab.differenceRe;
                b.im[m] = ab.differenceIm;
            }
        }
    }
}

// The stages of length 2h and 4h on `count` values from `begin` on, in one pass over the
// memory.
ZRT_TARGET_CLONES
void twoStages(const Work &work, int begin, int count, int h)
{
    const int run = work.runLength(h);
    for (int block = begin; block < begin + count; block += 4 * h) {
        for (int from = 0; from < h; from += run) {
            const Complex a = work.at(block + from);
            const Complex b = work.at(block + h + from);
            const Complex c = work.at(block + 2 * h + from);
            const Complex d = work.at(block + 3 * h + from);
            const Complex u = work.twiddles + (h + from);
            const Complex v = work.twiddles + (2 * h + from);
            const Complex w = work.twiddles + (3 * h + from);
            INDEPENDENT_STEPS
            for (int m = 0; m < run; ++m) {
                const Butterfly ab(a.re[m], a.im[m], b.re[m], b.im[m], u.re[m], u.im[m]);
                const Butterfly cd(c.re[m], c.im[m], d.re[m], d.im[m], u.re[m], u.im[m]);
                const Butterfly ac(ab.sumRe, ab.sumIm, cd.sumRe, cd.sumIm, v.re[m], v.im[m]);
                const Butterfly bd(ab.differenceRe, ab.differenceIm, cd.differenceRe,
                                   cd.differenceIm, w.re[m], w.im[m]);
                a.re[m] = ac.sumRe;
                a.im[m] = ac.sumIm;
                b.re[m] = bd.sumRe;
                b.im[m] = bd.sumIm;
                c.re[m] = ac.differenceRe;
                c.im[m] = ac.differenceIm;
                d.re[m] = bd.differenceRe;
                d.im[m] = bd.differenceIm;
            }
        }
    }
}

[[gnu::always_inline]] inline double amplitude(double re, double im, double count)
{
    return 2 * std::sqrt(re * re + im * im) / count;
}

// The last two stages, of which the amplitudes need the lower half only.
ZRT_TARGET_CLONES
void lastStages(const Work &work, double *amplitudes, int count)
{
    const int h = count / 4;
    const int run = work.runLength(h);
    for (int from = 0; from < h; from += run) {
        const Complex a = work.at(from);
        const Complex b = work.at(h + from);
        const Complex c = work.at(2 * h + from);
        const Complex d = work.at(3 * h + from);
        const Complex u = work.twiddles + (h + from);
        const Complex v = work.twiddles + (2 * h + from);
        const Complex w = work.twiddles + (3 * h + from);
        double *const lower = amplitudes + from;
        double *const upper = amplitudes + h + from;
        INDEPENDENT_STEPS
        for (int m = 0; m < run; ++m) {
            const Butterfly ab(a.re[m], a.im[m], b.re[m], b.im[m], u.re[m], u.im[m]);
            const Butterfly cd(c.re[m], c.im[m], d.re[m], d.im[m], u.re[m], u.im[m]);
            const Butterfly ac(ab.sumRe, ab.sumIm, cd.sumRe, cd.sumIm, v.re[m], v.im[m]);
            const Butterfly bd(ab.differenceRe, ab.differenceIm, cd.differenceRe, cd.differenceIm,
                               w.re[m], w.im[m]);
            lower[m] = amplitude(ac.sumRe, ac.sumIm, count);
            upper[m] = amplitude(bd.sumRe, bd.sumIm, count);
        }
    }
}

// `index` with its lowest `bits` bits in reverse order.
int reversed(int index, int bits)
{
    int result = 0;
    for (int bit = 0; bit < bits; ++bit)
        result |= ((index >> bit) & 1) << (bits - 1 - bit);
    return result;
}

// A butterfly on two rows of a tile.
[[gnu::always_inline]] inline void rowButterfly(double *__restrict aRe, double *__restrict aIm,
                                                double *__restrict bRe, double *__restrict bIm,
                                                double wRe, double wIm)
{
    for (int column = 0; column < tile; ++column) {
        const Butterfly ab(aRe[column], aIm[column], bRe[column], bIm[column], wRe, wIm);
        aRe[column] = ab.sumRe;
        aIm[column] = ab.sumIm;
        bRe[column] = ab.differenceRe;
        bIm[column] = ab.differenceIm;
    }
}

// Reads the samples into the imaginary parts in bit-reversed order and does the stages up to
// the length of a tile. The 32 x 32 samples whose indices share their middle bits end up in 32
// runs of 32 values, so samples and values are touched in whole cache lines, and the stages
// run on 32 columns at a time.
ZRT_TARGET_CLONES
void reorderWithFirstStages(const Work &work, const double *samples, int count)
{
    static constexpr int reversedTile[tile] = {0,  16, 8,  24, 4,  20, 12, 28, 2,  18, 10,
                                               26, 6,  22, 14, 30, 1,  17, 9,  25, 5,  21,
                                               13, 29, 3,  19, 11, 27, 7,  23, 15, 31};
    const int rowLength = count / tile;
    const int middles = rowLength / tile;
    const int middleBits = std::countr_zero(unsigned(middles));
    alignas(64) double re[tile][tile];
    alignas(64) double im[tile][tile];
    for (int middle = 0; middle < middles; ++middle) {
        const int target = reversed(middle, middleBits) * tile;
        const int nextTarget = reversed((middle + 1) % middles, middleBits) * tile;
        for (int row = 0; row < tile; ++row) {
            const double *const from = samples + row * rowLength + middle * tile;
            const Complex next = work.at(row * rowLength + nextTarget);
            for (int column = 0; column < tile; column += lineDoubles) {
                __builtin_prefetch(from + tile + column);
                __builtin_prefetch(next.re + column, 1);
                __builtin_prefetch(next.im + column, 1);
            }
            for (int column = 0; column < tile; ++column) {
                re[reversedTile[row]][column] = 0;
                im[reversedTile[row]][column] = from[column];
            }
        }
        for (int h = 1; h < tile; h *= 2)
            for (int block = 0; block < tile; block += 2 * h)
                for (int m = 0; m < h; ++m)
                    rowButterfly(re[block + m], im[block + m], re[block + m + h], im[block + m + h],
                                 work.twiddles.re[h + m], work.twiddles.im[h + m]);
        for (int column = 0; column < tile; ++column) {
            const Complex run = work.at(reversedTile[column] * rowLength + target);
            for (int row = 0; row < tile; ++row) {
                run.re[row] = re[row][column];
                run.im[row] = im[row][column];
            }
        }
    }
}

// First of the next values from `data` on that begins a cache line.
double *lineStart(double *data)
{
    constexpr std::size_t lineBytes = lineDoubles * sizeof(double);
    void *start = data;
    std::size_t space = 2 * lineBytes;
    return static_cast<double *>(std::align(lineBytes, lineBytes, start, space));
}

// The stages of length 2h and above on the block of `count` values from `begin` on. A block
// beyond the cache is finished quarter by quarter.
void remainingStages(const Work &work, int begin, int count, int h)
{
    if (count > cachedCount) {
        const int quarter = count / 4;
        for (int q = 0; q < 4; ++q)
            remainingStages(work, begin + q * quarter, quarter, h);
        twoStages(work, begin, count, quarter);
        return;
    }
    if (std::countr_zero(unsigned(count / h)) % 2 == 1) {
        oneStage(work, begin, count, h);
        h *= 2;
    }
    for (; h < count; h *= 4)
        twoStages(work, begin, count, h);
}

// Values and twiddle factors, real and imaginary parts, in one block: the heap keeps one for the
// next spectrum where it would return several to the system.
struct Workspace {
    explicit Workspace(int count) : isTiled(count >= minTiledCount)
    {
        const int bits = std::countr_zero(unsigned(count));
        const std::size_t part = std::size_t(std::max(count, lineDoubles)) + tile * Work::rowGap;
        block = std::make_unique_for_overwrite<double[]>(4 * part + lineDoubles);
        double *const parts = lineStart(block.get());
        work = {{parts, parts + part},
                {parts + 2 * part, parts + 3 * part},
                isTiled ? bits - std::countr_zero(unsigned(tile)) : bits};
        fillTwiddles(work.twiddles, count);
    }

    bool isTiled;
    Work work;

private:
    std::unique_ptr<double[]> block;
};

// The whole transform of few samples.
void transformUntiled(const Work &work, const double *samples, int count)
{
    const int bits = std::countr_zero(unsigned(count));
    for (int i = 0; i < count; ++i) {
        work.values.re[i] = 0;
        work.values.im[i] = samples[reversed(i, bits)];
    }
    remainingStages(work, 0, count, 1);
}

} // namespace

int powerOfTwoFloor(int n)
{
    if (n > maxPower)
        return maxPower / 2;
    return int(std::bit_floor(unsigned(std::max(n, 2))));
}

void amplitudeSpectrum(const double *dataIn, double *dataOut, int countIn, int countOut)
{
    const Workspace space(countIn);
    const Work &work = space.work;
    if (space.isTiled) {
        reorderWithFirstStages(work, dataIn, countIn);
        const int quarter = countIn / 4;
        for (int q = 0; q < 4; ++q)
            remainingStages(work, q * quarter, quarter, tile);
        lastStages(work, dataOut, countIn);
        return;
    }
    transformUntiled(work, dataIn, countIn);
    for (int k = 0; k < countOut; ++k)
        dataOut[k] = amplitude(work.values.re[k], work.values.im[k], countIn);
}

void complexSpectrum(const double *dataIn, std::complex<double> *dataOut, int countIn, int countOut)
{
    const Workspace space(countIn);
    const Work &work = space.work;
    if (space.isTiled) {
        reorderWithFirstStages(work, dataIn, countIn);
        remainingStages(work, 0, countIn, tile);
    } else {
        transformUntiled(work, dataIn, countIn);
    }
    const double scale = 2.0 / countIn;
    for (int k = 0; k < countOut; ++k) {
        // With the samples in the imaginary parts every value is i times that of the series.
        const Complex value = work.at(k);
        dataOut[k] = {scale * *value.im, -scale * *value.re};
    }
}

bool averagePairs(const double *dataIn, double *dataOut, int count, int n, bool zeroPad)
{
    if (!dataIn || !dataOut || count < 1 || n < 0) {
        debugLine("ERROR! Tools::averagePairs: count=", count, " n=", n);
        return false;
    }
    int length = count;
    if (n == 0) {
        std::copy_n(dataIn, count, dataOut);
    } else {
        const double *from = dataIn;
        int level = 1;
        do {
            length /= 2;
            for (int j = 0; j < length; ++j)
                dataOut[j] = (from[2 * j] + from[2 * j + 1]) * 0.5;
            from = dataOut;
            ++level;
        } while (level <= n && length >= minHalvedPoints);
    }
    if (zeroPad)
        std::fill_n(dataOut + length, length, 0.0);
    return true;
}

int averagedLength(int npoints, int n, bool zeroPad)
{
    constexpr int bits = std::numeric_limits<int>::digits;
    if (npoints < minAveragedPoints)
        return -1;
    const int length = n < bits ? npoints >> std::max(n, 0) : 0;
    if (!zeroPad)
        return length;
    return length <= std::numeric_limits<int>::max() / 2 ? 2 * length : -1;
}

double averagedStepFactor(int n, bool zeroPad)
{
    const double factor = std::ldexp(1.0, n);
    return zeroPad ? factor / 2 : factor;
}

} // namespace Tools
