#include "analyses/days/fourierdays.h"
#include "calc/fourier.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/whitening.h"
#include "data/recordingfile.h"
#include "data/resulttotext.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <cmath>
#include <numbers>
#include <numeric>
#include <random>

using namespace Days;

namespace {

constexpr int pointsOfFile = 3000;
constexpr int points = 1024;
constexpr int firstPoint = 600;
constexpr double dispersion = 20;

std::vector<float> noise(int count, int seed)
{
    std::mt19937 random(static_cast<unsigned>(seed));
    std::normal_distribution<float> law(100, 1);
    std::vector<float> values(static_cast<std::size_t>(count));
    for (float &value : values)
        value = law(random);
    return values;
}

FourierDaysParameters parametersOf(const QString &noiseName = "polinom5", int average = 0)
{
    FourierDaysParameters parameters;
    parameters.module = 1;
    parameters.ray = 2;
    parameters.points = points;
    parameters.firstPoint = firstPoint;
    parameters.dispersion = dispersion;
    parameters.noise = noiseName;
    parameters.averageCount = average;
    parameters.window = 129;
    return parameters;
}

FourierDay dayOf(double sigma, int above = 0)
{
    FourierDay day;
    day.begin = QDateTime({2015, 4, 1}, {12, 0}, Qt::UTC);
    day.binWidth = 0.01;
    day.powers.assign(4096, 1);
    for (int i = 0; i < above; ++i)
        day.powers[std::size_t(1000 + 4 * i)] = 6;
    day.sigma = sigma;
    return day;
}

} // namespace

class TestFourierDays : public QObject {
    Q_OBJECT

private slots:
    void init();
    void sameAsThePulsarForm_data();
    void sameAsThePulsarForm();
    void frequencyOfASine();
    void lowestRankedBins();
    void goodDays_data();
    void goodDays();
    void harmonicsAndInterferenceDoNotCount();
    void spectraComeBack();
    void damagedSpectra_data();
    void damagedSpectra();
    void impossibleDays();
    void refusals_data();
    void refusals();
    void failuresOfADay();
    void nearestBeamOfASource();

private:
    std::unique_ptr<QTemporaryDir> folder;
};

void TestFourierDays::init()
{
    folder = std::make_unique<QTemporaryDir>();
    const std::vector<float> values = noise(pointsOfFile * 33 * 2, 1);
    TestSupport::writeFile(
        *folder, "a.pnt",
        TestSupport::recordingBytes(
            {pointsOfFile, 1, 33, 2}, [&](int point, int, int channel, int ray) {
                return values[std::size_t((ray * 33 + channel) * pointsOfFile + point)] +
                       float(point) * 0.01F;
            }));
}

void TestFourierDays::sameAsThePulsarForm_data()
{
    QTest::addColumn<QString>("noiseName");
    QTest::addColumn<int>("average");
    for (const char *const name : {"polinom5", "median", "backSum"})
        QTest::newRow(name) << name << 0;
    QTest::newRow("averaged") << "polinom5" << 1;
}

// The same but for the sums, which are kept as floats.
void TestFourierDays::sameAsThePulsarForm()
{
    QFETCH(QString, noiseName);
    QFETCH(int, average);
    const FourierDaysParameters parameters = parametersOf(noiseName, average);
    const RecordingSet set = recordingsOfFolder(folder->path(), true);
    const DayPlan plan = planDays(set, parameters);
    QVERIFY2(plan.problems.empty(), "no problem");
    QCOMPARE(int(plan.list.days.size()), 1);
    const FourierDay day = readDay(set, plan, plan.list.days[0], parameters, {});
    QCOMPARE(day.problem, QString());

    RecordingFile file;
    QVERIFY(file.open(folder->filePath("a.pnt")));
    Stretch whole;
    whole.count = pointsOfFile;
    const StretchReading reading = file.read(whole);
    PulsarParameters same;
    same.module = 1;
    same.ray = 2;
    same.firstPoint = firstPoint;
    same.noise = noiseName;
    PulsarCalculate calculate(*reading.whole(), same);
    std::vector<double> sum(points);
    QVERIFY(calculate.sumWithoutNoise(sum.data(), points, dispersion));
    // The form leaves the mean in, whose foot would reach into the spectrum.
    const double mean = std::accumulate(sum.begin(), sum.end(), 0.0) / points;
    for (double &value : sum)
        value -= mean;
    std::vector<double> padded(2 * points);
    QVERIFY(Tools::averagePairs(sum.data(), padded.data(), points, average, true));
    std::vector<double> spectrum(std::size_t(points >> average));
    const int bins = int(spectrum.size());
    QVERIFY(PulsarCalculate::getFourier(padded.data(), spectrum.data(), 2 * bins, bins));
    const std::vector<float> powers =
        Tools::Whitening(129, Tools::Padding::Doubled).powers(spectrum, Days::lowestBin);
    QCOMPARE(day.powers.size(), powers.size());
    for (std::size_t i = 1; i < powers.size(); ++i)
        QVERIFY2(std::abs(day.powers[i] - powers[i]) < 1e-3F * (1 + powers[i]),
                 qPrintable(QString("%1: %2 %3").arg(i).arg(day.powers[i]).arg(powers[i])));
}

void TestFourierDays::frequencyOfASine()
{
    DayStretch stretch;
    stretch.begin = QDateTime({2015, 4, 1}, {12, 0}, Qt::UTC);
    stretch.tresolution = 0.0125;
    stretch.direction = {1, 0.5};
    stretch.series.resize(1);
    stretch.series[0].sums = noise(4096, 2);
    constexpr double frequency = 7.3;
    for (std::size_t i = 0; i < 4096; ++i)
        stretch.series[0].sums[i] +=
            float(0.5 * std::sin(2 * std::numbers::pi * frequency * double(i) * 0.0125));
    FourierDaysParameters parameters;
    parameters.points = 4096;
    const FourierDay day = fourierOfDay(stretch, parameters);
    const auto highest = std::max_element(day.powers.begin() + lowestBin, day.powers.end());
    QVERIFY(std::abs(day.frequency(double(highest - day.powers.begin())) - frequency) <
            day.binWidth);
    // 0.5^2 / 4 of the variance 1 in 4096 points is 256; whitening compresses what is so strong.
    QVERIFY2(*highest > 120 && *highest < 256, qPrintable(QString::number(*highest)));
    QVERIFY(std::abs(day.sigma - std::sqrt(1 + 0.125)) < 0.05);
    QVERIFY(std::abs(day.ratio - 1) > 1e-6 && std::abs(day.ratio - 1) < 1.1e-4);
    QVERIFY(std::abs(day.above - expectedAbove(4096)) < 4 * std::sqrt(expectedAbove(4096)));
}

// The base line takes the lowest lines away; the level of those above must not sink with them.
void TestFourierDays::lowestRankedBins()
{
    constexpr int days = 400;
    constexpr int bins = 64; // every other one is independent
    double sum = 0;
    for (int day = 0; day < days; ++day) {
        const PreparedSeries series = preparedSeries(noise(1024, day + 1), {}, "polinom5");
        const std::vector<float> powers = whitenedPowers(series.values, 0, 257);
        sum += std::accumulate(powers.begin() + lowestBin, powers.begin() + lowestBin + bins, 0.0);
    }
    const double mean = sum / (double(days) * bins);
    QVERIFY2(std::abs(mean - 1) < 4 / std::sqrt(days * bins / 2.0),
             qPrintable(QString::number(mean)));
}

void TestFourierDays::goodDays_data()
{
    QTest::addColumn<double>("sigma");
    QTest::addColumn<int>("above");
    QTest::addColumn<QString>("reason");
    QTest::newRow("as the others") << 3.0 << 20 << "";
    QTest::newRow("9 % above") << 3.27 << 0 << "";
    QTest::newRow("11 % above") << 3.33 << 0 << "sigma is 1.11 times";
    QTest::newRow("11 % below") << 2.67 << 0 << "sigma is 0.89 times";
    // 27.17 of the 4032 bins that count are expected.
    QTest::newRow("twice as many powers as expected") << 3.0 << 54 << "";
    QTest::newRow("one more") << 3.0 << 55 << "55 powers above 5, of noise 27";
}

void TestFourierDays::goodDays()
{
    QFETCH(double, sigma);
    QFETCH(int, above);
    QFETCH(QString, reason);
    std::vector<FourierDay> days(9, dayOf(3));
    days.push_back(dayOf(sigma, above));
    days.emplace_back();
    days.back().problem = "It is lost.";
    const std::vector<DayVerdict> verdicts = proposeDays(days);
    QVERIFY(verdicts[0].isGood);
    QCOMPARE(verdicts[9].isGood, reason.isEmpty());
    QVERIFY2(verdicts[9].reason.contains(reason), qPrintable(verdicts[9].reason));
    QCOMPARE(verdicts[10].reason, QString("It is lost."));
}

void TestFourierDays::harmonicsAndInterferenceDoNotCount()
{
    FourierDay day = dayOf(3);
    for (std::size_t bin = 200; bin < 4096; bin += 50) // harmonics of 0.5 Hz, interference at 2 Hz
        day.powers[bin] = 20;
    DayRule rule;
    QVERIFY(!proposeDays({day}, rule)[0].isGood);
    rule.frequency = 1;
    QCOMPARE(proposeDays({day}, rule)[0].above, 39);
    rule.leftOut = {{0.5, false, 0, 100, {}}};
    QCOMPARE(proposeDays({day}, rule)[0].above, 0);

    // 50 Hz shows at 31.92 Hz, twice as much at 18.08 Hz: 81.92 samples a second.
    FourierDay hum = dayOf(3);
    hum.hum = {{49.98, 50.02}};
    for (const std::size_t bin : {3190, 3192, 3194, 1804, 1808, 1812})
        hum.powers[bin] = 20;
    QCOMPARE(proposeDays({hum})[0].above, 0);
    hum.powers[3000] = 20;
    QCOMPARE(proposeDays({hum})[0].above, 1);
}

void TestFourierDays::spectraComeBack()
{
    const FourierDaysParameters parameters = parametersOf();
    std::vector<FourierDay> days(3);
    for (int i = 0; i < 3; ++i) {
        days[std::size_t(i)] = dayOf(3 + i / 3.0);
        days[std::size_t(i)].begin = days[0].begin.addDays(i);
        days[std::size_t(i)].powers = noise(points, i);
    }
    days[1].ratio = std::numeric_limits<double>::quiet_NaN();
    days[2].remark = "4 samples\tare no numbers: 100 %\nof them";
    days[2].hum = {{49.9, 50.1}, {59.9, 60.25}};
    days.emplace_back(); // without a spectrum
    const QString name = spectraFileName(days, parameters);
    QVERIFY2(
        QRegularExpression("^20150401_m1_r2_[0-9a-f]{12}_f00_n3_av0\\.txt$").match(name).hasMatch(),
        qPrintable(name));
    const QString path = TestSupport::writeFile(*folder, name, spectraBytes(days, parameters));
    const ReadSpectra read = readSpectra(path, parameters);
    QCOMPARE(read.problem, QString());
    QCOMPARE(int(read.days.size()), 3);
    for (std::size_t i = 0; i < 3; ++i) {
        QCOMPARE(read.days[i].powers, days[i].powers);
        QCOMPARE(read.days[i].begin, days[i].begin);
        QVERIFY(read.days[i].sigma == days[i].sigma);
    }
    QVERIFY(std::isnan(read.days[1].ratio));
    QCOMPARE(read.days[2].remark, days[2].remark);
    QVERIFY(read.days[2].hum.size() == 2 && read.days[2].hum[1].to == 60.25);
    // What the converter of result files takes as well.
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const Tools::ResultHeader header = Tools::readResultHeader(file);
    QVERIFY(header.isUsable());
    QCOMPARE(header.points, points);
    QCOMPARE(header.blocks, qint64(3));
}

void TestFourierDays::damagedSpectra_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<QString>("words");
    QTest::newRow("other version") << QByteArray("form 3") << QByteArray("form 2") << "version";
    QTest::newRow("other parameters")
        << QByteArray("window: 129") << QByteArray("window: 257") << "other parameters";
    QTest::newRow("line of a day") << QByteArray("12:00:00") << QByteArray("12:xx:00") << "a day";
    QTest::newRow("more days than lines")
        << QByteArray("days: 2") << QByteArray("days: 2000000000") << "number of its days";
    QTest::newRow("cut short") << QByteArray() << QByteArray() << "cut short";
}

void TestFourierDays::damagedSpectra()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(QString, words);
    FourierDay day = dayOf(3);
    day.powers.resize(points);
    QByteArray bytes = spectraBytes({day, day}, parametersOf());
    if (from.isEmpty())
        bytes.chop(1);
    else
        bytes.replace(bytes.indexOf(from), from.size(), to);
    const QString path = TestSupport::writeFile(*folder, "spectra.txt", bytes);
    const ReadSpectra read = readSpectra(path, parametersOf());
    QVERIFY2(read.problem.startsWith(path) && read.problem.contains(words),
             qPrintable(read.problem));
    QVERIFY(read.days.empty());
}

// Numbers of a damaged line that would lead beyond the ends of arrays, or into endless loops.
void TestFourierDays::impossibleDays()
{
    const std::pair<void (*)(FourierDay &), QString> changes[] = {
        {[](FourierDay &day) { day.sigma = -1; }, "line of a day"},
        {[](FourierDay &day) { day.ratio = -1; }, "line of a day"},
        {[](FourierDay &day) { day.ratio = HUGE_VAL; }, "line of a day"},
        {[](FourierDay &day) { day.solarHour = 1e300; }, "line of a day"},
        {[](FourierDay &day) {
             day.hum = {{50, 1e300}};
         },
         "line of a day"},
        {[](FourierDay &day) { day.powers[700] = std::nanf(""); }, "no finite number"},
    };
    for (const auto &[change, words] : changes) {
        FourierDay day = dayOf(3);
        day.powers = noise(points, 1);
        change(day);
        const QString path =
            TestSupport::writeFile(*folder, "spectra.txt", spectraBytes({day}, parametersOf()));
        const ReadSpectra read = readSpectra(path, parametersOf());
        QVERIFY2(read.problem.contains(words), qPrintable(read.problem));
        QVERIFY(read.days.empty());
    }
}

void TestFourierDays::refusals_data()
{
    QTest::addColumn<std::function<void(FourierDaysParameters &)>>("change");
    QTest::addColumn<QString>("field");
    using P = FourierDaysParameters;
    const auto row = [](const char *name, const QString &field,
                        const std::function<void(P &)> &change) {
        QTest::newRow(name) << change << field;
    };
    row("none", "", [](P &) {});
    row("too few points", "points", [](P &p) { p.points = 512; });
    row("no power of two", "points", [](P &p) { p.points = 3000; });
    row("even window", "window", [](P &p) { p.window = 256; });
    row("too much averaging", "averageCount", [](P &p) { p.averageCount = 2; });
    row("three harmonics", "harmonics", [](P &p) { p.harmonics = 3; });
    row("unknown pulsar", "source", [](P &p) { p.source = "B9999+99"; });
    row("two starts", "source", [](P &p) { p.utc = p.siderealTime = "10:00:00"; });
    row("half a position", "delta", [](P &p) { p.alfa = "10:00:00"; });
    row("no time", "zrtUtc", [](P &p) { p.utc = "25:00:00"; });
    row("no ray and no source", "ray", [](P &p) { p.ray = 0; });
    row("source without a site", "ray", [](P &p) {
        p.ray = 0;
        p.source = "B0329+54";
    });
    row("negative dispersion", "dispersion", [](P &p) { p.dispersion = -1; });
    row("other rays", "otherRays", [](P &p) { p.otherRays = "1,x"; });
}

Q_DECLARE_METATYPE(std::function<void(Days::FourierDaysParameters &)>)

void TestFourierDays::refusals()
{
    QFETCH(std::function<void(FourierDaysParameters &)>, change);
    QFETCH(QString, field);
    FourierDaysParameters parameters = parametersOf();
    change(parameters);
    const DayPlan plan = planDays(recordingsOfFolder(folder->path(), true), parameters);
    QCOMPARE(plan.problems.empty() ? QString() : plan.problems.front().field, field);
}

void TestFourierDays::failuresOfADay()
{
    const FourierDaysParameters parameters = parametersOf();
    const RecordingSet set = recordingsOfFolder(folder->path(), true);
    const DayPlan plan = planDays(set, parameters);
    Jobs::Control stopped;
    stopped.isStopped = [] { return true; };
    QVERIFY(!readDay(set, plan, plan.list.days[0], parameters, {}, stopped).isWhole());
    QVERIFY(QFile::remove(folder->filePath("a.pnt")));
    const FourierDay gone = readDay(set, plan, plan.list.days[0], parameters, {});
    QVERIFY(!gone.isWhole());
    QVERIFY2(gone.problem.contains("a.pnt"), qPrintable(gone.problem));

    DayStretch constant;
    constant.tresolution = 0.0125;
    constant.series.resize(1);
    constant.series[0].sums.assign(points, 5);
    QVERIFY(fourierOfDay(constant, parameters).problem.contains("no noise"));
}

void TestFourierDays::nearestBeamOfASource()
{
    const QDate date(2015, 4, 1);
    const Tools::SkyPosition source = {0.93, Tools::declinationOf("+54:34:43")};
    const Beam nearest = nearestBeam("N1", source, date);
    QVERIFY(nearest.isKnown());
    for (int module = 1; module <= 6; ++module) {
        for (int ray = 1; ray <= 8; ++ray) {
            const Beam other = beamOf("N1", module, ray);
            if (other.isKnown())
                QVERIFY(std::abs(other.delta - source.delta) >
                        std::abs(nearest.delta - source.delta) - 0.003);
        }
    }
    QVERIFY(nearest.reach > 0 && nearest.reach < 0.02);
    QVERIFY(!nearestBeam("", source, date).isKnown());
    QCOMPARE(siteOf("/data/strip_N1/010415_04.pnt"), QString("N1"));
    QCOMPARE(siteOf("/data/N2/2015/010415_04.pnt"), QString("N2"));
    QCOMPARE(siteOf("/data/010415_04_N0_00.pnt"), QString("N0"));
}

ZRT_UNIT_TEST_MAIN(TestFourierDays)
#include "tst_fourierdays.moc"
