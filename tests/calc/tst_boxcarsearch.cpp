#include "calc/banddelays.h"
#include "calc/boxcarsearch.h"
#include "calc/dispersiongrid.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <random>

// Everything is compared with sums in double, one band after the other, and with boxcars that are
// added point by point.

namespace {

ObservationData headerOf(const std::vector<double> &fbands)
{
    ObservationData header;
    header.tresolution = 0.0124928;
    header.fbands = fbands;
    return header;
}

std::vector<double> bandsFrom(double first, double spacing, int count)
{
    std::vector<double> bands;
    for (int i = 0; i < count; ++i)
        bands.push_back(first + i * spacing);
    return bands;
}

void fillWithNoise(Tools::BandRows &rows, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<float> normal;
    for (int band = 0; band < rows.bands(); ++band)
        std::generate_n(rows.row(band), rows.count(), [&] { return normal(random); });
}

// What lies outside the recording is 0.
std::vector<double> straightSums(const ObservationData &header, const Tools::BandRows &rows,
                                 double dispersion)
{
    const Tools::BandDelays delays(header, rows.bands(), dispersion,
                                   Tools::ShiftRounding::WholeRecording);
    std::vector<double> sums(std::size_t(rows.count()), 0.0);
    for (int i = 0; i < rows.count(); ++i) {
        for (int band = 0; band < rows.bands(); ++band) {
            const int from = i + delays.shift(band);
            if (from >= 0 && from < rows.count())
                sums[std::size_t(i)] += double(rows.row(band)[from]);
        }
    }
    return sums;
}

} // namespace

Q_DECLARE_METATYPE(std::vector<double>)

class TestBoxcarSearch : public QObject {
    Q_OBJECT

private slots:
    void sums_data();
    void sums();
    void boxcars_data() { sums_data(); }
    void boxcars();
    void noiseOfEachWidth();
    void lossBetweenTrials();
    void gridsWithoutDispersion();
};

void TestBoxcarSearch::sums_data()
{
    QTest::addColumn<std::vector<double>>("fbands");
    QTest::addColumn<double>("step"); // pc/cm^3
    QTest::addColumn<int>("trials");
    QTest::newRow("32 bands") << bandsFrom(120, 0.078125, 32) << 1.4 << 60;
    QTest::newRow("descending") << bandsFrom(122.5, -0.078125, 32) << 1.4 << 40;
    QTest::newRow("not in order") << std::vector<double>{121, 120, 122, 119, 121.5} << 2.0 << 30;
    QTest::newRow("one band") << std::vector<double>{120} << 1.0 << 1;
    QTest::newRow("two bands") << std::vector<double>{120, 121} << 3.0 << 20;
    QTest::newRow("equal frequencies") << std::vector<double>(9, 120) << 50.0 << 3;
    QTest::newRow("37 bands over far steps") << bandsFrom(110, 0.5, 37) << 7.0 << 9;
    QTest::newRow("delays beyond the recording") << bandsFrom(110, 2, 4) << 60.0 << 5;
}

void TestBoxcarSearch::sums()
{
    QFETCH(std::vector<double>, fbands);
    QFETCH(double, step);
    QFETCH(int, trials);
    const ObservationData header = headerOf(fbands);
    const int bands = int(fbands.size());
    const std::vector<double> grid =
        Tools::dispersionGrid(3, 3 + step * (trials - 1) - step / 2, step);
    QCOMPARE(int(grid.size()), trials);
    Tools::DispersionTree tree(header, bands, grid);
    Tools::BandRows rows = Tools::rowsFor(tree, bands, 2500, {1});
    fillWithNoise(rows, 1);
    std::vector<std::vector<double>> straight;
    for (const double dispersion : grid)
        straight.push_back(straightSums(header, rows, dispersion));
    double worst = 0;
    for (int first = 0; first < rows.count(); first += 700) {
        const int count = std::min(700, rows.count() - first);
        int expected = 0;
        tree.sumBlock(rows, first, count, [&](int trial, const float *sums) {
            QCOMPARE(trial, expected++);
            for (int i = 0; i < count; ++i)
                worst =
                    std::max(worst, std::abs(double(sums[i]) -
                                             straight[std::size_t(trial)][std::size_t(first + i)]));
        });
        QCOMPARE(expected, trials);
    }
    QVERIFY2(worst < 1e-5, qPrintable(QString::number(worst))); // some roundings of a float near 10
}

void TestBoxcarSearch::boxcars()
{
    QFETCH(std::vector<double>, fbands);
    QFETCH(double, step);
    QFETCH(int, trials);
    const ObservationData header = headerOf(fbands);
    const int bands = int(fbands.size());
    const std::vector<double> grid =
        Tools::dispersionGrid(3, 3 + step * (trials - 1) - step / 2, step);
    const std::vector<int> widths = {1, 3, 8, 40};
    Tools::DispersionTree tree(header, bands, grid);
    Tools::BandRows rows = Tools::rowsFor(tree, bands, 3000, widths);
    fillWithNoise(rows, 2);
    std::vector<float> scales;
    for (std::size_t i = 0; i < grid.size() * widths.size(); ++i)
        scales.push_back(float(1 / std::sqrt(double(bands) * widths[i % widths.size()])));
    const std::vector<Tools::BoxcarEvent> peaks =
        Tools::findBoxcars(rows, tree, widths, scales, 2.5F);
    for (int trial = 0; trial < trials; ++trial) {
        const std::vector<double> sums = straightSums(header, rows, grid[std::size_t(trial)]);
        Tools::BoxcarEvent best;
        for (const int width : widths) {
            for (int i = 0; i < rows.count(); ++i) {
                double sum = 0;
                for (int k = i; k < std::min(i + width, rows.count()); ++k)
                    sum += sums[std::size_t(k)];
                const float snr = float(sum / std::sqrt(double(bands) * width));
                if (snr > best.snr)
                    best = {trial, i, width, snr};
            }
        }
        const auto highest = std::max_element(
            peaks.begin(), peaks.end(), [trial](const auto &one, const auto &other) {
                return (one.trial == trial ? one.snr : 0) < (other.trial == trial ? other.snr : 0);
            });
        QVERIFY(highest != peaks.end());
        QVERIFY(std::abs(highest->snr - best.snr) < 1e-4F);
        QCOMPARE(std::tie(highest->trial, highest->first, highest->width),
                 std::tie(best.trial, best.first, best.width));
    }
}

// Noise that neighbouring points have in common widens wide boxcars by more than the root of their
// width; pulses do not.
void TestBoxcarSearch::noiseOfEachWidth()
{
    const std::vector<int> widths = {1, 10, 100};
    std::mt19937 random(3);
    std::normal_distribution<float> normal;
    std::vector<float> white(60000);
    std::generate(white.begin(), white.end(), [&] { return normal(random); });
    std::vector<float> red = white;
    for (std::size_t i = 1; i < red.size(); ++i)
        red[i] += 0.8F * red[i - 1];
    for (std::size_t i = 500; i < white.size(); i += 5000)
        white[i] += 200;
    const std::vector<float> ofWhite = Tools::boxcarScales(white.data(), 60000, widths);
    const std::vector<float> ofRed = Tools::boxcarScales(red.data(), 60000, widths);
    for (std::size_t w = 0; w < widths.size(); ++w) {
        const double root = std::sqrt(double(widths[w]));
        QVERIFY(std::abs(1 / double(ofWhite[w]) / root - 1) < 0.06);
    }
    // Of an autoregression of 0.8: 1 / 0.6 at one point, 1 / (1 - 0.8) a root point far beyond it.
    QVERIFY(std::abs(1 / double(ofRed[0]) - 1 / 0.6) < 0.04);
    QVERIFY(std::abs(1 / double(ofRed[2]) / 10 - 5) < 0.5);
    QCOMPARE(Tools::boxcarScales(std::vector<float>(50, 0.0F).data(), 50, widths),
             std::vector<float>({0, 0, 0}));
}

void TestBoxcarSearch::lossBetweenTrials()
{
    const ObservationData header = headerOf(bandsFrom(120, 0.078125, 32));
    for (const double width : {1.0, 4.0}) {
        const double step = Tools::dispersionStep(header, 32, width);
        // 1.2 widths of delay, by hand: 4148.8 s (120^-2 - 122.421875^-2) = 11.2867 ms at 1 pc/cm^3
        QVERIFY(std::abs(step * 0.0112867 / header.tresolution - 1.2 * width) < 0.001 * width);
        const double zeta = 0.5 * std::sqrt(std::log(2.0)) * 1.2;
        QVERIFY(std::sqrt(M_PI) / 2 * std::erf(zeta) / zeta > 0.92);
    }
    QCOMPARE(Tools::dispersionGrid(0, 3, 1.2), std::vector<double>({0, 1.2, 2.4, 3 * 1.2}));
}

void TestBoxcarSearch::gridsWithoutDispersion()
{
    for (const std::vector<double> &fbands : {std::vector<double>{120}, {120, 120}}) {
        const double step = Tools::dispersionStep(headerOf(fbands), int(fbands.size()), 1);
        QVERIFY(std::isinf(step));
        QCOMPARE(Tools::dispersionGrid(26, 300, step), std::vector<double>{26});
    }
}

ZRT_UNIT_TEST_MAIN(TestBoxcarSearch)
#include "tst_boxcarsearch.moc"
