#include "coords/alfa2000.h"
#include "coords/angletext.h"
#include "coords/coordinates.h"
#include "support/testmain.h"

#include <cmath>
#include <erfa.h>
#include <tuple>

using namespace Tools;

namespace {

constexpr double degree = 3.14159265358979323846 / 180;
constexpr double hour = 15 * degree;
constexpr double presetStep = 0.0124928; // s

double decimal(const AngleValue &value)
{
    return value.degrees + value.minutes / 60.0 + value.seconds / 3600;
}

QString positionText(const CoordinatePair &position)
{
    return hourAngleText(position.alfa) + " " + angleText(position.delta);
}

// Culmination to a tenth of a millisecond, hours of UT.
double culmination(const CoordinatePair &of2000, const QDate &day)
{
    const double step = 1e-4;
    const CulminationResult result =
        culminationFromCatalog(hourAngleText(of2000.alfa), angleText(of2000.delta),
                               day.toString("yyyy.MM.dd"), 1, step, 4, 0);
    return result.time.left(2).toInt() + (result.culminationPoint + 0.5) * step / 3600;
}

// The beams' plane holds the horizon's north point and the zenith's neighbour, tilted by
// asin(0.008435899940825067) towards east: how far east of it a direction lies.
double eastOfPlane(double beforeMeridian, double delta)
{
    const double sine = 0.8173688208920868; // of the latitude
    const double tilt = std::asin(0.008435899940825067);
    const double up = sine * std::sin(delta) +
                      std::sqrt(1 - sine * sine) * std::cos(delta) * std::cos(beforeMeridian);
    return std::cos(delta) * std::sin(beforeMeridian) * std::cos(tilt) - up * std::sin(tilt);
}

QString siderealText(const CalendarDate &date, double ut)
{
    return secondsToHms(siderealTimeAt(date, ut) * 3600);
}

QString precessed(const CoordinatePair &of2000, const CalendarDate &date)
{
    return positionText(precessFrom2000(of2000, date));
}

QString found(const QString &alfa, const QString &delta, double tres, int span)
{
    const CulminationResult result =
        culminationFromCatalog(alfa, delta, "2015.04.01", 1, tres, 4, span);
    return QString("%1 %2 ").arg(result.time).arg(result.culminationPoint) +
           (result.isReached ? result.fileName : "not reached");
}

} // namespace

class TestCoordinates : public QObject {
    Q_OBJECT

private slots:
    void texts();
    void refusals();
    void beamPlane();
    void fortyYears();
};

void TestCoordinates::texts()
{
    const QString readable = "39°44′52.35″";
    const QString alfa = "03:23:27";
    const QDateTime midnight(QDate(1987, 4, 10), QTime(0, 0), Qt::UTC);
    const std::pair<QString, QString> rows[] = {
        {angleText(angleFromText("39:44:52N")), "nan"},
        {angleText({0, -4, -12.5}), "-00°04′12.50″"},
        // Meeus, Astronomical Algorithms, examples 12.a and 12.b.
        {siderealText({10, 4, 1987}, 0), "13:10:46.37"},
        {siderealText({10, 4, 1987}, 19.35), "08:34:57.09"},
        // m = 3.07324 s and n = 20.4000" a year act alone at 0h on the equator; t = 1 + 1/365.
        {precessed({{23, 59, 59}, {0, 0, 0}}, {1, 12, 2000}), "00:00:02.08 00°00′20.46″"},
        {precessed({{0, 0, 1}, {0, 0, 5}}, {30, 11, 1998}), "23:59:57.92 -00°00′15.42″"},
        // Two passes, worked out by hand; a third would add 0.047 s and take 0.15" away.
        {precessed({{3, 0, 0}, {85, 0, 0}}, {30, 5, 2030}), "03:07:18.39 85°07′13.03″"},
        // Too far north for the way back.
        {positionText(catalogFromCulmination({1, 4, 2015}, {12, 13, 20.66}, {62, 30, 0})),
         "nan nan"},
        // 12:13:20.66 is 800.66 s after the hour; then from half of the span earlier.
        {found(alfa, "39:44:52", presetStep, 0), "12:13:20 64090 010415_17_N1_00.pnthr"},
        {found(alfa, readable, presetStep, 16385), "12:13:20 55897 010415_17_N1_00.pnthr"},
        // 8 sidereal hours are 7:58:41.16 by the constant; less 10.3 s, as precession differs on
        // the other half of the sky. Long steps, and the file of the next day.
        {found("11:23:27", "39:44:52", 0.1, 0), "20:11:51 7114 020415_01_N1_00.pnt"},
        {found(alfa, "89:50:00", presetStep, 0), " 0 not reached"},
        // The sidereal times above, less the gain of half a day (118.277 s) that the estimate's day
        // number leaves out, 2:30:34 further east, plus 0.10 s (its rate differs in the 8th digit),
        // plus the hour angle of the plane (66.832 s at 0), less some hundredths of precession.
        {getAlfa2000(midnight, 696607500, 1e-4, "0:0:0"), "11:04:40.48"}, // 69660.75 s on
        // With 30 digits; one pass of precession would give 26.30, a third 25.45.
        {getAlfa2000(midnight, 0, 1e-4, "89:30:0"), "19:12:25.46"},
    };
    for (const auto &[text, expected] : rows)
        QCOMPARE(text, expected);
}

// Each with one line that says why.
void TestCoordinates::refusals()
{
    const std::tuple<const char *, const char *, double, const char *> rows[] = {
        {"2015.02.29", "03:23:27", presetStep, "date=2015.02.29"},
        {"2015.04.01", "03:23:27", 0, "tres=0"},
        {"2015.04.01", "03:23:", presetStep, "position=03:23: 39:44:52"},
        {"2015.04.01", "03:23:27", 3.7e-7, "tres=3.7e-07"}, // too many points
    };
    for (const auto &[date, alfa, tres, problem] : rows) {
        const QByteArray line = QByteArray("Tools::culminationFromCatalog(): bad ") + problem;
        QTest::ignoreMessage(QtDebugMsg, line);
        QCOMPARE(culminationFromCatalog(alfa, "39:44:52", date, 1, tres, 4, 0).fileName, QString());
    }
    QTest::ignoreMessage(QtDebugMsg, "getAlfa2000() ERROR! Invalid dateTime!");
    QCOMPARE(getAlfa2000(QDateTime::currentDateTime(), 2, 1e300, "39:44:52"), QString());
}

void TestCoordinates::beamPlane()
{
    // The constants are given to 16 digits.
    for (const double delta : {-35.0, 0.0, 39.7, 54.82, 80.0, 89.0})
        QVERIFY(std::abs(eastOfPlane(beamPlaneHourAngle(delta * degree), delta * degree)) < 1e-15);
    // u = sqrt(5.049292) / 3.326181 at 0 and (1.415674 + sqrt(0.048391)) / 3.326181 at 60 degrees.
    // The root's argument reaches 0 where sqrt(sin) = 0.93961, at 61.99 degrees.
    const auto inverse = [](double delta) {
        return inverseBeamPlaneHourAngle(delta * degree) / hour * 3600;
    };
    QVERIFY(std::abs(inverse(0) - 78.368) < 0.01);
    QVERIFY(std::abs(inverse(60) - 114.09) < 0.01);
    QVERIFY(std::isnan(inverse(62)) && std::isnan(inverse(-0.001)) && std::isnan(inverse(120)));
}

// There and back, and against the astronomers' own routines.
void TestCoordinates::fortyYears()
{
    for (QDate day(2000, 1, 1); day.year() <= 2040; day = day.addDays(397)) {
        const CalendarDate date = {day.day(), day.month(), day.year()};
        const double midnight = double(day.toJulianDay()) - 0.5; // Julian day
        // The same formula; rounding only.
        const double mean = siderealTimeAt(date) - eraGmst82(midnight, 0) / hour;
        QVERIFY(std::abs(std::remainder(mean, 24)) * 3600 < 1e-7);

        // Places and sidereal time as they are at noon, which moves a source less than 0.02 s
        // against what it is at any other hour.
        const double noonTt = 0.5 + 69 / 86400.0; // days; within 10 s from 2000 to 2040
        eraASTROM context = {};
        double origins = 0;
        eraApci13(midnight, noonTt, &context, &origins);
        const double noon = eraGst06a(midnight, 0.5, midnight, noonTt);
        for (int i = 0; i < 8 * 8; ++i) {
            const CoordinatePair of2000 = {{i % 8 * 3, 20, 40}, {i / 8 * 10, 30, 30}};
            const double ut = culmination(of2000, day);
            const AngleValue delta = precessFrom2000(of2000, date).delta;
            const double before = beamPlaneHourAngle(decimal(delta) * degree);
            const auto back = catalogFromHourAngle(date, {0, 0, ut * 3600}, delta, before);
            QCOMPARE(positionText(back), positionText(of2000));
            double ra = (i % 8 * 3 + 20 / 60.0 + 40 / 3600.0) * hour;
            double de = decimal(of2000.delta) * degree;
            eraAtciq(ra, de, 0, 0, 0, 0, &context, &ra, &de);
            const double local = noon + ((ut - 12) * 1.00273781191 + 2.508666666666667) * hour;
            const double east = eastOfPlane(ra - origins - local, de) / std::cos(de);
            // s; aberration and nutation, which are left out, grow towards the pole.
            QVERIFY(std::abs(east / hour * 3600) < (de > 0.9 ? 9 : 5));
        }
    }
}

ZRT_UNIT_TEST_MAIN(TestCoordinates)
#include "tst_coordinates.moc"
