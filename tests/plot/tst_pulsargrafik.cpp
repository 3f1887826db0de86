#include "plot/pulsargrafik.h"

#include "plot/plotpainter.h"
#include "support/testmain.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>

namespace {

// 6 pixels per point and 3 per unit of the values, see plotData().
const QSize usualSize(690, 400);

PlotData plotData()
{
    PlotData data;
    data.graphs = {{0, 50, 100, 20}, {10, 10, 10, 70}};
    data.labelsX1 = {"first", "second"};
    data.numPoints = 100;
    data.xOffset = 1000;
    return data;
}

// QTest::mouseMove() cannot hold a button.
void moveTo(QWidget &widget, const QPointF &position, Qt::MouseButtons held = Qt::NoButton)
{
    QMouseEvent event(QEvent::MouseMove, position, Qt::NoButton, held, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

void drag(QWidget &widget, const QPoint &from, const QPoint &to,
          Qt::MouseButton button = Qt::LeftButton)
{
    QTest::mousePress(&widget, button, {}, from);
    moveTo(widget, to, button);
    QTest::mouseRelease(&widget, button, {}, to);
}

QImage shown(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

QImage expected(const PlotData &data, const QRect &selection, const QSize &size)
{
    QImage picture(size, QImage::Format_RGB32);
    Plot::paintPlot(data, selection, picture);
    return picture;
}

} // namespace

class TestPulsarGrafik : public QObject {
    Q_OBJECT

private slots:
    void init();
    void signalOrder();
    void showsWhatItIsGiven();
    void paintsNothingWhenSmall();
    void readOutFollowsPointer();
    void readOutRoundsToWholePixels();
    void noReadOutBeforeFirstPaint();
    void dragSelects_data();
    void dragSelects();
    void lineIsNoSelection();
    void clickSelectsNothing();
    void pressInsideKeepsSelection();
    void pressOutsideClearsSelection();
    void otherButtonsLeaveSelectionAlone();
    void busyIgnoresPress();
    void dataMayBeReplacedByThePress();

private:
    std::unique_ptr<PulsarGrafik> grafik;
};

void TestPulsarGrafik::init()
{
    grafik = std::make_unique<PulsarGrafik>();
    grafik->resize(usualSize);
    grafik->setData(plotData());
    grafik->grab();
}

void TestPulsarGrafik::signalOrder()
{
    const QMetaObject &meta = PulsarGrafik::staticMetaObject;
    const int first = meta.methodOffset();
    QCOMPARE(meta.method(first).name(), QByteArray("coordsChanged"));
    QCOMPARE(meta.method(first + 1).name(), QByteArray("blueRectangleClicked"));
    QCOMPARE(meta.method(first + 2).name(), QByteArray("blueRectangleReleased"));
}

void TestPulsarGrafik::showsWhatItIsGiven()
{
    PlotData data = plotData();
    QCOMPARE(shown(*grafik), expected(data, {}, usualSize));

    drag(*grafik, QPoint(120, 150), QPoint(240, 250));
    const QRect selection(120, 150, 120, 100);
    QCOMPARE(shown(*grafik), expected(data, selection, usualSize));

    data.graphs[0][1] = 700;
    grafik->setData(data);
    QCOMPARE(shown(*grafik), expected(data, selection, usualSize));

    grafik->recomputeRange();
    data.yMax = 700;
    QCOMPARE(shown(*grafik), expected(data, selection, usualSize));

    const QSize larger(800, 500);
    grafik->resize(larger);
    QCOMPARE(shown(*grafik), expected(data, selection, larger));

    grafik->showMessage("Wait");
    data.messageMode = true;
    data.message = "Wait";
    QCOMPARE(shown(*grafik), expected(data, {}, larger));
    grafik->clear();
    data.message.clear();
    QCOMPARE(shown(*grafik), expected(data, {}, larger));

    grafik->setData(plotData());
    QCOMPARE(shown(*grafik), expected(plotData(), selection, larger));
}

void TestPulsarGrafik::paintsNothingWhenSmall()
{
    PulsarGrafik small;
    small.setData(plotData());
    small.resize(100, 100);
    const QImage blank = shown(small);
    QCOMPARE(blank.pixel(0, 0), blank.pixel(50, 50)); // no frame
    small.resize(100, 101);
    const QImage framed = shown(small);
    QVERIFY(framed.pixel(0, 0) != framed.pixel(50, 50));
}

void TestPulsarGrafik::readOutFollowsPointer()
{
    QVERIFY(grafik->hasMouseTracking());
    QSignalSpy moved(grafik.get(), &PulsarGrafik::coordsChanged);
    moveTo(*grafik, QPoint(69, 180));
    QCOMPARE(moved.size(), 1);
    QCOMPARE(moved[0][0].toPointF(), QPointF(1.5, 50));
    QCOMPARE(moved[0][1].value<QVector<QString>>(), QVector<QString>{"second"});
    moveTo(*grafik, QPoint(685, 180));
    QCOMPARE(moved[1][0].toPointF(), QPointF(3, 50));
    QCOMPARE(moved[1][1].value<QVector<QString>>(), QVector<QString>{"-"});
    QVERIFY(grafik->selection().isNull());
}

void TestPulsarGrafik::readOutRoundsToWholePixels()
{
    QSignalSpy moved(grafik.get(), &PulsarGrafik::coordsChanged);
    moveTo(*grafik, QPointF(68.5, 180.4));
    QCOMPARE(moved[0][0].toPointF(), QPointF(1.5, 50));
}

void TestPulsarGrafik::noReadOutBeforeFirstPaint()
{
    PulsarGrafik unpainted;
    unpainted.setData(plotData());
    unpainted.resize(usualSize);
    QSignalSpy moved(&unpainted, &PulsarGrafik::coordsChanged);
    moveTo(unpainted, QPoint(69, 180));
    QCOMPARE(moved.size(), 0);
}

void TestPulsarGrafik::dragSelects_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<QPoint>("to");
    const QPoint leftUpper(120, 150);
    const QPoint rightUpper(240, 150);
    const QPoint leftLower(120, 240);
    const QPoint rightLower(240, 240);
    QTest::newRow("right and down") << leftUpper << rightLower;
    QTest::newRow("left and down") << rightUpper << leftLower;
    QTest::newRow("right and up") << leftLower << rightUpper;
    QTest::newRow("left and up") << rightLower << leftUpper;
}

void TestPulsarGrafik::dragSelects()
{
    QFETCH(QPoint, from);
    QFETCH(QPoint, to);
    QSignalSpy released(grafik.get(), &PulsarGrafik::blueRectangleReleased);
    drag(*grafik, from, to);
    QCOMPARE(released.size(), 1);
    QCOMPARE(released[0][0].toPointF(), QPointF(1010, 60));
    QCOMPARE(released[0][1].toPointF(), QPointF(1030, 30));
    moveTo(*grafik, QPoint(300, 300)); // no longer held
    QCOMPARE(grafik->selection(), QRect(120, 150, 120, 90));
}

void TestPulsarGrafik::lineIsNoSelection()
{
    QSignalSpy released(grafik.get(), &PulsarGrafik::blueRectangleReleased);
    drag(*grafik, QPoint(120, 150), QPoint(240, 150));
    drag(*grafik, QPoint(120, 250), QPoint(120, 350));
    QCOMPARE(released.size(), 0);
    drag(*grafik, QPoint(120, 150), QPoint(119, 149));
    QCOMPARE(released.size(), 1);
}

void TestPulsarGrafik::clickSelectsNothing()
{
    QSignalSpy clicked(grafik.get(), &PulsarGrafik::blueRectangleClicked);
    QSignalSpy released(grafik.get(), &PulsarGrafik::blueRectangleReleased);
    for (int click = 0; click < 2; ++click)
        QTest::mouseClick(grafik.get(), Qt::LeftButton, {}, QPoint(120, 150));
    QCOMPARE(clicked.size() + released.size(), 0);
    QVERIFY(grafik->selection().isNull());
}

void TestPulsarGrafik::pressInsideKeepsSelection()
{
    drag(*grafik, QPoint(240, 240), QPoint(120, 150));
    const QRect selection = grafik->selection();
    QSignalSpy clicked(grafik.get(), &PulsarGrafik::blueRectangleClicked);
    for (const QPoint &inside : {QPoint(180, 200), QPoint(120, 150), QPoint(240, 240)}) {
        QTest::mousePress(grafik.get(), Qt::LeftButton, {}, inside);
        QCOMPARE(grafik->selection(), selection);
    }
    QCOMPARE(clicked.size(), 3);
    QCOMPARE(clicked[0][0].toPointF(), QPointF(10, 60)); // without xOffset
    QCOMPARE(clicked[0][1].toPointF(), QPointF(30, 30));
}

void TestPulsarGrafik::pressOutsideClearsSelection()
{
    drag(*grafik, QPoint(120, 150), QPoint(240, 240));
    QSignalSpy clicked(grafik.get(), &PulsarGrafik::blueRectangleClicked);
    QTest::mousePress(grafik.get(), Qt::LeftButton, {}, QPoint(119, 200));
    QCOMPARE(clicked.size(), 0);
    QVERIFY(grafik->selection().isNull());
    QCOMPARE(shown(*grafik), expected(plotData(), {}, usualSize));
}

void TestPulsarGrafik::otherButtonsLeaveSelectionAlone()
{
    drag(*grafik, QPoint(120, 150), QPoint(240, 240));
    const QRect selection = grafik->selection();
    QSignalSpy clicked(grafik.get(), &PulsarGrafik::blueRectangleClicked);
    QSignalSpy released(grafik.get(), &PulsarGrafik::blueRectangleReleased);
    drag(*grafik, QPoint(180, 200), QPoint(300, 300), Qt::RightButton);
    drag(*grafik, QPoint(20, 20), QPoint(30, 30), Qt::MiddleButton);
    QCOMPARE(grafik->selection(), selection);
    QCOMPARE(clicked.size() + released.size(), 0);

    QTest::mousePress(grafik.get(), Qt::LeftButton, {}, QPoint(20, 20));
    moveTo(*grafik, QPoint(40, 40), Qt::LeftButton);
    QTest::mouseClick(grafik.get(), Qt::RightButton, {}, QPoint(40, 40));
    QCOMPARE(released.size(), 0); // the left one is still held
}

void TestPulsarGrafik::busyIgnoresPress()
{
    drag(*grafik, QPoint(120, 150), QPoint(240, 240));
    const QRect selection = grafik->selection();
    QSignalSpy clicked(grafik.get(), &PulsarGrafik::blueRectangleClicked);
    QSignalSpy released(grafik.get(), &PulsarGrafik::blueRectangleReleased);
    {
        const QMutexLocker locker(&grafik->busyMutex());
        drag(*grafik, QPoint(20, 20), QPoint(30, 30));
        drag(*grafik, QPoint(180, 200), QPoint(300, 300));
    }
    QCOMPARE(grafik->selection(), selection);
    QCOMPARE(clicked.size() + released.size(), 0);
    QTest::mousePress(grafik.get(), Qt::LeftButton, {}, QPoint(180, 200));
    QCOMPARE(clicked.size(), 1);
}

void TestPulsarGrafik::dataMayBeReplacedByThePress()
{
    drag(*grafik, QPoint(120, 150), QPoint(240, 240));
    connect(grafik.get(), &PulsarGrafik::blueRectangleClicked, this, [this] {
        PlotData data = plotData();
        data.numPoints = 4;
        grafik->setData(data);
        grafik->recomputeRange();
        QVERIFY(!grafik->busyMutex().tryLock()); // still held by the press
    });
    QTest::mousePress(grafik.get(), Qt::LeftButton, {}, QPoint(180, 200));
    QCOMPARE(grafik->data().numPoints, 4);
    QVERIFY(grafik->busyMutex().tryLock()); // free again
    grafik->busyMutex().unlock();
}

ZRT_GUI_TEST_MAIN(TestPulsarGrafik)

#include "tst_pulsargrafik.moc"
