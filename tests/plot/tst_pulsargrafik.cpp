#include "plot/pulsargrafik.h"

#include "picture/plotpainter.h"
#include "support/testmain.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalSpy>
#include <QWheelEvent>

class TestPulsarGrafik : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void readOut();
    void selection();
    void showsWhatItIsGiven();
    void zoomByHand();
    void zoomAndNewData();
    void selectionInAZoomedPlot();
    void keys();
    void legend();

private:
    // QTest::mouseMove() cannot hold a button.
    void moveTo(const QPointF &position, Qt::MouseButtons held = Qt::NoButton)
    {
        QMouseEvent event(QEvent::MouseMove, position, Qt::NoButton, held, Qt::NoModifier);
        QApplication::sendEvent(&grafik, &event);
    }
    void drag(const QPoint &from, const QPoint &to, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mousePress(&grafik, button, {}, from);
        moveTo(to, button);
        QTest::mouseRelease(&grafik, button, {}, to);
    }
    void wheel(const QPoint &position, int notches, Qt::KeyboardModifiers modifiers = {})
    {
        moveTo(position);
        QWheelEvent event(position, grafik.mapToGlobal(position), {}, {0, 120 * notches},
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&grafik, &event);
    }
    QString visible() const
    {
        const PulsarGrafik::VisibleRange range = grafik.visibleRange();
        return QString("%1+%2 %3..%4")
            .arg(range.first, 0, 'g', 4)
            .arg(range.points, 0, 'g', 4)
            .arg(range.y.min, 0, 'g', 4)
            .arg(range.y.max, 0, 'g', 4);
    }
    bool shows(const QRect &selection)
    {
        QImage picture(grafik.size(), QImage::Format_RGB32);
        Plot::paintPlot(data, {}, {}, picture);
        QPainter painter(&picture);
        Plot::paintSelection(painter, selection);
        painter.end();
        return grafik.grab().toImage().convertToFormat(QImage::Format_RGB32) == picture;
    }

    const QRect usualSelection{120, 150, 120, 90};
    PlotData data;
    PulsarGrafik grafik;
};

void TestPulsarGrafik::initTestCase()
{
    data.graphs = {{0, 50, 100, 20}};
    data.labelsX1 = {"first", "second"};
    data.xOffset = 1000;
    grafik.resize(690, 400); // 6 pixels per point and 3 per unit of the values
    grafik.setData(data);
    grafik.grab();
}

void TestPulsarGrafik::showsWhatItIsGiven()
{
    drag({120, 150}, {240, 240});
    data.graphs[0][1] = 700;
    grafik.setData(data);
    QVERIFY(shows(usualSelection));
    grafik.recomputeRange();
    data.yMax = 700;
    QVERIFY(shows(usualSelection));
    grafik.resize(800, 500);
    QVERIFY(shows(usualSelection));
    grafik.clear();
    data.messageMode = true;
    QVERIFY(shows({}));
}

void TestPulsarGrafik::readOut()
{
    QVERIFY(grafik.hasMouseTracking());
    QSignalSpy moved(&grafik, &PulsarGrafik::coordsChanged);
    moveTo(QPointF(68.5, 180.4)); // rounded to whole pixels
    QCOMPARE(moved[0][0].toPointF(), QPointF(1.5, 50));
    QCOMPARE(moved[0][1].value<QVector<QString>>(), QVector<QString>{"second"});
}

void TestPulsarGrafik::selection()
{
    QSignalSpy released(&grafik, &PulsarGrafik::blueRectangleReleased);
    drag({120, 150}, {240, 150}); // lines are no selection
    drag({120, 150}, {120, 240});
    drag({240, 150}, {120, 240});
    moveTo(QPoint(300, 300)); // no longer held
    drag({20, 20}, {30, 30}, Qt::RightButton);
    grafik.busyMutex().lock();
    drag({20, 20}, {30, 30});
    grafik.busyMutex().unlock();
    QCOMPARE(grafik.selection(), usualSelection);
    QCOMPARE(released.size(), 1);
    QCOMPARE(released[0], (QVariantList{QPointF(1010, 60), QPointF(1030, 30)}));

    QSignalSpy clicked(&grafik, &PulsarGrafik::blueRectangleClicked);
    // the form may answer with new data at once, though the press still holds the mutex
    connect(&grafik, &PulsarGrafik::blueRectangleClicked, this, [this] { grafik.setData(data); });
    for (const QPoint &corner : {QPoint(120, 150), QPoint(240, 240)})
        QTest::mousePress(&grafik, Qt::LeftButton, {}, corner);
    QTest::mousePress(&grafik, Qt::LeftButton, {}, {119, 200});
    QVERIFY(shows({}));
    QCOMPARE(clicked.size(), 2);
    QCOMPARE(clicked[0], (QVariantList{QPointF(10, 60), QPointF(30, 30)})); // without xOffset
    grafik.disconnect(this);
}

const char all[] = "0+100 0..100";

// Six pixels per point from x = 60, three per unit up from y = 330.
PlotData ramp(int points = 100)
{
    PlotData data;
    data.graphs.resize(2);
    for (int i = 0; i < points; ++i) {
        data.graphs[0].push_back(float(i));
        data.graphs[1].push_back(90);
    }
    data.numPoints = points;
    data.x = {"frequency", "Hz", 0, 0.5, {}};
    return data;
}

void TestPulsarGrafik::zoomByHand()
{
    grafik.resize(690, 400);
    grafik.setData(ramp());
    grafik.clearSelection();
    grafik.grab();
    QSignalSpy changed(&grafik, &PulsarGrafik::viewChanged);
    wheel({360, 180}, 1); // the middle stays
    QCOMPARE(visible(), QString("10+80 0..100"));
    wheel({360, 180}, 2);
    QCOMPARE(visible(), QString("24.4+51.2 0..100"));
    wheel({360, 180}, 1, Qt::ControlModifier);
    QCOMPARE(visible(), QString("24.4+51.2 10..90"));
    wheel({30, 330}, -1); // over the Y axis, at its lower end
    QCOMPARE(visible(), QString("24.4+51.2 0..100"));
    wheel({660, 390}, 1); // over the X axis, at its right end
    QCOMPARE(visible(), QString("34.64+40.96 0..100"));
    wheel({360, 180}, -1, Qt::ShiftModifier);
    QCOMPARE(visible(), QString("38.74+40.96 0..100"));
    drag({360, 180}, {300, 180}, Qt::MiddleButton); // a tenth
    QCOMPARE(visible(), QString("42.83+40.96 0..100"));
    grafik.setFocus();
    QTest::keyPress(&grafik, Qt::Key_Space);
    drag({300, 180}, {660, 180});
    QTest::keyRelease(&grafik, Qt::Key_Space);
    QCOMPARE(visible(), QString("18.26+40.96 0..100"));
    QVERIFY(!grafik.selectedRange()); // no button but the left draws
    QCOMPARE(changed.size(), 8);

    for (const char *earlier :
         {"42.83+40.96 0..100", "38.74+40.96 0..100", "34.64+40.96 0..100", "24.4+51.2 0..100",
          "24.4+51.2 10..90", "24.4+51.2 0..100", "10+80 0..100", all, all}) {
        QTest::keyClick(&grafik, Qt::Key_Backspace);
        QCOMPARE(visible(), QString(earlier));
    }
    grafik.setVisibleX(90, 40);
    QCOMPARE(visible(), QString("60+40 0..100"));
    QTest::keyClick(&grafik, Qt::Key_Home);
    QCOMPARE(visible(), QString(all));
}

void TestPulsarGrafik::zoomAndNewData()
{
    PlotData zoomed = ramp();
    grafik.setData(zoomed);
    grafik.setVisibleX(20, 10);
    grafik.setVisibleY(50, 60);
    grafik.setData(ramp());
    QCOMPARE(visible(), QString("20+10 50..60"));
    for (float &sample : zoomed.graphs[0])
        sample = sample / 10 - 200;
    zoomed.graphs.pop_back();
    grafik.setData(zoomed); // nothing of it between 50 and 60
    grafik.recomputeRange();
    QCOMPARE(visible(), QString("20+10 -200..-190.1"));
    grafik.setData(ramp(99));
    QCOMPARE(visible(), QString("0+99 0..100"));
    grafik.setVisibleX(20, 10);
    PlotData times = ramp(99);
    times.x = {"time", "s", 0, 1, {}};
    grafik.setData(times);
    QCOMPARE(visible(), QString("0+99 0..100"));
}

void TestPulsarGrafik::selectionInAZoomedPlot()
{
    grafik.setData(ramp());
    grafik.showAll();
    QSignalSpy changed(&grafik, &PulsarGrafik::selectionChanged);
    drag({120, 90}, {240, 150}); // points 10 to 30, values 60 to 80
    QCOMPARE(changed.size(), 1);
    grafik.setVisibleX(0, 50);
    QCOMPARE(grafik.selection(), QRect(180, 90, 240, 60)); // twice as wide
    grafik.setVisibleX(20, 50);
    QCOMPARE(grafik.selectedRange()->x, (Plot::Range{10, 30}));
    QSignalSpy clicked(&grafik, &PulsarGrafik::blueRectangleClicked);
    QTest::mousePress(&grafik, Qt::LeftButton, {}, {100, 100});
    QCOMPARE(clicked[0], (QVariantList{QPointF(10, 80), QPointF(30, 60)})); // though half in sight
    QTest::mouseRelease(&grafik, Qt::LeftButton, {}, {100, 100});
    grafik.setFocus();
    QTest::keyClick(&grafik, Qt::Key_Return);
    QCOMPARE(visible(), QString("10+20 60..80"));
    QVERIFY(!grafik.selectedRange());
    QCOMPARE(changed.size(), 2);
    grafik.showAll();
    drag({120, 5}, {240, 150}); // out of the plot at the top
    QCOMPARE(grafik.selectedRange()->y, (Plot::Range{60, 100}));
}

void TestPulsarGrafik::keys()
{
    grafik.setData(ramp());
    grafik.showAll();
    grafik.grab();
    grafik.setFocus();
    moveTo({302, 209}); // point 40.3; value 40.3, near the first curve
    QSignalSpy moved(&grafik, &PulsarGrafik::coordsChanged);
    QTest::keyClick(&grafik, Qt::Key_Right);
    QTest::keyClick(&grafik, Qt::Key_Right);
    QTest::keyClick(&grafik, Qt::Key_Left);
    QCOMPARE(moved[1][0].toPointF(), QPointF(42, 42));
    QCOMPARE(moved[2][0].toPointF(), QPointF(41, 41));
    QTest::keyClick(&grafik, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), QString("20.50 Hz\t41"));
    moveTo({360, 61}); // at the other curve
    grafik.copyValue();
    QCOMPARE(QApplication::clipboard()->text(), QString("25.00 Hz\t90"));

    const QImage plain = grafik.grab().toImage();
    for (const int key : {Qt::Key_1, Qt::Key_2, Qt::Key_H}) {
        QTest::keyClick(&grafik, Qt::Key(key));
        QVERIFY(grafik.grab().toImage() != plain);
        QTest::keyClick(&grafik, Qt::Key_Escape);
        QCOMPARE(grafik.grab().toImage(), plain);
    }
    PlotData times = ramp();
    times.x = {"time", "s", 0, 1, {}};
    grafik.setData(times);
    const QImage ofTimes = grafik.grab().toImage();
    QTest::keyClick(&grafik, Qt::Key_H); // no spectrum
    QCOMPARE(grafik.grab().toImage(), ofTimes);
}

void TestPulsarGrafik::legend()
{
    PlotData named = ramp();
    named.names = {"rising", "level"};
    grafik.setData(named);
    QSignalSpy toggled(&grafik, &PulsarGrafik::curveToggled);
    const auto *list = grafik.findChild<QWidget *>("legend");
    // the curves run from the lower left to the upper right corner and along the top
    QVERIFY(list->geometry().left() > 360 && list->geometry().top() > 180);
    list->findChildren<QCheckBox *>()[1]->click();
    QCOMPARE(toggled, (QList<QVariantList>{{"level", false}}));
    grafik.setData(named); // as after the next calculation
    QVERIFY(Plot::isVisible(grafik.data(), 0) && !Plot::isVisible(grafik.data(), 1));
    named.names = {"rising", "other"};
    grafik.setData(named);
    QVERIFY(Plot::isVisible(grafik.data(), 1));
    grafik.setData(ramp());
    QVERIFY(list->isHidden());
}

ZRT_GUI_TEST_MAIN(TestPulsarGrafik)

#include "tst_pulsargrafik.moc"
