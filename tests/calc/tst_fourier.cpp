#include "calc/fourier.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <random>
#ifdef ZRT_TEST_FFTW
#include <fftw3.h>
#endif

namespace {

using Series = std::vector<double>;

constexpr double guard = -12345.5;
constexpr double pi = 3.14159265358979323846;

Series noise(int count)
{
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    Series series(static_cast<std::size_t>(count));
    for (double &value : series)
        value = normal(random);
    return series;
}

// The spectrum between guard values; empty when one of them was overwritten.
Series spectrum(const Series &in)
{
    const int half = int(in.size() / 2);
    Series out(std::size_t(half) + 2, guard);
    Tools::amplitudeSpectrum(in.data(), out.data() + 1, int(in.size()), half);
    if (out.front() != guard || out.back() != guard)
        return {};
    return Series(out.begin() + 1, out.end() - 1);
}

// Loops over stages, twiddle factors and butterflies.
Series straightSpectrum(const Series &in)
{
    const int count = int(in.size());
    Series re(in.size(), 0.0);
    Series im = in;
    for (int i = 0; i < count; ++i) {
        int j = 0;
        for (int bit = 1; bit < count; bit *= 2)
            j = 2 * j + ((i / bit) & 1);
        im[std::size_t(j)] = in[std::size_t(i)];
    }
    for (int length = 2; length <= count; length *= 2) {
        const double theta = -6.283185307179586 / length;
        const double halfSine = std::sin(theta / 2);
        const double wpr = -2.0 * halfSine * halfSine;
        const double wpi = std::sin(theta);
        double wr = 1;
        double wi = 0;
        for (int m = 0; m < length / 2; ++m) {
            for (std::size_t i = std::size_t(m); i < in.size(); i += std::size_t(length)) {
                const std::size_t j = i + std::size_t(length) / 2;
                const double tr = wr * re[j] - wi * im[j];
                const double ti = wr * im[j] + wi * re[j];
                re[j] = re[i] - tr;
                im[j] = im[i] - ti;
                re[i] += tr;
                im[i] += ti;
            }
            const double old = wr;
            wr = old * wpr - wi * wpi + old;
            wi = wi * wpr + old * wpi + wi;
        }
    }
    Series out;
    for (std::size_t k = 0; k < in.size() / 2; ++k)
        out.push_back(2 * std::sqrt(re[k] * re[k] + im[k] * im[k]) / count);
    return out;
}

} // namespace

class TestFourier : public QObject {
    Q_OBJECT

private slots:
    void equalsStraightLoops();
    void agreesWithOracle();
    void sineHasOneLine_data();
    void sineHasOneLine();
    void powerOfTwoFloor_data();
    void powerOfTwoFloor();
    void averages_data();
    void averages();
    void refusesToAverage();
    void lengthAndStep_data();
    void lengthAndStep();
    void frequencyAxisOfPaddedSpectrum();
};

void TestFourier::equalsStraightLoops()
{
    for (int bits = 1; bits <= 17; ++bits) {
        const Series in = noise(1 << bits);
        QVERIFY2(spectrum(in) == straightSpectrum(in), qPrintable(QString::number(bits)));
    }
}

void TestFourier::agreesWithOracle()
{
#ifdef ZRT_TEST_FFTW
    for (const int bits : {7, 14, 18}) {
        Series in = noise(1 << bits);
        const Series amplitudes = spectrum(in);
        Series complex(in.size() + 2);
        const fftw_plan plan =
            fftw_plan_dft_r2c_1d(int(in.size()), in.data(),
                                 reinterpret_cast<fftw_complex *>(complex.data()), FFTW_ESTIMATE);
        fftw_execute(plan);
        fftw_destroy_plan(plan);
        // The recurrence loses some digits along a stage: up to 2^17 steps of 1e-16 at random.
        const double tolerance = 1e-16 * double(in.size());
        for (std::size_t k = 0; k < amplitudes.size(); ++k) {
            const double expected =
                2 * std::hypot(complex[2 * k], complex[2 * k + 1]) / double(in.size());
            QVERIFY2(std::abs(amplitudes[k] - expected) < tolerance,
                     qPrintable(QString("%1 %2").arg(bits).arg(k)));
        }
    }
#else
    QSKIP("FFTW is not installed");
#endif
}

void TestFourier::sineHasOneLine_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("line");
    QTest::newRow("first") << 128 << 1;
    QTest::newRow("last") << 128 << 63;
    QTest::newRow("middle of the shortest tiled series") << 4096 << 1000;
    QTest::newRow("long series") << 65536 << 12345;
}

void TestFourier::sineHasOneLine()
{
    QFETCH(int, count);
    QFETCH(int, line);
    Series in(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        in[std::size_t(i)] = 2.5 * std::sin(2 * pi * ((qint64(i) * line) % count) / count + 0.3);
    const Series out = spectrum(in);
    for (int k = 0; k < count / 2; ++k) {
        const double expected = k == line ? 2.5 : 0;
        QVERIFY2(std::abs(out[std::size_t(k)] - expected) < 1e-11, qPrintable(QString::number(k)));
    }
}

void TestFourier::powerOfTwoFloor_data()
{
    QTest::addColumn<int>("n");
    QTest::addColumn<int>("floor");
    QTest::newRow("two") << 2 << 2;
    QTest::newRow("three") << 3 << 2;
    QTest::newRow("four") << 4 << 4;
    QTest::newRow("below a power") << 1023 << 512;
    QTest::newRow("power") << 1024 << 1024;
    QTest::newRow("above a power") << 1025 << 1024;
    QTest::newRow("below the largest") << (1 << 20) - 1 << (1 << 19);
    QTest::newRow("largest") << (1 << 20) << (1 << 20);
    QTest::newRow("above the largest") << (1 << 20) + 1 << (1 << 19);
    QTest::newRow("far above") << 2147483647 << (1 << 19);
}

void TestFourier::powerOfTwoFloor()
{
    QFETCH(int, n);
    QFETCH(int, floor);
    QCOMPARE(Tools::powerOfTwoFloor(n), floor);
}

void TestFourier::averages_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("n");
    QTest::addColumn<bool>("zeroPad");
    QTest::addColumn<int>("means");
    QTest::newRow("copy") << 64 << 0 << false << 64;
    QTest::newRow("padded copy") << 64 << 0 << true << 64;
    QTest::newRow("one halving") << 64 << 1 << false << 32;
    QTest::newRow("three halvings, padded") << 256 << 3 << true << 32;
    QTest::newRow("odd value dropped") << 1001 << 2 << false << 250;
    QTest::newRow("first halving below 16") << 6 << 1 << false << 3;
    QTest::newRow("16 values are halved, 8 are not") << 64 << 9 << true << 8;
}

// Of a straight line the mean over w points stands (w - 1) / 2 after the first of them.
void TestFourier::averages()
{
    QFETCH(int, count);
    QFETCH(int, n);
    QFETCH(bool, zeroPad);
    QFETCH(int, means);
    Series in;
    for (int i = 0; i < count; ++i)
        in.push_back(i);
    const int width = count / means;
    Series expected;
    for (int j = 0; j < means; ++j)
        expected.push_back(j * width + (width - 1) / 2.0);
    if (zeroPad)
        expected.resize(2 * expected.size(), 0.0);

    Series out(2 * in.size() + 2, guard);
    QVERIFY(Tools::averagePairs(in.data(), out.data() + 1, count, n, zeroPad));
    QCOMPARE(Series(out.begin() + 1, out.begin() + 1 + qint64(expected.size())), expected);
    QCOMPARE(out.front(), guard);
    QVERIFY(std::all_of(out.begin() + 1 + (zeroPad ? 2 : 1) * count, out.end(),
                        [](double value) { return value == guard; }));

    in.resize(2 * in.size());
    QVERIFY(Tools::averagePairs(in.data(), in.data(), count, n, zeroPad));
    in.resize(expected.size());
    QCOMPARE(in, expected);
}

void TestFourier::refusesToAverage()
{
    Series data(4, 1.0);
    QTest::ignoreMessage(QtDebugMsg, "ERROR! Tools::averagePairs: count=0 n=1");
    QVERIFY(!Tools::averagePairs(data.data(), data.data(), 0, 1, true));
    QTest::ignoreMessage(QtDebugMsg, "ERROR! Tools::averagePairs: count=4 n=-1");
    QVERIFY(!Tools::averagePairs(data.data(), data.data(), 4, -1, false));
    QTest::ignoreMessage(QtDebugMsg, "ERROR! Tools::averagePairs: count=4 n=1");
    QVERIFY(!Tools::averagePairs(data.data(), nullptr, 4, 1, false));
}

void TestFourier::lengthAndStep_data()
{
    QTest::addColumn<int>("npoints");
    QTest::addColumn<int>("n");
    QTest::addColumn<bool>("zeroPad");
    QTest::addColumn<int>("length");
    QTest::addColumn<double>("factor");
    QTest::newRow("as it is") << 16384 << 0 << false << 16384 << 1.0;
    QTest::newRow("padded only") << 16384 << 0 << true << 32768 << 0.5;
    QTest::newRow("averaged twice") << 1000 << 2 << false << 250 << 4.0;
    QTest::newRow("averaged twice and padded") << 1000 << 2 << true << 500 << 2.0;
    QTest::newRow("shortest") << 64 << 1 << false << 32 << 2.0;
    QTest::newRow("too short") << 63 << 1 << false << -1 << 2.0;
    QTest::newRow("averaged away") << 64 << 40 << true << 0 << 549755813888.0;
    QTest::newRow("padded beyond an int") << (1 << 30) << 0 << true << -1 << 0.5;
}

void TestFourier::lengthAndStep()
{
    QFETCH(int, npoints);
    QFETCH(int, n);
    QFETCH(bool, zeroPad);
    QFETCH(int, length);
    QFETCH(double, factor);
    QCOMPARE(Tools::averagedLength(npoints, n, zeroPad), length);
    QCOMPARE(Tools::averagedStepFactor(n, zeroPad), factor);
}

// A period of 64 points, averaged in fours and padded, stands at k = L x 2^n / 64.
void TestFourier::frequencyAxisOfPaddedSpectrum()
{
    constexpr int count = 4096;
    Series in(count);
    for (int i = 0; i < count; ++i)
        in[std::size_t(i)] = std::sin(2 * pi * i / 64);
    const int length = Tools::averagedLength(count, 2, true);
    Series averaged(2 * count);
    QVERIFY(Tools::averagePairs(in.data(), averaged.data(), count, 2, true));
    averaged.resize(std::size_t(length));
    const Series out = spectrum(averaged);
    const auto peak = std::max_element(out.begin(), out.end()) - out.begin();
    QCOMPARE(int(peak), length * 4 / 64);
}

ZRT_UNIT_TEST_MAIN(TestFourier)
#include "tst_fourier.moc"
