#include "coords/alfa2000.h"
#include "coords/coordinates.h"
#include "support/testmain.h"

#include <cmath>
#include <functional>
#ifdef ZRT_HAS_ERFA
#include <erfa.h>
#endif

using namespace Tools;

Q_DECLARE_METATYPE(CalendarDate)
Q_DECLARE_METATYPE(CoordinatePair)

namespace {

constexpr double degree = 3.14159265358979323846 / 180;
constexpr double hour = 15 * degree;
constexpr double presetStep = 0.0124928; // s
const CalendarDate presetDate = {1, 4, 2015};

double degrees(const AngleValue &value)
{
    return value.degrees + value.minutes / 60.0 + value.seconds / 3600;
}

double hours(const HourAngleValue &value)
{
    return value.hours + value.minutes / 60.0 + value.seconds / 3600;
}

// Difference of two times of day, seconds, the short way round.
double secondsApart(double hours1, double hours2)
{
    return std::remainder(hours1 - hours2, 24) * 3600;
}

QString text(int value)
{
    return QString("%1").arg(value, 2, 10, QChar('0'));
}

QString dateText(const CalendarDate &date)
{
    return QString("%1.%2.%3").arg(date.year).arg(text(date.month), text(date.day));
}

// Culmination to a tenth of a millisecond, hours of UT.
double culmination(int rightAscensionHours, int declinationDegrees, const CalendarDate &date)
{
    const double step = 1e-4;
    const CulminationResult result =
        culminationFromCatalog(text(rightAscensionHours) + ":20:40",
                               text(declinationDegrees) + ":00:00", dateText(date), 1, step, 4, 0);
    return result.time.left(2).toInt() + (result.culminationPoint + 0.5) * step / 3600;
}

// The beams' plane holds the horizon's north point and the zenith's neighbour, tilted by
// asin(0.008435899940825067) towards east: how far east of it a direction lies.
double eastOfPlane(double beforeMeridian, double delta)
{
    const double latitude = std::asin(0.8173688208920868);
    const double tilt = std::asin(0.008435899940825067);
    const double east = std::cos(delta) * std::sin(beforeMeridian);
    const double up = std::sin(latitude) * std::sin(delta) +
                      std::cos(latitude) * std::cos(delta) * std::cos(beforeMeridian);
    return east * std::cos(tilt) - up * std::sin(tilt);
}

} // namespace

class TestCoordinates : public QObject {
    Q_OBJECT

private slots:
    void siderealTimes_data();
    void siderealTimes();
    void noSiderealTime();
    void precession_data();
    void precession();
    void twoPassesOfPrecession();
    void beamPlane_data();
    void beamPlane();
    void inverseBeamPlane_data();
    void inverseBeamPlane();
    void culminations_data();
    void culminations();
    void refusedCulminations_data();
    void refusedCulminations();
    void forwardAndBack_data();
    void forwardAndBack();
    void declinationsOutOfRange_data();
    void declinationsOutOfRange();
    void texts_data();
    void texts();
    void estimates_data();
    void estimates();
    void refusedEstimates_data();
    void refusedEstimates();
    void siderealTimesOfErfa();
    void apparentPlacesOfErfa_data();
    void apparentPlacesOfErfa();
};

void TestCoordinates::siderealTimes_data()
{
    QTest::addColumn<CalendarDate>("date");
    QTest::addColumn<double>("ut"); // h
    QTest::addColumn<double>("expected");
    // Meeus, Astronomical Algorithms, examples 12.a and 12.b.
    QTest::newRow("midnight") << CalendarDate{10, 4, 1987} << 0.0
                              << 13 + 10 / 60.0 + 46.3668 / 3600;
    QTest::newRow("evening") << CalendarDate{10, 4, 1987} << 19 + 21 / 60.0
                             << 8 + 34 / 60.0 + 57.0896 / 3600;
    // 24110.54841 s at noon, less the 86636.55537 s of half a day with its gain.
    QTest::newRow("begin of 2000")
        << CalendarDate{1, 1, 2000} << 0.0 << (24110.54841 - 236.555367909 / 2) / 3600;
}

void TestCoordinates::siderealTimes()
{
    QFETCH(CalendarDate, date);
    QFETCH(double, ut);
    QFETCH(double, expected);
    const double tolerance = 1e-4; // s; the last digit given
    QVERIFY(std::abs(siderealTimeAt(date, ut) - expected) * 3600 < tolerance);
}

void TestCoordinates::noSiderealTime()
{
    QVERIFY(std::isnan(siderealTimeAt({29, 2, 2015})));
}

void TestCoordinates::precession_data()
{
    QTest::addColumn<CoordinatePair>("of2000");
    QTest::addColumn<CalendarDate>("date");
    QTest::addColumn<CoordinatePair>("ofDate");
    QTest::addColumn<double>("toleranceAlfa");  // s
    QTest::addColumn<double>("toleranceDelta"); // "
    // m = 3.07324 s and n = 20.4000" a year act alone at 0h on the equator; t = 1 + 1/365.
    QTest::newRow("equator") << CoordinatePair{{0, 0, 0}, {0, 0, 0}} << CalendarDate{1, 12, 2000}
                             << CoordinatePair{{0, 0, 3.0817}, {0, 0, 20.456}} << 2e-4 << 2e-3;
    QTest::newRow("past 24 hours")
        << CoordinatePair{{23, 59, 59}, {0, 0, 0}} << CalendarDate{1, 12, 2000}
        << CoordinatePair{{0, 0, 2.0817}, {0, 0, 20.456}} << 2e-4 << 2e-3;
    QTest::newRow("below 0 hours, declination below 0")
        << CoordinatePair{{0, 0, 1}, {0, 0, 5}} << CalendarDate{30, 11, 1998}
        << CoordinatePair{{23, 59, 57.9233}, {0, 0, -15.4232}} << 2e-4 << 2e-3;
    // Meeus, example 21.b, theta Persei to 2028 November 13.19. n is here 1.8 % larger than
    // his: 0.5 s and 7.9" over 29 years; the epoch is a month later: 0.35 s and 1.3".
    QTest::newRow("theta Persei") << CoordinatePair{{2, 44, 12.975}, {49, 13, 39.90}}
                                  << CalendarDate{13, 11, 2028}
                                  << CoordinatePair{{2, 46, 11.331 + 0.5 + 0.35},
                                                    {49, 20, 54.54 + 7.9 + 1.3}}
                                  << 0.1 << 0.2;
}

void TestCoordinates::precession()
{
    QFETCH(CoordinatePair, of2000);
    QFETCH(CalendarDate, date);
    QFETCH(CoordinatePair, ofDate);
    QFETCH(double, toleranceAlfa);
    QFETCH(double, toleranceDelta);
    const CoordinatePair there = precessFrom2000(of2000, date);
    QVERIFY(there.alfa.hours >= 0 && there.alfa.hours < 24);
    QVERIFY(there.alfa.minutes >= 0 && there.alfa.seconds >= 0);
    QVERIFY(std::abs(secondsApart(hours(there.alfa), hours(ofDate.alfa))) < toleranceAlfa);
    QVERIFY(std::abs(degrees(there.delta) - degrees(ofDate.delta)) * 3600 < toleranceDelta);

    // The midpoint rule is its own inverse but for the second of its two passes.
    const CoordinatePair back = precessTo2000(there, date);
    QVERIFY(std::abs(secondsApart(hours(back.alfa), hours(of2000.alfa))) < 1e-5);
    QVERIFY(std::abs(degrees(back.delta) - degrees(of2000.delta)) * 3600 < 1e-5);
}

// Worked out by hand; a third pass would add 0.047 s and take 0.15" away.
void TestCoordinates::twoPassesOfPrecession()
{
    const CoordinatePair there = precessFrom2000({{3, 0, 0}, {85, 0, 0}}, {30, 5, 2030});
    QVERIFY(std::abs(secondsApart(hours(there.alfa), 3 + 7 / 60.0 + 18.39418 / 3600)) < 1e-4);
    QVERIFY(std::abs(degrees(there.delta) - (85 + 7 / 60.0 + 13.02991 / 3600)) * 3600 < 1e-4);
}

void TestCoordinates::beamPlane_data()
{
    QTest::addColumn<double>("delta"); // degrees
    for (const double delta : {-35.0, -10.0, 0.0, 39.7, 54.82, 60.0, 80.0, 89.0})
        QTest::addRow("declination %g", delta) << delta;
}

void TestCoordinates::beamPlane()
{
    QFETCH(double, delta);
    const double before = beamPlaneHourAngle(delta * degree);
    QVERIFY(before > 0);
    // The constants are given to 16 digits.
    QVERIFY(std::abs(eastOfPlane(before, delta * degree)) < 1e-15);
}

void TestCoordinates::inverseBeamPlane_data()
{
    QTest::addColumn<double>("delta"); // degrees
    QTest::addColumn<double>("seconds");
    // u = sqrt(5.049292) / 3.326181 at 0, (0.817340 + sqrt(1.249429)) / 3.326181 at 30 and
    // (1.415674 + sqrt(0.048391)) / 3.326181 at 60 degrees.
    QTest::newRow("equator") << 0.0 << 78.368;
    QTest::newRow("in between") << 30.0 << 77.929;
    QTest::newRow("north") << 60.0 << 114.09;
    // The root's argument reaches 0 where sqrt(sin) = 0.93961, at 61.99 degrees.
    QTest::newRow("too far north") << 62.0 << qQNaN();
    QTest::newRow("south") << -0.001 << qQNaN();
    QTest::newRow("beyond the pole") << 120.0 << qQNaN();
}

void TestCoordinates::inverseBeamPlane()
{
    QFETCH(double, delta);
    QFETCH(double, seconds);
    const double before = inverseBeamPlaneHourAngle(delta * degree) / hour * 3600;
    QCOMPARE(std::isnan(before), std::isnan(seconds));
    if (!std::isnan(seconds))
        QVERIFY(std::abs(before - seconds) < 0.01);
}

void TestCoordinates::culminations_data()
{
    QTest::addColumn<QString>("alfa");
    QTest::addColumn<QString>("delta");
    QTest::addColumn<QString>("date");
    QTest::addColumn<double>("tres");
    QTest::addColumn<int>("spanPoints");
    QTest::addColumn<QString>("time");
    QTest::addColumn<int>("point");
    QTest::addColumn<QString>("file");
    const QString colons = "39:44:52";
    const QString alfa = "03:23:27";
    const QString day = "2015.04.01";
    // 12:13:20.66 is 800.66 s after the hour.
    QTest::newRow("example") << alfa << colons << day << presetStep << 0 << "12:13:20" << 64090
                             << "010415_17_N1_00.pnthr";
    QTest::newRow("degree signs") << alfa << QString::fromUtf8("39°44′52″") << day << presetStep
                                  << 0 << "12:13:20" << 64090 << "010415_17_N1_00.pnthr";
    QTest::newRow("seconds of the declination are two characters")
        << alfa << "39:44:52 or so" << day << presetStep << 0 << "12:13:20" << 64090
        << "010415_17_N1_00.pnthr";
    QTest::newRow("span begins half of it earlier")
        << alfa << colons << day << presetStep << 16385 << "12:13:20" << 55897
        << "010415_17_N1_00.pnthr";
    QTest::newRow("long steps") << alfa << colons << day << 0.0999424 << 0 << "12:13:20" << 8011
                                << "010415_17_N1_00.pnt";
    QTest::newRow("hours past 24") << "99:23:27" << colons << day << presetStep << 0 << "12:13:20"
                                   << 64090 << "010415_17_N1_00.pnthr";
    // 8 sidereal hours are 7:58:41.16 by the constant; less 10.3 s, as precession differs on the
    // other half of the sky.
    QTest::newRow("file of the next day")
        << "11:23:27" << colons << day << 0.1 << 0 << "20:11:51" << 7114 << "020415_01_N1_00.pnt";
}

void TestCoordinates::culminations()
{
    QFETCH(QString, alfa);
    QFETCH(QString, delta);
    QFETCH(QString, date);
    QFETCH(double, tres);
    QFETCH(int, spanPoints);
    const CulminationResult result =
        culminationFromCatalog(alfa, delta, date, 1, tres, 4, spanPoints);
    QVERIFY(result.isReached);
    QCOMPARE(result.date, date);
    QTEST(result.time, "time");
    QTEST(result.culminationPoint, "point");
    QTEST(result.fileName, "file");
}

void TestCoordinates::refusedCulminations_data()
{
    QTest::addColumn<QString>("alfa");
    QTest::addColumn<QString>("date");
    QTest::addColumn<double>("tres");
    QTest::addColumn<QString>("line");
    const QString function = "Tools::culminationFromCatalog(): ";
    QTest::newRow("no date") << "03:23:27"
                             << "2015.02.29" << presetStep << function + "bad date=2015.02.29";
    QTest::newRow("step 0") << "03:23:27"
                            << "2015.04.01" << 0.0 << function + "bad tres=0";
    QTest::newRow("negative step") << "03:23:27"
                                   << "2015.04.01" << -1.0 << function + "bad tres=-1";
    QTest::newRow("step not a number") << "03:23:27"
                                       << "2015.04.01" << qQNaN() << function + "bad tres=nan";
    QTest::newRow("more points than an integer holds")
        << "03:23:27"
        << "2015.04.01" << 3.7e-7 << function + "bad tres=3.7e-07";
    QTest::newRow("right ascension without seconds")
        << "03:23:"
        << "2015.04.01" << presetStep << function + "bad position=03:23: 39:44:52";
}

void TestCoordinates::refusedCulminations()
{
    QFETCH(QString, alfa);
    QFETCH(QString, date);
    QFETCH(double, tres);
    QFETCH(QString, line);
    QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    const CulminationResult result = culminationFromCatalog(alfa, "39:44:52", date, 1, tres, 4, 0);
    QCOMPARE(result.fileName, QString());
    QVERIFY(result.isReached);
}

void TestCoordinates::forwardAndBack_data()
{
    QTest::addColumn<int>("rightAscension"); // h, and 20 min 40 s
    QTest::addColumn<int>("declination");
    QTest::addColumn<CalendarDate>("date");
    QTest::newRow("example's neighbourhood") << 3 << 40 << presetDate;
    QTest::newRow("equator, before 2000") << 23 << 0 << CalendarDate{29, 2, 1992};
    QTest::newRow("zenith") << 12 << 55 << CalendarDate{31, 12, 2040};
    QTest::newRow("far north") << 0 << 80 << CalendarDate{1, 1, 2000};
    for (int month = 1; month <= 12; ++month)
        QTest::addRow("month %d", month) << 18 << 20 << CalendarDate{23, month, 2022};
}

void TestCoordinates::forwardAndBack()
{
    QFETCH(int, rightAscension);
    QFETCH(int, declination);
    QFETCH(CalendarDate, date);
    const CoordinatePair of2000 = {{rightAscension, 20, 40}, {declination, 0, 0}};
    const AngleValue delta = precessFrom2000(of2000, date).delta;
    const double ut = culmination(rightAscension, declination, date);
    const CoordinatePair back =
        catalogFromHourAngle(date, {int(ut), 0, std::fmod(ut, 1) * 3600}, delta,
                             beamPlaneHourAngle(degrees(delta) * degree));
    // Half a point of the culmination and what precession there and back leaves.
    QVERIFY(std::abs(secondsApart(hours(back.alfa), hours(of2000.alfa))) < 3e-4);
    QVERIFY(std::abs(degrees(back.delta) - declination) * 3600 < 3e-4);
}

void TestCoordinates::declinationsOutOfRange_data()
{
    QTest::addColumn<QString>("delta");
    QTest::addColumn<bool>("forward");
    QTest::addColumn<bool>("inverse");
    QTest::newRow("middle") << "39:44:52" << true << true;
    QTest::newRow("too far north for the way back") << "62:30:00" << true << false;
    QTest::newRow("north of the plane's edge") << "89:50:00" << false << false;
    QTest::newRow("beyond the pole") << "91:00:00" << false << false;
    QTest::newRow("not a declination") << "99:99:99" << false << false;
}

void TestCoordinates::declinationsOutOfRange()
{
    QFETCH(QString, delta);
    QFETCH(bool, forward);
    const CulminationResult result =
        culminationFromCatalog("03:23:27", delta, "2015.04.01", 1, presetStep, 4, 0);
    QCOMPARE(result.isReached, forward);
    QCOMPARE(result.fileName.isEmpty(), !forward);
    const CoordinatePair back =
        catalogFromCulmination(presetDate, {12, 13, 20.66}, angleFromText(delta));
    QTEST(isNumber(back), "inverse");
    QCOMPARE(hourAngleText(back.alfa) == "nan", !isNumber(back));
    QCOMPARE(angleText(back.delta) == "nan", !isNumber(back));
}

void TestCoordinates::texts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &text, const char *expected) {
        QTest::newRow(name) << text << QString::fromUtf8(expected);
    };
    const auto angle = [](const char *text) {
        return angleText(angleFromText(QString::fromUtf8(text)));
    };
    const auto time = [](const char *text) { return hourAngleText(hourAngleFromText(text)); };
    row("whole seconds", angle("39:44:52"), "39°44′52.00″");
    row("what is shown can be read", angle("39°44′52.35″"), "39°44′52.35″");
    row("decimals without sign", angle("39 44 52.355"), "39°44′52.35″"); // 52.35499...
    row("letters after the seconds", angle("39:44:52N"), "nan");
    row("no seconds", angle("39:44:"), "nan");
    row("sign of a small value", angleText({0, -4, -12.5}), "-00°04′12.50″");
    row("time with decimals", time("12:13:20.66"), "12:13:20.66");
    row("time in seconds of an exponent", time("12:13:2e3"), "nan");
    row("time with the sign of seconds of arc", time("12:13:20″"), "nan");
}

void TestCoordinates::texts()
{
    QFETCH(QString, text);
    QTEST(text, "expected");
}

void TestCoordinates::estimates_data()
{
    QTest::addColumn<QDateTime>("begin");
    QTest::addColumn<int>("point");
    QTest::addColumn<QString>("delta");
    QTest::addColumn<QString>("alfa");
    const QDate day(1987, 4, 10);
    const QDateTime midnight(day, QTime(0, 0), Qt::UTC);
    // Meeus' sidereal times (12.a, 12.b), less the gain of half a day (118.277 s) that its day
    // number leaves out, 2:30:34 further east, plus 0.10 s (its rate differs in the 8th digit),
    // plus the hour angle of the plane (66.832 s at 0, 145.686 s), less some hundredths of
    // precession.
    QTest::newRow("equator, midnight") << midnight << 0 << "00:00:00"
                                       << "15:40:29.01";
    QTest::newRow("declination") << midnight << 0 << "39:44:52"
                                 << "15:41:47.86";
    QTest::newRow("points count, and not in whole seconds") // 69660.75 s
        << midnight << 696607500 << "0:0:0"
        << "11:04:40.48";
    QTest::newRow("time zone ignored")
        << QDateTime(day, QTime(19, 21), Qt::OffsetFromUTC, 7200) << 0 << "0:0:0"
        << "11:04:39.73";
    // With 30 digits; one pass of precession would give 26.30, a third 25.45.
    QTest::newRow("near the pole") << midnight << 0 << "89:30:0"
                                   << "19:12:25.46";
    QTest::newRow("the pole is never reached") << midnight << 0 << "90:0:0"
                                               << "nan";
}

void TestCoordinates::estimates()
{
    QFETCH(QDateTime, begin);
    QFETCH(int, point);
    QFETCH(QString, delta);
    QTEST(getAlfa2000(begin, point, 1e-4, delta), "alfa");
}

void TestCoordinates::refusedEstimates_data()
{
    QTest::addColumn<QDateTime>("begin");
    QTest::addColumn<int>("point");
    QTest::addColumn<double>("tres");
    QTest::addColumn<QString>("line");
    const QDateTime begin(QDate(2015, 4, 1), QTime(12, 13, 20), Qt::UTC);
    const QString noTime = "getAlfa2000() ERROR! Invalid dateTime!";
    QTest::newRow("no time") << QDateTime() << -1 << 1.0 << noTime;
    QTest::newRow("time beyond all calendars") << begin << 2 << 1e300 << noTime;
    QTest::newRow("step not a number") << begin << 2 << qQNaN() << noTime;
    QTest::newRow("point below 0") << begin << -1 << 1.0 << "getAlfa2000() ERROR! Bad point=-1";
}

void TestCoordinates::refusedEstimates()
{
    QFETCH(QDateTime, begin);
    QFETCH(int, point);
    QFETCH(double, tres);
    QFETCH(QString, line);
    QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    QCOMPARE(getAlfa2000(begin, point, tres, "39:44:52"), QString());
}

#ifdef ZRT_HAS_ERFA

namespace {

constexpr double ttMinusUt = 69 / 86400.0; // days; within 10 s from 2000 to 2040

// Julian day of 0h UT.
double julianDay(const QDate &day)
{
    return double(day.toJulianDay()) - 0.5;
}

CalendarDate calendarDate(const QDate &day)
{
    return {day.day(), day.month(), day.year()};
}

// Where a falling function crosses zero.
double crossing(const std::function<double(double)> &function, double low, double high)
{
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (function(middle) > 0 ? low : high) = middle;
    }
    return low;
}

// One date's sky: places and the sidereal time as they are at noon, which moves a source less
// than 0.02 s against what it is at any other hour.
class ApparentSky {
public:
    explicit ApparentSky(const QDate &day)
    {
        const double midnight = julianDay(day);
        eraApci13(midnight, 0.5 + ttMinusUt, &context, &equationOfOrigins);
        siderealTimeAtNoon = eraGst06a(midnight, 0.5, midnight, 0.5 + ttMinusUt);
    }

    // Hours of UT, near `guess`, when a source of 2000 crosses the beam plane.
    double crossesPlane(double alpha, double delta, double guess)
    {
        double ri = 0;
        double di = 0;
        eraAtciq(alpha, delta, 0, 0, 0, 0, &context, &ri, &di);
        const auto east = [&](double ut) {
            const double local =
                siderealTimeAtNoon + (ut - 12) * 1.00273781191 * hour + 2.508666666666667 * hour;
            return eastOfPlane(ri - equationOfOrigins - local, di);
        };
        return crossing(east, guess - 0.05, guess + 0.05);
    }

private:
    eraASTROM context = {};
    double equationOfOrigins = 0;
    double siderealTimeAtNoon = 0;
};

} // namespace

void TestCoordinates::siderealTimesOfErfa()
{
    for (QDate day(2000, 1, 1); day.year() <= 2040; day = day.addDays(7)) {
        const double siderealTime = siderealTimeAt(calendarDate(day));
        const double midnight = julianDay(day);
        // The same formula; rounding only.
        QVERIFY(std::abs(secondsApart(siderealTime, eraGmst82(midnight, 0) / hour)) < 1e-7);
        // Nutation moves the equinox by up to 1.2 s.
        const double apparent = eraGst06a(midnight, 0, midnight, ttMinusUt) / hour;
        QVERIFY(std::abs(secondsApart(siderealTime, apparent)) < 1.2);
    }
}

#else

void TestCoordinates::siderealTimesOfErfa()
{
    QSKIP("liberfa was not found when this was built");
}

#endif

void TestCoordinates::apparentPlacesOfErfa_data()
{
    QTest::addColumn<int>("declination");
    QTest::addColumn<double>("tolerance"); // s; aberration and nutation, which are left out
    for (const int declination : {0, 10, 20, 30, 40, 50})
        QTest::addRow("declination %d", declination) << declination << 5.0;
    QTest::newRow("declination 60") << 60 << 9.0;
    QTest::newRow("declination 70") << 70 << 9.0;
    QTest::newRow("declination 80") << 80 << 20.0;
}

void TestCoordinates::apparentPlacesOfErfa()
{
#ifdef ZRT_HAS_ERFA
    QFETCH(int, declination);
    QFETCH(double, tolerance);
    double worst = 0;
    for (QDate day(2000, 1, 1); day.year() <= 2040; day = day.addDays(41)) {
        ApparentSky sky(day);
        for (int rightAscension = 0; rightAscension < 24; rightAscension += 3) {
            const double ut = culmination(rightAscension, declination, calendarDate(day));
            const double alpha = (rightAscension + 20 / 60.0 + 40 / 3600.0) * hour;
            const double apparent = sky.crossesPlane(alpha, declination * degree, ut);
            worst = std::max(worst, std::abs(ut - apparent) * 3600);
        }
    }
    QVERIFY2(worst < tolerance, qPrintable(QString("%1 s").arg(worst)));
#else
    QSKIP("liberfa was not found when this was built");
#endif
}

ZRT_UNIT_TEST_MAIN(TestCoordinates)
#include "tst_coordinates.moc"
