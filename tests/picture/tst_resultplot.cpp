#include "picture/resultplot.h"

#include "calc/pulsar/axislines.h"
#include "picture/axistexts.h"
#include "picture/legend.h"
#include "support/testmain.h"

class TestResultPlot : public QObject {
    Q_OBJECT

private slots:
    void timeLabels();
    void spectrumLabels();
    void curves();
    void tableOfCurves();
    void legendCorner_data();
    void legendCorner();
};

void TestResultPlot::timeLabels()
{
    ObservationData data;
    data.tresolution = 0.0124928;
    data.beginTime = QDateTime(QDate(2015, 4, 1), QTime(23, 59, 59), Qt::UTC);
    const PulsarAxis axis = {PulsarAxis::Kind::Points, 1000, 1};
    const Plot::AxisTexts texts = Plot::axisTexts(axis, 3, data);
    QCOMPARE(texts.row1(2), QString("1002"));
    QCOMPARE(texts.row2(0), QString("00:00:11.492"));
    QCOMPARE(texts.row2(1), QString("00:00:11.505"));
    data.beginTime = QDateTime();
    QVERIFY(!Plot::axisTexts(axis, 3, data).row2);
}

void TestResultPlot::spectrumLabels()
{
    const PulsarAxis axis = {PulsarAxis::Kind::Frequency, 0, 0.005};
    const Plot::AxisTexts texts = Plot::axisTexts(axis, 3, {});
    QCOMPARE(texts.row1(1), QString("0.0050 Hz"));
    QCOMPARE(texts.row2(0), QString("-"));
    QCOMPARE(texts.row2(1), QString("200 s"));
}

void TestResultPlot::curves()
{
    ObservationData recording;
    recording.tresolution = 0.01;
    const PlotData plot =
        Plot::curvePlot({PulsarAxis::Kind::Points, 1000, 2}, {{1, 2, 9}, {-4, 0, 1}}, {"a", "b"},
                        {2, 3}, recording, 1);
    QCOMPARE(plot.numPoints, 3);
    QCOMPARE(plot.colours, (QVector<QString>{"#009900", "#FF0000"}));
    QCOMPARE(plot.markers, std::vector<int>{2}); // 3 is beyond the curves
    QCOMPARE(plot.yMin, -4.0);
    QCOMPARE(plot.yMax, 9.0);
    QCOMPARE(plot.xOffset, 1000);
    QCOMPARE(plot.msPerPoint, 20.0);
    QCOMPARE(plot.x.name, QString("time"));
    QCOMPARE(plot.x.first, 10.0);
    QCOMPARE(plot.x.step, 0.02);
    QCOMPARE(plot.textX1(1), QString("1002"));
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
    QCOMPARE(ofTable.numPoints, ofResult.numPoints);
    QCOMPARE(ofTable.yMax, ofResult.yMax);
    QCOMPARE(ofTable.yPrecision, ofResult.yPrecision);
    for (int i = 0; i < ofResult.numPoints; ++i) {
        QCOMPARE(ofTable.textX1(i), ofResult.textX1(i));
        QCOMPARE(ofTable.textX2(i), ofResult.textX2(i));
    }
}

void TestResultPlot::legendCorner_data()
{
    QTest::addColumn<std::vector<float>>("curve");
    QTest::addColumn<QPoint>("corner");
    // the curves of a plot of 600 x 400 pixels lie between 60 and 570, 30 and 330
    QTest::newRow("nothing in the way") << std::vector<float>{0, 0, 0, 0, 0} << QPoint(464, 36);
    QTest::newRow("ends high") << std::vector<float>{0, 0, 0, 0, 10} << QPoint(66, 36);
    QTest::newRow("high everywhere") << std::vector<float>(5, 9.5F) << QPoint(464, 304);
    QTest::newRow("falls") << std::vector<float>{10, 10, 5, 0, 0} << QPoint(464, 36);
}

void TestResultPlot::legendCorner()
{
    QFETCH(std::vector<float>, curve);
    QFETCH(QPoint, corner);
    PlotData data;
    data.graphs = {curve, std::vector<float>(5, 9.5F)};
    data.visible = {true, false}; // a hidden curve is in nobody's way
    data.numPoints = int(curve.size());
    data.yMin = 0;
    data.yMax = 10;
    const Plot::View view = Plot::viewOf(data, {600, 400});
    QCOMPARE(Plot::emptiestCorner(data, {}, view, Plot::legendArea(view), {100, 20}), corner);
}

ZRT_UNIT_TEST_MAIN(TestResultPlot)
#include "tst_resultplot.moc"
