#include "calc/turnfit.h"
#include "calc/turnsearch.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <random>

using namespace Tools;

namespace {

std::vector<double> sorted(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values;
}

// Pulses in `count` turns chosen at random from so many, with noise.
std::vector<double> train(double period, double begin, int count, int ofTurns, double noise,
                          unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> turn(0, ofTurns);
    std::normal_distribution<double> law(0, noise);
    std::vector<double> times;
    for (int i = 0; i < count; ++i)
        times.push_back(begin + period * turn(random) + law(random));
    return sorted(times);
}

// Least sum of squares, turns^2, by the letter: every period of a geometric grid, each time as its
// nearest whole turn from each of the times on, and a straight line through them.
double straightLeastSquares(const std::vector<double> &times, const PeriodRange &range,
                            double sigma)
{
    const double factor = 1 + 0.1 * sigma / (times.back() - times.front());
    double least = 1e9;
    for (double period = range.least; period < range.most; period *= factor) {
        for (const double origin : times) {
            std::vector<CountedTime> counted;
            for (const double time : times)
                counted.push_back({time, std::llround((time - origin) / period)});
            const TurnFit fit = fitTurns(counted, false);
            if (fit.period >= range.least && fit.period <= range.most)
                least = std::min(least, fit.squares / (fit.period * fit.period));
        }
    }
    return least;
}

} // namespace

class TestTurns : public QObject {
    Q_OBJECT

private slots:
    void searchFindsWhatEveryPeriodGives();
    void chanceIsThatOfRandomTimes_data();
    void chanceIsThatOfRandomTimes();
    void groupsHaveTheirOwnPhases();
    void stopsWhenTold();
    void fitsByHand();
    void errorsHoldTheTruth_data();
    void errorsHoldTheTruth();
    void testsTheChange();
    void hOfKnownPhases();
};

void TestTurns::searchFindsWhatEveryPeriodGives()
{
    const PeriodRange range = {0.5, 4};
    for (unsigned seed = 1; seed <= 4; ++seed) {
        const TimeGroups groups = {train(1.3, 5, 6, 60, seed % 2 ? 0.02 : 0.3, seed)};
        const TurnSearch found = searchTurns(groups, range, 30, 200);
        const double straight = straightLeastSquares(groups[0], range, 0.02);
        QVERIFY(!found.solutions.empty());
        const TurnSolution &best = found.solutions.front();
        QVERIFY2(std::abs(best.squares - straight) <= 1e-9 + 1e-6 * straight,
                 qPrintable(QString("seed %1: %2 %3").arg(seed).arg(best.squares).arg(straight)));
        const double inCurve = *std::min_element(found.curve.begin(), found.curve.end());
        QVERIFY(inCurve <= best.squares && inCurve > best.squares - 5e-4 * 6);
    }
}

void TestTurns::chanceIsThatOfRandomTimes_data()
{
    QTest::addColumn<int>("ofDay");
    QTest::addColumn<int>("days");
    QTest::newRow("three times") << 3 << 1;
    QTest::newRow("eight times") << 8 << 1;
    QTest::newRow("three days") << 4 << 3;
}

void TestTurns::chanceIsThatOfRandomTimes()
{
    QFETCH(int, ofDay);
    QFETCH(int, days);
    TimeGroups spread;
    for (int day = 0; day < days; ++day) {
        spread.emplace_back();
        for (int i = 0; i < ofDay; ++i)
            spread.back().push_back(86164.0 * day + 300.0 * i / (ofDay - 1));
    }
    const PeriodRange range = {0.4, 10};
    constexpr int seeds = 150;
    constexpr double expected = 3;
    int count = 0;
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        const TimeGroups random = randomTimes(spread, seed);
        for (const TurnSolution &solution : searchTurns(random, range, expected, 0).solutions)
            count += logChanceCount(random, range, solution.squares) < std::log(expected);
    }
    const double mean = double(count) / seeds;
    // 3.5 sigma of the counts, and one in twenty for solutions that overlap.
    const double allowed = 3.5 * std::sqrt(expected / seeds) + 0.05 * expected;
    QVERIFY2(std::abs(mean - expected) < allowed, qPrintable(QString::number(mean)));
}

void TestTurns::groupsHaveTheirOwnPhases()
{
    TimeGroups groups = {train(2.5, 3, 6, 200, 0.005, 1), train(2.5, 90001.7, 5, 150, 0.005, 2)};
    groups.push_back({180000});
    QCOMPARE(countOf(groups), 12);
    QCOMPARE(freedomOf(groups), 8);
    const TurnSearch found = searchTurns(groups, {0.5, 20}, 30, 0);
    const TurnSolution &best = found.solutions.front();
    QVERIFY2(std::abs(best.period - 2.5) < 1e-4, qPrintable(QString::number(best.period)));
    QVERIFY(logChanceCount(groups, {0.5, 20}, best.squares) < std::log(1e-6));
    QCOMPARE(best.turns[0], 0);
    QCOMPARE(best.turns[5], std::llround((groups[0][5] - groups[0][0]) / 2.5));
    QCOMPARE(best.turns[6], 0);
}

void TestTurns::stopsWhenTold()
{
    const TimeGroups groups = {train(2.5, 3, 6, 20000, 0.005, 1)};
    int asked = 0;
    QVERIFY(searchTurns(groups, {0.5, 20}, 30, 0, [&](int) { return ++asked < 2; }).isStopped);
    QCOMPARE(asked, 2);
}

void TestTurns::fitsByHand()
{
    // t = 0.05 + 0.95 N with residuals -0.05, 0.1, -0.05.
    const std::vector<CountedTime> times = {{0, 0}, {1.1, 1}, {1.9, 2}};
    const TurnFit fit = fitTurns(times, false);
    QVERIFY(std::abs(fit.period - 0.95) < 1e-12);
    QVERIFY(std::abs(fit.squares - 0.015) < 1e-12);
    QCOMPARE(fit.freedom, 1);
    // Student's t of one degree of freedom is Cauchy's law: tan(pi share / 2).
    const double standard = std::sqrt(0.015 / 2);
    QVERIFY(std::abs(fit.error - standard * std::tan(M_PI * 0.682689 / 2)) < 1e-6);
    QVERIFY(std::abs(fit.error95 - standard * std::tan(M_PI * 0.9545 / 2)) < 1e-5);
    // P = 2 s at turn 5, the middle; P P' / 2 = 0.01 s.
    std::vector<CountedTime> curved;
    for (const int turn : {0, 2, 3, 7, 8, 10}) {
        const double off = turn - 5.0;
        curved.push_back({7 + 2 * off + 0.01 * off * off, turn, 0, turn < 5 ? 1.0 : 3.0});
    }
    const TurnFit change = fitTurns(curved, true);
    QVERIFY(std::abs(change.period - 2) < 1e-12);
    QVERIFY(std::abs(change.derivative - 0.01) < 1e-12);
    // Another phase in another cluster changes nothing.
    curved[4].time += 1.234;
    curved[5].time += 1.234;
    curved[4].cluster = curved[5].cluster = 1;
    const TurnFit two = fitTurns(curved, true);
    QVERIFY(std::abs(two.period - 2) < 1e-12 && std::abs(two.derivative - 0.01) < 1e-12);
    QCOMPARE(two.freedom, 2);
}

void TestTurns::errorsHoldTheTruth_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("withDerivative");
    QTest::newRow("three times") << 3 << false;
    QTest::newRow("twelve times") << 12 << false;
    QTest::newRow("six times and a change") << 6 << true;
}

void TestTurns::errorsHoldTheTruth()
{
    QFETCH(int, count);
    QFETCH(bool, withDerivative);
    constexpr int seeds = 1500;
    int within = 0;
    int within95 = 0;
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        std::mt19937 random(seed);
        std::uniform_int_distribution<int> turn(0, 1000);
        std::normal_distribution<double> law;
        std::vector<CountedTime> times;
        for (int i = 0; i < count; ++i) {
            const int at = turn(random);
            const double error = i % 2 ? 0.01 : 0.03;
            // Errors are told in other units than they have.
            times.push_back({0.7 * at + error * law(random), at, 0, 100 * error});
        }
        const TurnFit fit = fitTurns(times, withDerivative);
        within += std::abs(fit.period - 0.7) <= fit.error;
        within95 += std::abs(fit.period - 0.7) <= fit.error95;
    }
    const double share = double(within) / seeds;
    const double share95 = double(within95) / seeds;
    QVERIFY2(std::abs(share - 0.683) < 0.042, qPrintable(QString::number(share)));
    QVERIFY2(std::abs(share95 - 0.9545) < 0.019, qPrintable(QString::number(share95)));
}

void TestTurns::testsTheChange()
{
    // F of 1 and 1 degrees is the square of Cauchy's variable: half of it lies above 1.
    TurnFit simple;
    simple.squares = 2;
    simple.freedom = 2;
    TurnFit rich;
    rich.squares = 1;
    rich.freedom = 1;
    QVERIFY(std::abs(probabilityOfFall(simple, rich) - 0.5) < 1e-9);
    rich.squares = 2;
    QCOMPARE(probabilityOfFall(simple, rich), 1.0);
    rich.freedom = 0;
    QCOMPARE(probabilityOfFall(simple, rich), 1.0);
}

void TestTurns::hOfKnownPhases()
{
    // Of 8 equal phases Z^2_m is 16 m.
    QVERIFY(std::abs(hOfPhases(std::vector<double>(8, 0.3)) - (16 * 20 - 4 * 20 + 4)) < 1e-9);
    std::vector<double> even;
    for (int i = 0; i < 32; ++i)
        even.push_back(i / 32.0 + 5);
    QVERIFY(hOfPhases(even) < 1e-9);
    QCOMPARE(hOfPhases({}), 0.0);
}

ZRT_UNIT_TEST_MAIN(TestTurns)

#include "tst_turns.moc"
