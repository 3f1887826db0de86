#include "plot/pulsargrafikinfo.h"

#include "plot/pulsargrafik.h"
#include "support/testmain.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>

class TestPulsarGrafikInfo : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup() { QApplication::setFont(standardFont); }
    void signalAndSlotOrder();
    void points();
    void maxSigma();
    void dispersions();
    void refusedDispersion_data();
    void refusedDispersion();
    void multiResults();
    void coordinates();
    void widthStaysAsCoordinatesChange();
    void texts();
    void groupsFollowTheAction();
    void tabOrderFollowsTheEye();
    void nothingIsCut_data();
    void nothingIsCut();

private:
    template <typename Widget>
    Widget *find(const char *name)
    {
        auto *widget = info->findChild<Widget *>(name);
        if (widget == nullptr)
            qFatal("no widget %s", name);
        return widget;
    }
    void press(const char *button) { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    void typeAndEnter(const char *field, const QString &text)
    {
        auto *widget = find<QWidget>(field);
        widget->setFocus();
        QTest::keyClick(widget, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(widget, text);
        QTest::keyClick(widget, Qt::Key_Return);
    }

    const QFont standardFont = QApplication::font();
    std::unique_ptr<PulsarGrafik> grafik;
    std::unique_ptr<PulsarGrafikInfo> info;
};

void TestPulsarGrafikInfo::init()
{
    grafik = std::make_unique<PulsarGrafik>();
    grafik->resize(690, 400); // 6 pixels per point and 3 per unit
    grafik->grab();
    info = std::make_unique<PulsarGrafikInfo>(grafik.get());
    info->show();
    QVERIFY(QTest::qWaitForWindowActive(info.get()));
}

void TestPulsarGrafikInfo::signalAndSlotOrder()
{
    const QMetaObject &meta = PulsarGrafikInfo::staticMetaObject;
    QStringList names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names.append(meta.method(i).name());
    QCOMPARE(names, (QStringList{"changeMaxSigma", "changeDispersions", "showMultiResult",
                                 "returnMultiGrafiks", "pointsRequested", "changePoints",
                                 "resetPoints", "setCoords"}));
}

void TestPulsarGrafikInfo::points()
{
    QSignalSpy requested(info.get(), &PulsarGrafikInfo::pointsRequested);
    info->setPoints(50000);
    press("changePointsButton");
    press("resetPointsButton");
    typeAndEnter("points", "1234");
    find<QPushButton>("resetPointsButton")->setFocus();
    QTest::keyClick(find<QPushButton>("resetPointsButton"), Qt::Key_Enter);
    QCOMPARE(requested.size(), 4);
    QCOMPARE(requested[0][0].toInt(), 50000);
    QCOMPARE(requested[1][0].toInt(), 0);
    QCOMPARE(requested[2][0].toInt(), 1234);
    QCOMPARE(requested[3][0].toInt(), 0);
}

void TestPulsarGrafikInfo::maxSigma()
{
    QSignalSpy changed(info.get(), &PulsarGrafikInfo::changeMaxSigma);
    QCOMPARE(info->maxSigma(), 6);
    press("redrawMaxSigmaButton");
    typeAndEnter("maxSigma", "0");
    typeAndEnter("maxSigma", "12");
    QCOMPARE(changed.size(), 3);
    QCOMPARE(changed[0][0].toInt(), 6);
    QVERIFY(changed[1][0].toInt() >= 1);
    QCOMPARE(changed[2][0].toInt(), 12);
}

void TestPulsarGrafikInfo::dispersions()
{
    QSignalSpy changed(info.get(), &PulsarGrafikInfo::changeDispersions);
    info->setDispersions({26.2, 0.1, 100, 12.455});
    QCOMPARE(find<QLineEdit>("dispersion2")->text(), QString("0.1"));
    typeAndEnter("dispersion3", " 2.5e1 ");
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed[0][0].value<QVector<double>>(), (QVector<double>{26.2, 0.1, 25, 12.455}));
}

void TestPulsarGrafikInfo::refusedDispersion_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("word") << "abc";
    QTest::newRow("nothing") << "";
    QTest::newRow("decimal comma") << "26,2";
    QTest::newRow("number and unit") << "26.2 pc";
    QTest::newRow("infinite") << "inf";
    QTest::newRow("not a number") << "nan";
}

void TestPulsarGrafikInfo::refusedDispersion()
{
    QFETCH(QString, text);
    QSignalSpy changed(info.get(), &PulsarGrafikInfo::changeDispersions);
    const QString refused = "background-color: #f4cccc;";
    auto *second = find<QLineEdit>("dispersion2");
    second->setText(text);
    find<QLineEdit>("dispersion4")->setText(text);
    press("changeDispersionsButton");
    QCOMPARE(changed.size(), 0);
    QCOMPARE(find<QLineEdit>("dispersion1")->styleSheet(), QString());
    QCOMPARE(second->styleSheet(), refused);
    QCOMPARE(find<QLineEdit>("dispersion4")->styleSheet(), refused);
    QVERIFY(second->hasFocus());

    find<QLineEdit>("dispersion4")->setText("1");
    second->setText("2");
    press("changeDispersionsButton");
    QCOMPARE(changed.size(), 1);
    QCOMPARE(second->styleSheet(), QString());
}

void TestPulsarGrafikInfo::multiResults()
{
    QSignalSpy one(info.get(), &PulsarGrafikInfo::showMultiResult);
    QSignalSpy all(info.get(), &PulsarGrafikInfo::returnMultiGrafiks);
    auto *group = find<QWidget>("groupBox_multiResults");
    QVERIFY(!group->isVisible());
    info->setMultiResults({"averages 1", "averages 2", "averages 3"});
    QVERIFY(group->isVisible());
    find<QComboBox>("multiResult")->setCurrentText("averages 3");
    press("showOneButton");
    press("showAllButton");
    QCOMPARE(one.size(), 1);
    QCOMPARE(one[0][0].toInt(), 2);
    QCOMPARE(all.size(), 1);
    info->setMultiResults({});
    QVERIFY(!group->isVisible());
}

void TestPulsarGrafikInfo::coordinates()
{
    auto *coords = find<QLabel>("coords");
    QCOMPARE(coords->text(), QString("Coords: set mouse on graph area..."));
    PlotData data;
    data.graphs = {{1, 2}};
    data.labelsX1 = {"a0", "a1"};
    data.labelsX3 = {"c0", "c1"};
    grafik->setData(data);
    QMouseEvent move(QEvent::MouseMove, QPoint(67, 181), Qt::NoButton, {}, Qt::NoModifier);
    QApplication::sendEvent(grafik.get(), &move);
    QCOMPARE(coords->text(), QString("X: 1.2   Y: 49.7\na1\nc1"));

    data.numPoints = 6000; // ten points per pixel
    data.labelsX1.clear();
    data.labelsX3.clear();
    grafik->setData(data);
    info->setCoords(QPointF(1999.9, 5), {});
    QCOMPARE(coords->text(), QString("X: 1999   Y: 5.0"));
}

void TestPulsarGrafikInfo::widthStaysAsCoordinatesChange()
{
    const int width = info->minimumSizeHint().width();
    const int textsTop = find<QWidget>("texts")->y();
    info->setCoords(QPointF(12345678.9, -0.000012345), {QString(200, 'x'), "b"});
    QApplication::processEvents();
    QCOMPARE(info->minimumSizeHint().width(), width);
    info->setCoords(QPointF(1, 1), {"12:00:00", "a", "b"});
    QApplication::processEvents();
    QCOMPARE(find<QWidget>("texts")->y(), textsTop);
}

void TestPulsarGrafikInfo::texts()
{
    auto *texts = find<QPlainTextEdit>("texts");
    info->setTexts("Action:a\nModule:1", "Sigma = 2 < 3");
    QCOMPARE(texts->toPlainText(),
             QString("Calculation:\nAction:a\nModule:1\n\nGrafik:\n\nSigma = 2 < 3"));
    QTest::keyClicks(texts, "typed");
    QVERIFY(!texts->toPlainText().contains("typed"));
    texts->selectAll();
    QVERIFY(texts->textCursor().hasSelection());
}

void TestPulsarGrafikInfo::groupsFollowTheAction()
{
    info->setFourierControls(false);
    QVERIFY(!find<QWidget>("maxSigma")->isEnabled());
    QVERIFY(find<QWidget>("dispersion1")->isEnabled());
    info->setDispersionControls(false);
    QVERIFY(!find<QWidget>("dispersion1")->isEnabled());
    info->setFourierControls(true);
    QVERIFY(find<QWidget>("maxSigma")->isEnabled());
    QVERIFY(find<QWidget>("points")->isEnabled());
}

void TestPulsarGrafikInfo::tabOrderFollowsTheEye()
{
    info->setMultiResults({"a"});
    QApplication::processEvents();
    find<QWidget>("points")->setFocus();
    QStringList names;
    QPoint last(-1, -1);
    while (info->focusWidget() != find<QWidget>("texts")) {
        QWidget *widget = info->focusWidget();
        const QPoint place = widget->mapTo(find<QWidget>("contents"), QPoint(0, 0));
        QVERIFY2(place.y() > last.y() || (place.y() == last.y() && place.x() > last.x()),
                 qPrintable(widget->objectName()));
        last = place;
        names.append(widget->objectName());
        QVERIFY(names.size() < 20);
        QTest::keyClick(widget, Qt::Key_Tab);
    }
    QCOMPARE(names.size(), 13);
}

void TestPulsarGrafikInfo::nothingIsCut_data()
{
    QTest::addColumn<int>("fontPoints");
    QTest::newRow("small font") << 9;
    QTest::newRow("large font") << 14;
}

void TestPulsarGrafikInfo::nothingIsCut()
{
    QFETCH(int, fontPoints);
    QFont font = standardFont;
    font.setPointSize(fontPoints);
    QApplication::setFont(font);
    info->setMultiResults({"a"});
    info->resize(info->minimumSizeHint().width(), 620);
    QApplication::processEvents();
    QVERIFY(info->width() < 1280 / 3);
    const auto *contents = find<QWidget>("contents");
    const auto *viewport = contents->parentWidget();
    QVERIFY(contents->width() <= viewport->width());
    for (const QWidget *widget : contents->findChildren<QWidget *>()) {
        const bool fixedText =
            qobject_cast<const QPushButton *>(widget) != nullptr ||
            (qobject_cast<const QLabel *>(widget) != nullptr && widget->objectName() != "coords");
        if (fixedText) {
            QVERIFY2(widget->width() >= widget->sizeHint().width(),
                     qPrintable(widget->objectName()));
            QVERIFY2(widget->height() >= widget->sizeHint().height(),
                     qPrintable(widget->objectName()));
        }
    }
}

ZRT_GUI_TEST_MAIN(TestPulsarGrafikInfo)

#include "tst_pulsargrafikinfo.moc"
