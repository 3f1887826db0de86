#include "analyses/days/fourierstack.h"
#include "analyses/days/stackevidence.h"
#include "calc/localmedian.h"
#include "calc/significance.h"
#include "support/testmain.h"

#include <cmath>
#include <random>

using namespace Days;

namespace {

constexpr int bins = 1024;
constexpr double binWidth = 0.025; // Hz: 40 samples a second twice 1024 long

std::mt19937_64 random_(1);

double exponential()
{
    return std::exponential_distribution<double>()(random_);
}

// A day of noise, `number` sidereal days after the first.
FourierDay noiseDay(int number, int count = bins)
{
    FourierDay day;
    day.begin = QDateTime({2015, 1, 1}, {3, 0}, Qt::UTC).addMSecs(qint64(number) * 86164091);
    day.binWidth = binWidth;
    day.sigma = 1;
    day.solarHour = std::fmod(48 - 24 * number / 366.0, 24);
    for (int i = 0; i < count; ++i)
        day.powers.push_back(float(exponential()));
    return day;
}

std::vector<FourierDay> noiseDays(int count)
{
    std::vector<FourierDay> days;
    for (int i = 0; i < count; ++i)
        days.push_back(noiseDay(i));
    return days;
}

// A line of mean excess `strength` at a barycentric bin: the power of a sine in noise.
void addLine(FourierDay &day, double bin, double strength)
{
    const auto at = std::size_t(std::lround(bin * day.ratio));
    std::normal_distribution<double> half(0, std::sqrt(0.5));
    const double real = half(random_) + std::sqrt(strength);
    const double imaginary = half(random_);
    day.powers[at] = float(real * real + imaginary * imaginary);
}

const FourierLine *lineAt(const FourierStack &stack, double bin)
{
    for (const FourierLine &line : stack.lines) {
        if (std::abs(line.bin - bin) < 0.6)
            return &line;
    }
    return nullptr;
}

} // namespace

class TestFourierStack : public QObject {
    Q_OBJECT

private slots:
    void init() { random_.seed(1); }
    void equalsTheStraightStack_data();
    void equalsTheStraightStack();
    void weakLineOfAHundredDays();
    void earthMotion();
    void trimmedTailOfNoise_data();
    void trimmedTailOfNoise();
    void marks();
    void solarTime();
    void humIsFolded();
    void leavesOutInterference();
    void equalGains();
    void tailOfUnequalWeights();
    void stops();
    void relatedLines();
    void knownPulsar();
    void badInput();
};

void TestFourierStack::equalsTheStraightStack_data()
{
    QTest::addColumn<double>("drift"); // of the ratio, from the first day to the last
    QTest::addColumn<int>("off");      // every so many-th day
    QTest::newRow("all days") << 0.0 << 100;
    QTest::newRow("turned, some days off") << 0.004 << 3;
    QTest::newRow("drift below a third of a bin") << 0.0003 << 100;
}

void TestFourierStack::equalsTheStraightStack()
{
    QFETCH(double, drift);
    QFETCH(int, off);
    std::vector<FourierDay> days = noiseDays(20);
    FourierDaysChoice choice;
    choice.threshold = 0.5;
    choice.window = 129;
    for (std::size_t i = 0; i < days.size(); ++i) {
        days[i].ratio = 1.0001 + drift * (double(i) / 19 - 0.5);
        choice.days.push_back(int(i + 1) % off != 0);
    }
    const FourierStack stack = combineDays(days, choice);
    QCOMPARE(stack.isTurned, drift > 0.001);

    std::vector<double> sums(bins);
    int count = 0;
    for (std::size_t i = 0; i < days.size(); ++i) {
        count += choice.days[i];
        for (int bin = 0; bin < bins && choice.days[i]; ++bin) {
            const double ratio = stack.isTurned ? days[i].ratio : 1;
            const int from = std::min(bins - 1, int(std::floor(bin * ratio + 0.5)));
            sums[std::size_t(bin)] += double(days[i].powers[std::size_t(from)]);
        }
    }
    const std::vector<double> medians = Tools::localMedian(sums, 515, Days::lowestBin);
    // Median of a Gamma law to better than 1e-4 for these shapes (Berg & Pedersen 2006).
    const double median = count - 1.0 / 3 + 8 / (405.0 * count);
    QCOMPARE(stack.days, count);
    for (int bin = 0; bin < bins; ++bin) {
        const auto i = std::size_t(bin);
        const double power = sums[i] / medians[i] * median;
        QVERIFY(std::abs(stack.powers[i] - power / count) < 1e-3);
        QVERIFY(std::abs(stack.sigma[i] - Tools::sigmaOfPower(count, power)) < 0.02);
    }
    for (const FourierLine &line : stack.lines) {
        QVERIFY(line.growth.back().days == count);
        QVERIFY(std::abs(line.growth.back().sigma -
                         Tools::sigmaOfPower(double(count) * line.harmonics,
                                             line.power * count * line.harmonics)) < 1e-6);
        QVERIFY(line.sigma < line.growth.back().sigma);
    }
}

void TestFourierStack::weakLineOfAHundredDays()
{
    double sum = 0;
    constexpr int stacks = 40;
    for (int i = 0; i < stacks; ++i) {
        std::vector<FourierDay> days = noiseDays(100);
        for (FourierDay &day : days)
            addLine(day, 500, 1.5);
        sum += double(combineDays(days, {}).sigma[500]);
    }
    // One stack scatters by some 1.4.
    QVERIFY2(std::abs(sum / stacks - 10.7) < 0.7, qPrintable(QString::number(sum / stacks)));
}

void TestFourierStack::earthMotion()
{
    std::vector<FourierDay> days = noiseDays(100);
    for (std::size_t i = 0; i < days.size(); ++i) {
        days[i].ratio = 1 + 0.002 * std::sin(double(i) * 0.06);
        addLine(days[i], 900, 2);
    }
    FourierDaysChoice choice;
    choice.harmonics = 1;
    const FourierStack on = combineDays(days, choice);
    choice.earthMotion = false;
    const FourierStack off = combineDays(days, choice);
    QVERIFY(on.isTurned && !off.isTurned);
    const FourierLine *line = lineAt(on, 900);
    QVERIFY(line && line->sigma > 8);
    QVERIFY(std::abs(line->barycentric - 900 * binWidth) < 1e-9);
    QVERIFY(std::abs(line->telescope / line->barycentric - on.ratio) < 1e-12);
    QVERIFY(!lineAt(off, 900) || lineAt(off, 900)->sigma < line->sigma - 3);
}

void TestFourierStack::trimmedTailOfNoise_data()
{
    QTest::addColumn<int>("harmonics");
    QTest::newRow("1") << 1;
    QTest::newRow("16") << 16;
}

void TestFourierStack::trimmedTailOfNoise()
{
    QFETCH(int, harmonics);
    constexpr int trials = 40000;
    constexpr int days = 60;
    std::gamma_distribution<double> law(harmonics);
    int below[2] = {};
    for (int i = 0; i < trials; ++i) {
        std::vector<double> powers(days);
        for (double &power : powers)
            power = law(random_);
        const double tail = std::exp(logTailWithoutStrongest(powers, 3, harmonics));
        below[0] += tail < 0.1;
        below[1] += tail < 0.01;
    }
    QVERIFY2(std::abs(below[0] / (0.1 * trials) - 1) < 0.15, qPrintable(QString::number(below[0])));
    QVERIFY2(std::abs(below[1] / (0.01 * trials) - 1) < 0.25,
             qPrintable(QString::number(below[1])));
}

void TestFourierStack::marks()
{
    std::vector<FourierDay> days = noiseDays(100);
    for (std::size_t i = 0; i < days.size(); ++i) {
        addLine(days[i], 300, 1.5);
        if (i % 30 == 4)
            days[i].powers[400] = 60;
    }
    FourierDaysChoice choice;
    choice.harmonics = 1;
    choice.beam.module = 1;
    choice.beam.ray = 4;
    const auto rays = [&](std::vector<int> numbers) {
        choice.otherRays.clear();
        for (const int ray : numbers)
            choice.otherRays.push_back({1, ray, {300 * binWidth}});
        return lineAt(combineDays(days, choice), 300)->isInOtherRays;
    };
    QVERIFY(!rays({}));
    QVERIFY(!rays({1, 3, 7})); // 3 is a neighbour
    QVERIFY(!rays({1, 6, 7})); // 6 and 7 are neighbours
    QVERIFY(rays({1, 6, 8}));
    const FourierStack stack = combineDays(days, choice);
    QVERIFY(!lineAt(stack, 300)->isFewDays && !lineAt(stack, 300)->isSolar);
    QVERIFY(lineAt(stack, 300)->firstHalf > 4 && lineAt(stack, 300)->secondHalf > 4);
    QVERIFY(lineAt(stack, 400) && lineAt(stack, 400)->isFewDays);
    QVERIFY(lineAt(stack, 400)->marks().contains("few days"));
    QVERIFY(stack.lines.front().sigma < lineAt(stack, 400)->sigma); // which waits behind
}

void TestFourierStack::solarTime()
{
    std::vector<FourierDay> days = noiseDays(365);
    for (FourierDay &day : days) {
        addLine(day, 300, 0.8);
        if (day.solarHour > 8 && day.solarHour < 18)
            addLine(day, 500, 1.6);
    }
    FourierDaysChoice choice;
    choice.harmonics = 1;
    const FourierStack stack = combineDays(days, choice);
    QVERIFY(lineAt(stack, 300) && !lineAt(stack, 300)->isSolar);
    QVERIFY(lineAt(stack, 500) && lineAt(stack, 500)->isSolar);
    QVERIFY(lineAt(stack, 500)->bySolarHour[12] > 1.7);
    QVERIFY(lineAt(stack, 500)->bySolarHour[3] < 1.7);
}

void TestFourierStack::humIsFolded()
{
    constexpr double rate = 80;
    const std::vector<DayHum> hum = {{49.98, 50.02}};
    // 50 Hz shows at 30 Hz, 100 at 20, 150 at 10, 200 at 40, 400 at 0.
    for (const double seen : {30.0, 30.02, 20.0, 10.05, 39.93})
        QVERIFY2(isHumAt(hum, seen, rate, 0.01), qPrintable(QString::number(seen)));
    for (const double clear : {25.0, 30.5, 20.5, 9.8, 5.0})
        QVERIFY2(!isHumAt(hum, clear, rate, 0.01), qPrintable(QString::number(clear)));
    QVERIFY(!isHumAt({}, 30, rate, 0.01));
}

void TestFourierStack::leavesOutInterference()
{
    std::vector<FourierDay> days = noiseDays(30);
    for (FourierDay &day : days)
        day.powers[512] = day.powers[700] = 9;
    FourierDaysChoice choice;
    QVERIFY(lineAt(combineDays(days, choice), 512) && lineAt(combineDays(days, choice), 700));
    choice.leftOut = {{256 * binWidth, false, 0, 2, ""}};
    const FourierStack stack = combineDays(days, choice);
    QVERIFY(!lineAt(stack, 512) && lineAt(stack, 700));
    QVERIFY(std::abs(stack.powers[512] - 1) < 1e-6);
    QVERIFY(stack.remarks.join(' ').contains("6 of 1024 bins"));
}

// Days of little noise, in which a line of the same gain stands higher, count more.
void TestFourierStack::equalGains()
{
    std::vector<FourierDay> days = noiseDays(200);
    for (std::size_t i = 0; i < days.size(); ++i) {
        days[i].sigma = i % 2 ? 1 : 3;
        addLine(days[i], 500, 2 / (days[i].sigma * days[i].sigma));
    }
    FourierDaysChoice choice;
    choice.harmonics = 1;
    const double equal = lineAt(combineDays(days, choice), 500)->sigma;
    choice.equalGains = true;
    const FourierStack stack = combineDays(days, choice);
    const FourierLine *weighted = lineAt(stack, 500);
    QVERIFY(weighted);
    QVERIFY2(weighted->sigma > equal + 0.5,
             qPrintable(QString("%1 %2").arg(weighted->sigma).arg(equal)));
    // Noise keeps its place: mean power 1 and no more lines than before.
    double mean = 0;
    for (const float power : stack.powers)
        mean += double(power) / bins;
    QVERIFY(std::abs(mean - 1) < 0.05);
    QVERIFY(stack.lines.size() < 4);
    for (const FourierLine &line : stack.lines)
        QVERIFY(line.sigma >= choice.threshold);
}

// The curve of a stack in which few days have nearly all the weight keeps its promise: a Gamma law
// of the same mean and variance has three times too many bins above 3 sigma.
void TestFourierStack::tailOfUnequalWeights()
{
    constexpr int stacks = 100;
    FourierDaysChoice choice;
    choice.harmonics = 1;
    choice.equalGains = true;
    int above = 0;
    int positive = 0;
    for (int i = 0; i < stacks; ++i) {
        std::vector<FourierDay> days = noiseDays(30);
        for (std::size_t day = 0; day < days.size(); ++day)
            days[day].sigma = 1 + double(day) / 3;
        const FourierStack stack = combineDays(days, choice);
        above += int(std::count_if(stack.sigma.begin(), stack.sigma.end(),
                                   [](float sigma) { return sigma > 3; }));
        positive += int(std::count_if(stack.sigma.begin(), stack.sigma.end(),
                                      [](float sigma) { return sigma > 0; }));
    }
    const double expected = 1.35e-3 * stacks * bins; // 138, which scatters by 12
    QVERIFY2(above > 0.7 * expected && above < 1.4 * expected, qPrintable(QString::number(above)));
    const double half = double(positive) / (stacks * bins);
    QVERIFY2(std::abs(half - 0.5) < 0.02, qPrintable(QString::number(half)));
}

// A stack that is stopped ends without lines.
void TestFourierStack::stops()
{
    int asked = 0;
    Jobs::Control control;
    control.isStopped = [&asked] { return ++asked > 5; };
    const FourierStack stack = combineDays(noiseDays(20), {}, control);
    QVERIFY(asked < 12);
    QVERIFY(stack.lines.empty() && stack.sigma.empty());
    QCOMPARE(stack.problem, QString("Stopped."));
}

void TestFourierStack::relatedLines()
{
    std::vector<FourierDay> days = noiseDays(50);
    for (FourierDay &day : days) {
        for (const int bin : {200, 400, 600, 800})
            addLine(day, bin, 5);
        addLine(day, 345, 5);
    }
    const FourierStack stack = combineDays(days, {});
    QVERIFY(stack.lines.size() > 3);
    QCOMPARE(stack.lines[0].harmonics, 4);
    QCOMPARE(stack.lines[0].bin, 200.0);
    QCOMPARE(lineAt(stack, 400)->relatedTo, 0);
    QCOMPARE(lineAt(stack, 400)->relatedP, 2);
    QCOMPARE(lineAt(stack, 345)->relatedTo, -1);
}

void TestFourierStack::knownPulsar()
{
    const Tools::KnownPulsar *pulsar = Tools::findPulsar(Tools::knownPulsars(), "B1133+16");
    QVERIFY(pulsar);
    const QDate date(2015, 6, 1);
    const Beam beam = nearestBeam("N1", pulsar->position, date);
    const auto inBeam = pulsarsInBeam(beam, pulsar->position, date, 200);
    QVERIFY(std::find(inBeam.begin(), inBeam.end(), pulsar) != inBeam.end());
    Beam next = beam;
    next.delta += 3 * beam.reach;
    const auto inNext = pulsarsInBeam(next, pulsar->position, date, 200);
    QVERIFY(std::find(inNext.begin(), inNext.end(), pulsar) == inNext.end());

    const double mjd = 57174;
    const double frequency = pulsar->frequencyAt(mjd);
    const auto matches =
        matchesOf({pulsar}, pulsar->position, frequency * 3 / 2 + 0.001, 0.004, mjd);
    QCOMPARE(int(matches.size()), 1);
    QCOMPARE(matches[0].p, 3);
    QCOMPARE(matches[0].q, 2);
    QVERIFY(std::abs(matches[0].bins - 0.25) < 1e-3);
    QVERIFY(matchesOf({pulsar}, pulsar->position, frequency + 0.01, 0.004, mjd).empty());
}

void TestFourierStack::badInput()
{
    QVERIFY(combineDays({}, {}).problem.contains("no day"));
    std::vector<FourierDay> days = noiseDays(3);
    FourierDaysChoice choice;
    choice.days = {false, false, false};
    QVERIFY(combineDays(days, choice).problem.contains("switched off"));
    choice.days = {true}; // the others do not count
    QCOMPARE(combineDays(days, choice).days, 1);
    days.push_back(noiseDay(3, bins / 2));
    days.push_back({});
    days[1].ratio = std::numeric_limits<double>::quiet_NaN();
    const FourierStack stack = combineDays(days, {});
    QCOMPARE(stack.problem, QString());
    QCOMPARE(stack.days, 3);
    QVERIFY(stack.remarks.join(' ').contains("1 days have spectra of another length"));
    QVERIFY(stack.remarks.join(' ').contains("Earth's motion is not taken out"));
    QVERIFY(combineDays({noiseDay(0, 100)}, {}).problem.contains("too short"));
}

ZRT_UNIT_TEST_MAIN(TestFourierStack)
#include "tst_fourierstack.moc"
