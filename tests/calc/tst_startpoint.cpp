#include "calc/pulsar/computedon.h"
#include "calc/pulsar/startpoint.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QLocale>

class TestStartPoint : public QObject {
    Q_OBJECT

private slots:
    void startByUtc();
    void trueNumbers();
};

void TestStartPoint::startByUtc()
{
    QLocale::setDefault(QLocale("ar_EG")); // other digits and marks must change nothing
    // 50000 points of 12.4928 ms are 624.64 s: 23:55:00 to 00:05:24.
    ObservationData data;
    data.npoints = 50000;
    data.tresolution = 0.0124928;
    QVERIFY(pointAtUtc(data, "12:00:00").problem.text.contains("no begin time"));
    data.beginTime = QDateTime(QDate(2015, 4, 1), QTime(23, 55), Qt::UTC);
    const char *const allowed = "Allowed: 23:55:00.000 to 00:05:24.627";
    for (const auto &[time, point, error] : {std::tuple("23:55:00", 0, ""),
                                             {"23:55:12.493", 1000, ""}, // a whole step
                                             {"23:55:01", 80, ""},       // goes down
                                             {"0:5:0", 48027, ""},
                                             {"23:54:59", 0, allowed},
                                             {"00:05:25", 0, allowed},
                                             {"noon", 0, "hh:mm:ss"},
                                             {"24:00:00", 0, "hh:mm:ss"}}) {
        const StartPoint start = pointAtUtc(data, time);
        QCOMPARE(start.point, point);
        QCOMPARE(start.problem.text.isEmpty(), QString(error).isEmpty());
        QVERIFY2(start.problem.text.contains(error), qPrintable(start.problem.text));
    }
}

void TestStartPoint::trueNumbers()
{
    ObservationData data;
    data.modules = 1;
    data.rays = 1;
    data.moduleNumbers = {3};
    data.ray = 5;
    PulsarParameters parameters;
    QCOMPARE(choicesReport("sum4Dispersions", data, parameters, 8192).plainText(),
             QString("Action:sum4Dispersions\nModule:1 (number 3)\nChannel:1\nRay:1 (number 5)\n"
                     "Points:8192"));
    QVERIFY(computedOn("a.pnt", "showNative", data, parameters, {})
                .contains("module: 3 (place 1 in the file), ray: 5 (place 1 in the file)"));
    data.moduleNumbers = {1};
    data.ray = -1;
    data.rays = 8;
    parameters.ray = 7;
    QCOMPARE(choicesReport("showNative", data, parameters, 16384).plainText(),
             QString("Action:showNative\nModule:1\nChannel:1\nRay:7\nPoints:16384"));
}

ZRT_UNIT_TEST_MAIN(TestStartPoint)
#include "tst_startpoint.moc"
