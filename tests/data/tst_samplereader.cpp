#include "data/samplereader.h"
#include "support/shortdevice.h"
#include "support/testmain.h"

#include <cstring>
#include <limits>
#include <random>

using TestSupport::ShortDevice;

Q_DECLARE_METATYPE(SampleShape)

namespace {

qint64 valuesOf(const SampleShape &shape)
{
    return qint64(shape.npoints) * shape.modules * shape.rays * shape.channels;
}

// Every bit pattern may occur, among them NaNs that arithmetic would change.
QByteArray randomData(const SampleShape &shape)
{
    QByteArray bytes(int(valuesOf(shape) * 4), Qt::Uninitialized);
    std::mt19937 bits(1);
    for (int i = 0; i < bytes.size(); i += 4) {
        const quint32 value = quint32(bits());
        std::memcpy(bytes.data() + i, &value, 4);
    }
    return bytes;
}

// The first place where the block is not what reading the values one by one gives; the first
// `known` values are in `bytes`, the others must be zero.
QString firstDifference(const QByteArray &bytes, const SampleShape &shape, const SampleBlock &block,
                        qint64 known)
{
    qint64 i = 0;
    for (int p = 0; p < shape.npoints; ++p)
        for (int m = 0; m < shape.modules; ++m)
            for (int r = 0; r < shape.rays; ++r)
                for (int c = 0; c < shape.channels; ++c, ++i) {
                    quint32 expected = 0;
                    if (i < known)
                        std::memcpy(&expected, bytes.constData() + i * 4, 4);
                    quint32 stored = 0;
                    std::memcpy(&stored, &block.ray(m, c, r)[p], 4);
                    if (stored != expected)
                        return QString("point %1 module %2 ray %3 channel %4")
                            .arg(p)
                            .arg(m)
                            .arg(r)
                            .arg(c);
                }
    return {};
}

std::shared_ptr<SampleBlock> blockFor(const SampleShape &shape)
{
    return SampleBlock::allocate(shape.modules, shape.channels, shape.rays, shape.npoints);
}

} // namespace

class TestSampleReader : public QObject {
    Q_OBJECT

private slots:
    void everyValueInItsPlace_data();
    void everyValueInItsPlace();
    void shortDevice_data();
    void shortDevice();
    void progressValues_data();
    void progressValues();
    void slowReading_data();
    void slowReading();
    void keepAliveFollowsTheClock_data();
    void keepAliveFollowsTheClock();
    void cancelling_data();
    void cancelling();
    void deviceIsReadInLargeBlocks();
    void memoryToReadLimits_data();
    void memoryToReadLimits();
};

void TestSampleReader::everyValueInItsPlace_data()
{
    QTest::addColumn<SampleShape>("shape"); // points, modules, channels, rays
    QTest::addColumn<qint64>("portion");
    const qint64 all = qint64(1) << 40;
    const auto row = [](const char *name, const SampleShape &shape, qint64 portion) {
        QTest::newRow(name) << shape << portion;
    };
    row("one value", {1, 1, 1, 1}, all);
    row("one value a point", {1000, 1, 1, 1}, all);
    row("three values a point", {4099, 1, 3, 1}, all);
    row("four values a point", {50, 1, 4, 1}, all);
    row("five values a point", {33, 1, 5, 1}, all);
    row("less than a line of points", {15, 2, 7, 3}, all);
    row("one line of points", {16, 2, 7, 3}, all);
    row("a line and a point", {17, 2, 7, 3}, all);
    row("six modules over several blocks", {1500, 6, 33, 8}, all);
    row("one module over several blocks", {9001, 1, 33, 8}, all);
    row("513 channels over several blocks", {4100, 1, 513, 1}, all);
    row("two values over several blocks", {1100003, 1, 2, 1}, all);
    row("a line of points beyond a block", {35, 1, 70001, 1}, all);
    row("a point beyond a block", {3, 1, 1100001, 1}, all);
    row("device that cuts values", {700, 3, 33, 2}, 4093);
}

void TestSampleReader::everyValueInItsPlace()
{
    QFETCH(SampleShape, shape);
    QFETCH(qint64, portion);
    const QByteArray bytes = randomData(shape);
    const auto block = blockFor(shape);
    ShortDevice device(bytes + "more", bytes.size() + 4);
    device.portion = portion;
    const SampleReading reading = readSamples(device, shape, *block);
    QVERIFY(reading.end == SampleReadingEnd::Complete);
    QCOMPARE(reading.valuesRead, valuesOf(shape));
    QCOMPARE(firstDifference(bytes, shape, *block, valuesOf(shape)), QString());
    QCOMPARE(device.readAll(), QByteArray("more"));
}

void TestSampleReader::shortDevice_data()
{
    QTest::addColumn<SampleShape>("shape");
    QTest::addColumn<qint64>("missingBytes");
    QTest::addColumn<qint64>("missingValues");
    const SampleShape shape = {700, 6, 33, 8}; // 6336 bytes a point, two blocks
    const SampleShape few = {100, 1, 3, 1};
    const SampleShape large = {18, 1, 70001, 1};
    const auto row = [](const char *name, const SampleShape &counts, qint64 bytes, qint64 values) {
        QTest::newRow(name) << counts << bytes << values;
    };
    row("one byte", shape, 1, 1);
    row("one value", shape, 4, 1);
    row("one value and a byte", shape, 5, 2);
    row("one point", shape, 6336, 1584);
    row("17 points and a value", shape, 17 * 6336 + 4, 17 * 1584 + 1);
    row("all but a value", shape, 700 * 6336 - 4, 700 * 1584 - 1);
    row("everything", shape, 700 * 6336, 700 * 1584);
    row("few values a point", few, 10, 3);
    row("large points", large, 3 * 280004 + 8, 3 * 70001 + 2);
}

void TestSampleReader::shortDevice()
{
    QFETCH(SampleShape, shape);
    QFETCH(qint64, missingBytes);
    QFETCH(qint64, missingValues);
    const QByteArray bytes = randomData(shape);
    for (const bool fails : {false, true}) {
        const auto block = blockFor(shape);
        ShortDevice device(bytes, bytes.size() - missingBytes);
        device.failsAtEnd = fails;
        const SampleReading reading = readSamples(device, shape, *block);
        QVERIFY(reading.end == SampleReadingEnd::Short);
        QCOMPARE(reading.error, QString(fails ? "the disk has gone" : ""));
        const qint64 known = valuesOf(shape) - missingValues;
        QCOMPARE(reading.valuesRead, known);
        QCOMPARE(firstDifference(bytes, shape, *block, known), QString());
    }
}

void TestSampleReader::progressValues_data()
{
    QTest::addColumn<SampleShape>("shape");
    QTest::addColumn<int>("pointsPresent");
    QTest::addColumn<QVector<int>>("percents");
    QTest::newRow("one point") << SampleShape{1, 1, 1, 1} << 1 << QVector{0};
    QTest::newRow("1000 points") << SampleShape{1000, 1, 1, 1} << 1000 << QVector{0};
    QTest::newRow("1001 points") << SampleShape{1001, 1, 1, 1} << 1001 << QVector{0, 99};
    QTest::newRow("rounded down") << SampleShape{3001, 1, 2, 1} << 3001 << QVector{0, 33, 66, 99};
    QTest::newRow("several blocks")
        << SampleShape{4000, 1, 700, 1} << 4000 << QVector{0, 25, 50, 75};
    QTest::newRow("ends before the next") << SampleShape{4000, 1, 33, 1} << 1999 << QVector{0, 25};
    QTest::newRow("ends in the next") << SampleShape{4000, 1, 33, 1} << 2000 << QVector{0, 25, 50};
    QTest::newRow("nothing there") << SampleShape{4000, 1, 33, 1} << 0 << QVector{0};
}

void TestSampleReader::progressValues()
{
    QFETCH(SampleShape, shape);
    QFETCH(int, pointsPresent);
    const QByteArray bytes = randomData(shape);
    ShortDevice device(bytes, bytes.size() / shape.npoints * pointsPresent);
    QVector<int> percents;
    SampleReadingHooks hooks;
    hooks.progress = [&](int percent) { percents.push_back(percent); };
    readSamples(device, shape, *blockFor(shape), hooks);
    QTEST(percents, "percents");
}

void TestSampleReader::slowReading_data()
{
    QTest::addColumn<qint64>("msPerRead");
    QTest::addColumn<bool>("goesOn");
    QTest::addColumn<int>("asked");
    QTest::addColumn<bool>("complete");
    // Five reads; the limit counts whole seconds.
    QTest::newRow("3600.995 s are not too long") << qint64(720199) << false << 0 << true;
    QTest::newRow("3601 s are asked about") << qint64(720200) << true << 1 << true;
    QTest::newRow("asked only once") << qint64(4000000) << true << 1 << true;
    QTest::newRow("given up") << qint64(4000000) << false << 1 << false;
}

void TestSampleReader::slowReading()
{
    QFETCH(qint64, msPerRead);
    QFETCH(bool, goesOn);
    const SampleShape shape = {100, 1, 5, 1};
    const QByteArray bytes = randomData(shape);
    ShortDevice device(bytes, bytes.size());
    device.portion = bytes.size() / 5;
    qint64 time = 77;
    int asked = 0;
    device.onRead = [&](qint64) { time += msPerRead; };
    SampleReadingHooks hooks;
    hooks.clock = [&] { return time; };
    hooks.continueSlow = [&] {
        ++asked;
        return goesOn;
    };
    const SampleReading reading = readSamples(device, shape, *blockFor(shape), hooks);
    QTEST(asked, "asked");
    QTEST(reading.end == SampleReadingEnd::Complete, "complete");
    if (!goesOn && asked > 0)
        QVERIFY(reading.end == SampleReadingEnd::TooSlow);
}

void TestSampleReader::keepAliveFollowsTheClock_data()
{
    QTest::addColumn<int>("msPerRead");
    QTest::addColumn<int>("calls"); // in ten reads, the one before the first included
    QTest::newRow("fast device") << 0 << 1;
    QTest::newRow("slow device") << 10 << 11;
    QTest::newRow("every second read") << 3 << 6;
}

void TestSampleReader::keepAliveFollowsTheClock()
{
    QFETCH(int, msPerRead);
    const SampleShape shape = {10000, 1, 5, 1};
    const QByteArray bytes = randomData(shape);
    ShortDevice device(bytes, bytes.size());
    device.portion = bytes.size() / 10;
    qint64 time = 0;
    int calls = 0;
    device.onRead = [&](qint64) { time += msPerRead; };
    SampleReadingHooks hooks;
    hooks.clock = [&] { return time; };
    hooks.keepAlive = [&] {
        ++calls;
        return true;
    };
    readSamples(device, shape, *blockFor(shape), hooks);
    QTEST(calls, "calls");
}

void TestSampleReader::cancelling_data()
{
    QTest::addColumn<int>("cancelAtCall");
    QTest::addColumn<int>("reads"); // of the ten that the whole takes
    QTest::newRow("before the first read") << 1 << 0;
    QTest::newRow("in the middle") << 5 << 4;
    QTest::newRow("after the last read") << 11 << 10;
}

void TestSampleReader::cancelling()
{
    QFETCH(int, cancelAtCall);
    const SampleShape shape = {10000, 1, 5, 1};
    const QByteArray bytes = randomData(shape);
    ShortDevice device(bytes, bytes.size());
    device.portion = bytes.size() / 10;
    qint64 time = 0;
    int calls = 0;
    int reads = 0;
    device.onRead = [&](qint64) {
        ++reads;
        time += 10;
    };
    SampleReadingHooks hooks;
    hooks.clock = [&] { return time; };
    hooks.keepAlive = [&] { return ++calls < cancelAtCall; };
    const SampleReading reading = readSamples(device, shape, *blockFor(shape), hooks);
    QVERIFY(reading.end == SampleReadingEnd::Cancelled);
    QTEST(reads, "reads");
}

void TestSampleReader::deviceIsReadInLargeBlocks()
{
    const SampleShape shape = {9001, 1, 33, 8};
    const QByteArray bytes = randomData(shape); // 9.5 MB
    ShortDevice device(bytes, bytes.size());
    int reads = 0;
    device.onRead = [&](qint64) { ++reads; };
    readSamples(device, shape, *blockFor(shape));
    QCOMPARE(reads, 3);
}

void TestSampleReader::memoryToReadLimits_data()
{
    QTest::addColumn<SampleShape>("shape");
    QTest::addColumn<qint64>("atLeast");
    QTest::addColumn<qint64>("atMost");
    const int most = std::numeric_limits<int>::max();
    QTest::newRow("no points") << SampleShape{0, 1, 1, 1} << qint64(-1) << qint64(-1);
    QTest::newRow("negative rays") << SampleShape{1, 1, 1, -1} << qint64(-1) << qint64(-1);
    QTest::newRow("two negatives") << SampleShape{-5, 1, 1, -5} << qint64(-1) << qint64(-1);
    QTest::newRow("beyond 31 bits")
        << SampleShape{1 << 28, 1, 33, 8} << (qint64(264) << 30) << (qint64(265) << 30);
    QTest::newRow("beyond 63 bits") << SampleShape{most, most, most, 1} << qint64(-1) << qint64(-1);
    QTest::newRow("wraps to zero in 64 bits")
        << SampleShape{1 << 30, 1 << 30, 4, 1} << qint64(-1) << qint64(-1);
    QTest::newRow("many short rows count with their pointers")
        << SampleShape{1, 1, 100000000, 1} << qint64(7200000000) << qint64(20000000000);
}

void TestSampleReader::memoryToReadLimits()
{
    QFETCH(SampleShape, shape);
    QFETCH(qint64, atLeast);
    QFETCH(qint64, atMost);
    const qint64 bytes = memoryToRead(shape);
    QVERIFY2(bytes >= atLeast && bytes <= atMost, qPrintable(QString::number(bytes)));
}

ZRT_UNIT_TEST_MAIN(TestSampleReader)
#include "tst_samplereader.moc"
