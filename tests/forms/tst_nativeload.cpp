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
    void init() { path = folder.filePath("a.pnt"); }
    void domainFollowsTheView();
    void curvesAreThoseOfTheWhole();
    void stepsAreTakenOutAndMarked();
    void reductionWithoutSamples();
    void endsWhenNotWanted();
    void samplesThatAreNoNumbers();
    void endsEarly();

private:
    // All that is handed over for a request.
    std::vector<std::shared_ptr<const NativePicture>> load(NativeRequest request,
                                                           bool isWanted = true) const
    {
        request.path = path;
        std::vector<std::shared_ptr<const NativePicture>> pictures;
        loadNative(
            request, [isWanted] { return isWanted; },
            [&](const std::shared_ptr<const NativePicture> &p) { pictures.push_back(p); });
        return pictures;
    }

    void write(const QByteArray &bytes) { path = TestSupport::writeFile(folder, "b.pnt", bytes); }

    static NativeChoice sumAt(double dispersion) { return {NativeShow::Sum, 0, dispersion, {}}; }
    static NativeChoice ofChannel(int channel) { return {NativeShow::Channel, channel, 0, {}}; }
    // The same part of the sum of a whole recording.
    static std::vector<double> straightSum(const ObservationData &data, int module, int ray,
                                           const NativeDomain &part)
    {
        const std::vector<double> whole = Tools::sumChannels(data, 480, module, ray);
        return {whole.begin() + part.first, whole.begin() + part.first + part.count};
    }

    QTemporaryDir folder;
    QString path;
    ObservationData recording;
};

void TestNativeLoad::samplesThatAreNoNumbers()
{
    write(TestSupport::recordingBytes(shape, [](int p, int m, int c, int r) {
        const bool isHole = (p >= 700 && p < 720 && c < 3) || (r == 1 && c == 5);
        return isHole ? NAN : sampleAt(p, m, c, r);
    }));
    const auto isFinite = [](float value) { return std::isfinite(value); };
    // Every sample, without steps, and a reduction.
    for (const auto &[isDetailed, deletesSteps] :
         {std::pair(true, false), {true, true}, {false, false}}) {
        NativeRequest request;
        request.domain = {500, 19000, isDetailed};
        request.deletesSteps = deletesSteps;
        const auto picture = load(request).back();
        QCOMPARE(picture->nonFinite, QString("60 samples are no finite numbers: channels 1 to 3 "
                                             "at points 700 to 719."));
        std::vector<float> curve = nativeCurves(*picture, sumAt(0)).curves[0];
        QVERIFY(std::all_of(curve.begin(), curve.end(), isFinite));
        const NativeCurves channel = nativeCurves(*picture, ofChannel(2));
        const auto gap = std::size_t((710 - channel.first) / channel.step);
        QVERIFY(std::isnan(channel.curves[0][gap]));
        QVERIFY(std::isfinite(channel.curves[0][gap + 300]));

        // A channel without any number: no sum, until it is switched off.
        request.ray = 1;
        const auto without = load(request).back();
        QCOMPARE(without->bandsWithoutNumbers, std::vector<int>{5});
        curve = nativeCurves(*without, sumAt(0)).curves[0];
        QVERIFY(std::none_of(curve.begin(), curve.end(), isFinite));
        NativeChoice choice = sumAt(0);
        request.channelsOff = choice.channelsOff = {false, false, false, false, false, true};
        const NativeCurves drawn = nativeCurves(*load(request).back(), choice);
        QCOMPARE(drawn.problem, QString());
        QVERIFY(isFinite(drawn.curves[0][0]) && isFinite(drawn.curves[0][gap]));
    }
}

// All that is there is shown, and delays go round its end.
void TestNativeLoad::endsEarly()
{
    constexpr int missing = 3000;
    write(TestSupport::recordingBytes(shape, sampleAt).chopped(missing * 2 * 3 * 9 * 4 - 7));
    ObservationData cut = recording;
    cut.npoints -= missing; // the last one is not whole
    NativeRequest request;
    request.domain = {15000, 2000, true};
    request.marginDispersion = 500;
    const auto picture = load(request).back();
    QCOMPARE(picture->problem, QString());
    QCOMPARE(nativeCurves(*picture, sumAt(480)).series, straightSum(cut, 0, 0, request.domain));
}

void TestNativeLoad::initTestCase()
{
    TestSupport::writeFile(folder, "a.pnt", TestSupport::recordingBytes(shape, sampleAt));
    recording = TestSupport::makeRecording(shape, sampleAt);
}

void TestNativeLoad::domainFollowsTheView()
{
    using Domain = QVector<int>; // first, count, detailed; 1000 may be detailed
    const Domain whole = {0, 90000, 0};
    const Domain part = {49650, 1000, 1};
    const struct {
        const char *name;
        int npoints;
        double first, points; // in sight
        Domain present, wanted;
    } views[] = {
        {"short recording", 1000, 3, 4, {0, 0, 0}, {0, 1000, 1}},
        {"all of a long one", 90000, 0, 90000, whole, whole},
        {"a little closer", 90000, 40000, 20000, whole, whole},
        {"too coarse", 90000, 40000, 9000, whole, {31000, 27000, 0}},
        {"every sample", 90000, 50000, 300, whole, part},
        {"within it", 90000, 49700, 900, part, part},
        {"to its edge", 90000, 50350, 300, part, {50000, 1000, 1}},
        {"all of it in sight", 90000, 49650, 1000, part, {48650, 3000, 0}},
        {"end of the recording", 90000, 89900, 100, {89000, 1000, 1}, {89000, 1000, 1}},
        {"its begin", 90000, 0, 100, whole, {0, 1000, 1}},
    };
    for (const auto &[name, npoints, first, points, present, wanted] : views) {
        const NativeDomain domain =
            wantedDomain(npoints, 1000, first, points, {present[0], present[1], present[2] == 1});
        QVERIFY2((Domain{domain.first, domain.count, domain.detailed}) == wanted, name);
    }
}

void TestNativeLoad::curvesAreThoseOfTheWhole()
{
    const std::vector<bool> off = {true, false, false, false, false, false, false, true, false};
    ObservationData masked = recording;
    masked.samples = recording.samples.withChannelsOff(off);
    // All, from the begin, in the middle, and to the end, where the delays wrap.
    for (const auto &[first, count] :
         {std::pair(0, 20000), {0, 3000}, {7001, 2000}, {18000, 2000}}) {
        NativeRequest request;
        request.module = 1;
        request.ray = 2;
        request.domain = {first, count, true};
        request.marginDispersion = 500;
        const auto picture = load(request).back();
        QVERIFY(picture->isLast && picture->problem.isEmpty() && picture->window.samples);
        QVERIFY(reachesWithin(*picture, 500, shape.npoints));
        QCOMPARE(reachesWithin(*picture, 700, shape.npoints), count == shape.npoints);

        NativeChoice choice = sumAt(480);
        QCOMPARE(nativeCurves(*picture, choice).series,
                 straightSum(recording, 1, 2, request.domain));
        choice.channelsOff = off;
        QCOMPARE(nativeCurves(*picture, choice).series, straightSum(masked, 1, 2, request.domain));
        choice.show = NativeShow::Stack;
        QCOMPARE(int(nativeCurves(*picture, choice).curves.size()), 6);
        // The last channel, which is no band.
        QCOMPARE(nativeCurves(*picture, ofChannel(8)).curves[0][99], sampleAt(first + 99, 1, 8, 2));
    }
}

void TestNativeLoad::stepsAreTakenOutAndMarked()
{
    NativeRequest request;
    request.domain = {10000, 5000, true};
    request.marginDispersion = 200;
    request.deletesSteps = true;
    const auto picture = load(request).back();
    const NativeCurves channel = nativeCurves(*picture, ofChannel(4));
    QCOMPARE(channel.markers, std::vector<int>{2000});
    QVERIFY(channel.max < 5); // 2 without the step
    QVERIFY(nativeCurves(*picture, ofChannel(3)).markers.empty());
    // In the sum the band shows its step by its delay of 17.8 points earlier.
    QCOMPARE(nativeCurves(*picture, sumAt(200)).markers, std::vector<int>{2000 - 18});
    // The recording itself is as it was.
    request.deletesSteps = false;
    QVERIFY(nativeCurves(*load(request).back(), sumAt(200)).max > 30);
}

// What is shown of a part too long to be kept is made of every one of its points.
void TestNativeLoad::reductionWithoutSamples()
{
    NativeRequest request;
    request.domain = {500, 19000, false};
    request.dispersion = 300;
    const auto picture = load(request).back();
    QVERIFY(picture->isLast && !picture->isGlance && !picture->window.samples);
    const NativeCurves sum = nativeCurves(*picture, sumAt(0));
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
    request.domain = {0, 20000, true};
    QVERIFY(load(request, false).empty());
    path = folder.filePath("gone.pnt");
    const auto pictures = load(request);
    QCOMPARE(int(pictures.size()), 1);
    QVERIFY(pictures[0]->isLast && pictures[0]->problem.contains("gone.pnt"));
}

ZRT_UNIT_TEST_MAIN(TestNativeLoad)
#include "tst_nativeload.moc"
