#include "calc/pulsar/computedon.h"
#include "calc/pulsar/startpoint.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QLocale>

class TestStartPoint : public QObject {
    Q_OBJECT

private slots:
    void startByUtc_data();
    void startByUtc();
    void startByUtcNeedsABegin();
    void trueNumbers();
};

void TestStartPoint::startByUtc_data()
{
    QLocale::setDefault(QLocale("ar_EG")); // other digits and marks must change nothing
    // 50000 points of 12.4928 ms are 624.64 s: 23:55:00 to 00:05:24.
    QTest::addColumn<QString>("time");
    QTest::addColumn<int>("point");
    QTest::addColumn<QString>("error");
    QTest::newRow("begin") << "23:55:00" << 0 << "";
    QTest::newRow("whole steps land on their point") << "23:55:12.493" << 1000 << "";
    QTest::newRow("between two points goes down") << "23:55:01" << 80 << "";
    QTest::newRow("over midnight") << "0:5:0" << 48027 << "";
    QTest::newRow("before the begin") << "23:54:59" << 0 << "Allowed: 23:55:00.000 to 00:05:24.627";
    QTest::newRow("after the end") << "00:05:25" << 0 << "Allowed: 23:55:00.000 to 00:05:24.627";
    QTest::newRow("no time") << "noon" << 0 << "hh:mm:ss";
    QTest::newRow("hour 24") << "24:00:00" << 0 << "hh:mm:ss";
}

void TestStartPoint::startByUtc()
{
    ObservationData data;
    data.npoints = 50000;
    data.tresolution = 0.0124928;
    data.beginTime = QDateTime(QDate(2015, 4, 1), QTime(23, 55), Qt::UTC);
    QFETCH(QString, time);
    QFETCH(QString, error);
    const StartPoint start = pointAtUtc(data, time);
    QTEST(start.point, "point");
    QCOMPARE(start.error.isEmpty(), error.isEmpty());
    QVERIFY2(start.error.contains(error), qPrintable(start.error));
}

void TestStartPoint::startByUtcNeedsABegin()
{
    ObservationData data;
    data.npoints = 50000;
    data.tresolution = 0.0124928;
    QVERIFY(pointAtUtc(data, "12:00:00").error.contains("no begin time"));
}

void TestStartPoint::trueNumbers()
{
    ObservationData data;
    data.modules = 1;
    data.rays = 1;
    data.moduleNumbers = {3};
    data.ray = 5;
    PulsarParameters parameters;
    QCOMPARE(choicesText("sum4Dispersions", data, parameters, 8192),
             QString("Action:sum4Dispersions\nModule:1 (number 3)\nChannel:1\nRay:1 (number 5)\n"
                     "Points:8192"));
    QVERIFY(computedOn("a.pnt", "showNative", data, parameters, {})
                .contains("module: 3 (place 1 in the file), ray: 5 (place 1 in the file)"));
    data.moduleNumbers = {1};
    data.ray = -1;
    data.rays = 8;
    parameters.ray = 7;
    QCOMPARE(choicesText("showNative", data, parameters, 16384),
             QString("Action:showNative\nModule:1\nChannel:1\nRay:7\nPoints:16384"));
}

ZRT_UNIT_TEST_MAIN(TestStartPoint)
#include "tst_startpoint.moc"
