#include "analyses/days/ffaday.h"
#include "analyses/days/trialstack.h"
#include "analyses/sky/skymap.h"
#include "analyses/sky/skyproduct.h"
#include "analyses/sky/skysearch.h"
#include "ffa/syntheticsignal.h"
#include "support/testmain.h"

#include <cmath>
#include <random>

// Maps and searches of folds, from series whose content is known.

using namespace Sky;

namespace {

constexpr int points = 2048;
constexpr int days = 30;
constexpr int rayCount = 3;
constexpr int starts = 2;
constexpr double step = 0.0999424; // s
const std::vector<double> dispersions = {0, 30};

SkyPlan planOf()
{
    SkyPlan plan;
    plan.product = Product::Ffa;
    plan.parameters.points = points;
    plan.parameters.isFfa = true;
    plan.startStep = points / 2;
    plan.starts = starts;
    plan.dispersions = dispersions;
    for (int ray = 1; ray <= rayCount; ++ray)
        plan.rays.push_back({1, ray, Days::beamOf("N2", 1, ray)});
    plan.header.tresolution = step;
    for (int band = 0; band < 32; ++band)
        plan.header.fbands.push_back(109.4 + 0.078125 * band);
    Passage passage;
    passage.begin = QDateTime({2015, 4, 1}, {12, 0}, Qt::UTC);
    passage.firstPoints = {0, 1024};
    plan.passages.assign(days, passage);
    plan.trials =
        Days::sharedTrials(Days::ffaOfDays(plan.parameters.ffa, points, step), points, step);
    return plan;
}

// Pulses of a barycentric period in ray 1, dispersion 1 and start 1, and half as strong in the
// cells beside it.
struct Pulses {
    double period = 7.3; // s
    double snr = 0;      // of the fold of a day
    int firstDay = 0;    // that has them
    int lastDay = days;
};

double ratioOf(int day)
{
    return 1 + 1e-4 * std::sin(day * 0.3);
}

CellProduct productOf(const SkyPlan &plan, const Pulses &pulses, double snr, int day, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<float> law(3200, 1);
    const double phase = std::uniform_real_distribution<double>()(random);
    std::vector<float> sums =
        Ffa::syntheticPulseSignal(points, pulses.period / ratioOf(day) / step, phase, 0.05, snr, 0);
    for (float &value : sums)
        value += law(random);
    CellStretch stretch;
    stretch.sums = sums.data();
    stretch.points = points;
    stretch.tresolution = step;
    stretch.ratio = ratioOf(day);
    return ffaMethod().ofStretch(stretch, plan);
}

SkyStack stackOf(const SkyPlan &plan, const Pulses &pulses, unsigned seed)
{
    SkyStack stack("test",
                   {rayCount, int(dispersions.size()), starts, ffaMethod().positions(plan)});
    for (int day = 0; day < days; ++day) {
        const int quarter = day < days / 2 ? 0 : 2;
        for (int ray = 0; ray < rayCount; ++ray) {
            for (int start = 0; start < starts; ++start) {
                stack.count(ray, start, quarter, ratioOf(day));
                for (int dm = 0; dm < int(dispersions.size()); ++dm) {
                    const bool isOn = day >= pulses.firstDay && day < pulses.lastDay;
                    const int off = std::abs(ray - 1) + (1 - dm) + (1 - start);
                    const CellProduct product = productOf(
                        plan, pulses, isOn ? std::ldexp(pulses.snr, -off) : 0, day, ++seed);
                    stack.add(ray, dm, start, quarter, product.values, ffaMethod().clip);
                }
            }
        }
    }
    return stack;
}

} // namespace

class TestSkyFfa : public QObject {
    Q_OBJECT

private slots:
    void noiseKeepsThePromise();
    void findsPulses();
    void marksAFewDays();
    void leavesOutInterference();
    void mapsOverPeriods();
    void placesBetweenTrials_data();
    void placesBetweenTrials();
};

// Twenty are promised.
void TestSkyFfa::noiseKeepsThePromise()
{
    SkyPlan plan = planOf();
    plan.parameters.falseAlarms = 20;
    const SkySearch search = searchSky(stackOf(plan, {}, 500), plan, 1);
    QCOMPARE(search.searchedCells, rayCount * starts * int(dispersions.size()));
    const auto count = int(search.candidates.size());
    QVERIFY2(count >= 8 && count <= 36, qPrintable(QString::number(count)));
}

void TestSkyFfa::findsPulses()
{
    const SkyPlan plan = planOf();
    const SkySearch search = searchSky(stackOf(plan, {7.3, 5}, 90000), plan, 1);
    QVERIFY(!search.candidates.empty());
    const SkyCandidate &first = search.candidates.front();
    QVERIFY2(std::abs(first.period.value - 7.3) < 3 * first.period.error,
             qPrintable(QString("%1 %2").arg(first.period.value).arg(first.period.error)));
    QVERIFY(first.period.error > 0 && first.period.error < 0.03);
    QVERIFY(std::abs(first.telescope / first.barycentric - 1) < 2e-4);
    QCOMPARE(first.ray, 1);
    QCOMPARE(first.dispersionIndex, 1);
    QCOMPARE(first.start, 1);
    QVERIFY(first.sigma > 8);
    QVERIFY(first.cells > 1);
    // 5 % of 40 to 80 bins.
    QVERIFY(first.harmonics >= 2 && first.harmonics <= 6);
    QVERIFY(!first.isFewDays && !first.isSolar && !first.isHum && !first.isInOtherRays);
    QCOMPARE(first.dispersion.value, 30.0);
    QVERIFY(std::isfinite(first.alfa.value) && std::isfinite(first.delta.value));
    QVERIFY(std::isnan(first.dispersion.error) && std::isnan(first.alfa.error));
    for (std::size_t i = 1; i < search.candidates.size() && search.candidates[i].sigma > 5; ++i)
        QCOMPARE(search.candidates[i].relatedTo, 0);
}

void TestSkyFfa::marksAFewDays()
{
    SkyPlan plan = planOf();
    plan.parameters.falseAlarms = 0.01;
    const SkySearch search = searchSky(stackOf(plan, {7.3, 20, 4, 7}, 7000), plan, 1);
    QVERIFY(!search.candidates.empty());
    QVERIFY(search.candidates.front().isFewDays);
    QVERIFY(search.candidates.front().marks().contains("few days"));
}

void TestSkyFfa::leavesOutInterference()
{
    SkyPlan plan = planOf();
    const SkyStack stack = stackOf(plan, {7.3, 8}, 3000);
    const CellStack cell = stack.cell(1, 1, 1);
    const double lowest = std::log(1e-6);
    QVERIFY(!ffaMethod().linesOf(cell, plan, lowest).empty());
    plan.interference = {{1 / 7.3, false, 0.002, 16, {}}};
    for (const CellLine &line : ffaMethod().linesOf(cell, plan, lowest))
        QVERIFY(std::abs(ffaMethod().axisAt(plan, line.position) / 7.3 - 1) > 0.01);
}

void TestSkyFfa::mapsOverPeriods()
{
    const SkyPlan plan = planOf();
    MapChoice choice;
    choice.ray = 1;
    const SkyMap map = mapOf(stackOf(plan, {7.3, 8}, 40000), plan, choice);
    QCOMPARE(int(map.rows.size()), starts);
    QCOMPARE(map.columns, plan.trials->count());
    QVERIFY(map.axisName.contains("barycentre"));
    const auto row = map.sigma.begin() + map.columns;
    const auto best = std::max_element(row, row + map.columns);
    QVERIFY(*best > 8);
    QVERIFY(std::abs(map.axisAt(double(best - row)) - 7.3) < 0.1);
}

void TestSkyFfa::placesBetweenTrials_data()
{
    QTest::addColumn<double>("height");
    QTest::addColumn<double>("least"); // error
    QTest::addColumn<double>("most");
    // A strong signal is known to the nearest place, 0.34 of the spacing; a weak one is as wide as
    // the filter, whose Gaussian of width 6 and height h has the error 6 sqrt(2) / h.
    QTest::newRow("strong") << 60.0 << 0.34 << 0.4;
    QTest::newRow("weak") << 10.0 << 0.88 << 0.96;
}

void TestSkyFfa::placesBetweenTrials()
{
    QFETCH(double, height);
    QFETCH(double, least);
    QFETCH(double, most);
    std::vector<double> places;
    std::vector<double> excesses;
    for (int i = 0; i < 21; ++i) {
        places.push_back(i);
        excesses.push_back(height * std::exp(-(i - 10) * (i - 10) / 72.0));
    }
    const Days::PlaceEstimate found = Days::placeOf(places, excesses, 0, places.size(), 10, 0.34);
    QVERIFY(std::abs(found.value - 10) < 1e-6);
    QVERIFY2(found.error > least && found.error < most, qPrintable(QString::number(found.error)));
}

ZRT_UNIT_TEST_MAIN(TestSkyFfa)
#include "tst_skyffa.moc"
