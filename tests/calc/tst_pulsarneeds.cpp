#include "calc/actions.h"
#include "calc/pulsar/computedon.h"
#include "calc/samples.h"

using namespace TestSupport;

// What an action checks before it computes, which samples it takes in, and what becomes of those
// that are no numbers or are missing.

namespace {

constexpr int npoints = 19000;
constexpr int channels = 34;

// Noise in module 2, ray 1, and 0 in the others.
ObservationData recording()
{
    static const Series values = noise(channels * npoints, 3, 5);
    ObservationData data = makeRecording({1, 2, channels, 2}, [](int, int, int, int) { return 0; });
    data.npoints = npoints;
    const auto block = SampleBlock::allocate(2, channels, 2, npoints);
    for (int c = 0; c < channels; ++c)
        std::transform(values.begin() + c * npoints, values.begin() + (c + 1) * npoints,
                       block->ray(1, c, 0), [](double value) { return float(100 + value); });
    data.samples = Samples(block);
    return data;
}

// The samples of the noise, to be written in a recording that was made here.
float *samplesOf(const ObservationData &data, int channel)
{
    return const_cast<float *>(data.samples[1][channel][0]);
}

PulsarParameters selected(double dispersion = 400, int firstPoint = 1000)
{
    PulsarParameters parameters = parametersFor(dispersion, 300);
    parameters.module = 2;
    parameters.channel = 7;
    parameters.firstPoint = firstPoint;
    parameters.ffa.period_min = 1;
    parameters.ffa.period_max = 1.02;
    parameters.ffa.deredden = false;
    return parameters;
}

struct Answer {
    std::vector<std::vector<float>> curves;
    QString nonFinite;
    QString failure;
};

Answer answerOf(const ObservationData &data, const PulsarParameters &parameters,
                const QString &action = "sumChannelsDemoNoise")
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
    return float((double(values[half - 1 + values.size() % 2]) + double(values[half])) / 2);
}

} // namespace

using P = PulsarParameters;

class TestPulsarNeeds : public QObject {
    Q_OBJECT

private slots:
    void readsWhatItNeeds();
    void medianForWhatIsNoNumber();
    void namesWhatIsNoNumber();
    void refusesWithoutNumbers();
    void stepsBesideGaps();
    void validatesWithoutSamples();
    void endsWithTheData();
};

// What lies outside the needed ranges may be anything; their first and last samples count.
void TestPulsarNeeds::readsWhatItNeeds()
{
    const struct {
        const char *action;
        PulsarParameters parameters;
    } rows[] = {
        {"showNative", with(selected(), &P::points, 2000)},
        {"showNative", selected(0, 18000)}, // to the end
        {"sumPeriod", selected()},
        {"sumPeriodOfBands", with(selected(400, 17000), &P::points, 600)},
        {"sumChannelsDemoNoise", with(selected(), &P::points, 700)},
        {"sumChannelsAndAverage", with(selected(), &P::noise, "backSum")},
        {"sumChannelsAndAverage", selected(1200, 2600)},                           // cut off
        {"sumChannelsAndAverage", with(selected(1200, 10), &P::noise, "backSum")}, // at the begin
        {"sumChannelsAndFourier", selected()},
        {"sum4Dispersions", selected()},
        {"sumAllDispersions", selected(100)},
        {"sumMultiDispersions", with(selected(100, 1500), &P::noise, "backSum")},
        {"sumTimeDispersions", with(selected(60, 0), &P::startDelta, 700)},
        {"createFFA", with(selected(), &P::points, 3000)},
    };
    const ObservationData whole = recording();
    for (const auto &[action, parameters] : rows) {
        PulsarCalculate calculate(whole, parameters);
        QVERIFY2(calculate.validate(action), qPrintable(calculate.failure()));
        const PulsarNeeds needs = calculate.needs(action);
        QCOMPARE((QVector{needs.module, needs.ray}), (QVector{2, 1}));
        const Answer expected = answerOf(whole, parameters, action);
        QVERIFY2(!expected.curves.empty(), qPrintable(expected.failure));

        const ObservationData rest = recording();
        for (int c = 0; c < channels; ++c)
            std::fill_n(samplesOf(rest, c), npoints, NAN);
        for (const auto &[channel, begin, end] : needs.ranges)
            std::copy(samplesOf(whole, channel) + begin, samplesOf(whole, channel) + end,
                      samplesOf(rest, channel) + begin);
        const Answer answer = answerOf(rest, parameters, action);
        QCOMPARE(answer.failure + answer.nonFinite, QString());
        QVERIFY2(answer.curves == expected.curves, action);

        for (const auto &[channel, begin, end] : {needs.ranges.front(), needs.ranges.back()}) {
            for (const int point : {begin, end - 1}) {
                const ObservationData changed = recording();
                samplesOf(changed, channel)[point] += 1e5f;
                const QString text = QString("%1: channel %2 point %3").arg(action).arg(channel);
                QVERIFY2(answerOf(changed, parameters, action).curves != expected.curves,
                         qPrintable(text.arg(point)));
            }
        }
    }
}

// The same answer, to the last bit, as of a recording that holds the medians.
void TestPulsarNeeds::medianForWhatIsNoNumber()
{
    const float noNumbers[] = {NAN, INFINITY, -INFINITY, -NAN};
    for (const char *const action : {"sumPeriod", "sumChannelsDemoNoise", "sumChannelsAndFourier",
                                     "sumAllDispersions", "createFFA"}) {
        const ObservationData holed = recording();
        const ObservationData mended = recording();
        PulsarCalculate calculate(holed, selected());
        QVERIFY(calculate.validate(action));
        const PulsarNeeds needs = calculate.needs(action);
        for (const auto &[channel, begin, end] : needs.ranges) {
            const int points[] = {begin, begin + 777, begin + 778, end - 1};
            const int holes = channel % 2 ? 1 : 4;
            float *const samples = samplesOf(holed, channel);
            for (int i = 0; i < holes; ++i)
                samples[points[i]] = noNumbers[i];
            std::vector<float> finite;
            std::copy_if(samples + begin, samples + end, std::back_inserter(finite),
                         [](float value) { return std::isfinite(value); });
            for (int i = 0; i < holes; ++i)
                samplesOf(mended, channel)[points[i]] = medianOf(finite);
        }
        const Answer answer = answerOf(holed, selected(), action);
        QVERIFY2(!answer.curves.empty(), qPrintable(answer.failure));
        QVERIFY(answer.nonFinite.contains("samples are no finite numbers"));
        QVERIFY2(answer.curves == answerOf(mended, selected(), action).curves, action);
    }
}

void TestPulsarNeeds::namesWhatIsNoNumber()
{
    const ObservationData holed = recording();
    for (const int c : {2, 3, 4, 9})
        std::fill_n(samplesOf(holed, c) + 5000, 3, NAN);
    samplesOf(holed, 20)[1000] = -INFINITY; // the first point, of the last band with it
    samplesOf(holed, 32)[6000] = NAN;       // the extra channel takes no part
    PulsarParameters parameters = selected(0);
    QCOMPARE(answerOf(holed, parameters).nonFinite,
             QString("13 samples are no finite numbers: channels 3 to 5, 10 at points 5000 to "
                     "5002; channel 21 at point 1000. They count as the median of their channel."));
    parameters.firstPoint = 1001;
    QVERIFY(!answerOf(holed, parameters).nonFinite.contains("21"));
    // A channel is drawn as it was recorded, beside a base line of numbers.
    parameters.channel = 4;
    const Answer native = answerOf(holed, parameters, "showNative");
    QVERIFY(std::isnan(native.curves[0][3999]) && std::isfinite(native.curves[0][3998]));
    QVERIFY(std::isfinite(native.curves[1][3999]));
}

void TestPulsarNeeds::refusesWithoutNumbers()
{
    const ObservationData holed = recording();
    for (const int c : {11, 12})
        std::fill_n(samplesOf(holed, c) + 1000, 16384, NAN);
    for (const char *const action : {"sumChannelsDemoNoise", "sumChannelsAndFourier"}) {
        const QString failure = answerOf(holed, selected(0), action).failure;
        QVERIFY2(failure.startsWith("Channels 12, 13 hold no finite number between the points 1000 "
                                    "and 17383.\n"),
                 qPrintable(failure));
    }
    // One number is enough, and the other ray has all.
    samplesOf(holed, 11)[1000] = 3;
    samplesOf(holed, 12)[17383] = 3;
    QVERIFY(!answerOf(holed, selected(0)).curves.empty());
    std::fill_n(samplesOf(holed, 11), npoints, NAN);
    QCOMPARE(answerOf(holed, with(selected(0), &P::ray, 2)).nonFinite, QString());
    for (int c = 0; c < 32; ++c)
        std::fill_n(samplesOf(holed, c), npoints, 3e38f);
    const QString failure = answerOf(holed, with(selected(0), &P::noise, "without")).failure;
    QVERIFY2(failure.startsWith("No finite value came out"), qPrintable(failure));
}

// Steps are found and taken out beside samples that are no numbers, which then stand at the level
// of the others.
void TestPulsarNeeds::stepsBesideGaps()
{
    const ObservationData stepped = recording();
    for (int c = 0; c < 32; ++c) {
        for (int p = 6000; p < npoints; ++p)
            samplesOf(stepped, c)[p] += 300;
        std::fill_n(samplesOf(stepped, c) + 2000, 200, NAN);
    }
    const float before = samplesOf(stepped, 3)[10000];
    PulsarParameters parameters = with(selected(0), &P::noise, "without");
    parameters.deleteStep = true;
    const PulsarResult result = resultOf("sumChannelsDemoNoise", stepped, parameters);
    // 32 bands of level 100 and sigma 5.
    for (const std::size_t index : {1000, 1100, 1199, 1200, 9000})
        QVERIFY(std::abs(result.curves[0][index] - 3200) < 6 * 5 * std::sqrt(32.f));
    QVERIFY2(result.description().contains("Deleted steps = 32"), qPrintable(result.description()));
    QCOMPARE(computedOn("x", "sumChannelsDemoNoise", stepped, parameters, result).back(),
             QString("steps taken out: 32"));
    QVERIFY(!result.markers.empty());
    for (const int marker : result.markers)
        QVERIFY(std::abs(marker - 5000) <= 1);
    QCOMPARE(samplesOf(stepped, 3)[10000], before);
}

void TestPulsarNeeds::validatesWithoutSamples()
{
    const struct {
        const char *action;
        PulsarParameters parameters;
        QString refused; // the parameter
    } rows[] = {
        {"showNative", with(selected(), &P::channel, 35), "channel"},
        {"showNative", with(selected(), &P::channel, 34), ""},
        {"sumPeriod", with(selected(), &P::period, 1000), "period"},
        {"sumChannelsDemoNoise", with(selected(), &P::points, 18000), "firstPoint"},
        {"sumChannelsDemoNoise", with(selected(), &P::points, 17999), ""},
        {"sumChannelsAndAverage", with(selected(), &P::points, 18000), ""}, // its length is fixed
        {"sumChannelsAndFourier", with(selected(), &P::harmonicNum, 8192), "harmonicNum"},
        {"sumAllDispersions", with(selected(), &P::harmonicNum, 0), "harmonicNum"},
        {"sumMultiDispersions", with(selected(), &P::averageCount, 8), "averageCount"},
        {"createFFA", with(selected(), &P::points, 18001), "points"},
    };
    const ObservationData whole = recording();
    ObservationData header = whole;
    header.samples = Samples();
    for (const auto &[action, parameters, refused] : rows) {
        PulsarCalculate withSamples(whole, parameters);
        PulsarCalculate calculate(header, parameters);
        QCOMPARE(calculate.validate(action), refused.isEmpty());
        QCOMPARE(calculate.failedParameter(), refused);
        QCOMPARE(calculate.failure().isEmpty(), refused.isEmpty());
        QCOMPARE(withSamples.run(action), refused.isEmpty());
        QCOMPARE(withSamples.failure(), calculate.failure());
        QVERIFY(!calculate.run(action)); // there is nothing to compute with
    }
}

// A recording of which the last points are missing gives what one without these points gives.
void TestPulsarNeeds::endsWithTheData()
{
    ObservationData truncated = recording();
    ObservationData cut = truncated;
    truncated.missingPoints = 1500;
    cut.npoints -= 1500;
    // The data cut off the first sum, and the second would begin behind them.
    for (const auto &[action, firstPoint] : {std::pair("sumChannelsDemoNoise", 1100),
                                             {"sumChannelsDemoNoise", 1700},
                                             {"sumPeriod", 0},
                                             {"showNative", 100},
                                             {"sumTimeDispersions", 0}}) {
        const Answer answer = answerOf(truncated, selected(400, firstPoint), action);
        const Answer expected = answerOf(cut, selected(400, firstPoint), action);
        QVERIFY2(answer.curves == expected.curves, action);
        QCOMPARE(answer.failure, expected.failure);
        QCOMPARE(answer.failure.isEmpty(), firstPoint != 1700);
    }
}

ZRT_UNIT_TEST_MAIN(TestPulsarNeeds)
#include "tst_pulsarneeds.moc"
