#include "simulator/normalcurve.h"
#include "simulator/recording.h"
#include "simulator/samplesource.h"
#include "simulator/simulationoptions.h"
#include "support/testmain.h"

#include <QCryptographicHash>
#include <QDir>
#include <QMap>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>
#include <array>
#include <cmath>
#include <csignal>
#include <sys/resource.h>

using namespace Simulator;

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Nothing but the sources, on a level of 0; bands a factor of two apart, whose lag is
// 4148.8 DM (1/60^2 - 1/120^2) s = 4148.8 DM / 4800 s: 25.93 s for a DM of 30.
Simulation silence(std::vector<double> bands = {60, 120})
{
    Simulation s;
    s.npoints = 4000;
    s.rays = 2;
    s.msPerPoint = 10;
    s.fbands = std::move(bands);
    s.level = 0;
    s.sigma = 2;
    s.noise = false;
    return s;
}

// A bit of everything, longer than one block of the writer.
Simulation mixture()
{
    Simulation s;
    s.npoints = 30011;
    s.modules = 2;
    s.rays = 3;
    s.fbands = evenBands(110.0, 0.4, 4);
    s.drift = 2;
    s.driftTime = 20;
    PulseTrain train;
    train.module = 2;
    train.period = 1.3;
    train.dispersion = 50;
    s.pulseTrains = {train};
    SinglePulse pulse;
    pulse.ray = 3;
    pulse.time = 100;
    pulse.width = 3;
    s.pulses = {pulse};
    Impulses impulses;
    impulses.ray = 2;
    impulses.count = 20;
    s.impulses = {impulses};
    GainStep step;
    step.point = 12345;
    step.factor = 1.5;
    s.gainSteps = {step};
    return s;
}

int highest(const ObservationData &data, int channel, int ray)
{
    const float *samples = data.samples[0][channel][ray];
    return int(std::max_element(samples, samples + data.npoints) - samples);
}

double centroid(const ObservationData &data, int channel, int ray)
{
    double weighted = 0;
    double sum = 0;
    for (int p = 0; p < data.npoints; ++p) {
        weighted += double(p) * data.samples[0][channel][ray][p];
        sum += data.samples[0][channel][ray][p];
    }
    return weighted / sum;
}

// Takes the polynomials up to degree 5 out of a series, one orthonormal one after another.
void removePolynomial(std::vector<double> &series)
{
    const std::size_t count = series.size();
    const auto dot = [count](const std::vector<double> &a, const std::vector<double> &b) {
        double sum = 0;
        for (std::size_t i = 0; i < count; ++i)
            sum += a[i] * b[i];
        return sum;
    };
    const auto subtract = [count](std::vector<double> &from, double factor,
                                  const std::vector<double> &what) {
        for (std::size_t i = 0; i < count; ++i)
            from[i] -= factor * what[i];
    };
    std::vector<std::vector<double>> basis;
    for (int degree = 0; degree <= 5; ++degree) {
        std::vector<double> power(count);
        for (std::size_t i = 0; i < count; ++i)
            power[i] = std::pow(2.0 * double(i) / double(count) - 1, degree);
        for (const std::vector<double> &lower : basis)
            subtract(power, dot(power, lower), lower);
        const double length = std::sqrt(dot(power, power));
        for (double &value : power)
            value /= length;
        subtract(series, dot(series, power), power);
        basis.push_back(power);
    }
}

// 2 |F_k| / N by the definition of the transform, for k below `values`.
std::vector<double> amplitudes(const std::vector<double> &series, int values)
{
    std::vector<double> result;
    for (int k = 0; k < values; ++k) {
        const double angle = -2 * M_PI * k / double(series.size());
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        double re = 1, im = 0, sumRe = 0, sumIm = 0;
        for (const double value : series) {
            sumRe += value * re;
            sumIm += value * im;
            const double turned = re * c - im * s;
            im = re * s + im * c;
            re = turned;
        }
        result.push_back(2 * std::hypot(sumRe, sumIm) / double(series.size()));
    }
    return result;
}

double standardDeviation(const std::vector<double> &values)
{
    double sum = 0;
    double squares = 0;
    for (const double value : values) {
        sum += value;
        squares += value * value;
    }
    const double mean = sum / double(values.size());
    return std::sqrt(squares / double(values.size()) - mean * mean);
}

} // namespace

class TestSimulator : public QObject {
    Q_OBJECT

private slots:
    void init() { QVERIFY((folder = std::make_unique<QTemporaryDir>())->isValid()); }

    void normalDistributionValues();
    void noiseIsNormal();
    void sameBytesEverywhere();
    void blocksDoNotShow();
    void fileEqualsMemory();
    void passportDescribesTheFile();
    void siderealTimes_data();
    void siderealTimes();
    void pulseArrival_data();
    void pulseArrival();
    void pulseShape();
    void trainRunsThroughTheRecording();
    void interference();
    void driftStaysWithinItsLimit();
    void meanChannel();
    void optionsReachTheSimulation();
    void refusals_data();
    void refusals();
    void unwritablePath();
    void fullDiskKeepsTheOldFile();
    void demonstrationShowsItsPulsars_data();
    void demonstrationShowsItsPulsars();

private:
    QString path(const char *name) const { return folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> folder;
};

void TestSimulator::normalDistributionValues()
{
    // Tables of the normal distribution to 16 digits.
    QCOMPARE(normalDistribution(0), 0.5);
    QVERIFY(std::abs(normalDistribution(1) - 0.8413447460685429) < 1e-13);
    QVERIFY(std::abs(normalDistribution(-1.96) - 0.0249978951482204) < 1e-13);
    QVERIFY(std::abs(normalDistribution(5) - 0.9999997133484281) < 1e-13);
    QCOMPARE(normalDistribution(1e300), 1.0);
    QCOMPARE(normalDistribution(-9), 0.0);
}

// Every limit is five standard errors of what it limits, for n independent samples.
void TestSimulator::noiseIsNormal()
{
    Simulation s;
    s.npoints = 40000;
    s.rays = 1;
    s.level = 30;
    s.sigma = 4;
    const ObservationData data = makeRecording(s);
    const double n = 32.0 * s.npoints;
    double sum = 0, squares = 0, fourth = 0, nextPoint = 0, nextBand = 0;
    int beyondTwo = 0, beyondFour = 0;
    for (int band = 0; band < 32; ++band) {
        const float *samples = data.samples[0][band][0];
        const float *neighbour = data.samples[0][(band + 1) % 32][0];
        for (int p = 0; p < s.npoints; ++p) {
            const double x = (samples[p] - 30) / 4.0;
            sum += x;
            squares += x * x;
            fourth += x * x * x * x;
            nextPoint += x * (samples[(p + 1) % s.npoints] - 30) / 4.0;
            nextBand += x * (neighbour[p] - 30) / 4.0;
            beyondTwo += std::abs(x) > 2;
            beyondFour += std::abs(x) > 4;
        }
    }
    const double root = std::sqrt(n);
    QVERIFY2(std::abs(sum / n) < 5 / root, qPrintable(QString::number(sum / n)));
    QVERIFY2(std::abs(squares / n - 1) < 5 * std::sqrt(2.0) / root,
             qPrintable(QString::number(squares / n)));
    QVERIFY2(std::abs(fourth / n - 3) < 5 * std::sqrt(96.0) / root,
             qPrintable(QString::number(fourth / n)));
    QVERIFY2(std::abs(nextPoint / n) < 5 / root, qPrintable(QString::number(nextPoint / n)));
    QVERIFY2(std::abs(nextBand / n) < 5 / root, qPrintable(QString::number(nextBand / n)));
    const double shareTwo = 0.04550026389635842;
    const double shareFour = 6.334248366623996e-05;
    QVERIFY2(std::abs(beyondTwo / n - shareTwo) < 5 * std::sqrt(shareTwo) / root,
             qPrintable(QString::number(beyondTwo / n)));
    QVERIFY2(std::abs(beyondFour / n - shareFour) < 5 * std::sqrt(shareFour) / root,
             qPrintable(QString::number(beyondFour / n)));
}

void TestSimulator::sameBytesEverywhere()
{
    Simulation s = mixture();
    QCOMPARE(writeRecording(s, path("first.pnt")), QString());
    QCOMPARE(writeRecording(s, path("second.pnt")), QString());
    QVERIFY(contents(path("first.pnt")) == contents(path("second.pnt")));
    // Of the file as it came out when this test was written. It changes only with what the
    // simulator means to write; a compiler or a processor must not change it.
    QCOMPARE(
        QCryptographicHash::hash(contents(path("first.pnt")), QCryptographicHash::Sha1).toHex(),
        QByteArray("c4be6a8b0331d0b4e3804d53dfea9960dfc36f29"));
    s.seed = 2;
    QCOMPARE(writeRecording(s, path("second.pnt")), QString());
    QVERIFY(contents(path("first.pnt")) != contents(path("second.pnt")));
}

void TestSimulator::blocksDoNotShow()
{
    const Simulation s = mixture();
    const std::size_t stride = std::size_t(floatsPerPoint(s));
    std::vector<float> whole(stride * std::size_t(s.npoints));
    std::vector<float> pieces(whole.size());
    SampleSource(s).read(whole.data(), s.npoints);
    SampleSource source(s);
    for (int point = 0, count = 1; point < s.npoints; point += count, count = count * 3 % 1009) {
        count = std::min(count, s.npoints - point);
        source.read(pieces.data() + std::size_t(point) * stride, count);
    }
    QVERIFY(whole == pieces);
}

void TestSimulator::fileEqualsMemory()
{
    const Simulation s = mixture();
    QCOMPARE(writeRecording(s, path("file.pnt")), QString());
    const ObservationData data = makeRecording(s);
    QVERIFY(data.samples);
    const QByteArray bytes = contents(path("file.pnt"));
    QCOMPARE(bytes.size(), passport(s).size() + 30011 * 2 * 3 * 5 * 4);
    const char *value = bytes.constData() + passport(s).size();
    for (int p = 0; p < s.npoints; ++p)
        for (int m = 0; m < s.modules; ++m)
            for (int r = 0; r < s.rays; ++r)
                for (int c = 0; c < 5; ++c, value += 4)
                    if (qFromLittleEndian<float>(value) != data.samples[m][c][r][p])
                        QFAIL(
                            qPrintable(QString("point %1 ray %2 channel %3").arg(p).arg(r).arg(c)));
}

void TestSimulator::passportDescribesTheFile()
{
    Simulation s = silence({102.5, 0.1 + 0.2, 111.11111111111111});
    s.npoints = 10;
    s.modules = 3;
    s.msPerPoint = 0.1;
    s.beginTime = QDateTime(QDate(2024, 2, 29), QTime(5, 6, 7), Qt::UTC);
    QCOMPARE(writeRecording(s, path("file.pnt")), QString());

    QFile file(path("file.pnt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray first = file.readLine().trimmed();
    const int lines = first.mid(first.lastIndexOf(' ') + 1).toInt();
    QMap<QByteArray, QByteArray> entries;
    for (int i = 1; i < lines; ++i) {
        const QByteArray line = file.readLine();
        QVERIFY(line.endsWith('\n') && line.contains(' '));
        entries[line.left(line.indexOf(' '))] = line.mid(line.indexOf(' ') + 1).chopped(1);
    }
    QCOMPARE(entries.size(), lines - 1);
    QCOMPARE(entries["npoints"], QByteArray("10"));
    QCOMPARE(entries["nbands"], QByteArray("3"));
    QCOMPARE(entries["modulus"], QByteArray("1 2 3"));
    QCOMPARE(entries["rays"], QByteArray("2"));
    QCOMPARE(entries["tresolution"].toDouble(), 0.1);
    QCOMPARE(entries["date_begin"], QByteArray("29.02.2024"));
    QCOMPARE(entries["time_begin"], QByteArray("5:06:07 UTC"));
    QCOMPARE(entries["star_time"].count(':'), 2);
    const QList<QByteArray> bands = entries["fbands"].split(' ');
    QCOMPARE(bands.size(), 3);
    for (int i = 0; i < 3; ++i)
        QVERIFY(bands[i].toDouble() == s.fbands[std::size_t(i)]);
    QCOMPARE(file.bytesAvailable(), qint64(10) * 3 * 2 * 4 * 4);

    const ObservationData data = makeRecording(s);
    QCOMPARE(data.npoints, 10);
    QCOMPARE(data.modules, 3);
    QCOMPARE(data.rays, 2);
    QCOMPARE(data.channels, 4);
    QCOMPARE(data.tresolution, 0.0001);
    QCOMPARE(data.beginTime, s.beginTime);
    QCOMPARE(data.starTime.toLatin1(), entries["star_time"]);
    QVERIFY(data.fbands == s.fbands);
}

void TestSimulator::siderealTimes_data()
{
    QTest::addColumn<QDateTime>("utc");
    QTest::addColumn<QString>("time");
    // Greenwich 13h10m46.37s and 8h34m57.09s (Meeus, examples 12.a and 12.b), and the
    // telescope 2h30m31.2s further east.
    QTest::newRow("at midnight") << QDateTime(QDate(1987, 4, 10), QTime(0, 0), Qt::UTC)
                                 << "15:41:17";
    QTest::newRow("in the evening")
        << QDateTime(QDate(1987, 4, 10), QTime(19, 21), Qt::UTC) << "11:5:28";
}

void TestSimulator::siderealTimes()
{
    QFETCH(QDateTime, utc);
    QTEST(siderealTime(utc), "time");
}

void TestSimulator::pulseArrival_data()
{
    QTest::addColumn<std::vector<double>>("bands");
    QTest::addColumn<double>("dispersion");
    QTest::addColumn<double>("time");         // s
    QTest::addColumn<double>("firstArrival"); // s, in the first band
    QTest::addColumn<int>("firstPoint");      // of the highest sample there
    const std::vector<double> ascending = {60, 120};
    const std::vector<double> descending = {120, 60};
    QTest::newRow("no dispersion") << ascending << 0.0 << 1.0 << 1.0 << 100;
    QTest::newRow("lower band later") << ascending << 30.0 << 1.0 << 26.93 << 2693;
    QTest::newRow("higher band earlier") << descending << 30.0 << 30.0 << 4.07 << 407;
    QTest::newRow("part of a point") << ascending << 30.0 << 1.0037 << 26.9337 << 2693;
    QTest::newRow("low band before it begins") << ascending << 30.0 << -20.0 << 5.93 << 593;
}

void TestSimulator::pulseArrival()
{
    QFETCH(std::vector<double>, bands);
    QFETCH(double, dispersion);
    QFETCH(double, time);
    QFETCH(double, firstArrival);
    QFETCH(int, firstPoint);
    Simulation s = silence(bands);
    SinglePulse pulse;
    pulse.ray = 2;
    pulse.time = time;
    pulse.dispersion = dispersion;
    s.pulses = {pulse};
    const ObservationData data = makeRecording(s);
    QCOMPARE(highest(data, 0, 1), firstPoint);
    // A symmetric pulse keeps its centre through the mean over the steps; floats round it.
    QVERIFY(std::abs(centroid(data, 0, 1) - firstArrival * 100) < 1e-4);
    if (time > 0)
        QVERIFY(std::abs(centroid(data, 1, 1) - time * 100) < 1e-4);
    QCOMPARE(*std::max_element(data.samples[0][0][0], data.samples[0][0][0] + s.npoints), 0.0f);
}

void TestSimulator::pulseShape()
{
    Simulation s = silence();
    SinglePulse pulse;
    pulse.time = 10;
    pulse.width = 1; // 100 points: the mean over a step is the curve itself
    pulse.strength = 3;
    s.pulses = {pulse};
    SinglePulse narrow;
    narrow.ray = 2;
    narrow.time = 10;
    narrow.width = 0.0001;
    narrow.strength = 3;
    s.pulses.push_back(narrow);
    const ObservationData data = makeRecording(s);
    const float *wide = data.samples[0][1][0];
    QVERIFY(std::abs(wide[1000] - 6) < 1e-3); // 3 sigma of 2
    QVERIFY(std::abs(wide[950] - 3) < 1e-3);
    QVERIFY(std::abs(wide[1050] - 3) < 1e-3);
    // Narrower than a step: its area, height x width x sqrt(pi / ln 16), spread over one point.
    const float *single = data.samples[0][1][1];
    QVERIFY(std::abs(single[1000] - 6 * 0.01 * 1.0644670194312262) < 1e-6);
    QCOMPARE(single[999] + single[1001], 0.0f);
}

void TestSimulator::trainRunsThroughTheRecording()
{
    Simulation s = silence();
    PulseTrain train;
    train.ray = 2;
    train.period = 5;
    train.phase = 0.2;
    train.dispersion = 30;
    s.pulseTrains = {train};
    const ObservationData data = makeRecording(s);
    // Last band at 1, 6, ..., 36 s; first band at 25.93 s + 1, 6, ... and, of the pulses that
    // left before the begin, at 1.93, 6.93, ...
    for (const auto &[channel, first] : {std::pair(1, 100), std::pair(0, 193)}) {
        const float *samples = data.samples[0][channel][1];
        QVector<int> peaks;
        for (int p = 1; p < s.npoints - 1; ++p)
            if (samples[p] > 1 && samples[p] > samples[p - 1] && samples[p] >= samples[p + 1])
                peaks << p;
        QVector<int> expected;
        for (int p = first; p < s.npoints; p += 500)
            expected << p;
        QCOMPARE(peaks, expected);
    }
}

void TestSimulator::interference()
{
    Simulation s = silence();
    s.level = 10;
    NarrowBandLine line;
    line.band = 2;
    line.strength = 1.5;
    line.begin = 5;
    line.end = 7;
    s.lines = {line};
    Impulses impulses;
    impulses.ray = 2;
    impulses.count = 7;
    impulses.strength = 4;
    s.impulses = {impulses};
    GainStep step;
    step.point = 600;
    step.factor = 0.5;
    s.gainSteps = {step};
    const ObservationData data = makeRecording(s);

    const float *lined = data.samples[0][1][0];
    const std::array<float, 4> ends = {lined[499], lined[500], lined[599], lined[600]};
    QVERIFY((ends == std::array<float, 4>{10, 13, 13, 6.5}));
    QCOMPARE(lined[700], 5.0f);
    QCOMPARE(data.samples[0][0][0][599], 10.0f);
    QCOMPARE(data.samples[0][0][0][600], 5.0f);

    double raised = 0;
    for (int p = 0; p < s.npoints; ++p) {
        raised += data.samples[0][0][1][p] - 10;
        QCOMPARE(data.samples[0][0][1][p], data.samples[0][1][1][p]);
    }
    QCOMPARE(raised, 7 * 8.0); // 4 sigma of 2, added up where two fall on one point
}

void TestSimulator::driftStaysWithinItsLimit()
{
    Simulation s = silence();
    s.npoints = 40000;
    s.level = 50;
    s.drift = 3;
    s.driftTime = 10;
    const ObservationData data = makeRecording(s);
    for (int ray = 0; ray < 2; ++ray) {
        const float *samples = data.samples[0][0][ray];
        const auto [least, most] = std::minmax_element(samples, samples + s.npoints);
        QVERIFY(*least >= 44 && *most <= 56); // 3 sigma of 2
        QVERIFY(*most - *least > 4);          // 40 knots do not all stay near the middle
        for (int p = 1; p < s.npoints; ++p)
            QVERIFY(std::abs(samples[p] - samples[p - 1]) < 0.02);
    }
    QVERIFY(data.samples[0][0][0][0] != data.samples[0][0][1][0]);
}

void TestSimulator::meanChannel()
{
    const ObservationData data = makeRecording(mixture());
    for (int p = 0; p < data.npoints; p += 100) {
        double sum = 0;
        for (int band = 0; band < 4; ++band)
            sum += data.samples[1][band][2][p];
        QCOMPARE(data.samples[1][4][2][p], float(sum / 4));
    }
}

void TestSimulator::optionsReachTheSimulation()
{
    QCommandLineParser parser;
    addOptions(parser);
    QVERIFY(parser.parse({"zrt-simulate", "--bands", "3", "--first-band", "400", "--band-spacing",
                          "-0.5", "--begin", "2020-01-02T03:04:05", "--pulsar",
                          "ray=2, period=0.7,dm=26.8", "--pulse", "time=3", "--pulse",
                          "time=4,width=1", "--gain-step", "point=5,factor=2"}));
    Simulation s;
    QCOMPARE(readOptions(parser, s), QString());
    QVERIFY((s.fbands == std::vector<double>{400, 399.5, 399}));
    QCOMPARE(s.beginTime, QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::UTC));
    QCOMPARE(s.pulseTrains.size(), std::size_t(1));
    QCOMPARE(s.pulseTrains[0].ray, 2);
    QCOMPARE(s.pulseTrains[0].period, 0.7);
    QCOMPARE(s.pulseTrains[0].dispersion, 26.8);
    QCOMPARE(s.pulses.size(), std::size_t(2));
    QCOMPARE(s.pulses[1].time, 4.0);
    QCOMPARE(s.gainSteps[0].point, 5);
    QCOMPARE(s.npoints, Simulation().npoints);
}

void TestSimulator::refusals_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *name, const QStringList &options, const char *message) {
        QTest::newRow(name) << options << message;
    };
    row("no points", {"--points", "0"}, "points must be at least 1, not 0");
    row("points with a letter", {"--points", "4k"}, "\"4k\" is not a number");
    row("no modules", {"--modules", "0"}, "modules must be at least 1");
    row("negative rays", {"--rays", "-1"}, "rays must be at least 1, not -1");
    row("no bands", {"--bands", "0"}, "between 1 and 100000 bands");
    row("more than memory", {"--modules", "2000000000", "--rays", "2000000000"},
        "more than one point may hold");
    row("band at zero", {"--band-list", "0 120"}, "above 0 MHz");
    row("step zero", {"--step", "0"}, "step must be at least");
    row("step not a number", {"--step", "nan"}, "step must be at least");
    row("endless recording", {"--points", "2000000000", "--step", "1e6"}, "longer than 1e+08 s");
    row("sigma zero", {"--sigma", "0"}, "Sigma must be above 0");
    row("hasty drift", {"--drift", "1", "--drift-time", "0.001"}, "at least 100 steps");
    row("begin without time", {"--begin", "2015-04-01"}, "is not a time like");
    row("ray beyond the last", {"--pulsar", "ray=9"}, "ray 9 is not among 1 to 8");
    row("period below two steps", {"--pulsar", "period=0.0249"}, "at least two steps");
    row("pulse longer than its period", {"--pulsar", "period=1,width=1.1"},
        "longer than the period");
    row("negative dispersion", {"--pulse", "dm=-1"}, "dispersion must not be below 0");
    row("endless lag", {"--pulse", "dm=1e12"}, "more than 1e+06 s away");
    row("infinite strength", {"--pulse", "strength=inf"}, "must lie between");
    row("unknown key", {"--pulsar", "dispersion=3"}, "it takes module, ray, period");
    row("key without a number", {"--pulsar", "dm"}, "dm=\"\" is not a number");
    row("band beyond the last", {"--line", "band=33"}, "band 33 is not among 1 to 32");
    row("more impulses than points", {"--impulses", "count=40001"}, "between 0 and the 40000");
    row("step after the end", {"--gain-step", "point=40000"}, "not among 0 to 39999");
}

void TestSimulator::refusals()
{
    QFETCH(QStringList, options);
    QFETCH(QString, message);
    QCommandLineParser parser;
    addOptions(parser);
    QVERIFY(parser.parse(QStringList{"zrt-simulate"} + options));
    Simulation s;
    QString error = readOptions(parser, s);
    if (error.isEmpty()) {
        error = writeRecording(s, path("file.pnt"));
        QCOMPARE(makeRecording(s).npoints, 0);
    }
    QVERIFY2(error.contains(message), qPrintable(error));
    QVERIFY(QDir(folder->path()).isEmpty());
}

void TestSimulator::unwritablePath()
{
    const QString error = writeRecording(silence(), path("missing/file.pnt"));
    QVERIFY2(error.startsWith("Cannot write \"" + path("missing/file.pnt")), qPrintable(error));
    QVERIFY(QDir(folder->path()).isEmpty());
}

// The limit on the size of files stands for the full disk: the system refuses the write.
void TestSimulator::fullDiskKeepsTheOldFile()
{
    QCOMPARE(writeRecording(silence(), path("file.pnt")), QString());
    const QByteArray before = contents(path("file.pnt"));

    rlimit limit = {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small = {1 << 20, limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    const QString error = writeRecording(mixture(), path("file.pnt"));
    const int restored = setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    QCOMPARE(restored, 0);

    QVERIFY2(error.startsWith("Cannot write"), qPrintable(error));
    QVERIFY(contents(path("file.pnt")) == before);
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files).size(), 1);
}

void TestSimulator::demonstrationShowsItsPulsars_data()
{
    QTest::addColumn<int>("ray");
    QTest::addColumn<double>("dispersion");
    QTest::addColumn<double>("period"); // s; of the pulsar that must show
    QTest::addColumn<int>("harmonics"); // of them that stand out
    QTest::newRow("presets of the pulsar form") << 7 << 26.2 << 3.032 << 12;
    QTest::newRow("weak pulsar") << 3 << 15.5 << 1.274 << 5;
    QTest::newRow("empty ray") << 1 << 26.2 << 3.032 << 0;
    QTest::newRow("ray with interference") << 5 << 26.2 << 3.032 << 0;
}

// 16384 points from point 58000 on, as the form would take them: 12:10:52 UTC lies within.
void TestSimulator::demonstrationShowsItsPulsars()
{
    QFETCH(int, ray);
    QFETCH(double, dispersion);
    QFETCH(double, period);
    QFETCH(int, harmonics);
    static const ObservationData data = makeRecording(demonstration());
    QCOMPARE(data.npoints, 80000);
    const double atPreset =
        double(data.beginTime.secsTo(QDateTime(QDate(2015, 4, 1), QTime(12, 10, 52), Qt::UTC))) /
        data.tresolution;
    QVERIFY(atPreset > 58000 && atPreset < 58100);

    const int count = 16384;
    std::vector<double> sum(count);
    for (int band = 0; band < 32; ++band) {
        const double f = 120.0 + 0.078125 * band;
        const double delay = 4148.8 * dispersion * (1 / (f * f) - 1 / (122.421875 * 122.421875));
        const long shift = std::lround(delay / 0.0124928);
        for (int i = 0; i < count; ++i)
            sum[std::size_t(i)] += data.samples[0][band][ray - 1][58000 + shift + i];
    }
    const double drifting = standardDeviation(sum);
    removePolynomial(sum);
    QVERIFY(drifting > 1.5 * standardDeviation(sum)); // the baseline visibly matters

    const std::vector<double> spectrum = amplitudes(sum, count / 4);
    const double sigma = standardDeviation(spectrum);
    int standing = 0;
    for (int harmonic = 1; harmonic <= 12; ++harmonic) {
        // A harmonic between two bins shows in the nearer one.
        const double bin = harmonic * count * 0.0124928 / period;
        const double height = std::max(spectrum[std::size_t(bin)], spectrum[std::size_t(bin) + 1]);
        standing += height > 6 * sigma;
    }
    if (harmonics > 0)
        QVERIFY2(standing >= harmonics, qPrintable(QString::number(standing)));
    else
        QCOMPARE(standing, 0);
}

ZRT_UNIT_TEST_MAIN(TestSimulator)
#include "tst_simulator.moc"
