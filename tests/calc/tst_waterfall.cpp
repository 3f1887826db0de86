#include "calc/channelsum.h"
#include "calc/reduction.h"
#include "calc/robuststatistics.h"
#include "calc/seriesstatistics.h"
#include "calc/waterfall.h"
#include "picture/colourmap.h"
#include "samples.h"

#include <numeric>

using TestSupport::Series;

namespace {

// Noise around a level that differs from channel to channel; the same at every call.
ObservationData noisyRecording(int npoints)
{
    const auto rough = [](int p, int m, int c, int r) {
        const quint32 mixed = quint32(p * 33 + c) * 2654435761u;
        return 1000.f * float(c) + float(mixed >> 20) / 1024 + float(m + r);
    };
    return TestSupport::makeRecording({npoints, 2, 9, 2}, rough);
}

} // namespace

class TestWaterfall : public QObject {
    Q_OBJECT

private slots:
    void columnsAddUpToTheDelayedSum();
    void refused();
    void rowsAreComparable();
    void reductionIsThatOfItsPoints();
    void samplesThatAreNoNumbers();
    void zeroDmFilter();
    void signalOfAPart();
    void coloursAreEquallyFarApart();
};

// Over the bands and the points of a column the means make up the sum that Tools::sumChannels
// gives for these points.
void TestWaterfall::columnsAddUpToTheDelayedSum()
{
    const struct {
        double dispersion; // the lowest band lags by 14.44 points per 10 pc/cm^3
        int first, count, columns;
    } rows[] = {{0, 0, 500, 500},   // every point
                {30, 13, 401, 37},  // uneven columns
                {90, 300, 200, 7},  // round the end
                {-75, 0, 200, 33},  // delays the other way
                {4000, 0, 500, 1}}; // one column
    const ObservationData data = noisyRecording(500);
    for (const auto &[dispersion, first, count, columns] : rows) {
        const std::vector<float> picture =
            Tools::waterfall(data, {1, 1, first, count, columns, dispersion});
        QCOMPARE(int(picture.size()), 8 * columns);
        const Series sums = Tools::sumChannels(data, dispersion, 1, 1);
        for (int i = 0; i < columns; ++i) {
            const int begin = i * count / columns;
            const int end = (i + 1) * count / columns;
            double means = 0;
            for (int band = 0; band < 8; ++band)
                means += double(picture[std::size_t(band * columns + i)]);
            const auto part = sums.begin() + first;
            const double mean = std::accumulate(part + begin, part + end, 0.0) / (end - begin);
            // Eight means of some thousands, each rounded to a float.
            QVERIFY2(std::abs(means - mean) < 8 * 0.0003, qPrintable(QString::number(i)));
        }
        // And no band took another's share.
        QVERIFY(std::abs(double(picture[std::size_t(5 * columns)]) - 5004) < 6);
    }
}

void TestWaterfall::refused()
{
    ObservationData data = noisyRecording(50);
    const Tools::WaterfallPart parts[] = {
        {2, 0, 0, 50, 5, 0}, {0, -1, 0, 50, 5, 0},    {0, 0, 1, 50, 5, 0},  {0, 0, 0, 50, 51, 0},
        {0, 0, 0, 50, 0, 0}, {0, 0, 0, 50, 5, 1e300}, {0, 0, 0, 50, 5, NAN}};
    for (const Tools::WaterfallPart &part : parts)
        QVERIFY(Tools::waterfall(data, part).empty());
    data.fbands[3] = 0;
    QVERIFY(Tools::waterfall(data, {0, 0, 0, 50, 5, 10}).empty());
    QVERIFY(!Tools::waterfall(data, {0, 0, 0, 50, 5, 0}).empty());
}

void TestWaterfall::rowsAreComparable()
{
    // Median 3, deviations 2 1 0 1 97; then mostly equal with one that is not; then constant.
    std::vector<float> picture = {1, 2, 3, 4, 100, 7, 7, 7, NAN, 12, 5, 5, 5, 5, 5};
    Tools::normaliseRows(picture, 3, 5);
    QCOMPARE(picture[0], float(-2 / 1.4826));
    QCOMPARE(picture[4], float(97 / 1.4826));
    QCOMPARE(picture[5], 0.f);
    QVERIFY(std::isnan(picture[8]));
    QCOMPARE(picture[9], 2.f); // (12 - 7) / 2.5, the standard deviation of 7 7 7 12
    QCOMPARE(std::vector<float>(picture.begin() + 10, picture.end()), std::vector<float>(5, 0.f));
}

void TestWaterfall::reductionIsThatOfItsPoints()
{
    const ObservationData data = noisyRecording(1000);
    const std::vector<double> sums = Tools::sumChannels(data, 0, 0, 0);
    Tools::Reduction reduction = Tools::emptyReduction(5000, 900, 77, data.channels);
    Tools::fillGlance(reduction, 0, 77, data, sums, 3, 5); // must not shine through
    for (int column = 0; column < 77; column += 20)
        Tools::fillColumns(reduction, column, std::min(20, 77 - column), data, sums,
                           60 + reduction.columnFirst(column) - 5000);
    for (const int row : {4, 9}) {
        const int begin = reduction.columnFirst(10);
        const int end = reduction.columnFirst(50);
        QCOMPARE(reduction.columnOf(begin), 10);
        QCOMPARE(reduction.columnOf(end - 1), 49);
        std::vector<double> values;
        for (int point = begin; point < end; ++point) {
            const int i = point - 5000 + 60;
            values.push_back(row == 9 ? sums[std::size_t(i)] : double(data.samples[0][row][0][i]));
        }
        const SeriesStatistics expected = Tools::seriesStatistics(values);
        const Tools::RowMoments found = Tools::rowMoments(reduction, row, 10, 50);
        QCOMPARE(found.points, qint64(end - begin));
        QCOMPARE(float(found.min), float(expected.min));
        QCOMPARE(float(found.max), float(expected.max));
        // The means of the columns are floats, the sums reach 36000.
        QVERIFY(std::abs(found.mean - expected.mean) < 0.002);
        const double n = double(expected.count);
        QVERIFY(std::abs(found.sigma - expected.sigma * std::sqrt((n - 1) / n)) < 0.002);
    }
    const ObservationData means = Tools::recordOfMeans(reduction, data);
    QCOMPARE(means.npoints, 77);
    QCOMPARE(means.samples[0][4][0][76], reduction.mean[reduction.index(4, 76)]);
}

// They are left out of means, extremes and statistics; a column of nothing else has no value.
void TestWaterfall::samplesThatAreNoNumbers()
{
    const float column[] = {NAN, 3, INFINITY, 5, NAN, NAN, NAN, NAN};
    const ObservationData data = TestSupport::makeRecording(
        {8, 1, 3, 1}, [&](int p, int, int c, int) { return c == 0 ? column[p] : 2.f; });
    const std::vector<float> picture = Tools::waterfall(data, {0, 0, 0, 8, 2, 0});
    QCOMPARE(picture[0], 4.f);
    QVERIFY(std::isnan(picture[1]));
    QCOMPARE(picture[2], 2.f);

    Tools::Reduction reduction = Tools::emptyReduction(0, 8, 2, data.channels);
    const std::vector<double> sums = {NAN, 7, 9, 9, 9, 9, 9, 9};
    Tools::fillColumns(reduction, 0, 2, data, sums, 0);
    QCOMPARE((std::vector<float>{reduction.low[0], reduction.high[0], reduction.mean[0],
                                 reduction.variance[0]}),
             (std::vector<float>{3, 5, 4, 1}));
    QVERIFY(std::isnan(reduction.low[1]) && std::isnan(reduction.mean[1]));
    QCOMPARE(reduction.low[reduction.index(3, 0)], 7.f);
    const Tools::RowMoments moments = Tools::rowMoments(reduction, 0, 0, 2);
    QCOMPARE((QVector{moments.min, moments.max, moments.mean}), (QVector{3.0, 5.0, 4.0}));
}

// What is equal in all bands at a time goes, whatever the delays; a channel that is off takes no
// part in it.
void TestWaterfall::zeroDmFilter()
{
    const auto sample = [](int point, int, int band, int) {
        return float(1000 * band + (point % 7) * 10 + (band == 2 ? 500 * (point % 3) : 0));
    };
    ObservationData data = TestSupport::makeRecording({60, 1, 5, 1}, sample);
    Tools::WaterfallPart part = {0, 0, 10, 40, 40, 30, true, {false, false, true}};
    const std::vector<float> filtered = Tools::waterfall(data, part);
    QCOMPARE(int(filtered.size()), 160);
    for (const int band : {0, 1, 3}) { // the mean of these bands was 4000 / 3 above the part
        const float *const row = filtered.data() + band * 40;
        for (int i = 0; i < 40; ++i)
            QVERIFY(std::abs(row[i] - float(1000 * band - 4000.0 / 3)) < 0.001F);
    }
    part.isZeroDm = false;
    QVERIFY(Tools::waterfall(data, part)[1] != Tools::waterfall(data, part)[2]);
}

void TestWaterfall::signalOfAPart()
{
    // Around a pulse of 31 there are 10 and 12 by turns: median 11, standard deviation
    // sqrt(512 / 511).
    const double sigma = std::sqrt(512 / 511.0);
    Series series(3000, 10);
    for (std::size_t i = 1; i < series.size(); i += 2)
        series[i] = 12;
    std::fill_n(series.begin() + 1000, 4, 31.0);
    const struct {
        int begin, end;
        double snr;
        int surroundings;
    } rows[] = {{1000, 1004, 4 * 20 / (sigma * 2), 512},
                {1000, 1008, 80 / (sigma * std::sqrt(8)), 512}, // with as much beside
                {2000, 2100, 0, 1000},                          // a long part
                {0, 2, 0, 256},
                {0, 3000, 0, 0},
                {2999, 3001, 0, 0}}; // beyond
    for (const auto &[begin, end, snr, surroundings] : rows) {
        const Tools::PartSignal signal = Tools::partSignal(series, begin, end);
        QCOMPARE(signal.surroundings, surroundings);
        QVERIFY(std::abs(signal.snr - snr) < 1e-9);
    }
}

void TestWaterfall::coloursAreEquallyFarApart()
{
    const auto lightness = [](std::uint32_t colour) { // Oklab L of sRGB bytes
        const auto linear = [&](int shift) {
            const double encoded = (colour >> shift & 255) / 255.0;
            return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
        };
        const double r = linear(16), g = linear(8), b = linear(0);
        return 0.2104542553 * std::cbrt(0.4122214708 * r + 0.5363325363 * g + 0.0514459929 * b) +
               0.7936177850 * std::cbrt(0.2119034982 * r + 0.6806995451 * g + 0.1073969566 * b) -
               0.0040720468 * std::cbrt(0.0883024619 * r + 0.2817188376 * g + 0.6299787005 * b);
    };
    for (int i = 0; i <= 10; ++i) {
        const std::uint32_t colour = Plot::colourOfValue(float(i), 0, 10);
        // Bytes round the lightness by less than half a hundredth.
        QVERIFY(std::abs(lightness(colour) - (0.22 + 0.073 * i)) < 0.005);
        const std::uint32_t grey = Plot::colourOfValue(float(i), 0, 10, Plot::greyMap());
        QVERIFY(std::abs(lightness(grey) - (1 - 0.1 * i)) < 0.01); // a step of bytes near black
    }
    QCOMPARE(Plot::colourOfValue(-INFINITY, 0, 10), Plot::colourMap().front());
    QCOMPARE(Plot::colourOfValue(1e30f, 0, 10), Plot::colourMap().back());
    QCOMPARE(Plot::colourOfValue(5, 1, 1), Plot::colourMap().front());
    QCOMPARE(Plot::colourOfValue(NAN, 0, 10), Plot::noValueColour);
}

ZRT_UNIT_TEST_MAIN(TestWaterfall)
#include "tst_waterfall.moc"
