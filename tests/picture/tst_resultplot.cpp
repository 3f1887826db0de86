#include "picture/resultplot.h"

#include "calc/pulsar/axislines.h"
#include "picture/axistexts.h"
#include "picture/legend.h"
#include "support/testmain.h"

class TestResultPlot : public QObject {
    Q_OBJECT

private slots:
    void axisTexts();
    void curves();
    void tableOfCurves();
    void legendCorner();
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

ZRT_UNIT_TEST_MAIN(TestResultPlot)
#include "tst_resultplot.moc"
