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
#include <cmath>
#include <memory>

namespace {

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

} // namespace

class TestPulsarGrafik : public QObject {
    Q_OBJECT

private slots:
    void init();
    void selection();
    void showsWhatItIsGiven();
    void zoomByHand();
    void zoomAndNewData();
    void selectionInAZoomedPlot();
    void keys();
    void spectrumKeys();
    void legend();

private:
    // QTest::mouseMove() cannot hold a button.
    void moveTo(const QPointF &position, Qt::MouseButtons held = Qt::NoButton)
    {
        QMouseEvent event(QEvent::MouseMove, position, Qt::NoButton, held, Qt::NoModifier);
        QApplication::sendEvent(grafik.get(), &event);
    }
    void drag(const QPoint &from, const QPoint &to, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mousePress(grafik.get(), button, {}, from);
        moveTo(to, button);
        QTest::mouseRelease(grafik.get(), button, {}, to);
    }
    void wheel(const QPoint &position, int notches, Qt::KeyboardModifiers modifiers)
    {
        moveTo(position);
        QWheelEvent event(position, grafik->mapToGlobal(position), {}, {0, 120 * notches},
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(grafik.get(), &event);
    }
    QString visible() const
    {
        const PulsarGrafik::VisibleRange range = grafik->visibleRange();
        return QString::asprintf("%.4g+%.4g %.4g..%.4g", range.first, range.points, range.y.min,
                                 range.y.max);
    }
    bool shows(const QRect &selection)
    {
        QImage picture(grafik->size(), QImage::Format_RGB32);
        Plot::paintPlot(data, {}, {}, picture);
        QPainter painter(&picture);
        Plot::paintSelection(painter, selection);
        painter.end();
        return grafik->grab().toImage().convertToFormat(QImage::Format_RGB32) == picture;
    }

    const QRect usualSelection{120, 150, 120, 90};
    PlotData data;
    std::unique_ptr<PulsarGrafik> grafik;
};

void TestPulsarGrafik::init()
{
    data = ramp();
    data.labelsX1 = {"first", "second"};
    data.xOffset = 1000;
    grafik = std::make_unique<PulsarGrafik>();
    grafik->resize(690, 400);
    grafik->setData(data);
    grafik->grab();
}

void TestPulsarGrafik::showsWhatItIsGiven()
{
    drag({120, 150}, {240, 240});
    data.graphs[0][1] = 700;
    grafik->setData(data);
    QVERIFY(shows(usualSelection));
    grafik->recomputeRange();
    data.yMax = 700;
    QVERIFY(shows(usualSelection));
    grafik->resize(800, 500);
    QVERIFY(shows(usualSelection));
    grafik->clear();
    data.messageMode = true;
    QVERIFY(shows({}));
}

void TestPulsarGrafik::selection()
{
    QSignalSpy released(grafik.get(), &PulsarGrafik::blueRectangleReleased);
    drag({120, 150}, {240, 150}); // lines are no selection
    drag({120, 150}, {120, 240});
    drag({240, 240}, {120, 150});
    moveTo(QPoint(300, 300)); // no longer held
    drag({20, 20}, {30, 30}, Qt::RightButton);
    grafik->busyMutex().lock();
    drag({20, 20}, {30, 30});
    grafik->busyMutex().unlock();
    QCOMPARE(grafik->selection(), usualSelection);
    QCOMPARE(released.size(), 1);
    QCOMPARE(released[0], (QVariantList{QPointF(1010, 60), QPointF(1030, 30)}));

    QSignalSpy clicked(grafik.get(), &PulsarGrafik::blueRectangleClicked);
    // the form may answer with new data at once, though the press still holds the mutex
    connect(grafik.get(), &PulsarGrafik::blueRectangleClicked, this,
            [this] { grafik->setData(data); });
    for (const QPoint &corner : {QPoint(120, 150), QPoint(240, 240)})
        QTest::mousePress(grafik.get(), Qt::LeftButton, {}, corner);
    QTest::mousePress(grafik.get(), Qt::LeftButton, {}, {119, 200});
    QVERIFY(shows({}));
    QCOMPARE(clicked.size(), 2);
    QCOMPARE(clicked[0], (QVariantList{QPointF(10, 60), QPointF(30, 30)})); // without xOffset
}

void TestPulsarGrafik::zoomByHand()
{
    struct Turn {
        QPoint position;
        int notches;
        Qt::KeyboardModifiers modifiers;
        const char *view;
    };
    const Turn turns[] = {
        {{360, 180}, 1, Qt::NoModifier, "10+80 0..100"}, // the middle stays
        {{360, 180}, 2, Qt::NoModifier, "24.4+51.2 0..100"},
        {{360, 180}, 1, Qt::ControlModifier, "24.4+51.2 10..90"},
        {{30, 330}, -1, Qt::NoModifier, "24.4+51.2 0..100"},   // at the lower end of the Y axis
        {{660, 390}, 1, Qt::NoModifier, "34.64+40.96 0..100"}, // at the right end of the X axis
        {{360, 180}, -1, Qt::ShiftModifier, "38.74+40.96 0..100"},
    };
    QSignalSpy changed(grafik.get(), &PulsarGrafik::viewChanged);
    for (const Turn &turn : turns) {
        wheel(turn.position, turn.notches, turn.modifiers);
        QCOMPARE(visible(), QString(turn.view));
    }
    drag({360, 180}, {300, 180}, Qt::MiddleButton); // a tenth
    QCOMPARE(visible(), QString("42.83+40.96 0..100"));
    QTest::keyPress(grafik.get(), Qt::Key_Space);
    drag({300, 180}, {660, 180});
    QTest::keyRelease(grafik.get(), Qt::Key_Space);
    QCOMPARE(visible(), QString("18.26+40.96 0..100"));
    QVERIFY(!grafik->selectedRange()); // no button but the left draws
    QCOMPARE(changed.size(), 8);
    for (const char *earlier :
         {"42.83+40.96 0..100", turns[5].view, turns[4].view, turns[3].view}) {
        QTest::keyClick(grafik.get(), Qt::Key_Backspace);
        QCOMPARE(visible(), QString(earlier));
    }
    grafik->setVisibleX(90, 40);
    QCOMPARE(visible(), QString("60+40 0..100"));
    QTest::keyClick(grafik.get(), Qt::Key_Home);
    QCOMPARE(visible(), QString("0+100 0..100"));
}

void TestPulsarGrafik::zoomAndNewData()
{
    PlotData zoomed = ramp();
    grafik->setVisibleX(20, 10);
    grafik->setVisibleY(50, 60);
    grafik->setData(ramp());
    QCOMPARE(visible(), QString("20+10 50..60"));
    for (float &sample : zoomed.graphs[0])
        sample = sample / 10 - 200;
    zoomed.graphs.pop_back();
    grafik->setData(zoomed); // nothing of it between 50 and 60
    grafik->recomputeRange();
    QCOMPARE(visible(), QString("20+10 -200..-190.1"));
    grafik->setData(ramp(99));
    QCOMPARE(visible(), QString("0+99 0..100"));
    grafik->setVisibleX(20, 10);
    PlotData times = ramp(99);
    times.x = {"time", "s", 0, 1, {}};
    grafik->setData(times);
    QCOMPARE(visible(), QString("0+99 0..100"));
}

void TestPulsarGrafik::selectionInAZoomedPlot()
{
    QSignalSpy changed(grafik.get(), &PulsarGrafik::selectionChanged);
    drag({120, 90}, {240, 150}); // points 10 to 30, values 60 to 80
    QCOMPARE(changed.size(), 1);
    grafik->setVisibleX(0, 50);
    QCOMPARE(grafik->selection(), QRect(180, 90, 240, 60)); // twice as wide
    grafik->setVisibleX(20, 50);
    QSignalSpy clicked(grafik.get(), &PulsarGrafik::blueRectangleClicked);
    QTest::mousePress(grafik.get(), Qt::LeftButton, {}, {100, 100});
    QCOMPARE(clicked[0], (QVariantList{QPointF(10, 80), QPointF(30, 60)})); // though half in sight
    QTest::mouseRelease(grafik.get(), Qt::LeftButton, {}, {100, 100});
    QTest::keyClick(grafik.get(), Qt::Key_Return);
    QCOMPARE(visible(), QString("10+20 60..80"));
    QVERIFY(!grafik->selectedRange());
    QCOMPARE(changed.size(), 2);
    grafik->showAll();
    drag({680, 150}, {120, 5}); // out of the plot at the right and the top
    QCOMPARE(grafik->selectedRange()->y, (Plot::Range{60, 100}));
    grafik->setPart(ramp(), {5, 0.5}, 0, 50);
    QCOMPARE(grafik->selectedRange()->x, (Plot::Range{10, 55})); // was 10 to 100
    grafik->setPart(ramp(), {90, 1}, 0, 50);
    QVERIFY(!grafik->selectedRange());
}

void TestPulsarGrafik::keys()
{
    QSignalSpy moved(grafik.get(), &PulsarGrafik::coordsChanged);
    moveTo(QPointF(68.5, 180.4)); // rounded to whole pixels
    QCOMPARE(moved[0][0].toPointF(), QPointF(1.5, 50));
    QCOMPARE(moved[0][1].value<QVector<QString>>(), QVector<QString>{"second"});
    moveTo({302, 209}); // point 40.3; value 40.3, near the first curve
    for (const int key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Left})
        QTest::keyClick(grafik.get(), Qt::Key(key));
    QCOMPARE(moved[3][0].toPointF(), QPointF(42, 42));
    QCOMPARE(moved[4][0].toPointF(), QPointF(41, 41));
    QTest::keyClick(grafik.get(), Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), QString("20.50 Hz\t41"));
    moveTo({360, 61}); // at the other curve
    grafik->copyValue();
    QCOMPARE(QApplication::clipboard()->text(), QString("25.00 Hz\t90"));

    const QImage plain = grafik->grab().toImage();
    for (const int key : {Qt::Key_1, Qt::Key_2, Qt::Key_H}) {
        QTest::keyClick(grafik.get(), Qt::Key(key));
        QVERIFY(grafik->grab().toImage() != plain);
        QTest::keyClick(grafik.get(), Qt::Key_Escape);
        QCOMPARE(grafik->grab().toImage(), plain);
    }
    PlotData times = ramp();
    times.x = {"time", "s", 0, 1, {}};
    grafik->setData(times);
    const QImage ofTimes = grafik->grab().toImage();
    QTest::keyClick(grafik.get(), Qt::Key_H); // no spectrum
    QCOMPARE(grafik->grab().toImage(), ofTimes);
}

// A comb at 7 Hz, 14 lines apart, in noise that falls.
void TestPulsarGrafik::spectrumKeys()
{
    PlotData spectrum = ramp(1000);
    spectrum.graphs.resize(1);
    for (int i = 0; i < 1000; ++i)
        spectrum.graphs[0][size_t(i)] = float((1 + (i * 7919 % 1000) / 1000.0) * (i < 300 ? 3 : 1));
    for (int i = 14; i < 1000; i += 14)
        spectrum.graphs[0][size_t(i)] = 60;
    spectrum.numPoints = 1000;
    grafik->setData(spectrum);
    grafik->recomputeRange();
    grafik->setVisibleX(0, 100);
    const auto shown = [&] { return Plot::harmonicsText(grafik->marksSet()); };
    moveTo({312, 100}); // at 42, the third line
    QTest::keyClick(grafik.get(), Qt::Key_H);
    QVERIFY2(shown().startsWith("harmonics of 21.0"), qPrintable(shown()));
    QVERIFY(grafik->marksSet().asksForNumber);
    QTest::keyClick(grafik.get(), Qt::Key_3);
    QVERIFY(std::abs(*grafik->marksSet().fundamental - 7) < 0.001);
    QVERIFY2(shown().contains("from 71 lines"), qPrintable(shown()));
    const QString ofAmplitudes = shown();
    for (const int key : {Qt::Key_H, Qt::Key_W, Qt::Key_H, Qt::Key_3})
        QTest::keyClick(grafik.get(), Qt::Key(key));
    QCOMPARE(shown(), ofAmplitudes); // whitened, too
    QTest::keyClick(grafik.get(), Qt::Key_W);
    QTest::keyClick(grafik.get(), Qt::Key_2); // a cursor again
    QVERIFY(grafik->marksSet().cursors[1] && shown() == ofAmplitudes);

    QTest::keyClick(grafik.get(), Qt::Key_L);
    QVERIFY(grafik->visibleRange().y.min > 0);
    wheel({360, 180}, 1, Qt::ControlModifier); // the middle of the logarithm stays
    const PulsarGrafik::VisibleRange part = grafik->visibleRange();
    moveTo({360, 180});
    drag({360, 180}, {360, 150}, Qt::MiddleButton);
    const PulsarGrafik::VisibleRange moved = grafik->visibleRange();
    QVERIFY(moved.y.max < part.y.max &&
            qFuzzyCompare(moved.y.max / moved.y.min, part.y.max / part.y.min));
    QTest::keyClick(grafik.get(), Qt::Key_W);
    QCOMPARE(grafik->data().graphs, spectrum.graphs); // what the form has given
    QVERIFY(grafik->isWhitened() && grafik->visibleRange().y.max > 100);
    QTest::keyClick(grafik.get(), Qt::Key_W);
    QTest::keyClick(grafik.get(), Qt::Key_L);
    QCOMPARE(grafik->visibleRange().y.max, 60.0);

    grafik->setHoverText(
        [](const QPointF &coords) { return QStringList(QString::number(int(coords.x()))); });
    moveTo({360, 180});
    QCOMPARE(grafik->marksSet().hover, QStringList("50"));
}

void TestPulsarGrafik::legend()
{
    PlotData named = ramp();
    named.names = {"rising", "level"};
    grafik->setData(named);
    QSignalSpy toggled(grafik.get(), &PulsarGrafik::curveToggled);
    const auto *list = grafik->findChild<QWidget *>("legend");
    // the curves run from the lower left to the upper right corner and along the top
    QVERIFY(list->geometry().left() > 360 && list->geometry().top() > 180);
    QSignalSpy states(grafik.get(), &PulsarGrafik::legendChanged);
    list->findChild<QAbstractButton *>("legendHeading")->click();
    QCOMPARE(states.value(0).value(0).toString(), QString("folded"));
    const int folded = list->height();
    grafik->setLegendState("open 0.5 0.25"); // as it was left in another plot
    QVERIFY(list->height() > folded && std::abs(list->geometry().center().x() - 360) < 3);
    list->findChildren<QCheckBox *>()[1]->click();
    QCOMPARE(toggled, (QList<QVariantList>{{"level", false}}));
    grafik->setData(named); // as after the next calculation
    QVERIFY(Plot::isVisible(grafik->data(), 0) && !Plot::isVisible(grafik->data(), 1));
    named.names = {"rising", "other"};
    grafik->setData(named);
    QVERIFY(Plot::isVisible(grafik->data(), 1));
    grafik->setData(ramp());
    QVERIFY(list->isHidden());

    // the name of a single curve gives way to a curve that leaves no room
    PlotData wide;
    wide.names = {"noise"};
    wide.graphs.resize(1);
    for (int i = 0; i < 5000; ++i)
        wide.graphs[0].push_back(i % 2 == 0 ? -1 : 1);
    grafik->setLegendState({});
    grafik->setData(named);
    const int open = list->height();
    grafik->setData(wide);
    QVERIFY(!list->isHidden() && list->height() < open);
    wide.numPoints = 5000; // from edge to edge, where even the heading would hide some
    wide.yMin = -1;
    wide.yMax = 1;
    grafik->setData(wide);
    QVERIFY(list->isHidden());
    grafik->setLegendState("folded"); // the user wants it
    QVERIFY(!list->isHidden());
}

ZRT_GUI_TEST_MAIN(TestPulsarGrafik)

#include "tst_pulsargrafik.moc"
