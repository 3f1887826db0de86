#include "analyses/days/fourierday.h"
#include "analyses/sky/candidateorder.h"
#include "analyses/sky/located.h"
#include "analyses/sky/skytables.h"
#include "support/testmain.h"

#include <cmath>
#include <numbers>
#include <random>

// Candidates of stacks whose content is known, and what is told of them.

using namespace Sky;

namespace {

constexpr int points = 2048;
constexpr int days = 60;
constexpr int rayCount = 8;
constexpr int starts = 4;
const std::vector<double> dispersions = {0, 30, 60};

SkyPlan planOf()
{
    SkyPlan plan;
    plan.parameters.points = points;
    plan.startStep = points / 2;
    plan.starts = starts;
    plan.dispersions = dispersions;
    for (int ray = 1; ray <= rayCount; ++ray)
        plan.rays.push_back({1, ray, Days::beamOf("N2", 1, ray)});
    plan.header.tresolution = 0.0999424;
    for (int band = 0; band < 32; ++band)
        plan.header.fbands.push_back(109.4 + 0.078125 * band);
    Passage passage;
    passage.begin = QDateTime({2015, 4, 1}, {12, 0}, Qt::UTC);
    passage.firstPoints = {0, 1024, 2048, 3072};
    plan.passages = {passage};
    return plan;
}

// Lines of some powers at some places of noise.
struct Injected {
    int ray = 0;
    int dispersion = 0;
    int start = 0;
    int bin = 0;
    double power = 0; // of a day, more than noise has
};

struct Case {
    std::vector<Injected> lines;
    int firstDay = 0; // that has the lines
    int lastDay = days;
};

// Days 0 to 29 belong to one quarter of the Sun's day, the others to the opposite one.
int quarterOf(int day)
{
    return day < days / 2 ? 0 : 2;
}

SkyStack stackOf(const Case &wanted, unsigned seed)
{
    SkyStack stack("test", {rayCount, int(dispersions.size()), starts, points});
    std::mt19937 random(seed);
    std::exponential_distribution<float> noise(1);
    std::vector<float> powers(points);
    for (int ray = 0; ray < rayCount; ++ray)
        for (int start = 0; start < starts; ++start)
            for (int day = 0; day < days; ++day)
                stack.count(ray, start, quarterOf(day), 1.00005);
    for (int day = 0; day < days; ++day)
        for (int ray = 0; ray < rayCount; ++ray)
            for (int dispersion = 0; dispersion < int(dispersions.size()); ++dispersion)
                for (int start = 0; start < starts; ++start) {
                    for (float &power : powers)
                        power = noise(random);
                    for (const Injected &line : wanted.lines) {
                        if (line.ray == ray && line.dispersion == dispersion &&
                            line.start == start && day >= wanted.firstDay && day < wanted.lastDay)
                            powers[std::size_t(line.bin)] += float(line.power);
                    }
                    stack.add(ray, dispersion, start, quarterOf(day), powers, fourierMethod().clip);
                }
    return stack;
}

// The same line in a ray and its neighbours, strongest in the middle.
std::vector<Injected> source(int ray, int bin, double power)
{
    std::vector<Injected> lines;
    for (int r = std::max(0, ray - 1); r <= std::min(rayCount - 1, ray + 1); ++r)
        for (int d = 0; d < int(dispersions.size()); ++d)
            for (int s = 0; s < starts; ++s)
                lines.push_back(
                    {r, d, s, bin,
                     power / (1 + std::abs(r - ray) + std::abs(d - 1) + std::abs(s - 2))});
    return lines;
}

std::vector<Injected> joined(std::vector<Injected> one, const std::vector<Injected> &other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

} // namespace

Q_DECLARE_METATYPE(Case)

class TestSkySearch : public QObject {
    Q_OBJECT

private slots:
    void errorsAreTrue_data();
    void errorsAreTrue();
    void declinationsAreTrue();
    void candidates_data();
    void candidates();
    void order_data();
    void order();
    void noiseGivesOneAlarm();
    void tablesComeBack();
    void damagedTables_data();
    void damagedTables();
};

void TestSkySearch::errorsAreTrue_data()
{
    QTest::addColumn<double>("strength"); // of a day, in units of the noise
    QTest::addColumn<int>("averaged");    // days
    QTest::newRow("weak every day") << 0.7 << 100;
    QTest::newRow("strong every day") << 20.0 << 30;
    QTest::newRow("one day") << 60.0 << 1;
}

// Neighbouring bins of a padded spectrum around a tone: correlated noise, and the signal in it.
void TestSkySearch::errorsAreTrue()
{
    QFETCH(double, strength);
    QFETCH(int, averaged);
    constexpr int seeds = 300;
    constexpr int around = 3;
    constexpr int samples = 32; // of the stretch, in its two ends as good as any number
    std::mt19937 random(5);
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> anywhere(-0.5, 0.5);
    const auto amplitude = [](double offset) {
        const double turn = std::numbers::pi * offset / 2;
        return std::abs(turn) < 1e-9 ? 1 : std::sin(turn) / turn;
    };
    int inOne = 0;
    int inTwo = 0;
    for (int seed = 0; seed < seeds; ++seed) {
        const double place = anywhere(random);
        PowerSamples set;
        set.powers.assign(2 * around + 1, 0);
        set.days.assign(2 * around + 1, averaged);
        for (int day = 0; day < averaged; ++day) {
            std::vector<std::complex<double>> noise(samples);
            for (std::complex<double> &value : noise)
                value = {normal(random), normal(random)};
            for (int i = -around; i <= around; ++i) {
                std::complex<double> sum = 0;
                for (int k = 0; k < samples; ++k)
                    sum += noise[std::size_t(k)] *
                           std::polar(1.0, -std::numbers::pi * i * ((k + 0.5) / samples - 0.5));
                sum /= std::sqrt(2.0 * samples);
                sum += std::sqrt(strength) * amplitude(place - i);
                set.powers[std::size_t(i + around)] += std::norm(sum) / averaged;
            }
        }
        for (int i = -around; i <= around; ++i)
            for (int j = -around; j <= around; ++j)
                set.noise.emplace_back(amplitude(i - j));
        set.amplitudes = [&](double at) {
            std::vector<std::complex<double>> values;
            for (int i = -around; i <= around; ++i)
                values.emplace_back(amplitude(at - i));
            return values;
        };
        const Located found = locate({set}, -1, 1, 0.05);
        inOne += std::abs(found.value - place) < found.error;
        inTwo += std::abs(found.value - place) < 2 * found.error;
    }
    // 68.3 % and 95.4 % of 300, give or take three standard deviations.
    QVERIFY2(std::abs(inOne - 205) <= 25, qPrintable(QString::number(inOne)));
    QVERIFY2(std::abs(inTwo - 286) <= 12, qPrintable(QString::number(inTwo)));
}

// Rays 1.2 widths of the beam apart: between them two see the source, near one of them it may stand
// anywhere in its beam.
void TestSkySearch::declinationsAreTrue()
{
    constexpr int seeds = 300;
    constexpr int rays = 5;
    constexpr double apart = 1.2; // widths
    constexpr double values = 240;
    constexpr double strength = 2;
    const auto response = [](double distance) {
        return std::exp(-4 * std::numbers::ln2 * distance * distance);
    };
    std::mt19937 random(7);
    std::uniform_real_distribution<double> anywhere(-apart / 2, apart / 2);
    int inOne = 0;
    int inTwo = 0;
    for (int seed = 0; seed < seeds; ++seed) {
        const double place = anywhere(random);
        PowerSamples set;
        for (int ray = -rays / 2; ray <= rays / 2; ++ray) {
            const double power = 1 + strength * std::pow(response(place - ray * apart), 2);
            std::normal_distribution<double> mean(power, std::sqrt((2 * power - 1) / values));
            set.powers.push_back(mean(random));
            set.days.push_back(values);
            for (int other = -rays / 2; other <= rays / 2; ++other)
                set.noise.emplace_back(ray == other ? 1 : 0);
        }
        set.amplitudes = [&](double at) {
            std::vector<std::complex<double>> amplitudes;
            for (int ray = -rays / 2; ray <= rays / 2; ++ray)
                amplitudes.emplace_back(response(at - ray * apart));
            return amplitudes;
        };
        const Located found = locate({set}, -1.25, 1.25, 0.02);
        inOne += std::abs(found.value - place) < found.error;
        inTwo += std::abs(found.value - place) < 2 * found.error;
    }
    // One error holds in two thirds, two may hold in all: the places are no Gaussian.
    QVERIFY2(std::abs(inOne - 205) <= 25, qPrintable(QString::number(inOne)));
    QVERIFY2(inTwo >= 274, qPrintable(QString::number(inTwo)));
}

void TestSkySearch::candidates_data()
{
    QTest::addColumn<Case>("wanted");
    QTest::addColumn<int>("count"); // of candidates
    QTest::addColumn<QString>("marks");
    QTest::newRow("neighbouring cells are one") << Case{source(3, 500, 3)} << 1 << "";
    QTest::newRow("a harmonic of a source stands under it")
        << Case{joined(source(3, 500, 3), source(3, 1000, 2))} << 1 << "";
    QTest::newRow("two sources in rays apart")
        << Case{joined(source(1, 500, 3), source(6, 503, 2.5))} << 2 << "";
    QTest::newRow("three days out of sixty") << Case{source(3, 500, 400), 0, 3} << 1 << "few days";
    QTest::newRow("half of the Sun's day")
        << Case{source(3, 500, 100), 0, days / 2} << 1 << "interference: keeps solar time";
    std::vector<Injected> everywhere;
    for (const int ray : {0, 2, 4, 6})
        everywhere.push_back({ray, 0, 1, 700, 3});
    QTest::newRow("the same in rays apart") << Case{everywhere} << 1 << "in other rays";
}

void TestSkySearch::candidates()
{
    QFETCH(Case, wanted);
    QFETCH(int, count);
    QFETCH(QString, marks);
    SkyPlan plan = planOf();
    plan.parameters.falseAlarms = 1e-3;
    const SkyStack stack = stackOf(wanted, 3);
    const SkySearch search = searchSky(stack, plan, 1);
    const auto bases = std::count_if(search.candidates.begin(), search.candidates.end(),
                                     [](const SkyCandidate &one) { return one.relatedTo < 0; });
    QCOMPARE(int(bases), count);
    const SkyCandidate &first = search.candidates.front();
    QCOMPARE(first.marks().join("; "), marks);
    QCOMPARE(first.days, days);
    // What the user knows is left out, and nothing else stands above noise then.
    const double frequency = first.telescope;
    if (count == 1) {
        plan.interference = {{frequency, false, 0.002, 4, {}}};
        QVERIFY(searchSky(stack, plan, 1).candidates.empty());
    }
}

void TestSkySearch::order_data()
{
    QTest::addColumn<bool>("fewDays"); // of the stronger of the two
    QTest::addColumn<bool>("solar");
    QTest::addColumn<bool>("bothFew");
    QTest::addColumn<QString>("order"); // bins, the related one in brackets
    QTest::newRow("harmonic of a pulsar") << false << false << false << "100 (300)";
    QTest::newRow("harmonic of interference") << false << true << false << "100 (300)";
    QTest::newRow("steady at the third of a burst") << true << false << false << "300 100";
    QTest::newRow("both of a few days") << true << false << true << "100 (300)";
}

void TestSkySearch::order()
{
    QFETCH(bool, fewDays);
    QFETCH(bool, solar);
    QFETCH(bool, bothFew);
    std::vector<SkyCandidate> found(2);
    for (int i = 0; i < 2; ++i) {
        found[std::size_t(i)].line.position = i == 0 ? 100 : 300;
        found[std::size_t(i)].sigma = 9 - i;
    }
    found[0].isFewDays = fewDays;
    found[0].isSolar = solar;
    found[1].isFewDays = bothFew;
    QStringList bins;
    for (const SkyCandidate &candidate : orderedCandidates(found, planOf())) {
        const QString bin = QString::number(candidate.line.position);
        bins << (candidate.relatedTo < 0 ? bin : "(" + bin + ")");
    }
    QTEST(bins.join(' '), "order");
}

// The threshold is that which noise reaches once a search: three searches have more than ten alarms
// in one of three thousand cases.
void TestSkySearch::noiseGivesOneAlarm()
{
    const SkyPlan plan = planOf();
    int alarms = 0;
    constexpr int searches = 3;
    for (unsigned seed = 0; seed < searches; ++seed) {
        const SkySearch search = searchSky(stackOf({}, 100 + seed), plan, 1);
        alarms += int(search.candidates.size());
        for (const SkyCandidate &candidate : search.candidates)
            QVERIFY(candidate.falseAlarms <= 1);
    }
    QVERIFY2(alarms <= 10, qPrintable(QString::number(alarms)));
}

void TestSkySearch::tablesComeBack()
{
    const SkyPlan plan = planOf();
    SkySearch search = searchSky(stackOf({source(3, 500, 3)}, 3), plan, 1);
    search.candidates[0].verdict = Verdict::Unsure;
    search.candidates[0].note = "seen\ttwice\nor 3 times";
    Results::ResultTable table;
    table.request = {{"program", "zrt-batch 2"}, {"command", "search"}};
    table.result = searchLines(search);
    table.columns = candidateColumns(search.candidates, plan);
    CandidatesTable read = readCandidates(table.toBytes(Results::Format::Text), plan);
    QVERIFY2(read.problem.isEmpty(), qPrintable(read.problem));
    const SkyCandidate &back = read.candidates[0];
    QCOMPARE(back.ray, search.candidates[0].ray);
    QCOMPARE(back.start, search.candidates[0].start);
    QCOMPARE(back.dispersionIndex, search.candidates[0].dispersionIndex);
    QCOMPARE(verdictName(back.verdict), QString("unsure"));
    QCOMPARE(back.note, QString("seen twice or 3 times"));
    QVERIFY(std::abs(back.period.value / search.candidates[0].period.value - 1) < 1e-11);

    setVerdict(read, 0, Verdict::Accept, "17");
    read = readCandidates(read.table.toBytes(Results::Format::Json), plan);
    QCOMPARE(verdictName(read.candidates[0].verdict), QString("accept"));
    QCOMPARE(read.candidates[0].note, QString("17"));

    // Another noise moves the candidate by less than its errors: the verdict goes with it.
    SkySearch newer = searchSky(stackOf({source(3, 500, 3)}, 4), plan, 1);
    takeVerdicts(read, plan, newer);
    QCOMPARE(verdictName(newer.candidates[0].verdict), QString("accept"));
    SkySearch other = searchSky(stackOf({source(6, 500, 3)}, 4), plan, 1);
    takeVerdicts(read, plan, other);
    QCOMPARE(verdictName(other.candidates[0].verdict), QString("-"));
}

void TestSkySearch::damagedTables_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<int>("cut"); // bytes at the end
    QTest::addColumn<QString>("words");
    QTest::newRow("another form") << QByteArray("candidates_form: 1")
                                  << QByteArray("candidates_form: 2") << 0 << "form 2";
    QTest::newRow("none of ours") << QByteArray("candidates_form: 1") << QByteArray("kind: 1") << 0
                                  << "no table of candidates";
    QTest::newRow("cut short") << QByteArray() << QByteArray() << 20 << "";
    QTest::newRow("a column less")
        << QByteArray("; verdict;") << QByteArray("; opinion;") << 0 << "column is missing";
}

void TestSkySearch::damagedTables()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(int, cut);
    QFETCH(QString, words);
    const SkyPlan plan = planOf();
    SkySearch search;
    search.candidates.resize(2);
    Results::ResultTable table;
    table.request = {{"program", "zrt-batch 2"}, {"command", "search"}};
    table.result = searchLines(search);
    table.columns = candidateColumns(search.candidates, plan);
    QByteArray bytes = table.toBytes(Results::Format::Text);
    if (!from.isEmpty()) {
        QVERIFY(bytes.contains(from));
        bytes.replace(from, to);
    }
    bytes.chop(cut);
    const CandidatesTable read = readCandidates(bytes, plan);
    QVERIFY(!read.problem.isEmpty() && read.candidates.empty());
    QVERIFY2(read.problem.contains(words), qPrintable(read.problem));
}

ZRT_UNIT_TEST_MAIN(TestSkySearch)
#include "tst_skysearch.moc"
