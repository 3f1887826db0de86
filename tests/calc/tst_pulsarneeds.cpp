#include "calc/pulsar/pulsarcalculate.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <random>

// What an action checks before it computes, which samples it takes in, and what becomes of those
// that are no numbers or are missing.

namespace {

std::size_t largestAllocation = SIZE_MAX; // bytes; beyond it memory is short

} // namespace

void *operator new(std::size_t bytes)
{
    void *const memory =
        bytes > largestAllocation ? nullptr : std::malloc(std::max<std::size_t>(bytes, 1));
    if (!memory)
        throw std::bad_alloc();
    return memory;
}
void operator delete(void *memory) noexcept
{
    std::free(memory);
}
void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

constexpr int npoints = 19000;
constexpr TestSupport::Shape shape = {npoints, 2, 34, 2};

// Writable copy of one recording of noise.
class Recording {
public:
    Recording()
    {
        static const ObservationData noise = [] {
            std::mt19937 random(3);
            std::normal_distribution<float> normal(100, 5);
            return TestSupport::makeRecording(shape,
                                              [&](int, int, int, int) { return normal(random); });
        }();
        data = noise;
        block = SampleBlock::allocate(shape.modules, shape.channels, shape.rays, npoints);
        for (int m = 0; m < shape.modules; ++m)
            for (int c = 0; c < shape.channels; ++c)
                for (int r = 0; r < shape.rays; ++r)
                    std::copy_n(noise.samples[m][c][r], npoints, block->ray(m, c, r));
        data.samples = Samples(block);
    }

    // Of the selected module and ray.
    float *channel(int index) const { return block->ray(1, index, 0); }

    ObservationData data;

private:
    std::shared_ptr<SampleBlock> block;
};

PulsarParameters selected(double dispersion = 400, int firstPoint = 1000)
{
    PulsarParameters parameters;
    parameters.module = 2;
    parameters.ray = 1;
    parameters.channel = 7;
    parameters.dispersion = dispersion;
    parameters.dispersions = {0, dispersion / 3, dispersion, 2 * dispersion};
    parameters.period = 0.7;
    parameters.harmonicNum = 300;
    parameters.firstPoint = firstPoint;
    return parameters;
}

struct Answer {
    std::vector<std::vector<float>> curves;
    QString nonFinite;
    QString failure;
};

Answer answerOf(const ObservationData &data, const PulsarParameters &parameters,
                const QString &action)
{
    PulsarCalculate calculate(data, parameters);
    const bool done = calculate.run(action);
    return {done ? calculate.result().curves : std::vector<std::vector<float>>(),
            calculate.result().nonFinite, calculate.failure()};
}

float medianOf(std::vector<float> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 ? values[half]
                             : float((double(values[half - 1]) + double(values[half])) / 2);
}

} // namespace

Q_DECLARE_METATYPE(PulsarParameters)

class TestPulsarNeeds : public QObject {
    Q_OBJECT

private slots:
    void readsWhatItNeeds_data();
    void readsWhatItNeeds();
    void medianForWhatIsNoNumber_data();
    void medianForWhatIsNoNumber();
    void namesWhatIsNoNumber();
    void channelWithoutNumbers();
    void sumsBeyondAnyFloat();
    void stepsBesideGaps();
    void validatesWithoutSamples_data();
    void validatesWithoutSamples();
    void endsWithTheData_data();
    void endsWithTheData();
    void memoryRunsOut();
    void sumOfOnePoint();
};

void TestPulsarNeeds::readsWhatItNeeds_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<PulsarParameters>("parameters");
    const auto row = [](const char *name, const char *action, const PulsarParameters &given,
                        auto change) {
        PulsarParameters parameters = given;
        change(parameters);
        QTest::newRow(name) << action << parameters;
    };
    const auto none = [](PulsarParameters &) {};
    const auto backSum = [](PulsarParameters &p) { p.noise = "backSum"; };
    row("channel", "showNative", selected(), [](PulsarParameters &p) { p.points = 2000; });
    row("channel to the end", "showNative", selected(0, 18000), none);
    row("fold", "sumPeriod", selected(), none);
    row("sum", "sumChannelsDemoNoise", selected(), none);
    row("short sum", "sumChannelsDemoNoise", selected(),
        [](PulsarParameters &p) { p.points = 700; });
    row("back sum", "sumChannelsAndAverage", selected(), backSum);
    row("sum that the recording cuts off", "sumChannelsAndAverage", selected(1200, 2600), none);
    row("back sum from before the begin", "sumChannelsAndAverage", selected(1200, 10), backSum);
    row("spectrum", "sumChannelsAndFourier", selected(), none);
    row("four spectra", "sum4Dispersions", selected(), none);
    row("scan", "sumAllDispersions", selected(100), none);
    row("scan of averages", "sumMultiDispersions", selected(100, 1500), backSum);
    row("scans from several starts", "sumTimeDispersions", selected(60, 0),
        [](PulsarParameters &p) { p.startDelta = 700; });
    row("search", "createFFA", selected(), [](PulsarParameters &p) {
        p.points = 3000;
        p.ffa.period_min = 1;
        p.ffa.period_max = 1.1;
        p.ffa.deredden = false;
    });
}

// What lies outside the needed ranges may be anything; their first and last samples count.
void TestPulsarNeeds::readsWhatItNeeds()
{
    QFETCH(QString, action);
    QFETCH(PulsarParameters, parameters);
    const Recording whole;
    PulsarCalculate calculate(whole.data, parameters);
    QVERIFY2(calculate.validate(action), qPrintable(calculate.failure()));
    const PulsarNeeds needs = calculate.needs(action);
    QCOMPARE((QVector{needs.module, needs.ray}), (QVector{2, 1}));
    const Answer expected = answerOf(whole.data, parameters, action);
    QVERIFY2(!expected.curves.empty(), qPrintable(expected.failure));

    Recording rest;
    for (int c = 0; c < shape.channels; ++c)
        std::fill_n(rest.channel(c), npoints, NAN);
    for (const SampleRange &range : needs.ranges) {
        std::copy(whole.channel(range.channel) + range.begin,
                  whole.channel(range.channel) + range.end,
                  rest.channel(range.channel) + range.begin);
    }
    const Answer answer = answerOf(rest.data, parameters, action);
    QCOMPARE(answer.failure, QString());
    QCOMPARE(answer.nonFinite, QString());
    QCOMPARE(answer.curves, expected.curves);

    for (const SampleRange &range : {needs.ranges.front(), needs.ranges.back()}) {
        for (const int point : {range.begin, range.end - 1}) {
            Recording changed;
            changed.channel(range.channel)[point] += 1e5f;
            QVERIFY2(answerOf(changed.data, parameters, action).curves != expected.curves,
                     qPrintable(QString("channel %1 point %2").arg(range.channel).arg(point)));
        }
    }
}

void TestPulsarNeeds::medianForWhatIsNoNumber_data()
{
    QTest::addColumn<QString>("action");
    for (const char *const action : {"sumPeriod", "sumChannelsDemoNoise", "sumChannelsAndFourier",
                                     "sumAllDispersions", "createFFA"})
        QTest::newRow(action) << action;
}

// The same answer, to the last bit, as of a recording that holds the medians.
void TestPulsarNeeds::medianForWhatIsNoNumber()
{
    QFETCH(QString, action);
    PulsarParameters parameters = selected();
    parameters.ffa.period_min = 1;
    parameters.ffa.period_max = 1.02;
    const Recording holed;
    const Recording mended;
    PulsarCalculate calculate(holed.data, parameters);
    QVERIFY(calculate.validate(action));
    for (const SampleRange &range : calculate.needs(action).ranges) {
        std::vector<int> points = {range.begin, range.begin + 777, range.begin + 778,
                                   range.end - 1};
        if (range.channel % 2)
            points.resize(1);
        const float values[] = {NAN, INFINITY, -INFINITY, -NAN};
        for (std::size_t i = 0; i < points.size(); ++i)
            holed.channel(range.channel)[points[i]] = values[i];
        std::vector<float> finite;
        std::copy_if(holed.channel(range.channel) + range.begin,
                     holed.channel(range.channel) + range.end, std::back_inserter(finite),
                     [](float value) { return std::isfinite(value); });
        for (const int point : points)
            mended.channel(range.channel)[point] = medianOf(finite);
    }
    const Answer answer = answerOf(holed.data, parameters, action);
    QVERIFY2(!answer.curves.empty(), qPrintable(answer.failure));
    QVERIFY(answer.nonFinite.contains("samples are no finite numbers"));
    QCOMPARE(answer.curves, answerOf(mended.data, parameters, action).curves);
}

void TestPulsarNeeds::namesWhatIsNoNumber()
{
    const Recording holed;
    for (const int c : {2, 3, 4, 9})
        std::fill_n(holed.channel(c) + 5000, 3, NAN);
    holed.channel(20)[1000] = -INFINITY; // the first point, of the last band with it
    holed.channel(32)[6000] = NAN;       // the extra channel takes no part
    PulsarParameters parameters = selected(0);
    QCOMPARE(answerOf(holed.data, parameters, "sumChannelsDemoNoise").nonFinite,
             QString("13 samples are no finite numbers: channels 3 to 5, 10 at points 5000 to "
                     "5002; channel 21 at point 1000. They count as the median of their channel."));
    parameters.firstPoint = 1001;
    QVERIFY(!answerOf(holed.data, parameters, "sumChannelsDemoNoise").nonFinite.contains("21"));
    // A channel is drawn as it was recorded, beside a base line of numbers.
    parameters.channel = 4;
    const Answer native = answerOf(holed.data, parameters, "showNative");
    QVERIFY(std::isnan(native.curves[0][3999]) && std::isfinite(native.curves[0][3998]));
    QVERIFY(std::isfinite(native.curves[1][3999]));
}

void TestPulsarNeeds::channelWithoutNumbers()
{
    const Recording holed;
    for (const int c : {11, 12})
        std::fill_n(holed.channel(c) + 1000, 16384, NAN);
    const PulsarParameters parameters = selected(0);
    for (const char *const action : {"sumChannelsDemoNoise", "sumChannelsAndFourier"}) {
        const QString failure = answerOf(holed.data, parameters, action).failure;
        QVERIFY2(failure.startsWith("Channels 12, 13 hold no finite number between the points 1000 "
                                    "and 17383.\n"),
                 qPrintable(failure));
    }
    // One number is enough, and the other ray has all.
    holed.channel(11)[1000] = 3;
    holed.channel(12)[17383] = 3;
    QVERIFY(!answerOf(holed.data, parameters, "sumChannelsDemoNoise").curves.empty());
    std::fill_n(holed.channel(11), npoints, NAN);
    PulsarParameters otherRay = parameters;
    otherRay.ray = 2;
    QCOMPARE(answerOf(holed.data, otherRay, "sumChannelsDemoNoise").nonFinite, QString());
}

void TestPulsarNeeds::sumsBeyondAnyFloat()
{
    const Recording large;
    for (int c = 0; c < 32; ++c)
        std::fill_n(large.channel(c), npoints, 3e38f);
    PulsarParameters parameters = selected(0);
    parameters.noise = "without";
    const Answer answer = answerOf(large.data, parameters, "sumChannelsDemoNoise");
    QVERIFY2(answer.failure.startsWith("No finite value came out"), qPrintable(answer.failure));
}

// Steps are found and taken out beside samples that are no numbers, which then stand at the level
// of the others.
void TestPulsarNeeds::stepsBesideGaps()
{
    const Recording stepped;
    for (int c = 0; c < 32; ++c) {
        for (int p = 6000; p < npoints; ++p)
            stepped.channel(c)[p] += 300;
        for (int p = 2000; p < 2200; ++p)
            stepped.channel(c)[p] = NAN;
    }
    PulsarParameters parameters = selected(0);
    parameters.noise = "without";
    parameters.deleteStep = true;
    const Answer answer = answerOf(stepped.data, parameters, "sumChannelsDemoNoise");
    QVERIFY2(!answer.curves.empty(), qPrintable(answer.failure));
    // 32 bands of level 100 and sigma 5.
    for (const int index : {1000, 1100, 1199, 1200, 9000})
        QVERIFY(std::abs(answer.curves[0][std::size_t(index)] - 3200) < 6 * 5 * std::sqrt(32.f));
}

void TestPulsarNeeds::validatesWithoutSamples_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<PulsarParameters>("parameters");
    QTest::addColumn<QString>("refused"); // the parameter
    const auto row = [](const char *action, auto member, auto value, const char *refused) {
        PulsarParameters parameters = selected();
        parameters.*member = value;
        QTest::addRow("%s, %s", action, refused) << action << parameters << refused;
    };
    using P = PulsarParameters;
    row("showNative", &P::channel, 35, "channel");
    row("showNative", &P::channel, 34, "");
    row("sumPeriod", &P::period, 1000.0, "period");
    row("sumChannelsDemoNoise", &P::points, 18000, "firstPoint");
    row("sumChannelsDemoNoise", &P::points, 17999, "");
    row("sumChannelsAndAverage", &P::points, 18000, ""); // its length is fixed
    row("sumChannelsAndFourier", &P::harmonicNum, 8192, "harmonicNum");
    row("sum4Dispersions", &P::dispersions, (std::array<double, 4>{0, 1, -1, 2}), "dispersion3");
    row("sumAllDispersions", &P::harmonicNum, 0, "harmonicNum");
    row("sumMultiDispersions", &P::averageCount, 8, "averageCount");
    row("sumTimeDispersions", &P::startDelta, -1.0, "firstPointDelta");
    row("createFFA", &P::points, 18001, "points");
}

void TestPulsarNeeds::validatesWithoutSamples()
{
    QFETCH(QString, action);
    QFETCH(PulsarParameters, parameters);
    QFETCH(QString, refused);
    ObservationData header = Recording().data;
    PulsarCalculate withSamples(header, parameters);
    header.samples = Samples();
    PulsarCalculate calculate(header, parameters);
    QCOMPARE(calculate.validate(action), refused.isEmpty());
    QCOMPARE(calculate.failedParameter(), refused);
    QCOMPARE(calculate.failure().isEmpty(), refused.isEmpty());
    QCOMPARE(withSamples.run(action), refused.isEmpty());
    QCOMPARE(withSamples.failure(), calculate.failure());
    QVERIFY(!calculate.run(action)); // there is nothing to compute with
    QVERIFY(!calculate.failure().isEmpty());
}

void TestPulsarNeeds::endsWithTheData_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("firstPoint");
    QTest::newRow("fold") << "sumPeriod" << 0;
    QTest::newRow("channel") << "showNative" << 100;
    QTest::newRow("sum that the data cut off") << "sumChannelsDemoNoise" << 1100;
    QTest::newRow("sum beyond the data") << "sumChannelsDemoNoise" << 1700;
    QTest::newRow("scans from several starts") << "sumTimeDispersions" << 0;
}

// A recording of which the last points are missing gives what one without these points gives.
void TestPulsarNeeds::endsWithTheData()
{
    QFETCH(QString, action);
    QFETCH(int, firstPoint);
    constexpr int missing = 1500;
    ObservationData truncated = Recording().data;
    truncated.missingPoints = missing;
    ObservationData cut = truncated;
    cut.npoints = npoints - missing;
    cut.missingPoints = 0;
    const PulsarParameters parameters = selected(400, firstPoint);
    const Answer answer = answerOf(truncated, parameters, action);
    const Answer expected = answerOf(cut, parameters, action);
    QCOMPARE(answer.curves, expected.curves);
    QCOMPARE(answer.failure, expected.failure);
    QCOMPARE(answer.failure.isEmpty(), firstPoint != 1700);
}

void TestPulsarNeeds::memoryRunsOut()
{
    const Recording recording;
    PulsarCalculate calculate(recording.data, selected());
    largestAllocation = 60000;
    const bool done = calculate.run("sumChannelsAndFourier");
    largestAllocation = SIZE_MAX;
    QVERIFY(!done && !calculate.wasCancelled());
    QVERIFY2(calculate.failure().contains("not enough memory"), qPrintable(calculate.failure()));
    QVERIFY(calculate.run("sumChannelsAndFourier"));
}

void TestPulsarNeeds::sumOfOnePoint()
{
    const Recording recording;
    PulsarParameters parameters = selected(0);
    parameters.noise = "without";
    parameters.normalise = true; // one value has no sigma
    double one = 0;
    double sum = 0;
    PulsarCalculate calculate(recording.data, parameters);
    QVERIFY(calculate.sumWithoutNoise(&one, 1, 0) && calculate.sumChannels(&sum, 1, 0, true));
    QCOMPARE(one, sum);
}

ZRT_UNIT_TEST_MAIN(TestPulsarNeeds)
#include "tst_pulsarneeds.moc"
