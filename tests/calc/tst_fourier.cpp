#include "calc/fourier.h"
#include "calc/samples.h"
#include "straightcalc.h"

#include <complex>
#include <numeric>
#ifdef ZRT_TEST_FFTW
#include <fftw3.h>
#endif

using namespace TestSupport;

namespace {

constexpr double pi = 3.14159265358979323846;

Series spectrum(const Series &in)
{
    const int count = int(in.size());
    return guarded(count / 2, [&](double *out) {
        Tools::amplitudeSpectrum(in.data(), out, count, count / 2);
        return true;
    });
}

} // namespace

class TestFourier : public QObject {
    Q_OBJECT

private slots:
    void equalsStraightLoops();
    void agreesWithOracle();
    void phases();
    void powerOfTwoFloor();
    void averages();
    void refusals_data();
    void refusals() { checkRefusal(); }
};

void TestFourier::equalsStraightLoops()
{
    for (int bits = 1; bits <= 17; ++bits) {
        const Series in = noise(1 << bits);
        Series expected(in.size() / 2);
        straightSpectrum(in.data(), expected.data(), 1 << bits, 1 << bits >> 1);
        QVERIFY2(spectrum(in) == expected, qPrintable(QString::number(bits)));
    }
}

void TestFourier::agreesWithOracle()
{
#ifdef ZRT_TEST_FFTW
    for (const int bits : {7, 14, 18}) {
        Series in = noise(1 << bits);
        const Series amplitudes = spectrum(in);
        std::vector<std::complex<double>> oracle(in.size() / 2 + 1);
        const fftw_plan plan =
            fftw_plan_dft_r2c_1d(int(in.size()), in.data(),
                                 reinterpret_cast<fftw_complex *>(oracle.data()), FFTW_ESTIMATE);
        fftw_execute(plan);
        fftw_destroy_plan(plan);
        // The recurrence loses some digits along a stage: up to 2^17 steps of 1e-16 at random.
        const double tolerance = 3e-16 * double(in.size());
        for (std::size_t k = 0; k < amplitudes.size(); ++k) {
            const double expected = 2 * std::abs(oracle[k]) / double(in.size());
            QVERIFY2(std::abs(amplitudes[k] - expected) < tolerance,
                     qPrintable(QString("%1 %2").arg(bits).arg(k)));
        }
    }
#else
    QSKIP("FFTW is not installed");
#endif
}

void TestFourier::phases()
{
    for (const int count : {128, 2048, 4096, 32768}) {
        const Series in = noise(count);
        std::vector<std::complex<double>> lines(in.size() / 2);
        Tools::complexSpectrum(in.data(), lines.data(), count, count / 2);
        const Series amplitudes = spectrum(in);
        for (std::size_t k = 0; k < lines.size(); ++k)
            QVERIFY(std::abs(std::abs(lines[k]) - amplitudes[k]) < 1e-14);
        for (const int k : {1, count / 3, count / 2 - 1}) {
            std::complex<double> sum = 0;
            for (qint64 i = 0; i < count; ++i)
                sum +=
                    in[std::size_t(i)] * std::polar(1.0, -2 * pi * double(i * k % count) / count);
            // The recurrence of the twiddle factors loses some digits.
            QVERIFY(std::abs(lines[std::size_t(k)] - sum * (2.0 / count)) < 1e-12);
        }
    }
}

void TestFourier::powerOfTwoFloor()
{
    constexpr int largest = 1 << 20;
    for (const auto &[n, floor] :
         {std::pair(2, 2), {3, 2}, {1023, 512}, {1024, 1024}, {1025, 1024}, {largest, largest}})
        QCOMPARE(Tools::powerOfTwoFloor(n), floor);
    for (const int n : {largest - 1, largest + 1, 2147483647}) // beyond the largest: half of it
        QCOMPARE(Tools::powerOfTwoFloor(n), largest / 2);
}

// The mean over w points of a straight line stands (w - 1) / 2 after the first of them.
void TestFourier::averages()
{
    const struct {
        int count, n;
        bool zeroPad;
        int means;
    } rows[] = {
        {64, 0, true, 64},     // padded copy
        {256, 3, true, 32},    // three halvings
        {1001, 2, false, 250}, // odd value dropped
        {6, 1, false, 3},      // the first halving may go below 16
        {64, 9, true, 8},      // 16 values are halved, 8 are not
    };
    for (const auto &[count, n, zeroPad, means] : rows) {
        const int length = zeroPad ? 2 * count : count;
        Series in(static_cast<std::size_t>(length), guard);
        std::iota(in.begin(), in.begin() + count, 0.0);
        const double width = count / means;
        Series expected;
        for (int j = 0; j < means; ++j)
            expected.push_back(j * width + (width - 1) / 2);
        expected.resize(std::size_t(zeroPad ? 2 * means : means), 0.0);
        Series out = guarded(length, [&, of = count, times = n, pad = zeroPad](double *to) {
            return Tools::averagePairs(in.data(), to, of, times, pad);
        });
        out.resize(expected.size());
        QCOMPARE(out, expected);
        QVERIFY(Tools::averagePairs(in.data(), in.data(), count, n, zeroPad));
        in.resize(expected.size());
        QCOMPARE(in, expected);
    }
}

void TestFourier::refusals_data()
{
    QTest::addColumn<Operation>("operation");
    double *const out = untouched.data();
    refusalRow("ERROR! Tools::averagePairs: count=0 n=1", Tools::averagePairs, out, out, 0, 1,
               true);
    refusalRow("ERROR! Tools::averagePairs: count=4 n=-1", Tools::averagePairs, out, out, 4, -1,
               false);
    refusalRow("ERROR! Tools::averagePairs: count=4 n=1", Tools::averagePairs, out, nullptr, 4, 1,
               false);
}

ZRT_UNIT_TEST_MAIN(TestFourier)
#include "tst_fourier.moc"
