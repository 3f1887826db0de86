#include "analyses/timing/periodsearch.h"
#include "support/testmain.h"

#include <cmath>
#include <random>

using namespace Timing;

namespace {

// Times on days of seconds each, as a file would have them.
QByteArray listOf(const std::vector<double> &seconds)
{
    QByteArray text;
    for (const double second : seconds)
        text += QByteArray::number(second, 'f', 6) + "\n";
    return text;
}

struct Train {
    double period = 2.5;
    double change = 0; // s/s
    int ofDay = 8;
    std::vector<double> begins = {0}; // s, of stretches with pulses
    double noise = 0.01;              // s
};

// Pulses in random turns of stretches of 600 s.
std::vector<double> pulsesOf(const Train &train, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> law(0, train.noise);
    std::vector<double> times;
    for (const double begin : train.begins) {
        std::uniform_real_distribution<double> place(begin, begin + 600);
        for (int i = 0; i < train.ofDay; ++i) {
            const double turn = std::round(place(random) / train.period);
            times.push_back(train.period * (turn + train.change * turn * turn / 2) + law(random));
        }
    }
    return times;
}

PeriodParameters fewSimulated()
{
    PeriodParameters parameters;
    parameters.simulated = 20;
    parameters.periodMin = 1;
    parameters.periodMax = 20;
    return parameters;
}

PeriodSearch searched(const std::vector<double> &seconds,
                      PeriodParameters parameters = fewSimulated())
{
    parameters.unit = secondsUnit;
    parameters.dayGap = 1;
    return searchPeriod(timesFor(parameters, listOf(seconds)), parameters);
}

const QByteArray pulseTable =
    "program: zrt-batch\nrows: 4\ncolumns: mjd; mjd_error [s]; dm; ra; dec; verdict\n"
    "59607.25\t0.002\t26\t23:59:59\t+10:00:00\tcandidate\n"
    "59607.375\t0.003\t26\t00:00:01\t+10:10:00\tcandidate\n"
    "59607.4\t0.003\t26\t00:00:01\t+10:10:00\tin many rays\n"
    "59607.5\t0.004\t26\t00:00:03\t+10:20:00\taccept\n";

} // namespace

class TestPeriod : public QObject {
    Q_OBJECT

private slots:
    void readsTimes_data();
    void readsTimes();
    void tellsWhatIsNoTime_data();
    void tellsWhatIsNoTime();
    void readsTables();
    void turnsToTheBarycentre();
    void findsAKnownPulsar();
    void claimsAsOftenAsPromised();
    void connectsDays_data();
    void connectsDays();
    void tellsAChangeOfThePeriod();
    void tellsWhatTimesCannot_data();
    void tellsWhatTimesCannot();
    void leavesOutWhatIsNoSecondPulse();
};

void TestPeriod::readsTimes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("times"); // without zeros at their ends
    QTest::addColumn<double>("resolution");
    QTest::newRow("days, sorted") << QByteArray("59608.5 0.1\n59607.25 0.2\n") << "59607.25 59608.5"
                                  << 864.0;
    QTest::newRow("seconds with comments")
        << QByteArray("# s\n5.25\n\n17 # second\r\n") << "5.25 17" << 0.01;
    QTest::newRow("dates") << QByteArray("2022-01-28 06:00:00.0\n2022.01.28T18:00:00\n")
                           << "59607.25 59607.75" << 0.1;
    QTest::newRow("a moment twice")
        << QByteArray("59607.25\n2022-01-28 06:00:00\n59607.75\n") << "59607.25 59607.75" << 864.0;
    QTest::newRow(".tim") << QByteArray("FORMAT 1\nMODE 1\nC remark\na 111.5 59607.25 150 zrt\n"
                                        "b 111.5 59607.75 150 zrt -f x\n")
                          << "59607.25 59607.75" << 0.0;
}

void TestPeriod::readsTimes()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, times);
    QFETCH(double, resolution);
    const ArrivalTimes read = parseTimes(text);
    QVERIFY2(read.problem.isEmpty(), qPrintable(read.problem));
    QStringList texts;
    for (const ArrivalTime &time : read.times)
        texts << QString::number(time.text().toDouble(), 'g', 10);
    QCOMPARE(texts.join(' '), times);
    QVERIFY(std::abs(read.resolution - resolution) < 1e-9);
}

void TestPeriod::tellsWhatIsNoTime_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("problem");
    QTest::newRow("words") << QByteArray("1\n2\nthree\n") << "line 3 is no time: \"three\"";
    QTest::newRow("no such date") << QByteArray("2022-02-30 06:00:00\n") << "line 1 is no time";
    QTest::newRow("not a number") << QByteArray("1\nnan\n") << "line 2";
    QTest::newRow("negative error") << QByteArray("1 -2\n") << "line 1";
    QTest::newRow("days and seconds") << QByteArray("59607.5\n12\n") << "different units";
    QTest::newRow("dates and seconds") << QByteArray("2022-01-28 06:00:00\n12\n") << "different";
    QTest::newRow("short .tim line") << QByteArray("FORMAT 1\na 111 59607.5\n") << "line 2";
    QTest::newRow("other table") << QByteArray("program: x\nrows: 1\ncolumns: a; b\n1\tx\n")
                                 << "no arrival times";
    QTest::newRow("table that was cut")
        << pulseTable.left(pulseTable.size() - 60) << "ends within a line";
}

void TestPeriod::tellsWhatIsNoTime()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, problem);
    const QString told = parseTimes(text).problem;
    QVERIFY2(told.contains(problem), qPrintable(told));
}

void TestPeriod::readsTables()
{
    const ArrivalTimes pulses = parseTimes(pulseTable);
    QVERIFY2(pulses.problem.isEmpty(), qPrintable(pulses.problem));
    QCOMPARE(pulses.times.size(), std::size_t(3));
    QCOMPARE(pulses.times[2].error, 0.004);
    QCOMPARE(pulses.scale, TimeScale::Utc);
    QVERIFY(pulses.remarks.join(' ').contains("1 of 4 rows"));
    // The mean direction is not half a turn away where right ascensions pass 24 h.
    QCOMPARE(Tools::rightAscensionText(pulses.position->alfa), "00:00:01.0");
    QCOMPARE(Tools::declinationText(pulses.position->delta), "+10:10:00");
    // Profiles tell barycentric times where they know the direction.
    const QByteArray arrivals =
        "program: x\nrows: 2\ncolumns: day; arrival [MJD UTC]; arrival_barycentric [MJD TDB]; "
        "error [s]; snr; site\n"
        "d1\t59607.25\t%1\t0.01\t9\tZRT\nd2\t59608.25\t59608.251\t0.01\t9\tZRT\n";
    QCOMPARE(parseTimes(QByteArray(arrivals).replace("%1", "59607.251")).scale,
             TimeScale::Barycentric);
    QCOMPARE(parseTimes(QByteArray(arrivals).replace("%1", "nan")).scale, TimeScale::Utc);
}

void TestPeriod::turnsToTheBarycentre()
{
    // Along the pole of the ecliptic the Earth's way round the Sun makes no delay: what is left are
    // 37 leap seconds, 32.184 s and the Sun's distance from the barycentre.
    PeriodParameters parameters;
    parameters.alfa = "18:00:00";
    parameters.delta = "+66:33:38";
    const QByteArray text = "59607.25\n59607.99999\n59700.5\n";
    const ArrivalTimes times = timesFor(parameters, text);
    QCOMPARE(times.scale, TimeScale::Barycentric);
    const ArrivalTimes plain = parseTimes(text);
    for (std::size_t i = 0; i < plain.times.size(); ++i) {
        const double delay = 86400.0 * double(times.times[i].day - plain.times[i].day) +
                             times.times[i].second - plain.times[i].second;
        QVERIFY2(std::abs(delay - 69.184) < 1, qPrintable(QString::number(delay)));
    }
    parameters.earthMotion = false;
    QCOMPARE(timesFor(parameters, text).times[1].text(), plain.times[1].text());
}

void TestPeriod::findsAKnownPulsar()
{
    // J1819-1458: 4.26324(3) s.
    PeriodParameters parameters;
    parameters.mjd = 59607;
    parameters.times = ".3866952756,.3930600505;.4015472327,.4185223751,.4286862792,.4470411329,"
                       ".4591301745,.4689014586";
    const PeriodSearch search = searchPeriod(timesFor(parameters, {}), parameters);
    QVERIFY2(search.isClaimed, qPrintable(search.verdict));
    QVERIFY(std::abs(search.count.fit.period - 4.26324) < 3e-5);
    QVERIFY(search.count.fit.error > 2e-5 && search.count.fit.error < 5e-5);
    QVERIFY(search.verdict.contains("Period 4.263244 +- 0.000036 s"));
    const PeriodFamily &first = search.families.front();
    QVERIFY(first.submultiples.size() >= 2);
    QVERIFY(std::abs(first.submultiples.front() - first.period / 2) < 1e-6);
    QVERIFY(search.families[1].chance > 0.1);
    QVERIFY(!search.count.hasDerivative);
    // What random times reach: half of them, and the share of the claims.
    QVERIFY(search.chanceRms > 0.035 && search.chanceRms < 0.06);
    QVERIFY(search.rareChanceRms > first.rmsOverPeriod && search.rareChanceRms < 0.02);
}

void TestPeriod::claimsAsOftenAsPromised()
{
    PeriodParameters parameters;
    parameters.periodMin = 1;
    parameters.periodMax = 20;
    parameters.simulated = 25;
    parameters.chance = 0.1;
    constexpr int seeds = 250;
    int rare = 0;
    int claims = 0;
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> place(0, 600);
        std::vector<double> times;
        for (int i = 0; i < 7; ++i)
            times.push_back(place(random));
        const PeriodSearch search = searched(times, parameters);
        rare += !search.families.empty() && search.families.front().chance <= parameters.chance;
        claims += search.isClaimed;
    }
    // 25 are expected; 3.3 sigma.
    QVERIFY2(std::abs(rare - 25) < 16, qPrintable(QString::number(rare)));
    QVERIFY(claims > 0 && claims <= rare);
}

void TestPeriod::connectsDays_data()
{
    QTest::addColumn<double>("apart"); // s
    QTest::addColumn<int>("parts");
    QTest::addColumn<QString>("remark");
    QTest::newRow("near days") << 6000.0 << 1 << "";
    QTest::newRow("far days") << 864000.0 << 3 << "over the 34";
}

void TestPeriod::connectsDays()
{
    QFETCH(double, apart);
    QFETCH(int, parts);
    QFETCH(QString, remark);
    constexpr int seeds = 30;
    int within = 0;
    int within95 = 0;
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        const PeriodSearch search =
            searched(pulsesOf({2.5, 0, 10, {0, apart, 2.2 * apart}, 0.01}, seed));
        QVERIFY2(search.isClaimed, qPrintable(search.verdict));
        QCOMPARE(search.groups.size(), std::size_t(3));
        QCOMPARE(search.count.clusters, parts);
        QCOMPARE(search.count.remarks.size(), parts - 1);
        QVERIFY(search.count.remarks.join(' ').contains(remark));
        const double off = std::abs(search.count.fit.period - 2.5);
        within += off <= search.count.fit.error;
        within95 += off <= search.count.fit.error95;
        // Turns that are counted through make the error smaller.
        QVERIFY((parts == 1) == (search.count.fit.error < search.families.front().error / 10));
    }
    QVERIFY2(within >= 13 && within <= 27, qPrintable(QString::number(within)));
    QVERIFY2(within95 >= 25, qPrintable(QString::number(within95)));
}

void TestPeriod::tellsAChangeOfThePeriod()
{
    // Over 5000 turns the phase bends by 0.06 turns; times of one stretch cannot show it.
    Train train = {2.5, 2e-8, 10, {0, 6000, 12000}, 0.01};
    const PeriodSearch bent = searched(pulsesOf(train, 3));
    QVERIFY(bent.count.hasDerivative);
    QCOMPARE(bent.count.clusters, 1);
    QVERIFY2(std::abs(bent.count.fit.derivative / 2e-8 - 1) < 0.1,
             qPrintable(QString::number(bent.count.fit.derivative)));
    train.change = 0;
    for (unsigned seed = 1; seed <= 15; ++seed)
        QVERIFY(!searched(pulsesOf(train, seed)).count.hasDerivative);
}

void TestPeriod::tellsWhatTimesCannot_data()
{
    QTest::addColumn<QString>("times");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << " "
                          << "0 times on 0 days";
    QTest::newRow("two") << "1.01,2.01"
                         << "2 times on 1 day cannot tell";
    QTest::newRow("one a day") << "1.01;90000.01;180000.01;270000.01"
                               << "4 times on 4 days";
    QTest::newRow("too short") << "1.01,1.2,1.5,1.55"
                               << "allow";
    QTest::newRow("too coarse") << "1,20,30,44"
                                << "Periods are searched from 1.44338 s on only";
    QTest::newRow("too long a search") << "1.01,4e8,8e8,9e8"
                                       << "The search would take hours";
}

void TestPeriod::tellsWhatTimesCannot()
{
    QFETCH(QString, times);
    QFETCH(QString, text);
    PeriodParameters parameters;
    parameters.unit = secondsUnit;
    parameters.times = times;
    if (times.contains("e8"))
        parameters.dayGap = 1e6;
    const PeriodSearch search = searchPeriod(timesFor(parameters, {}), parameters);
    const QString told = search.problem + search.remarks.join(' ');
    QVERIFY2(told.contains(text), qPrintable(told));
}

void TestPeriod::leavesOutWhatIsNoSecondPulse()
{
    std::vector<double> times = pulsesOf({}, 1);
    const double alone = searched(times).families.front().expected;
    for (int i = 0; i < 4; ++i)
        times.push_back(times[std::size_t(i)] + 0.03);
    const PeriodSearch twice = searched(times);
    QCOMPARE(twice.used.times.size(), std::size_t(8));
    QVERIFY(twice.remarks.join(' ').contains("4 times are nearer than 0.1 s"));
    QCOMPARE(twice.families.front().expected, alone);
}

ZRT_UNIT_TEST_MAIN(TestPeriod)

#include "tst_period.moc"
