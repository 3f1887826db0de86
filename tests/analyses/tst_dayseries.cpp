#include "analyses/days/dayseries.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "data/resulttotext.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cmath>
#include <limits>

using Days::Day;
using Days::DaySeries;

namespace {

constexpr int pointsOfFile = 4000; // 49.97 s
constexpr int points = 2048;
constexpr double dispersion = 26.75;

float sampleAt(int point, int channel, int ray)
{
    return float(std::sin(point * 0.37 + channel) * 100 + ray);
}

QByteArray fileBytes(int firstPoint)
{
    return TestSupport::recordingBytes({pointsOfFile, 1, 33, 3},
                                       [firstPoint](int point, int, int channel, int ray) {
                                           return sampleAt(firstPoint + point, channel, ray);
                                       });
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestDaySeries : public QObject {
    Q_OBJECT

private slots:
    void init();
    void equalsTheSumOfOneRecording();
    void backwardSum();
    void isKept();
    void damagedIsMadeAnew();
    void samplesThatAreNoNumbers();
    void fileWithoutARay();
    void tellsWhatFails();

private:
    RecordingSet recordings() const { return recordingsOfFolder(folder->path(), false); }
    static Day dayAt(const RecordingSet &set, int firstPoint)
    {
        Days::DayChoice choice;
        choice.points = points;
        choice.pointsAfter = Days::pointsBehind(set.entries[0].header, dispersion);
        choice.start.point = firstPoint;
        return Days::findDays(set, choice).days[0];
    }
    std::vector<DaySeries> seriesAt(int firstPoint, const QString &keptIn)
    {
        const RecordingSet set = recordings();
        return Days::seriesOfDay(set, dayAt(set, firstPoint), points, requests, keptIn);
    }

    std::unique_ptr<QTemporaryDir> folder;
    QString first;  // path
    QString second; // goes on where the first ends
    const std::vector<Days::SeriesRequest> requests = {{1, 3, dispersion}, {1, 1, 0}};
};

void TestDaySeries::init()
{
    folder = std::make_unique<QTemporaryDir>();
    first = TestSupport::writeFile(*folder, "a.pnt", fileBytes(0));
    second = TestSupport::writeFile(*folder, "b.pnt",
                                    fileBytes(pointsOfFile).replace("12:00:00", "12:00:50"));
}

void TestDaySeries::equalsTheSumOfOneRecording()
{
    const ObservationData whole = TestSupport::makeRecording(
        {2 * pointsOfFile, 1, 33, 3},
        [](int point, int, int channel, int ray) { return sampleAt(point, channel, ray); });
    // Within the first file, and from it into the second.
    for (const int start : {100, 3500}) {
        const std::vector<DaySeries> series = seriesAt(start, {});
        QCOMPARE(int(series.size()), 2);
        for (std::size_t i = 0; i < series.size(); ++i) {
            QCOMPARE(series[i].problem, QString());
            PulsarParameters parameters;
            parameters.ray = requests[i].ray;
            parameters.module = 1;
            parameters.firstPoint = start;
            PulsarCalculate calculate(whole, parameters);
            std::vector<double> sums(points);
            QVERIFY(calculate.sumChannels(sums.data(), points, requests[i].dispersion, true));
            QCOMPARE(series[i].sums, std::vector<float>(sums.begin(), sums.end()));
        }
    }
}

// Delays of the opposite sign take in points before the stretch.
void TestDaySeries::backwardSum()
{
    const RecordingSet set = recordings();
    Days::DayChoice choice;
    choice.points = points;
    choice.pointsAfter = 1;
    choice.pointsBefore = Days::pointsBehind(set.entries[0].header, dispersion);
    choice.start.point = 3500;
    const Day day = Days::findDays(set, choice).days[0];
    const DaySeries series = Days::seriesOfDay(set, day, points, {{1, 2, dispersion, true}}, {})[0];
    const ObservationData whole = TestSupport::makeRecording(
        {2 * pointsOfFile, 1, 33, 3},
        [](int point, int, int channel, int ray) { return sampleAt(point, channel, ray); });
    PulsarParameters parameters;
    parameters.module = 1;
    parameters.ray = 2;
    parameters.firstPoint = 3500;
    std::vector<double> sums(points);
    QVERIFY(PulsarCalculate(whole, parameters).sumChannels(sums.data(), points, dispersion, false));
    QCOMPARE(series.sums, std::vector<float>(sums.begin(), sums.end()));
}

void TestDaySeries::isKept()
{
    const QString keptIn = folder->filePath("kept");
    const std::vector<DaySeries> made = seriesAt(3500, keptIn);
    QVERIFY(!made[0].wasKept);
    const QStringList files = QDir(keptIn).entryList({"*.series"}, QDir::Files);
    QCOMPARE(files.size(), 2);
    QVERIFY(files[0].startsWith("20150401_120043_m1_r"));
    const std::vector<DaySeries> kept = seriesAt(3500, keptIn);
    QVERIFY(kept[0].wasKept && kept[1].wasKept);
    QCOMPARE(kept[0].sums, made[0].sums);
    // The converter reads it.
    const QString text = folder->filePath("text");
    const QString path = QDir(keptIn).filePath(files[1]);
    QVERIFY(Tools::resultToText(path, text).kind == Tools::TextEnd::Kind::Done);
    QVERIFY(contents(text).contains("\ndisp: 26\ndispersion: 26.75\n"));
    QVERIFY(std::abs(contents(text).trimmed().split('\n').last().toFloat() - made[0].sums.back()) <
            1e-5 * std::abs(made[0].sums.back()));
    // An other content of the recording needs another series.
    QVERIFY(QFile::resize(second, QFile(second).size() + 4));
    QVERIFY(!seriesAt(3500, keptIn)[0].wasKept);
}

// Cut, longer, of another version, with another value, and empty.
void TestDaySeries::damagedIsMadeAnew()
{
    const QString keptIn = folder->filePath("kept");
    const std::vector<DaySeries> made = seriesAt(100, keptIn);
    const QString path = "kept/" + QDir(keptIn).entryList({"*.series"}, QDir::Files)[0];
    const QByteArray whole = contents(folder->filePath(path));
    for (const QByteArray &damaged :
         {whole.left(whole.size() - 1), whole + "x", QByteArray(whole).replace("form 2", "form 1"),
          QByteArray(whole).replace(whole.size() - 2, 1, "x"), QByteArray()}) {
        TestSupport::writeFile(*folder, path, damaged);
        const std::vector<DaySeries> again = seriesAt(100, keptIn);
        QVERIFY(again[0].wasKept != again[1].wasKept);
        QCOMPARE(again[0].sums, made[0].sums);
        QCOMPARE(again[1].sums, made[1].sums);
        QCOMPARE(contents(folder->filePath(path)), whole);
    }
}

// A sample that is no number does not reach the sum; the other ray of the day is as it was.
void TestDaySeries::samplesThatAreNoNumbers()
{
    const std::vector<DaySeries> whole = seriesAt(3500, {});
    QFile file(first);
    QVERIFY(file.open(QIODevice::ReadWrite));
    const qint64 pointValues = 33 * 3;
    const qint64 header = file.size() - pointsOfFile * pointValues * 4;
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    // Point 3600, ray 1, band 7.
    QVERIFY(file.seek(header + 4 * (3600 * pointValues + 6)));
    file.write(reinterpret_cast<const char *>(&notANumber), 4);
    file.close();
    const std::vector<DaySeries> series = seriesAt(3500, {});
    QCOMPARE(series[0].sums, whole[0].sums);
    QVERIFY2(series[1].remark.contains("channel 7 at point 3600"), qPrintable(series[1].remark));
    for (int i = 0; i < points; ++i)
        QCOMPARE(series[1].sums[std::size_t(i)] == whole[1].sums[std::size_t(i)], i != 100);
}

// The second file of a day holds another ray alone: only the series of that one is whole.
void TestDaySeries::fileWithoutARay()
{
    second = TestSupport::writeFile(
        *folder, "b.pnt",
        TestSupport::recordingBytes({pointsOfFile, 1, 33, 1}, [](int point, int, int channel, int) {
            return sampleAt(pointsOfFile + point, channel, 0);
        }).replace("12:00:00", "12:00:50"));
    const std::vector<DaySeries> series = seriesAt(3500, {});
    QVERIFY2(series[0].problem.contains("b.pnt: it does not hold module 1, ray 3"),
             qPrintable(series[0].problem));
    QCOMPARE(series[1].problem, QString());
    QCOMPARE(int(series[1].sums.size()), points);
}

void TestDaySeries::tellsWhatFails()
{
    const RecordingSet set = recordings();
    const Day day = dayAt(set, 0);
    const auto problemOf = [&](const Days::SeriesRequest &request) {
        return Days::seriesOfDay(set, day, points, {request}, {})[0].problem;
    };
    QVERIFY(problemOf({1, 7, 0}).contains("does not hold module 1, ray 7"));
    QVERIFY(problemOf({1, 1, 1000}).contains("cannot be summed at the dispersion 1000"));
    // A folder that is none: nothing is kept, nothing is wrong.
    QCOMPARE(seriesAt(100, first + "/kept")[0].problem, QString());
    QVERIFY(QFile::resize(first, QFile(first).size() / 2));
    QVERIFY(problemOf({1, 1, 0}).contains("has changed"));
    QVERIFY(QFile::remove(first));
    QVERIFY(problemOf({1, 1, 0}).contains("a.pnt"));
    QCOMPARE(Days::pointsBehind({}, 10), -1);
}

ZRT_UNIT_TEST_MAIN(TestDaySeries)
#include "tst_dayseries.moc"
