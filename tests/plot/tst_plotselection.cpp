#include "plot/plotselection.h"

#include "support/testmain.h"

namespace {

// 100 points of 6 pixels each from column 60 on; values 0 to 10 from row 330 up to row 30.
PlotData hundredPoints()
{
    PlotData data;
    data.graphs = {std::vector<float>(100, 1.0F)};
    data.numPoints = 100;
    data.yMin = 0;
    data.yMax = 10;
    return data;
}

const Plot::View whole = Plot::viewOf(hundredPoints(), {690, 400});
const Plot::View firstHalf = Plot::viewOf(hundredPoints(), {690, 400}, {Plot::Range{0, 50}, {}});

QString textOf(const std::optional<Plot::SelectedRange> &range)
{
    return range ? QString("%1..%2 %3..%4")
                       .arg(range->x.min)
                       .arg(range->x.max)
                       .arg(range->y.min)
                       .arg(range->y.max)
                 : QString("none");
}

} // namespace

class TestPlotSelection : public QObject {
    Q_OBJECT

private slots:
    void spans();
    void clickSelectsNothing();
    void beyondThePlot();
    void followsItsData();
};

void TestPlotSelection::spans()
{
    Plot::Selection selection;
    selection.span(whole, {360, 180}, {120, 30}); // leftwards and up
    QCOMPARE(selection.rectangle(), QRect(QPoint(120, 30), QSize(240, 150)));
    QCOMPARE(textOf(selection.range()), QString("10..50 5..10"));
    QVERIFY(selection.contains({120, 30}));
    QVERIFY(selection.contains({360, 180}));
    QVERIFY(!selection.contains({361, 180}));
    selection.remove();
    QVERIFY(selection.rectangle().isNull());
    QVERIFY(!selection.contains({200, 100}));
}

void TestPlotSelection::clickSelectsNothing()
{
    Plot::Selection selection;
    selection.span(whole, {200, 100}, {200, 100});
    QCOMPARE(textOf(selection.range()), QString("none"));
    QVERIFY(!selection.contains({200, 100}));
    selection.span(whole, {200, 100}, {300, 100}); // nor does a line
    QCOMPARE(textOf(selection.range()), QString("none"));
    selection.span(whole, {200, 100}, {200, 180});
    QCOMPARE(textOf(selection.range()), QString("none"));
}

// What is selected ends at the margins; the corners are read out as the pointer reads them.
void TestPlotSelection::beyondThePlot()
{
    Plot::Selection selection;
    selection.span(whole, {10, 5}, {689, 399});
    QCOMPARE(textOf(selection.range()), QString("0..100 0..10"));
    QCOMPARE(selection.corners(whole).first, QPointF(0, 0));
    QCOMPARE(selection.corners(whole).second, QPointF(99, 0));
}

void TestPlotSelection::followsItsData()
{
    Plot::Selection selection;
    selection.span(whole, {120, 30}, {360, 180});
    selection.follow(firstHalf);
    QCOMPARE(selection.rectangle(), QRect(QPoint(180, 30), QSize(480, 150)));
    QCOMPARE(selection.corners(firstHalf).first, QPointF(10, 10));
    QCOMPARE(selection.corners(firstHalf).second, QPointF(50, 5));

    selection.move({-20, 2}); // points twice as close, 20 fewer before them
    QCOMPARE(textOf(selection.range()), QString("0..80 5..10"));
    selection.follow(whole);
    QCOMPARE(selection.rectangle(), QRect(QPoint(60, 30), QSize(480, 150)));
    selection.anchor(firstHalf);
    QCOMPARE(textOf(selection.range()), QString("0..40 5..10"));
}

ZRT_UNIT_TEST_MAIN(TestPlotSelection)
#include "tst_plotselection.moc"
