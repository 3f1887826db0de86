#include "plot/pulsargrafik.h"

#include "plot/plotpainter.h"
#include "support/testmain.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalSpy>

class TestPulsarGrafik : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void readOut();
    void selection();
    void showsWhatItIsGiven();

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
}

ZRT_GUI_TEST_MAIN(TestPulsarGrafik)

#include "tst_pulsargrafik.moc"
