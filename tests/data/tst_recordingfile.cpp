#include "data/recordingfile.h"

#include "calc/channelsum.h"
#include "calc/stretchsum.h"
#include "data/recordingtime.h"
#include "data/recordingwriter.h"
#include "data/resulttotext.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <cmath>

using TestSupport::Shape;

namespace {

// Tells every sample of the files below from every other one.
float sampleAt(int point, int module, int channel, int ray)
{
    return float(((point * 3 + module) * 5 + ray) * 9 + channel) + 0.25f;
}

const Shape shape = {1003, 3, 9, 5};
constexpr int pointBytes = 3 * 9 * 5 * 4;
const QDateTime noon(QDate(2015, 4, 1), QTime(12, 0), Qt::UTC); // the first point

} // namespace

class TestRecordingFile : public QObject {
    Q_OBJECT

private slots:
    void init() { QVERIFY(file.open(write(bytes))); }
    void partsHoldTheirSamples();
    void spacedBlocks();
    void refusedAndShort();
    void savedStretchReadsBackEqual();
    void savingIsRefused();
    void countsAtTheEndOfTheirRange();
    void pointsBeyondTwoGigabytes();
    void channelsOffAreLeftOutOfSums();
    void delayedSumEqualsThatOfTheWhole();
    void delayedSumOfDamagedSamples();

private:
    QString write(const QByteArray &content, const QString &name = "a.pnt")
    {
        return TestSupport::writeFile(folder, name, content);
    }

    const QByteArray bytes = TestSupport::recordingBytes(shape, sampleAt);
    QTemporaryDir folder;
    RecordingFile file;
};

void TestRecordingFile::partsHoldTheirSamples()
{
    // With the numbers of modules, rays and channels that are then there.
    const std::pair<Stretch, QVector<int>> parts[] = {
        {{1002, 1, {}, {}, {}, true}, {3, 5, 9}},
        {{500, 300, {1}, {4}, {}, true}, {1, 1, 9}},
        {{7, 64, {0, 2}, {0, 3}, {2, 5}, true}, {2, 2, 3}},
        {{990, 700, {2}, {}, {0, 1, 2, 3, 4, 5, 6, 7, 8}, true}, {1, 5, 9}},
        {{-5, 2500, {}, {}, {}, true}, {3, 5, 9}}, // round and round
    };
    const auto indexOf = [](const std::vector<int> &chosen, int i) {
        if (chosen.empty())
            return i;
        return i < int(chosen.size()) ? chosen[std::size_t(i)] : 8; // which always comes along
    };
    for (const auto &[part, counts] : parts) {
        const StretchReading reading = file.read(part);
        QVERIFY2(reading.whole(), qPrintable(reading.reason()));
        const ObservationData &data = *reading.whole();
        QCOMPARE((QVector{data.modules, data.rays, data.channels}), counts);
        QCOMPARE((QVector{data.npoints, data.point, data.firstModule}),
                 (QVector{part.count, part.first, indexOf(part.modules, 0) + 1}));
        QCOMPARE(int(data.fbands.size()), data.channels - 1);
        QCOMPARE(data.fbands[0], file.header().fbands[std::size_t(indexOf(part.channels, 0))]);
        QCOMPARE(exactBegin(data), noon.addMSecs(qint64(std::floor(part.first * 12.4928))));
        QCOMPARE(data.beginTime, noon.addSecs(qint64(part.first * 0.0124928)));
        for (int m = 0; m < data.modules; ++m)
            for (int c = 0; c < data.channels; ++c)
                for (int r = 0; r < data.rays; ++r)
                    for (int p = 0; p < data.npoints; ++p) {
                        const float expected = sampleAt(
                            ((part.first + p) % 1003 + 1003) % 1003, indexOf(part.modules, m),
                            indexOf(part.channels, c), indexOf(part.rays, r));
                        if (data.samples[m][c][r][p] != expected)
                            QFAIL(qPrintable(QString("%1 %2 %3 %4").arg(m).arg(c).arg(r).arg(p)));
                    }
    }
}

void TestRecordingFile::spacedBlocks()
{
    const Stretch chosen = {0, 0, {1}, {2}, {}, false};
    const StretchReading reading = file.read(SpacedBlocks{3, 1000, 7, 21}, chosen);
    QVERIFY(reading.whole());
    for (int b = 0; b < 7; ++b)
        for (int p = 0; p < 21; ++p)
            QCOMPARE(reading.whole()->samples[0][4][0][b * 21 + p],
                     sampleAt(3 + b * 1000 / 7 + p, 1, 4, 2));
    QVERIFY(file.read(SpacedBlocks{3, 1001, 7, 21}, chosen).end() == StretchEnd::Refused);
    QVERIFY(file.read(SpacedBlocks{3, 1000, 7, 143}, chosen).end() == StretchEnd::Refused);
}

void TestRecordingFile::refusedAndShort()
{
    QVERIFY(file.open(write(bytes.chopped(2 * pointBytes + 10))));
    QCOMPARE(file.announcedSize(), qint64(bytes.size()));
    QCOMPARE(file.completePoints(), 1000);
    QCOMPARE(file.header().missingPoints, 3);
    Stretch stretch = {900, 100, {}, {}, {}, false};
    QVERIFY(file.read(stretch).end() == StretchEnd::Complete);
    stretch.count = 101;
    const StretchReading beyond = file.readInPlace(stretch);
    QVERIFY(beyond.end() == StretchEnd::Refused && !beyond.asFarAsRead());
    QVERIFY2(
        beyond.reason().contains("the points 0 to 999. The data end at point 999, 12:00:12.480"),
        qPrintable(beyond.reason()));
    stretch.wraps = true; // round the end of what is there
    const StretchReading round = file.read(stretch);
    QCOMPARE(round.whole()->samples[2][5][4][100], sampleAt(0, 2, 5, 4));
    stretch.wraps = false;

    SampleReadingHooks hooks;
    hooks.keepAlive = [] { return false; };
    QVERIFY(file.read(stretch, hooks).end() == StretchEnd::Refused);
    stretch.count = 100;
    QVERIFY(file.read(stretch, hooks).end() == StretchEnd::Cancelled);
    for (const std::vector<int> &rays : {std::vector{5}, std::vector{-1}, std::vector{2, 2}}) {
        stretch.rays = rays;
        QVERIFY(file.read(stretch).end() == StretchEnd::Refused);
    }
    stretch.rays.clear();
    // Cut while it is open.
    QVERIFY(QFile::resize(file.path(), bytes.size() - 10 * pointBytes - 10));
    const StretchReading reading = file.read(stretch);
    QVERIFY(reading.end() == StretchEnd::Short && !reading.whole());
    QVERIFY2(reading.reason().contains(folder.path()) && reading.reason().contains("from 992 on"),
             qPrintable(reading.reason()));
    QCOMPARE(reading.asFarAsRead()->missingPoints, 8);
    QCOMPARE(reading.asFarAsRead()->samples[2][8][4][91], sampleAt(991, 2, 8, 4));
    QCOMPARE(reading.asFarAsRead()->samples[2][5][4][92], sampleAt(992, 2, 5, 4)); // cut behind it
    QCOMPARE(reading.asFarAsRead()->samples[0][0][0][93], 0.f);
    // The counts are sound, their product is not.
    QVERIFY(file.open(write(TestSupport::passportBytes(
        {"npoints 2147483647", "nbands 2147483646", "modulus 1", "rays 2147483647"}))));
    stretch.rays = {0};
    QVERIFY(file.read(stretch).end() == StretchEnd::Refused);
    QCOMPARE(file.announcedSize(), qint64(-1));
    QCOMPARE(Tools::recordingTextBytes(file.path()), qint64(0));
}

// A stretch, and a stretch of that stretch, which is one of the first recording again.
void TestRecordingFile::savedStretchReadsBackEqual()
{
    const QByteArray longer = "numpar 14\nobserver Заря\nnative_datetime\nstar_time 23:59:58.5\n"
                              "date_end 01.04.2015\ntime_end 12:00:13\n" +
                              bytes.mid(bytes.indexOf('\n') + 1);
    const QString parent = write(longer);
    const QString first = folder.filePath("first.pnthr");
    const QString second = folder.filePath("second.pnthr");
    QVERIFY(file.open(parent));
    const RecordingClock whole(file.header());
    QCOMPARE(saveStretch(file, 201, 700, 26.8, first), QString());
    QVERIFY(file.open(first));
    QCOMPARE(saveStretch(file, 99, 300, 26.8, second), QString());
    for (const auto &[path, point, count] :
         {std::tuple(first, 201, 700), std::tuple(second, 300, 300)}) {
        QVERIFY2(file.open(path), qPrintable(file.reason()));
        const ObservationData &header = file.header();
        QCOMPARE(file.size(), file.announcedSize());
        QCOMPARE(header.npoints, count);
        QCOMPARE(header.point, point);
        QCOMPARE(header.dispersion, 27);
        QCOMPARE(header.filePath, parent);
        const int seconds = int(point * 0.0124928);
        QCOMPARE(header.beginTime, noon.addSecs(seconds));
        const QDateTime exact = noon.addMSecs(qint64(point * 12.4928));
        QCOMPARE(exactBegin(header), exact);
        QCOMPARE(header.nativeName, exact.toString("dd.MM.yyyy hh:mm:ss.zzz") + " UTC");
        // Every point has the UTC that it has in the parent.
        for (int p = 0; p < count; ++p)
            QCOMPARE(RecordingClock(header).utc(p), whole.utc(point + p));
        QCOMPARE(header.starTime, QString("0:0:%1").arg(seconds - 2)); // past sidereal midnight
        const auto &entries = file.passport().entries;
        QCOMPARE(entries.value("observer"), QString("Заря"));
        QCOMPARE(entries.value("time_end"),
                 noon.addMSecs(qint64((point + count) * 12.4928)).toString("h:mm:ss") + " UTC");
        const StretchReading reading = file.read({0, count, {}, {}, {}, false});
        for (int p = 0; p < count; ++p)
            QCOMPARE(reading.whole()->samples[2][7][3][p], sampleAt(point + p, 2, 7, 3));
    }
}

void TestRecordingFile::savingIsRefused()
{
    const QString path = write(bytes.chopped(600));
    const QString other = write("old", "other.pnthr");
    QVERIFY(file.open(path));
    QVERIFY(saveStretch(file, 0, 10, 0, path).contains("would take the place"));
    QVERIFY(saveStretch(file, 900, 103, 0, other).contains("no points"));
    QVERIFY(saveStretch(file, 0, 10, 1e300, other).contains("too large"));
    QVERIFY(saveStretch(file, 0, 10, 0, folder.filePath("no/such.pnthr"))
                .contains("such.pnthr cannot be made: No such file"));
    QCOMPARE(saveStretch(file, 0, 1000, 0, other, [](int) { return false; }), QString());
    QVERIFY(QFile::resize(path, bytes.size() / 2));
    QVERIFY(saveStretch(file, 400, 500, 0, other).contains("ends early"));
    QFile kept(other);
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("old"));
}

// Numbers that the passport may hold and no arithmetic should overflow with.
void TestRecordingFile::countsAtTheEndOfTheirRange()
{
    const QByteArray common = TestSupport::recordingBytes({20, 2, 2, 1}, sampleAt);
    const QByteArray odd = "numpar 12\npoint 2147483647\nstar_time 2000000000:00:00\n"
                           "modulus 2147483647 2147483647\n" +
                           common.mid(common.indexOf('\n') + 1).replace("modulus 1 2", "source x");
    QVERIFY2(file.open(write(odd)), qPrintable(file.reason()));
    QCOMPARE(file.header().point, 2147483647);
    const StretchReading reading = file.read({10, 10, {}, {}, {}, false});
    QVERIFY2(reading.whole(), qPrintable(reading.reason()));
    QCOMPARE(reading.whole()->point, 2147483647);
    QCOMPARE(reading.whole()->starTime, QString("2000000000:00:00"));
    QCOMPARE(RecordingClock(*reading.whole()).utc(0), RecordingClock(file.header()).utc(10));
    const QString text = folder.filePath("odd.txt");
    QCOMPARE(Tools::observationToText(*reading.whole(), text).text, QString());
    QFile written(text);
    QVERIFY(written.open(QIODevice::ReadOnly));
    QCOMPARE(written.readAll().count("module 2147483647 ray 1:"), 20);
    QVERIFY(saveStretch(file, 10, 10, 0, folder.filePath("x.pnthr")).contains("too large"));
}

// The samples before the last points are a hole in the file, which takes no room.
void TestRecordingFile::pointsBeyondTwoGigabytes()
{
    constexpr int npoints = 4'100'000;
    constexpr int last = 50;
    const QByteArray small = TestSupport::recordingBytes({last, 3, 9, 5}, sampleAt);
    const qsizetype samples = small.size() - last * pointBytes;
    const QByteArray passport =
        small.left(int(samples)).replace("npoints 50", "npoints " + QByteArray::number(npoints));
    const QString path = write(passport, "long.pnt");
    const qint64 end = passport.size() + qint64(npoints) * pointBytes;
    QVERIFY(end > qint64(1) << 31);
    QFile sparse(path);
    QVERIFY(sparse.open(QIODevice::ReadWrite));
    if (!sparse.resize(end))
        QSKIP("There is no room for a file of 2.2 GB with a hole in it.");
    QVERIFY(sparse.seek(end - last * pointBytes));
    QCOMPARE(sparse.write(small.mid(int(samples))), qint64(last * pointBytes));
    sparse.close();

    QVERIFY2(file.open(path), qPrintable(file.reason()));
    QCOMPARE(file.announcedSize(), end);
    QCOMPARE(file.completePoints(), npoints);
    constexpr int first = npoints - last;
    const QString saved = folder.filePath("end.pnthr");
    QCOMPARE(saveStretch(file, first + 10, 40, 0, saved), QString());
    const std::tuple<QString, int, int> parts[] = {{path, first, 0}, {saved, 0, 10}};
    for (const auto &[name, from, shift] : parts) {
        QVERIFY2(file.open(name), qPrintable(file.reason()));
        const StretchReading reading = file.read({from, last - shift, {}, {}, {}, false});
        QVERIFY2(reading.whole(), qPrintable(reading.reason()));
        QCOMPARE(reading.whole()->point, first + shift);
        for (int p = 0; p < last - shift; ++p)
            QCOMPARE(reading.whole()->samples[2][7][3][p], sampleAt(p + shift, 2, 7, 3));
    }
    QFile::remove(path);
}

void TestRecordingFile::channelsOffAreLeftOutOfSums()
{
    const ObservationData data = TestSupport::makeRecording(shape, sampleAt);
    ObservationData masked = data;
    masked.samples = data.samples.withChannelsOff(
        {false, true, false, false, false, false, false, true}); // the reference among them
    const std::vector<double> sums = Tools::sumChannels(masked, 0, 2, 3);
    for (int p = 0; p < shape.npoints; ++p) // a point's values rise by one a channel, from 0.25 on
        QCOMPARE(sums[std::size_t(p)], 6 * double(sampleAt(p, 2, 0, 3)) + 0 + 2 + 3 + 4 + 5 + 6);
    masked.samples = data.samples.withChannelsOff({});
    QCOMPARE(Tools::sumChannels(masked, 30, 1, 0), Tools::sumChannels(data, 30, 1, 0));
}

void TestRecordingFile::delayedSumEqualsThatOfTheWhole()
{
    const auto rough = [](int p, int m, int c, int r) {
        return std::sin(float(p * p + c)) + r + m;
    };
    const ObservationData recording = TestSupport::makeRecording(shape, rough);
    QVERIFY(file.open(write(TestSupport::recordingBytes(shape, rough))));
    // The lowest band lags by 14.44 points per 10 pc/cm^3: up to nearly all and several times
    // round.
    for (const double dispersion : {0.0, 30.0, -61.3, 600.0, 3000.0}) {
        const std::vector<double> whole = Tools::sumChannels(recording, dispersion, 2, 3);
        for (const auto &[first, count] : {std::pair(0, 1003), {0, 10}, {400, 91}, {900, 103}}) {
            const Tools::StretchSum part = Tools::sumStretch(file, dispersion, 2, 3, first, count);
            QVERIFY2(part.whole(), qPrintable(part.reason()));
            QCOMPARE(part.whole()->sums,
                     std::vector<double>(whole.begin() + first, whole.begin() + first + count));
        }
        QVERIFY(Tools::sumStretch(file, dispersion, 2, 3, 1000, 4).end() == StretchEnd::Refused);
    }
}

void TestRecordingFile::delayedSumOfDamagedSamples()
{
    const auto holed = [](int p, int m, int c, int r) {
        const bool isHole = (c == 3 && p >= 100 && p < 103) || (c == 5 && r == 1) || c == 8;
        return isHole ? NAN : sampleAt(p, m, c, r);
    };
    QVERIFY(file.open(write(TestSupport::recordingBytes(shape, holed))));
    const Tools::StretchSum sum = Tools::sumStretch(file, 0, 0, 2, 0, 1003);
    QVERIFY2(sum.whole(), qPrintable(sum.reason()));
    QCOMPARE(sum.whole()->remark,
             QString("3 samples are no finite numbers: channel 4 at points 100 to 102."));
    // Without the holes of channel 4 the median of its samples, those of point 501 or 502, stands
    // there; the samples of a channel rise by 135 a point.
    double expected = double(sampleAt(501, 0, 3, 2)) + 135.0 / 2;
    for (const int c : {0, 1, 2, 4, 5, 6, 7})
        expected += double(sampleAt(101, 0, c, 2));
    QVERIFY(std::abs(sum.whole()->sums[101] - expected) < 136);
    const Tools::StretchSum refused = Tools::sumStretch(file, 0, 0, 1, 0, 1003);
    QVERIFY(refused.end() == StretchEnd::Refused);
    QVERIFY2(refused.reason().contains("Channel 6 holds no finite number"),
             qPrintable(refused.reason()));

    QVERIFY(QFile::resize(file.path(), bytes.size() - 4)); // meanwhile
    const Tools::StretchSum cut = Tools::sumStretch(file, 0, 0, 2, 0, 1003);
    QVERIFY(cut.end() == StretchEnd::Short && !cut.whole() && !cut.asFarAsRead());
    QVERIFY2(cut.reason().contains("ends early"), qPrintable(cut.reason()));
}

ZRT_UNIT_TEST_MAIN(TestRecordingFile)
#include "tst_recordingfile.moc"
