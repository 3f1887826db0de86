#include "plot/pulsargrafikinfo.h"

#include "picture/straightplot.h"
#include "plot/pulsargrafik.h"
#include "support/testmain.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>

using Calls = QList<QVariantList>;

class TestPulsarGrafikInfo : public QObject {
    Q_OBJECT

private slots:
    void buttonsAndEnterAskForChanges();
    void refusedDispersions();
    void coordinates();

private:
    PulsarGrafik grafik;
    PulsarGrafikInfo info{&grafik};
};

void TestPulsarGrafikInfo::buttonsAndEnterAskForChanges()
{
    QSignalSpy points(&info, &PulsarGrafikInfo::pointsRequested);
    QSignalSpy sigma(&info, &PulsarGrafikInfo::changeMaxSigma);
    QSignalSpy one(&info, &PulsarGrafikInfo::showMultiResult);
    QSignalSpy all(&info, &PulsarGrafikInfo::returnMultiGrafiks);
    info.setPoints(1234);
    info.setMultiResults({"averages 1", "averages 2"});
    info.findChild<QComboBox *>("multiResult")->setCurrentIndex(1);
    for (const char *name : {"changePointsButton", "resetPointsButton", "redrawMaxSigmaButton",
                             "showOneButton", "showAllButton"})
        info.findChild<QPushButton *>(name)->click();
    for (const char *name : {"points", "resetPointsButton", "maxSigma", "multiResult"}) {
        info.findChild<QWidget *>(name)->setFocus();
        QTest::keyClick(info.focusWidget(), Qt::Key_Return);
    }
    QCOMPARE(Calls(points), (Calls{{1234}, {0}, {1234}, {0}}));
    QCOMPARE(Calls(sigma), (Calls{{6}, {6}}));
    QCOMPARE(Calls(one), (Calls{{1}, {1}}));
    QCOMPARE(all.size(), 1);
}

void TestPulsarGrafikInfo::refusedDispersions()
{
    QSignalSpy changed(&info, &PulsarGrafikInfo::changeDispersions);
    info.setDispersions({26.2, 0.1, 100, 12.455});
    auto *third = info.findChild<QLineEdit *>("dispersion3");
    for (const char *text : {"", "1,026.2", "26.2 pc", "inf", "nan", " 2,5e1 "}) {
        third->setText(text);
        info.findChild<QPushButton *>("changeDispersionsButton")->click();
        QCOMPARE(third->styleSheet().isEmpty(), !changed.isEmpty()); // refused: marked
    }
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed[0][0].value<QVector<double>>(), (QVector<double>{26.2, 0.1, 25, 12.455}));
}

void TestPulsarGrafikInfo::coordinates()
{
    grafik.resize(690, 400); // 6 pixels per point and 3 per unit
    emit grafik.coordsChanged(QPointF(1.1667, 49.667), {"a1", "c1"});
    const auto *coords = info.findChild<QLabel *>("coords");
    QCOMPARE(coords->text(), QString("X: 1.2   Y: 49.7\na1\nc1"));
    grafik.setData(TestSupport::dataOf({}, 6000)); // ten points per pixel
    emit grafik.coordsChanged(QPointF(1999.9, 5), {});
    QCOMPARE(coords->text(), QString("X: 1999   Y: 5.0"));
}

ZRT_GUI_TEST_MAIN(TestPulsarGrafikInfo)

#include "tst_pulsargrafikinfo.moc"
