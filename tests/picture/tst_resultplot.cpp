#include "picture/resultplot.h"

#include "calc/pulsar/axislines.h"
#include "picture/axistexts.h"
#include "picture/legend.h"
#include "picture/plotmarks.h"
#include "picture/whitenedplot.h"
#include "support/testmain.h"

#include <QColor>
#include <QGuiApplication>
#include <cmath>
#include <numeric>
#include <random>

class TestResultPlot : public QObject {
    Q_OBJECT

private slots:
    void axisTexts();
    void curves();
    void tableOfCurves();
    void legendCorner();
    void legendOfManyCurves();
    void coloursCanBeToldApart();
    void whitenedSpectrum();
};

void TestResultPlot::axisTexts()
{
    ObservationData data;
    data.tresolution = 0.0124928;
    data.beginTime = QDateTime(QDate(2015, 4, 1), QTime(23, 59, 59), Qt::UTC);
    const PulsarAxis points = {PulsarAxis::Kind::Points, 1000, 1};
    const Plot::AxisTexts times = Plot::axisTexts(points, 3, data);
    QCOMPARE(times.row1(2), QString("1002"));
    QCOMPARE(times.row2(1), QString("00:00:11.505"));
    data.beginTime = QDateTime();
    QVERIFY(!Plot::axisTexts(points, 3, data).row2);

    const Plot::AxisTexts spectrum =
        Plot::axisTexts({PulsarAxis::Kind::Frequency, 0, 0.005}, 3, {});
    QCOMPARE(spectrum.row1(1), QString("0.0050 Hz"));
    QCOMPARE(spectrum.row2(0) + spectrum.row2(1), QString("-200 s"));
}

void TestResultPlot::curves()
{
    ObservationData recording;
    recording.tresolution = 0.01;
    const PlotData plot =
        Plot::curvePlot({PulsarAxis::Kind::Points, 1000, 2}, {{1, 2, 9}, {-4, 0, 1}}, {"a", "b"},
                        {2, 3}, recording, 1);
    QCOMPARE(plot.colours, (QVector<QString>{"#009900", "#FF0000"}));
    QCOMPARE(plot.markers, std::vector<int>{2}); // 3 is beyond the curves
    QCOMPARE((Plot::Range{plot.yMin, plot.yMax}), (Plot::Range{-4, 9}));
    QCOMPARE(plot.xOffset, 1000);
    QCOMPARE(plot.msPerPoint, 20.0);
    QCOMPARE(plot.x.first, 10.0);
    QCOMPARE(plot.x.step, 0.02);
}

// What was written of a result as a table is drawn as the result is.
void TestResultPlot::tableOfCurves()
{
    const PulsarAxis axis = {PulsarAxis::Kind::Frequency, 0, 0.005};
    const std::vector<float> curve = {3, 1, 4, 1, 5};
    Results::ResultTable table;
    Tools::addAxis(axis, table.result);
    table.result.push_back({"steps_at", "1 4"});
    table.columns.push_back(Tools::axisColumn(axis, int(curve.size())));
    table.columns.push_back({"amplitude", {}, curve});
    QVERIFY(Plot::canBeDrawn(table));

    const PlotData ofTable = Plot::plotOf(table);
    const PlotData ofResult = Plot::curvePlot(axis, {curve}, {"amplitude"}, {1, 4}, {});
    QCOMPARE(ofTable.graphs, ofResult.graphs);
    QCOMPARE(ofTable.names, ofResult.names);
    QCOMPARE(ofTable.markers, ofResult.markers);
    for (int i = 0; i < ofResult.numPoints; ++i) {
        QCOMPARE(ofTable.textX1(i), ofResult.textX1(i));
        QCOMPARE(ofTable.textX2(i), ofResult.textX2(i));
    }
}

// The curves of a plot of 600 x 400 pixels lie between 60 and 570, 30 and 330.
void TestResultPlot::legendCorner()
{
    const std::pair<std::vector<float>, QPoint> corners[] = {
        {{0, 0, 0, 0, 10}, {66, 36}},
        {std::vector<float>(5, 9.5F), {464, 304}},
        {{10, 10, 5, 0, 0}, {464, 36}},
    };
    for (const auto &[curve, corner] : corners) {
        PlotData data;
        data.graphs = {curve, std::vector<float>(5, 9.5F)};
        data.visible = {true, false}; // a hidden curve is in nobody's way
        data.numPoints = 5;
        data.yMin = 0;
        data.yMax = 10;
        const Plot::View view = Plot::viewOf(data, {600, 400});
        QCOMPARE(Plot::emptiestCorner(data, {}, view, Plot::legendArea(view), {100, 20}), corner);
    }
}

// Whatever the number of names and the size, the list takes no more than a third of the plot, and
// where there is room it hides no marker.
void TestResultPlot::legendOfManyCurves()
{
    for (const int count : {1, 4, 32, 200})
        for (const QSize &size : {QSize(300, 200), QSize(690, 400), QSize(1280, 720)}) {
            PlotData data;
            data.graphs.assign(size_t(count), {0, 10});
            data.numPoints = 2;
            for (int i = 0; i < count; ++i)
                data.names << QString("channel %1, dispersion 26.2").arg(i + 1);
            const QRect area = Plot::legendArea(Plot::viewOf(data, size));
            const QSize list = Plot::legendSize(data, area);
            QVERIFY(list.width() <= area.width() && list.height() <= area.height());
            QVERIFY(3 * list.width() * list.height() <= area.width() * area.height());
            QVERIFY(!list.isEmpty() || size.height() < 400);
        }
    PlotData data;
    data.graphs = {std::vector<float>(600, 0)};
    data.numPoints = 600;
    data.yMax = 10;
    data.markers = {50, 550}; // in all four corners
    const Plot::View view = Plot::viewOf(data, {690, 400});
    const QPoint place = Plot::emptiestCorner(data, {}, view, Plot::legendArea(view), {100, 20},
                                              Plot::columnsToSpare(data, view, {}));
    for (const int column : {110, 610})
        QVERIFY(column < place.x() || column >= place.x() + 100);
}

// Also by those who are blind to red, green or blue: linear light as they see it (Machado, Oliveira
// and Fernandes 2009, severity 1), differences in Oklab.
void TestResultPlot::coloursCanBeToldApart()
{
    using Matrix = std::array<std::array<double, 3>, 3>;
    const Matrix sights[] = {{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
                             {{{0.152286, 1.052583, -0.204868},
                               {0.114503, 0.786281, 0.099216},
                               {-0.003882, -0.048116, 1.051998}}},
                             {{{0.367322, 0.860646, -0.227968},
                               {0.280085, 0.672501, 0.047413},
                               {-0.011820, 0.042940, 0.968881}}},
                             {{{1.255528, -0.076749, -0.178779},
                               {-0.078411, 0.930809, 0.147602},
                               {0.004733, 0.691367, 0.303900}}}};
    const auto linear = [](double encoded) {
        return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
    };
    const auto seen = [&](const QString &code, const Matrix &sight) {
        const QColor colour(code);
        const std::array<double, 3> light = {linear(colour.redF()), linear(colour.greenF()),
                                             linear(colour.blueF())};
        std::array<double, 3> rgb = {};
        for (size_t i = 0; i < 3; ++i) {
            for (size_t j = 0; j < 3; ++j)
                rgb[i] += sight[i][j] * light[j];
            rgb[i] = std::clamp(rgb[i], 0.0, 1.0);
        }
        const double l =
            std::cbrt(0.4122214708 * rgb[0] + 0.5363325363 * rgb[1] + 0.0514459929 * rgb[2]);
        const double m =
            std::cbrt(0.2119034982 * rgb[0] + 0.6806995451 * rgb[1] + 0.1073969566 * rgb[2]);
        const double s =
            std::cbrt(0.0883024619 * rgb[0] + 0.2817188376 * rgb[1] + 0.6299787005 * rgb[2]);
        return std::array<double, 3>{0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
                                     1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
                                     0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
    };
    const QVector<PlotColour> &colours = plotColours();
    for (int a = 0; a < colours.size(); ++a)
        for (int b = 0; b < a; ++b)
            for (const Matrix &sight : sights) {
                const auto one = seen(colours[a].code, sight);
                const auto other = seen(colours[b].code, sight);
                const double distance =
                    std::hypot(one[0] - other[0], one[1] - other[1], one[2] - other[2]);
                const bool areGreenAndRed = a == 2 && b == 1;
                QVERIFY2(distance > (areGreenAndRed ? 0.055 : 0.08),
                         qPrintable(colours[a].name + " " + colours[b].name));
            }
    QCOMPARE(colours[0].code + colours[1].code + colours[2].code, QString("#0000FF#009900#FF0000"));
}

// Noise that is ten times as strong in one half as in the other has the same level in both.
void TestResultPlot::whitenedSpectrum()
{
    std::mt19937 random(1);
    std::exponential_distribution<double> power;
    PlotData spectrum;
    spectrum.graphs = {{}, std::vector<float>(4000, 3)};
    for (int i = 0; i < 4000; ++i)
        spectrum.graphs[0].push_back(float((i < 2000 ? 1 : 10) * std::sqrt(power(random))));
    spectrum.graphs[0][3000] = 100;
    spectrum.numPoints = 4000;
    spectrum.names = {"amplitudes", "3 sigma"};
    const PlotData plot = Plot::whitened(spectrum);
    const std::vector<float> &whole = plot.graphs[0];
    for (const int begin : {500, 3050}) { // off the step and the line
        const double sum = std::accumulate(whole.begin() + begin, whole.begin() + begin + 900, 0.0);
        QVERIFY(std::abs(sum / 900 - 1) < 0.12); // scatter of a mean of 900: 0.033
    }
    QVERIFY(plot.yMax > 50 && plot.yMax == double(whole[3000]));
    QVERIFY(Plot::isVisible(plot, 0) && !Plot::isVisible(plot, 1));
    QVERIFY(Plot::logarithmicFloor(spectrum) > 0.01 && Plot::logarithmicFloor(spectrum) < 0.3);
}

int main(int argc, char **argv)
{
    return TestSupport::runTest<QGuiApplication, TestResultPlot>(argc, argv); // texts have fonts
}
#include "tst_resultplot.moc"
