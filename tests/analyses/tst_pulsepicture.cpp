#include "analyses/pulses/keptverdicts.h"
#include "analyses/pulses/pulsepicture.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>

using namespace Pulses;

namespace {

constexpr int points = 4000;
constexpr double step = 0.0124928;
constexpr double dispersion = 30;

// Points by which a band is later than the last one.
double delayOf(int band)
{
    const auto square = [](int index) { return std::pow(120 + 0.078125 * index, -2); };
    return 4148.8 * dispersion * (square(band) - square(31)) / step;
}

// A pulse of one point in every band of a recording without noise.
PreparedRay rayWithPulse(int point)
{
    PreparedRay ray;
    ray.data = TestSupport::makeRecording({points, 1, 33, 1}, [&](int at, int, int channel, int) {
        const bool isThere = channel < 32 && at == point + int(std::lround(delayOf(channel)));
        return isThere ? 5.0F : 0.0F;
    });
    return ray;
}

Pulse pulseAt(double point, double dm, int width = 1)
{
    Pulse pulse;
    pulse.point = {point, 0.3};
    pulse.firstPoint = int(point);
    pulse.width = width;
    pulse.dispersion = {dm, 0.5};
    return pulse;
}

double timeOfHighest(const PulseRows &rows, std::size_t row)
{
    const auto begin = rows.values.begin() + std::ptrdiff_t(row) * rows.columns;
    const auto highest = std::max_element(begin, begin + rows.columns) - begin;
    return rows.firstTime + (double(highest) + 0.5) * rows.timeStep;
}

} // namespace

class TestPulsePicture : public QObject {
    Q_OBJECT

private slots:
    void showsThePulse_data();
    void showsThePulse();
    void verdictsBelongToPulses_data();
    void verdictsBelongToPulses();
    void verdictsComeBack();
    void refusesOtherFiles();
};

void TestPulsePicture::showsThePulse_data()
{
    QTest::addColumn<int>("point");
    QTest::newRow("in the middle") << 2000;
    QTest::newRow("at the begin") << 3;
    QTest::newRow("at the end") << points - 60;
}

void TestPulsePicture::showsThePulse()
{
    QFETCH(int, point);
    const PreparedRay ray = rayWithPulse(point);
    const PulsePlan plan = planPulses(ray.data, {});
    const PulsePicture made = pictureOf(ray, plan, pulseAt(point, dispersion));
    QCOMPARE(made.dedispersed.rows.size(), std::size_t(32));
    QVERIFY(std::is_sorted(made.dedispersed.rows.begin(), made.dedispersed.rows.end()));
    for (const std::size_t row : {std::size_t(0), std::size_t(13), std::size_t(31)}) {
        // Less their delays all bands have it at once; as recorded each at its own time.
        QVERIFY(std::abs(timeOfHighest(made.dedispersed, row)) <= made.dedispersed.timeStep);
        const double arrival = delayOf(int(row)) * step;
        QVERIFY(std::abs(made.arrival[row] - arrival) < step);
        QVERIFY(std::abs(timeOfHighest(made.dispersed, row) - arrival) <=
                step + made.dispersed.timeStep);
        QCOMPARE(made.channels[row], 5.0);
    }
    // 32 bands of 5 noises each, over the noise of their sum.
    const double highest = *std::max_element(made.profile.begin(), made.profile.end());
    QVERIFY(std::abs(highest - 5 * std::sqrt(32.0)) < 1e-3);
    std::size_t best = 0;
    for (std::size_t i = 0; i < made.overTime.values.size(); ++i)
        best = made.overTime.values[i] > made.overTime.values[best] ? i : best;
    const double found = made.overTime.rows[best / std::size_t(made.overTime.columns)];
    QVERIFY2(std::abs(found - dispersion) < 3, qPrintable(QString::number(found)));
}

void TestPulsePicture::verdictsBelongToPulses_data()
{
    QTest::addColumn<double>("point");
    QTest::addColumn<double>("dm");
    QTest::addColumn<bool>("isSame");
    QTest::newRow("itself") << 500.0 << 30.0 << true;
    QTest::newRow("within its width and errors") << 503.5 << 31.8 << true;
    QTest::newRow("later") << 505.0 << 30.0 << false;
    QTest::newRow("of another dispersion") << 500.0 << 33.0 << false;
    QTest::newRow("without a dispersion") << 500.0 << Pulses::unknown << false;
}

void TestPulsePicture::verdictsBelongToPulses()
{
    QFETCH(double, point);
    QFETCH(double, dm);
    QFETCH(bool, isSame);
    KeptVerdicts kept;
    kept.set(pulseAt(500, 30, 4), Sky::Verdict::Accept, {});
    Pulse other = pulseAt(point, dm);
    other.ray = 7; // stronger elsewhere in another search
    QCOMPARE(kept.find(other) != nullptr, isSame);
    kept.set(other, Sky::Verdict::Reject, "x");
    QCOMPARE(int(kept.all().size()), isSame ? 1 : 2);
    kept.set(other, Sky::Verdict::None, {});
    QCOMPARE(int(kept.all().size()), isSame ? 0 : 1);
}

void TestPulsePicture::verdictsComeBack()
{
    KeptVerdicts kept;
    kept.set(pulseAt(500.25, 30), Sky::Verdict::Accept, "5");
    kept.set(pulseAt(900, unknown), Sky::Verdict::Unsure, {});
    kept.set(pulseAt(1500, 12), Sky::Verdict::None, "tab\tand \"quotes\"; semicolon");
    QString problem;
    const KeptVerdicts read = KeptVerdicts::fromBytes(kept.toBytes(), problem);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QCOMPARE(read.all().size(), std::size_t(3));
    QCOMPARE(read.find(pulseAt(500.25, 30))->note, "5");
    QCOMPARE(read.find(pulseAt(900, unknown))->verdict, Sky::Verdict::Unsure);
    QCOMPARE(read.find(pulseAt(900, unknown))->note, "");
    QCOMPARE(read.find(pulseAt(1500, 12))->note, "tab and \"quotes\"; semicolon");
    // None at all is a table too.
    QVERIFY(KeptVerdicts::fromBytes(KeptVerdicts().toBytes(), problem).all().empty());
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
}

void TestPulsePicture::refusesOtherFiles()
{
    QString problem;
    KeptVerdicts::fromBytes("my notes\n", problem);
    QVERIFY(!problem.isEmpty());
    KeptVerdicts::fromBytes("program: x\nrows: 1\ncolumns: module; ray\n1\t2\n", problem);
    QVERIFY2(problem.contains("no column \"point\""), qPrintable(problem));
}

ZRT_UNIT_TEST_MAIN(TestPulsePicture)

#include "tst_pulsepicture.moc"
