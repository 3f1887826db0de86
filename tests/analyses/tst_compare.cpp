#include "analyses/compare/comparedays.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

using namespace Compare;

namespace {

constexpr float none = std::numeric_limits<float>::quiet_NaN();
using Rows = std::vector<std::vector<float>>;

std::vector<const float *> pointersOf(const Rows &rows)
{
    std::vector<const float *> pointers;
    for (const std::vector<float> &row : rows)
        pointers.push_back(row.empty() ? nullptr : row.data());
    return pointers;
}

Rows noise(int days, int points, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<float> law;
    Rows rows;
    rows.resize(std::size_t(days), std::vector<float>(std::size_t(points), 0));
    for (std::vector<float> &row : rows)
        std::generate(row.begin(), row.end(), [&] { return law(random); });
    return rows;
}

double medianOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

// The definition: what is left of a day when the median of all others is taken off.
double plainDifference(const Rows &rows, std::size_t day, std::size_t point)
{
    std::vector<double> others;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (i != day && !rows[i].empty() && std::isfinite(rows[i][point]))
            others.push_back(double(rows[i][point]));
    }
    return (double(rows[day][point]) - medianOf(others)) /
           std::sqrt(1 + varianceOfMedian(int(others.size())));
}

std::vector<DayBoxcars> boxcarsOf(const MedianDay &median)
{
    std::vector<DayBoxcars> boxcars;
    for (const std::vector<float> &row : median.differences)
        boxcars.emplace_back(row);
    DayBoxcars::shareScatters(boxcars);
    return boxcars;
}

CompareProducts productsOf(const std::vector<Rows> &rays)
{
    CompareProducts products;
    products.plan.days.choice.points = int(rays[0][0].size());
    products.plan.days.choice.ray = 1;
    products.parameters.otherRays = "1,2,3";
    for (const Rows &rows : rays) {
        products.rays.emplace_back();
        for (const std::vector<float> &row : rows)
            products.rays.back().push_back({row, 1, {}, {}, false});
    }
    return products;
}

} // namespace

class TestCompare : public QObject {
    Q_OBJECT

private slots:
    void differsFromTheOthers_data();
    void differsFromTheOthers();
    void varianceOfMedians();
    void fewDays();
    void noiseHasTheListedOnesByChance();
    void slowWavesDoNotCount();
    void disturbedDayCounts();
    void findsWhatWasAdded();
    void placesOnTheAxis_data();
    void placesOnTheAxis();
};

void TestCompare::differsFromTheOthers_data()
{
    QTest::addColumn<int>("days");
    QTest::newRow("even") << 6;
    QTest::newRow("odd") << 7;
    QTest::newRow("as few as can be") << 4;
    QTest::newRow("most") << mostDays;
}

// Also where a day does not count, has gaps, or values that are equal.
void TestCompare::differsFromTheOthers()
{
    QFETCH(int, days);
    constexpr int points = 60;
    Rows rows = noise(days + 1, points, 5);
    rows[1].clear();
    for (std::size_t day = 0; day < rows.size(); ++day) {
        for (std::size_t point = 20; point < 30 && !rows[day].empty(); ++point)
            rows[day][point] = std::round(rows[day][point]);
    }
    std::fill_n(rows[0].begin(), 10, none);
    const MedianDay median = medianDay(pointersOf(rows), points);
    QVERIFY(median.differences[1].empty());
    for (std::size_t day = 0; day < rows.size(); ++day) {
        for (std::size_t point = 0; point < points && day != 1; ++point) {
            const bool hasOthers = point >= 10 || (day != 0 && days > 4);
            const double expected = hasOthers ? plainDifference(rows, day, point) : 0;
            const double given = double(median.differences[day][point]);
            QVERIFY2(hasOthers ? std::abs(given - expected) < 1e-5 : std::isnan(given),
                     qPrintable(QString("day %1, point %2").arg(day).arg(point)));
        }
    }
}

// Tables of order statistics: H. L. Harter, "Expected values of normal order statistics", 1961.
void TestCompare::varianceOfMedians()
{
    const std::pair<int, double> known[] = {{1, 1},       {2, 0.5},     {3, 0.44867},
                                            {4, 0.29826}, {5, 0.28683}, {6, 0.21474},
                                            {7, 0.21045}, {9, 0.16610}, {10, 0.13833}};
    for (const auto &[count, variance] : known)
        QVERIFY2(std::abs(varianceOfMedian(count) / variance - 1) < 0.003,
                 qPrintable(QString::number(count)));
}

void TestCompare::fewDays()
{
    const CompareProducts products = productsOf({noise(4, 2048, 1), {}, {}});
    const auto three = compareDays(products, {true, false, true, true}, 0.05);
    QVERIFY(three->problem.contains("at least 4 days"));
    QCOMPARE(three->days, 3);
    QVERIFY(std::isfinite(three->own.median[0]));
    QVERIFY(three->list.empty());
}

// 200 lists that noise is expected to have at most 100 false ones in. Neighbouring widths share
// much, and a scatter is never told too small, so that about half as many come.
void TestCompare::noiseHasTheListedOnesByChance()
{
    int found = 0;
    double expected = 0;
    for (unsigned seed = 0; seed < 200; ++seed) {
        const std::vector<DayBoxcars> boxcars =
            boxcarsOf(medianDay(pointersOf(noise(6, 1024, seed)), 1024));
        const double limit = limitFor(boxcars, 0.5);
        expected += expectedByChance(boxcars, limit);
        found += int(findDifferences(boxcars, limit).size());
    }
    QVERIFY(std::abs(expected - 100) < 0.2);
    QVERIFY2(found > 30 && found < 100, qPrintable(QString::number(found)));
}

// All days drift, each on its own: their wide boxcars scatter more, and are told in that.
void TestCompare::slowWavesDoNotCount()
{
    Rows rows = noise(8, 8192, 3);
    for (std::size_t day = 0; day < rows.size(); ++day) {
        for (std::size_t i = 0; i < rows[day].size(); ++i)
            rows[day][i] += 0.5F * float(std::sin(double(i) * 0.004 + double(day)));
    }
    const std::vector<DayBoxcars> boxcars = boxcarsOf(medianDay(pointersOf(rows), 8192));
    QVERIFY(findDifferences(boxcars, limitFor(boxcars, 0.05)).empty());
}

// One that scatters more throughout than the others, by a wave of half its points.
void TestCompare::disturbedDayCounts()
{
    Rows rows = noise(8, 4096, 4);
    for (std::size_t i = 0; i < rows[6].size(); ++i)
        rows[6][i] += i / 40 % 2 == 0 ? 3 : -3;
    const std::vector<DayBoxcars> boxcars = boxcarsOf(medianDay(pointersOf(rows), 4096));
    const std::vector<Difference> found = findDifferences(boxcars, limitFor(boxcars, 0.05));
    QVERIFY2(found.size() > 90, qPrintable(QString::number(found.size())));
    QVERIFY(std::all_of(found.begin(), found.end(),
                        [](const Difference &one) { return one.day == 6; }));
}

// A dip in one ray, a burst in two.
void TestCompare::findsWhatWasAdded()
{
    std::vector<Rows> rays = {noise(9, 4096, 1), noise(9, 4096, 2), noise(9, 4096, 3)};
    for (std::size_t i = 0; i < 16; ++i) {
        rays[0][2][1000 + i] += 4;
        rays[2][2][1000 + i] += 4;
        rays[0][5][3000 + i] -= 3;
    }
    const auto result = compareDays(productsOf(rays), std::vector<bool>(9, true), 0.05);
    QCOMPARE(int(result->list.size()), 2);
    const ListedDifference &burst = result->list[0];
    QCOMPARE(burst.day, 2);
    QCOMPARE(burst.width, 16);
    QVERIFY(std::abs(burst.first - 1000) <= 1);
    // 16 points of height 4 have 16 in their sum; the other eight days scatter as well.
    QVERIFY(std::abs(burst.snr - 16 / std::sqrt(1 + varianceOfMedian(8))) < 3);
    QVERIFY(burst.byChance < 1e-20);
    QCOMPARE(int(burst.rays.size()), 1);
    QCOMPARE(burst.rays[0].ray, 3);
    QCOMPARE(result->list[1].day, 5);
    QVERIFY(result->list[1].snr < -8);
    QVERIFY(result->list[1].rays.empty());

    // A day that is off neither shows nor hides anything.
    std::vector<bool> counts(9, true);
    counts[2] = false;
    const auto without = compareDays(productsOf(rays), counts, 0.05);
    QCOMPARE(int(without->list.size()), 1);
    QCOMPARE(without->list[0].day, 5);
}

void TestCompare::placesOnTheAxis_data()
{
    QTest::addColumn<QString>("utc");
    QTest::addColumn<QString>("sidereal");
    QTest::addColumn<std::vector<int>>("offsets");
    QTest::addColumn<int>("usable");
    // A sidereal day is 235.909 s shorter: 9.436 points of 25 s.
    QTest::newRow("time of every date") << "04:00:00"
                                        << "" << std::vector<int>{0, 9, 19, 28} << 4;
    QTest::newRow("sidereal time") << ""
                                   << "18:00:00" << std::vector<int>{0, 0, 0, 0} << 4;
}

void TestCompare::placesOnTheAxis()
{
    QFETCH(QString, utc);
    QFETCH(QString, sidereal);
    QFETCH(std::vector<int>, offsets);
    QFETCH(int, usable);
    RecordingSet set;
    for (int day = 0; day < 4; ++day) {
        RecordingEntry entry;
        entry.path = QString("/data/%1.pnt").arg(day);
        entry.begin = QDateTime({2015, 4, 1 + day}, {0, 0}, Qt::UTC);
        entry.state = RecordingState::Whole;
        entry.completePoints = 3400;
        entry.header.npoints = 3400;
        entry.header.modules = 1;
        entry.header.rays = 1;
        entry.header.channels = 33;
        entry.header.tresolution = 25;
        for (int band = 0; band < 32; ++band)
            entry.header.fbands.push_back(109 + 0.0778 * band);
        set.entries.push_back(entry);
    }
    CompareParameters parameters;
    parameters.module = 1;
    parameters.ray = 1;
    parameters.points = 1024;
    parameters.utc = utc;
    parameters.siderealTime = sidereal;
    const ComparePlan plan = planCompare(set, parameters);
    for (const FieldProblem &problem : plan.days.problems)
        QFAIL(qPrintable(problem.text));
    std::vector<int> given;
    for (std::size_t i = 0; i < plan.days.list.days.size(); ++i) {
        if (plan.days.list.days[i].reason.isEmpty())
            given.push_back(plan.offsets[i]);
    }
    QCOMPARE(int(given.size()), usable);
    QCOMPARE(given, offsets);
    if (!utc.isEmpty())
        QCOMPARE(plan.utcAt(1, 9), QDateTime({2015, 4, 2}, {4, 0}, Qt::UTC));
}

ZRT_UNIT_TEST_MAIN(TestCompare)
#include "tst_compare.moc"
