#include "analyses/days/ffaday.h"
#include "analyses/days/ffastack.h"
#include "analyses/days/fourierdays.h"
#include "analyses/days/trialstack.h"
#include "calc/significance.h"
#include "ffa/syntheticsignal.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

using namespace Days;

namespace {

constexpr int points = 2048;
constexpr double step = 0.0999424; // s
constexpr double none = std::numeric_limits<double>::quiet_NaN();

FourierDaysParameters parametersOf()
{
    FourierDaysParameters parameters;
    parameters.points = points;
    parameters.isFfa = true;
    return parameters;
}

/// A pulsar in noise of unit variance, by the S/N that its fold has in one day.
struct Pulses {
    double period = 7.3; // s, at the barycentre
    double snr = 0;
};

FourierDay dayOf(int number, const Pulses &pulses, double ratio = none, double solarHour = 0)
{
    std::mt19937_64 random(unsigned(100 + number));
    std::normal_distribution<float> law(3200, 1);
    DayStretch stretch;
    stretch.begin = QDateTime({2015, 1, 1}, {3, 0}, Qt::UTC).addMSecs(qint64(number) * 86164091);
    stretch.tresolution = step;
    stretch.direction = {none, none};
    stretch.series.resize(1);
    const double phase = std::uniform_real_distribution<double>()(random);
    const double seen = pulses.period / (std::isfinite(ratio) ? ratio : 1);
    const std::vector<float> signal =
        Ffa::syntheticPulseSignal(points, seen / step, phase, 0.05, pulses.snr, 0);
    for (int i = 0; i < points; ++i)
        stretch.series[0].sums.push_back(law(random) + signal[std::size_t(i)]);
    FourierDay day = ffaOfDay(stretch, parametersOf());
    day.ratio = ratio;
    day.solarHour = solarHour;
    return day;
}

std::vector<FourierDay> daysOf(int count, const Pulses &pulses)
{
    std::vector<FourierDay> days;
    for (int i = 0; i < count; ++i)
        days.push_back(dayOf(i, pulses));
    return days;
}

} // namespace

class TestFfaStack : public QObject {
    Q_OBJECT

private slots:
    void searchOfDays_data();
    void searchOfDays();
    void nearestTrialOfADay();
    void equalsTheStraightStack();
    void noiseHasThePromisedTail_data();
    void noiseHasThePromisedTail();
    void findsAWeakPulsar();
    void earthMotion();
    void marks();
    void leavesOutInterference();
    void keepsWhatItWrote();
    void badInput();
};

void TestFfaStack::searchOfDays_data()
{
    QTest::addColumn<double>("periodMin"); // 0: preset
    QTest::addColumn<double>("periodMax");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("field"); // that is refused
    QTest::newRow("presets") << 0.0 << 0.0 << points << "";
    QTest::newRow("presets of many points") << 0.0 << 0.0 << 131072 << "";
    QTest::newRow("an octave") << 4.1 << 8.2 << points << "";
    QTest::newRow("a whole factor") << 40 * step * 3 << 40.0 << 8192 << "";
    QTest::newRow("few trials") << 8.0 << 8.3 << points << "period_max";
    QTest::newRow("shorter than its bins") << 1.0 << 8.0 << points << "period_min";
    QTest::newRow("longer than the days") << 5.0 << 100.0 << points << "period_max";
}

void TestFfaStack::searchOfDays()
{
    QFETCH(double, periodMin);
    QFETCH(double, periodMax);
    QFETCH(int, count);
    QFETCH(QString, field);
    FfaParameters ffa = FourierDaysParameters().ffa;
    ffa.period_min = periodMin;
    ffa.period_max = periodMax;
    ffa = ffaOfDays(ffa, count, step);
    const std::vector<FieldProblem> problems = problemsOfTrials(ffa, count, step);
    QCOMPARE(problems.empty() ? QString() : problems.front().field, field);
    if (!problems.empty())
        return;
    QVERIFY(Tools::wholeFactorSteps(ffa, count, step).empty());
    QVERIFY(std::abs(ffa.period_min - periodMin) < 0.01 * periodMin || periodMin == 0);
    const auto trials = ffaTrials(ffa, count, step);
    QVERIFY(std::is_sorted(trials->periods.begin(), trials->periods.end()));
    QVERIFY(trials->periods.front() >= ffa.period_min * (1 - 1e-9));
    QCOMPARE(trials->noise.size(), trials->periods.size() * trials->widths.size());
}

void TestFfaStack::nearestTrialOfADay()
{
    const auto trials = ffaTrials(ffaOfDays(parametersOf().ffa, points, step), points, step);
    const double ratio = 1.0003;
    const std::vector<int> nearest = nearestTrials(trials->periods, ratio);
    for (std::size_t i = 0; i < nearest.size(); i += 7) {
        const double wanted = trials->periods[i] / ratio;
        double least = 1e9;
        for (const double period : trials->periods)
            least = std::min(least, std::abs(period - wanted));
        QCOMPARE(std::abs(trials->periods[std::size_t(nearest[i])] - wanted), least);
        // Half a bin of drift, or what lies outside of the trials.
        if (nearest[i] > 0)
            QVERIFY(trials->driftBins(i, least) < 0.6);
    }
}

// Each value by itself, from the standardised S/N of the days.
void TestFfaStack::equalsTheStraightStack()
{
    std::vector<FourierDay> days;
    for (int i = 0; i < 6; ++i)
        days.push_back(dayOf(i, {7.3, 6}, 1 + 1e-4 * i));
    FourierDaysChoice choice;
    choice.days = {true, true, false, true, true, true};
    choice.threshold = 2;
    const FourierStack stack = combineFfaDays(days, choice);
    QCOMPARE(stack.days, 5);
    QVERIFY(stack.isTurned);
    const FfaTrials &trials = *stack.ffa;
    const std::size_t count = trials.periods.size();
    std::vector<double> sums(trials.noise.size());
    for (std::size_t day = 0; day < days.size(); ++day) {
        const std::vector<int> nearest = nearestTrials(trials.periods, days[day].ratio);
        QCOMPARE((*stack.rows)[day][100], days[day].periodogram.best[std::size_t(nearest[100])]);
        for (std::size_t i = 0; i < sums.size() && choice.days[day]; ++i)
            sums[i] += double(
                days[day].periodogram.snr[i / count * count + std::size_t(nearest[i % count])]);
    }
    const std::vector<Tools::PhaseMaximum> laws = lawsOfTrials(trials, 5);
    const TrialLevels levels = levelsOfTrials(sums, trials, laws);
    for (std::size_t i = 0; i < count; i += 5) {
        double sigma = -1e9;
        for (std::size_t width = 0; width < laws.size(); ++width) {
            const std::size_t place = width * count + i;
            const double scatters = (sums[place] - levels.level[place]) / levels.scatter[width];
            sigma = std::max(
                sigma, laws[width].sigma(laws[width].median() + scatters * laws[width].scatter()));
        }
        QVERIFY(std::abs(double(stack.sigma[i]) - sigma) < 0.01);
    }
    QVERIFY(!stack.lines.empty());
    for (const FourierLine &line : stack.lines) {
        const FourierLine again = foldedLine(days, choice, line.telescope);
        QCOMPARE(again.bin, line.bin);
        QCOMPARE(again.sigma, line.sigma);
        QCOMPARE(again.growth.size(), line.growth.size());
        // The evidence adds the days one by one.
        const double one = line.growth.back().sigma;
        QVERIFY(std::abs(one - double(stack.sigma[std::size_t(line.bin)])) < 0.02);
        QVERIFY(line.sigma < one);
    }
}

void TestFfaStack::noiseHasThePromisedTail_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("stacks");
    QTest::newRow("single days") << 1 << 60;
    QTest::newRow("twenty days") << 20 << 4;
}

// Long simulations hold the promise down to 1e-4; neighbouring trials go together, so that a few
// stacks tell it to a third at 1e-2.
void TestFfaStack::noiseHasThePromisedTail()
{
    QFETCH(int, count);
    QFETCH(int, stacks);
    double above = 0;
    double all = 0;
    int alarms = 0;
    for (int s = 0; s < stacks; ++s) {
        std::vector<FourierDay> days;
        for (int i = 0; i < count; ++i)
            days.push_back(dayOf(1000 + s * count + i, {}));
        FourierDaysChoice choice;
        choice.threshold = 2;
        const FourierStack stack = combineFfaDays(days, choice);
        alarms += !stack.lines.empty();
        const auto high = std::count_if(stack.sigma.begin(), stack.sigma.end(),
                                        [](float sigma) { return sigma > 2.326F; });
        // The best of the widths is counted as so many trials.
        above += double(high) * double(stack.ffa->count()) / stack.trials;
        all += double(stack.sigma.size());
    }
    const double share = above / all;
    QVERIFY2(share > 0.004 && share < 0.016, qPrintable(QString::number(share)));
    // 2 sigma after trials: 2.3 % of all stacks.
    QVERIFY2(alarms <= 5, qPrintable(QString::number(alarms)));
}

void TestFfaStack::findsAWeakPulsar()
{
    const Pulses pulses = {7.3, 3};
    const std::vector<FourierDay> days = daysOf(40, pulses);
    const FourierStack stack = combineFfaDays(days, {});
    QVERIFY(!stack.lines.empty());
    const FourierLine &best = stack.lines.front();
    const double off = 1 / best.telescope - pulses.period;
    QVERIFY2(std::abs(stack.ffa->driftBins(std::size_t(best.bin), off)) < 3,
             qPrintable(QString::number(1 / best.telescope, 'g', 8)));
    QVERIFY(best.sigma > 6);
    // 5 % of 63 bins.
    QVERIFY(best.width >= 2 && best.width <= 6);
    QVERIFY(!best.isFewDays && !best.isSolar && !best.isHum);
    QVERIFY(std::min(best.firstHalf, best.secondHalf) > 4);
    QVERIFY(best.withoutStrongest > 5);
    QCOMPARE(best.growth.size(), std::size_t(40));
    // No single day shows it.
    const FourierStack single = combineFfaDays({days[0]}, {});
    QVERIFY(single.lines.empty());
    for (const FourierLine &line : stack.lines) {
        if (&line != &best && line.relatedTo == 0)
            QVERIFY(!line.marks().isEmpty() && line.marks().front().contains("of line 1"));
    }
}

// Over a year the period moves by many trials: only turned days add up.
void TestFfaStack::earthMotion()
{
    std::vector<FourierDay> days;
    for (int i = 0; i < 30; ++i)
        days.push_back(dayOf(i, {4.6, 4}, 1 + 4e-3 * std::sin(i * 0.4)));
    FourierDaysChoice choice;
    choice.threshold = 1;
    const FourierStack turned = combineFfaDays(days, choice);
    QVERIFY(turned.isTurned);
    QVERIFY(turned.remarks.join(' ').contains("loses up to 12.5 %"));
    const auto strongestNear = [](const FourierStack &stack) {
        float best = 0;
        for (std::size_t i = 0; i < stack.sigma.size(); ++i) {
            if (std::abs(stack.ffa->periods[i] - 4.6) < 0.02)
                best = std::max(best, stack.sigma[i]);
        }
        return best;
    };
    choice.earthMotion = false;
    const FourierStack still = combineFfaDays(days, choice);
    QVERIFY(!still.isTurned && !still.rows);
    QVERIFY2(
        strongestNear(turned) > strongestNear(still) + 2,
        qPrintable(
            QString("%1 %2").arg(double(strongestNear(turned))).arg(double(strongestNear(still)))));
    QVERIFY(std::abs(1 / turned.lines.front().barycentric - 4.6) < 0.01);
}

void TestFfaStack::marks()
{
    // One day in thirty.
    std::vector<FourierDay> days = daysOf(30, {});
    days[7] = dayOf(7, {7.3, 40});
    FourierDaysChoice low;
    low.threshold = 4;
    FourierStack stack = combineFfaDays(days, low);
    QVERIFY(!stack.lines.empty());
    QVERIFY(stack.lines.front().isFewDays && stack.lines.front().marks().contains("few days"));

    // In the morning only.
    days.clear();
    for (int i = 0; i < 40; ++i)
        days.push_back(dayOf(i, {7.3, i % 2 ? 9.0 : 0.0}, none, i % 2 ? 6 : 18));
    stack = combineFfaDays(days, {});
    QVERIFY(!stack.lines.empty());
    QVERIFY(stack.lines.front().isSolar);
    QVERIFY(stack.lines.front().bySolarHour[6] > stack.lines.front().bySolarHour[18] + 2);
}

void TestFfaStack::leavesOutInterference()
{
    const std::vector<FourierDay> days = daysOf(20, {7.3, 8});
    FourierDaysChoice choice;
    QVERIFY(!combineFfaDays(days, choice).lines.empty());
    choice.leftOut = {{1 / 7.3, false, 0.002, 16, {}}};
    const FourierStack stack = combineFfaDays(days, choice);
    QVERIFY(stack.remarks.join(' ').contains("left out as interference"));
    for (const FourierLine &line : stack.lines)
        QVERIFY(std::abs(1 / line.telescope / 7.3 - 1) > 0.01);
}

void TestFfaStack::keepsWhatItWrote()
{
    const QTemporaryDir folder;
    FourierDaysParameters parameters = parametersOf();
    parameters.ffa = ffaOfDays(parameters.ffa, points, step);
    std::vector<FourierDay> days = daysOf(3, {});
    days[1].problem = "gone";
    days[1].powers.clear();
    const QString path = folder.filePath(spectraFileName(days, parameters));
    const QByteArray bytes = spectraBytes(days, parameters);
    const auto write = [&path](const QByteArray &content) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    };
    write(bytes);
    const ReadSpectra read = readSpectra(path, parameters, step);
    QCOMPARE(read.problem, QString());
    QCOMPARE(read.days.size(), std::size_t(2));
    QCOMPARE(read.days[1].periodogram.snr, days[2].periodogram.snr);
    QCOMPARE(read.days[1].periodogram.best, days[2].periodogram.best);
    QCOMPARE(read.days[1].powers, days[2].powers);
    write(bytes.chopped(4));
    QVERIFY(readSpectra(path, parameters, step).problem.contains("cut short"));
    parameters.ffa.bins_max = 70;
    QVERIFY(readSpectra(path, parameters, step).problem.contains("other parameters"));
}

void TestFfaStack::badInput()
{
    QVERIFY(!combineFfaDays({}, {}).problem.isEmpty());
    std::vector<FourierDay> days = daysOf(2, {});
    FourierDaysChoice choice;
    choice.days = {false, false};
    QVERIFY(combineFfaDays(days, choice).problem.contains("switched off"));
    days[0].periodogram = {};
    QCOMPARE(combineFfaDays(days, {}).allDays, 1);

    DayStretch constant;
    constant.begin = QDateTime({2015, 1, 1}, {3, 0}, Qt::UTC);
    constant.tresolution = step;
    constant.series.resize(1);
    constant.series[0].sums.assign(points, 7);
    QVERIFY(ffaOfDay(constant, parametersOf()).problem.contains("no noise"));
    FourierDaysParameters tooLong = parametersOf();
    tooLong.ffa.period_max = 1000;
    constant.series[0].sums[100] = 8;
    QVERIFY(ffaOfDay(constant, tooLong).problem.contains("period_max"));
}

ZRT_UNIT_TEST_MAIN(TestFfaStack)
#include "tst_ffastack.moc"
