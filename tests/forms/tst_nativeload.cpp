#include "forms/native/nativeload.h"

#include "calc/channelsum.h"
#include "forms/native/nativecurves.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <cmath>

using TestSupport::Shape;

namespace {

const Shape shape = {20000, 2, 9, 3};

// Noise; from point 12000 on the level of channel 5 (index 4) is higher.
float sampleAt(int point, int module, int channel, int ray)
{
    const quint32 mixed =
        (quint32(point * 9 + channel) + quint32(module * 3 + ray) * 7919) * 2654435761u;
    return float(mixed >> 22) / 512 + (channel == 4 && point >= 12000 ? 30.f : 0.f);
}

} // namespace

class TestNativeLoad : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void domainFollowsTheView_data();
    void domainFollowsTheView();
    void curvesAreThoseOfTheWhole_data();
    void curvesAreThoseOfTheWhole();
    void stepsAreTakenOutAndMarked();
    void reductionWithoutSamples();
    void endsWhenNotWanted();
    void samplesThatAreNoNumbers_data();
    void samplesThatAreNoNumbers();
    void endsEarly();

private:
    // All that is handed over for a request.
    std::vector<std::shared_ptr<const NativePicture>> load(NativeRequest request)
    {
        request.path = path;
        std::vector<std::shared_ptr<const NativePicture>> pictures;
        loadNative(
            request, [] { return true; },
            [&](const std::shared_ptr<const NativePicture> &p) { pictures.push_back(p); });
        return pictures;
    }

    void write(const QByteArray &bytes) { path = TestSupport::writeFile(folder, "b.pnt", bytes); }

    QTemporaryDir folder;
    QString path;
    ObservationData recording;
};

void TestNativeLoad::samplesThatAreNoNumbers_data()
{
    QTest::addColumn<bool>("isDetailed");
    QTest::addColumn<bool>("deletesSteps");
    QTest::newRow("every sample") << true << false;
    QTest::newRow("without steps") << true << true;
    QTest::newRow("reduction") << false << false;
}

void TestNativeLoad::samplesThatAreNoNumbers()
{
    QFETCH(bool, isDetailed);
    QFETCH(bool, deletesSteps);
    const auto holed = [](int p, int m, int c, int r) {
        const bool isHole = (p >= 700 && p < 720 && c < 3) || (r == 1 && c == 5);
        return isHole ? NAN : sampleAt(p, m, c, r);
    };
    write(TestSupport::recordingBytes(shape, holed));
    NativeRequest request;
    request.domain = {500, 19000, isDetailed};
    request.deletesSteps = deletesSteps;
    const auto picture = load(request).back();
    QCOMPARE(picture->nonFinite, QString("60 samples are no finite numbers: channels 1 to 3 at "
                                         "points 700 to 719."));
    NativeChoice choice;
    choice.show = NativeShow::Sum;
    NativeCurves drawn = nativeCurves(*picture, choice);
    for (const float value : drawn.curves[0])
        QVERIFY(std::isfinite(value));
    choice.show = NativeShow::Channel;
    choice.channel = 2;
    drawn = nativeCurves(*picture, choice);
    const auto gap = std::size_t((710 - drawn.first) / drawn.step);
    QVERIFY(std::isnan(drawn.curves[0][gap]));
    QVERIFY(std::isfinite(drawn.curves[0][gap + 300]));

    // A channel without any number: no sum, until it is switched off.
    request.ray = 1;
    choice.show = NativeShow::Sum;
    const auto without = load(request).back();
    drawn = nativeCurves(*without, choice);
    QCOMPARE(without->bandsWithoutNumbers, std::vector<int>{5});
    for (const float value : drawn.curves[0])
        QVERIFY(std::isnan(value));
    request.channelsOff = choice.channelsOff = {false, false, false, false, false, true};
    drawn = nativeCurves(*load(request).back(), choice);
    QCOMPARE(drawn.problem, QString());
    QVERIFY(std::isfinite(drawn.curves[0][0]) && std::isfinite(drawn.curves[0][gap]));
}

// Of what is there all is shown, and delays go round the end of that.
void TestNativeLoad::endsEarly()
{
    constexpr int missing = 3000;
    const QByteArray bytes = TestSupport::recordingBytes(shape, sampleAt);
    write(bytes.chopped(missing * 2 * 3 * 9 * 4 - 7));
    ObservationData cut = recording;
    cut.npoints -= missing - 1;
    --cut.npoints; // the last one is not whole
    NativeRequest request;
    request.domain = {15000, 2000, true};
    request.marginDispersion = 500;
    const auto picture = load(request).back();
    QCOMPARE(picture->problem, QString());
    NativeChoice choice;
    choice.show = NativeShow::Sum;
    choice.dispersion = 480;
    const std::vector<double> whole = Tools::sumChannels(cut, 480, 0, 0);
    QCOMPARE(nativeCurves(*picture, choice).series,
             std::vector<double>(whole.begin() + 15000, whole.begin() + 17000));
}

void TestNativeLoad::initTestCase()
{
    QFile out(folder.filePath("a.pnt"));
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(TestSupport::recordingBytes(shape, sampleAt));
    path = out.fileName();
    recording = TestSupport::makeRecording(shape, sampleAt);
}

void TestNativeLoad::domainFollowsTheView_data()
{
    QTest::addColumn<int>("npoints");
    QTest::addColumn<double>("first"); // in sight
    QTest::addColumn<double>("points");
    QTest::addColumn<QVector<int>>("present"); // first, count, detailed; 1000 may be detailed
    QTest::addColumn<QVector<int>>("wanted");
    const QVector<int> whole = {0, 90000, 0};
    QTest::newRow("short recording")
        << 1000 << 3.0 << 4.0 << QVector{0, 0, 0} << QVector{0, 1000, 1};
    QTest::newRow("all of a long one") << 90000 << 0.0 << 90000.0 << whole << whole;
    QTest::newRow("a little closer") << 90000 << 40000.0 << 20000.0 << whole << whole;
    QTest::newRow("too coarse") << 90000 << 40000.0 << 9000.0 << whole << QVector{31000, 27000, 0};
    QTest::newRow("every sample") << 90000 << 50000.0 << 300.0 << whole << QVector{49650, 1000, 1};
    QTest::newRow("within it") << 90000 << 49700.0 << 900.0 << QVector{49650, 1000, 1}
                               << QVector{49650, 1000, 1};
    QTest::newRow("to its edge") << 90000 << 50350.0 << 300.0 << QVector{49650, 1000, 1}
                                 << QVector{50000, 1000, 1};
    QTest::newRow("all of it in sight")
        << 90000 << 49650.0 << 1000.0 << QVector{49650, 1000, 1} << QVector{48650, 3000, 0};
    QTest::newRow("edge of the recording")
        << 90000 << 89900.0 << 100.0 << QVector{89000, 1000, 1} << QVector{89000, 1000, 1};
    QTest::newRow("near the begin") << 90000 << 0.0 << 100.0 << whole << QVector{0, 1000, 1};
}

void TestNativeLoad::domainFollowsTheView()
{
    QFETCH(int, npoints);
    QFETCH(double, first);
    QFETCH(double, points);
    QFETCH(QVector<int>, present);
    QFETCH(QVector<int>, wanted);
    const NativeDomain domain =
        wantedDomain(npoints, 1000, first, points, {present[0], present[1], present[2] == 1});
    QCOMPARE((QVector<int>{domain.first, domain.count, domain.detailed}), wanted);
}

void TestNativeLoad::curvesAreThoseOfTheWhole_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("count");
    QTest::newRow("all") << 0 << 20000;
    QTest::newRow("from the begin") << 0 << 3000;
    QTest::newRow("middle") << 7001 << 2000;
    QTest::newRow("to the end, where the delays wrap") << 18000 << 2000;
}

void TestNativeLoad::curvesAreThoseOfTheWhole()
{
    NativeRequest request;
    request.module = 1;
    request.ray = 2;
    QFETCH(int, first);
    QFETCH(int, count);
    request.domain = {first, count, true};
    request.marginDispersion = 500;
    const auto picture = load(request).back();
    QVERIFY(picture->isLast && picture->problem.isEmpty() && picture->window.samples);
    QVERIFY(reachesWithin(*picture, 500, shape.npoints));
    QCOMPARE(reachesWithin(*picture, 700, shape.npoints), count == shape.npoints);

    NativeChoice choice;
    choice.show = NativeShow::Sum;
    choice.dispersion = 480;
    const NativeCurves sum = nativeCurves(*picture, choice);
    const std::vector<double> whole = Tools::sumChannels(recording, 480, 1, 2);
    QCOMPARE(sum.series, std::vector<double>(whole.begin() + first, whole.begin() + first + count));

    choice.channelsOff = {true, false, false, false, false, false, false, true, false};
    ObservationData masked = recording;
    masked.samples = recording.samples.withChannelsOff(choice.channelsOff);
    const std::vector<double> part = Tools::sumChannels(masked, 480, 1, 2);
    QCOMPARE(nativeCurves(*picture, choice).series,
             std::vector<double>(part.begin() + first, part.begin() + first + count));

    choice.show = NativeShow::Channel;
    choice.channel = 8; // the last one, which is no band
    const NativeCurves channel = nativeCurves(*picture, choice);
    QCOMPARE(channel.curves[0][99], sampleAt(first + 99, 1, 8, 2));
    choice.show = NativeShow::Stack;
    QCOMPARE(int(nativeCurves(*picture, choice).curves.size()), 6);
}

void TestNativeLoad::stepsAreTakenOutAndMarked()
{
    NativeRequest request;
    request.domain = {10000, 5000, true};
    request.marginDispersion = 200;
    request.deletesSteps = true;
    const auto picture = load(request).back();
    NativeChoice choice;
    choice.show = NativeShow::Channel;
    choice.channel = 4;
    const NativeCurves channel = nativeCurves(*picture, choice);
    QCOMPARE(channel.markers, std::vector<int>{2000});
    QVERIFY(channel.max < 5); // 2 without the step
    choice.channel = 3;
    QVERIFY(nativeCurves(*picture, choice).markers.empty());
    // In the sum the band shows its step by its delay of 74.6 points earlier.
    choice.show = NativeShow::Sum;
    choice.dispersion = 200;
    const double last = recording.fbands.back();
    const double delay =
        4148.8 * 200 * (std::pow(recording.fbands[4], -2) - std::pow(last, -2)) / 0.0124928;
    QCOMPARE(nativeCurves(*picture, choice).markers,
             std::vector<int>{2000 - int(std::lround(delay))});
    // The recording itself is as it was.
    request.deletesSteps = false;
    QVERIFY(nativeCurves(*load(request).back(), choice).max > 30);
}

// What is shown of a part too long to be kept is made of every one of its points.
void TestNativeLoad::reductionWithoutSamples()
{
    NativeRequest request;
    request.domain = {500, 19000, false};
    request.dispersion = 300;
    const auto picture = load(request).back();
    QVERIFY(picture->isLast && !picture->isGlance && !picture->window.samples);
    NativeChoice choice;
    choice.show = NativeShow::Sum;
    const NativeCurves sum = nativeCurves(*picture, choice);
    const std::vector<double> whole = Tools::sumChannels(recording, 300, 0, 0);
    const auto [low, high] = std::minmax_element(whole.begin() + 500, whole.begin() + 19500);
    QCOMPARE(float(sum.min), float(*low));
    QCOMPARE(float(sum.max), float(*high));
    // Index i stands for the point first + i x step.
    const auto at = std::size_t((high - whole.begin() - sum.first) / sum.step);
    QVERIFY(std::max(sum.curves[0][at], sum.curves[0][at ^ 1]) == float(*high));
}

void TestNativeLoad::endsWhenNotWanted()
{
    NativeRequest request;
    request.path = path;
    request.domain = {0, 20000, true};
    int delivered = 0;
    loadNative(
        request, [] { return false; },
        [&](const std::shared_ptr<const NativePicture> &) { ++delivered; });
    QCOMPARE(delivered, 0);
    request.path = folder.filePath("gone.pnt");
    loadNative(
        request, [] { return true; },
        [&](const std::shared_ptr<const NativePicture> &picture) {
            QVERIFY(picture->isLast && picture->problem.contains("gone.pnt"));
            ++delivered;
        });
    QCOMPARE(delivered, 1);
}

ZRT_UNIT_TEST_MAIN(TestNativeLoad)
#include "tst_nativeload.moc"
