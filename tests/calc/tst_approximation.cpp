#include "calc/approximation.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <random>

using Operation = std::function<bool(Approximation &)>;
Q_DECLARE_METATYPE(Operation)

namespace {

using Series = std::vector<double>;

constexpr double guard = -12345.5;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

Series noise(int count)
{
    std::mt19937 random(7);
    std::normal_distribution<double> normal(100, 3);
    Series series(static_cast<std::size_t>(count));
    for (double &value : series)
        value = normal(random);
    return series;
}

// Runs an operation into an array with a guard value at both ends; empty when it refused or
// wrote beyond its ends.
template <typename Operation>
Series guarded(const Series &in, Operation operation)
{
    const int count = int(in.size());
    Series out(in.size() + 2, guard);
    Approximation approximation(in.data(), out.data() + 1, count);
    if (!operation(approximation) || out.front() != guard || out.back() != guard)
        return {};
    return Series(out.begin() + 1, out.end() - 1);
}

Series medianLine(const Series &in, int len)
{
    return guarded(in, [len](Approximation &over) { return over.medianLine(len); });
}

Series linearLine(const Series &in, int len)
{
    return guarded(in, [len](Approximation &over) { return over.linearLine(len); });
}

Series polynomial(const Series &in, int degree)
{
    return guarded(in, [degree](Approximation &over) { return over.polynomial(degree, false); });
}

double power(double x, int exponent)
{
    double result = 1;
    for (int k = 0; k < exponent; ++k)
        result *= x;
    return result;
}

// Every sum in a pass of its own, every power from the start.
Series straightPolynomial(const Series &in, int degree)
{
    const std::size_t size = std::size_t(degree) + 1;
    const int count = int(in.size());
    std::vector<Series> a(size, Series(size, 0.0));
    Series b(size, 0.0);
    for (int r = 0; r <= degree; ++r) {
        for (int i = 0; i < count; ++i)
            b[std::size_t(r)] += power(i, r) * in[std::size_t(i)];
        for (int c = 0; c <= degree; ++c)
            for (int i = 0; i < count; ++i)
                a[std::size_t(r)][std::size_t(c)] += power(i, r + c);
    }
    for (std::size_t r = 0; r < size; ++r)
        for (std::size_t row = r + 1; row < size; ++row) {
            const double factor = a[row][r] / a[r][r];
            for (std::size_t c = 0; c < size; ++c)
                a[row][c] -= a[r][c] * factor;
            b[row] -= b[r] * factor;
        }
    for (std::size_t r = size; r-- > 0;) {
        for (std::size_t c = r + 1; c < size; ++c)
            b[r] -= a[r][c] * b[c];
        b[r] /= a[r][r];
    }
    Series out(in.size(), 0.0);
    for (int i = 0; i < count; ++i)
        for (int j = 0; j <= degree; ++j)
            out[std::size_t(i)] += b[std::size_t(j)] * power(i, j);
    return out;
}

// The piecewise line through fully sorted blocks, point by point.
Series straightMedianLine(const Series &in, int len)
{
    const int count = int(in.size());
    const int half = len / 2;
    Series medians;
    medians.reserve(in.size());
    for (int b = 0; b < count / len; ++b) {
        Series block(in.begin() + b * len, in.begin() + (b + 1) * len);
        std::sort(block.begin(), block.end());
        medians.push_back(block[std::size_t(half - 1)]);
    }
    Series out(in.size(), medians.back());
    std::fill_n(out.begin(), half, medians[0]);
    double *const line = out.data();
    for (int b = 0; b < int(medians.size()); ++b) {
        const double median = medians[std::size_t(b)];
        line[b * len + half] = median; // centre of an odd block
        for (int t = 0; b > 0 && t < 2 * half; ++t) {
            const double before = medians[std::size_t(b - 1)];
            line[b * len - half + t] = before + t * (median - before) / len;
        }
    }
    return out;
}

// The line through block means, as a rule for each point.
Series straightLinearLine(const Series &in, int len)
{
    const int count = int(in.size());
    const int half = len / 2;
    Series means;
    for (int b = 0; b < count / len; ++b) {
        double sum = 0;
        for (int i = 0; i < len; ++i)
            sum += in.data()[b * len + i];
        means.push_back(sum / len);
    }
    const auto meanOf = [&means](int b) {
        return means[std::min(std::size_t(b), means.size() - 1)];
    };
    Series out;
    int anchor = half;
    double from = meanOf(0);
    double to = meanOf(1);
    int s = 1;
    for (int i = 0; i < count; ++i) {
        if (i < half) {
            out.push_back(means.front());
        } else if (i > count - half) {
            out.push_back(means.back());
        } else {
            out.push_back(from + (i - anchor) * (to - from) / len);
            if (i > s * len + half) {
                anchor = i;
                from = meanOf(s);
                to = meanOf(s + 1);
                ++s;
            }
        }
    }
    return out;
}

} // namespace

class TestApproximation : public QObject {
    Q_OBJECT

private slots:
    void medianOfHandWorkedBlocks_data();
    void medianOfHandWorkedBlocks();
    void linesEqualStraightOnes_data();
    void linesEqualStraightOnes();
    void medianOfAwkwardValues();
    void linearLineByHand();
    void stepMeanLeavesTheTail();
    void polynomialEqualsStraightOne();
    void polynomialOfDegreeFiveIsReproduced();
    void extremaOfCubic_data();
    void extremaOfCubic();
    void outputMayBeInput();
    void refusals_data();
    void refusals();
    void refusesTooLargeDegree();
    void approxMedianChecks();
    void deductsAndRefuses();
    void sigmaAndNormalise();
};

void TestApproximation::medianOfHandWorkedBlocks_data()
{
    QTest::addColumn<Series>("in");
    QTest::addColumn<int>("len");
    QTest::addColumn<Series>("line");
    // Medians 4 and 9 give 4 + t x 5 / 4 from the centre at 2 on.
    QTest::newRow("even blocks: lower of the middle values")
        << Series{8, 2, 6, 4, 12, 9, 8, 20} << 4 << Series{4, 4, 4, 5.25, 6.5, 7.75, 9, 9};
    QTest::newRow("tail that fills no block has the last median")
        << Series{1, 1, 1, 1, 5, 5, 5, 5, 99, 99, 99} << 4
        << Series{1, 1, 1, 2, 3, 4, 5, 5, 5, 5, 5};
    QTest::newRow("odd blocks: rank below the middle, its value at the centre")
        << Series{3, 1, 2, 4, 6, 5} << 3 << Series{1, 1, 1, 2, 4, 4};
    QTest::newRow("single whole block") << Series{3, 1, 2, 4, 9} << 4 << Series{2, 2, 2, 2, 2};
}

void TestApproximation::medianOfHandWorkedBlocks()
{
    QFETCH(Series, in);
    QFETCH(int, len);
    QFETCH(Series, line);
    QCOMPARE(medianLine(in, len), line);
}

void TestApproximation::linesEqualStraightOnes_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("len");
    QTest::newRow("whole blocks") << 1024 << 256;
    QTest::newRow("tail") << 1000 << 256;
    QTest::newRow("one block") << 300 << 256;
    QTest::newRow("one point beyond a block") << 257 << 256;
    QTest::newRow("odd blocks with a tail") << 1000 << 37;
    QTest::newRow("odd blocks") << 27 << 3;
    QTest::newRow("smallest") << 4 << 3;
    QTest::newRow("many small blocks") << 5000 << 4;
    QTest::newRow("one less than two blocks") << 255 << 128;
    QTest::newRow("stretch of an analysis") << 16384 << 128;
}

void TestApproximation::linesEqualStraightOnes()
{
    QFETCH(int, count);
    QFETCH(int, len);
    const Series in = noise(count);
    QCOMPARE(medianLine(in, len), straightMedianLine(in, len));
    QCOMPARE(linearLine(in, len), straightLinearLine(in, len));
    QCOMPARE(linearLine(in, 2), straightLinearLine(in, 2));
    if (count / len >= 2)
        QCOMPARE(Tools::approxMedian(in, len), straightMedianLine(in, len));
}

// Values whose quarter points are always the smallest that are left when each pass drops two
// of them and reverses the rest.
Series valuesAgainstPivots(int count)
{
    std::vector<int> left(static_cast<std::size_t>(count));
    std::iota(left.begin(), left.end(), 0);
    Series values(left.size());
    for (double next = 0; !left.empty(); std::reverse(left.begin(), left.end())) {
        for (const std::size_t at : {left.size() - 1 - left.size() / 4, left.size() / 4}) {
            if (at >= left.size())
                continue;
            values[std::size_t(left[at])] = next++;
            left.erase(left.begin() + qint64(at));
        }
    }
    return values;
}

// Orders of values that a careless selection falls over.
void TestApproximation::medianOfAwkwardValues()
{
    constexpr int len = 2000;
    Series rising(len + 1);
    for (std::size_t i = 0; i < rising.size(); ++i)
        rising[i] = double(i);
    Series organPipe = rising;
    for (std::size_t i = 0; i < organPipe.size(); ++i)
        organPipe[i] = double(std::min(i, organPipe.size() - i));
    Series few = rising;
    for (double &value : few)
        value = std::fmod(value * 7, 3);
    for (const Series &in : {rising, Series(rising.rbegin(), rising.rend()), organPipe, few,
                             valuesAgainstPivots(len + 1)})
        QCOMPARE(medianLine(in, len), straightMedianLine(in, len));

    QCOMPARE(medianLine({notANumber, 2, notANumber, 1, 0}, 4),
             Series(5, 2.0)); // ranks 1, 2, notANumber, notANumber
    QVERIFY(std::isnan(medianLine({notANumber, 2, notANumber, notANumber, 0}, 4)[0]));
}

// Means 1, 5, 3 of blocks of 4. The first line rises by 1 per point from 2 on; it is left
// behind point 7 = 4 + 2 + 1, where it has reached 6, and the next one begins at that point
// with 5, falling by 1/2; behind 12 - 2 the last mean holds.
void TestApproximation::linearLineByHand()
{
    const Series in = {1, 1, 1, 1, 5, 5, 5, 5, 3, 3, 3, 3};
    QCOMPARE(linearLine(in, 4), Series({1, 1, 1, 2, 3, 4, 5, 6, 4.5, 4, 3.5, 3}));
}

void TestApproximation::stepMeanLeavesTheTail()
{
    const Series in = {1, 2, 6, 2, 3, 4, 7, 8};
    const Series out = guarded(in, [](Approximation &over) { return over.stepMean(3); });
    QCOMPARE(out, Series({3, 3, 3, 3, 3, 3, guard, guard}));
}

void TestApproximation::polynomialEqualsStraightOne()
{
    for (const int degree : {1, 2, 3, 5, 8})
        for (const int count : {9, 100, 3001})
            QCOMPARE(polynomial(noise(count), degree), straightPolynomial(noise(count), degree));
}

void TestApproximation::polynomialOfDegreeFiveIsReproduced()
{
    Series in(16384);
    double largest = 0;
    for (std::size_t i = 0; i < in.size(); ++i) {
        const double x = double(i) / 8192 - 1;
        in[i] = 3 + x * (-2 + x * (5 + x * (7 + x * (-11 + x * 4))));
        largest = std::max(largest, std::abs(in[i]));
    }
    const Series out = polynomial(in, 5);
    QCOMPARE(out.size(), in.size());
    // The equations of degree 5 over 0 .. count lose some eight of sixteen digits.
    for (std::size_t i = 0; i < in.size(); ++i)
        QVERIFY2(std::abs(out[i] - in[i]) < 1e-6 * largest, qPrintable(QString::number(i)));
}

void TestApproximation::extremaOfCubic_data()
{
    QTest::addColumn<double>("first"); // roots of the derivative
    QTest::addColumn<double>("second");
    QTest::addColumn<double>("chosen");
    QTest::newRow("both inside: the first") << 20.0 << 60.0 << 20.0;
    QTest::newRow("first before the beginning") << -20.0 << 60.0 << 60.0;
    QTest::newRow("both outside") << -20.0 << 120.0 << 0.0;
}

// x^3 / 3 - (p + q) x^2 / 2 + p q x turns at p and q.
void TestApproximation::extremaOfCubic()
{
    QFETCH(double, first);
    QFETCH(double, second);
    QFETCH(double, chosen);
    const auto cubic = [&](double x) {
        return x * x * x / 3 - (first + second) * x * x / 2 + first * second * x;
    };
    Series in(100);
    for (std::size_t i = 0; i < in.size(); ++i)
        in[i] = cubic(double(i));
    Series out(in.size());
    Approximation over(in.data(), out.data(), 100);
    QVERIFY(over.polynomial(3, true));
    const Approximation::Extrema found = over.extrema();
    const auto near = [](double value, double expected) {
        return std::abs(value - expected) < 1e-6 * std::max(1.0, std::abs(expected));
    };
    QVERIFY(near(found.firstPosition, first));
    QVERIFY(near(found.firstValue, cubic(first)));
    QVERIFY(near(found.secondPosition, second));
    QVERIFY(near(found.secondValue, cubic(second)));
    QCOMPARE(found.inside, chosen != 0);
    QVERIFY(near(found.position, chosen));
    QVERIFY(near(found.value, chosen != 0 ? cubic(chosen) : 0));
}

void TestApproximation::outputMayBeInput()
{
    const Series in = noise(999);
    const Operation operations[] = {
        [](Approximation &over) { return over.medianLine(7); },
        [](Approximation &over) { return over.linearLine(2); },
        [](Approximation &over) { return over.linearLine(7); },
        [](Approximation &over) { return over.polynomial(5, false); },
    };
    for (const Operation &operation : operations) {
        Series both = in;
        Approximation over(both.data(), both.data(), int(both.size()));
        QVERIFY(operation(over));
        QCOMPARE(both, guarded(in, operation));
    }
}

void TestApproximation::refusals_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<int>("count"); // -1: no input, -2: no output
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, int count, const char *line, const Operation &operation) {
        QTest::newRow(name) << operation << count << QString(line);
    };
    const auto polynomialOf = [](int degree) -> Operation {
        return [degree](Approximation &over) { return over.polynomial(degree, false); };
    };
    const auto medianOf = [](int len) -> Operation {
        return [len](Approximation &over) { return over.medianLine(len); };
    };
    const auto linearOf = [](int len) -> Operation {
        return [len](Approximation &over) { return over.linearLine(len); };
    };
    const auto stepOf = [](int len) -> Operation {
        return [len](Approximation &over) { return over.stepMean(len); };
    };
    row("degree 0", 10, "Error: k < 1!", polynomialOf(0));
    row("degree before count", 0, "Error: k < 1!", polynomialOf(0));
    row("polynomial of nothing", 0, "Error: count = 0!", polynomialOf(5));
    row("polynomial without input", -1, "Error: count = 0!", polynomialOf(5));
    row("polynomial without output", -2, "Error: count = 0!", polynomialOf(5));
    row("as many points as the degree", 5, "Error: countIn <= k!", polynomialOf(5));
    row("median of two", 10, "Error: len =2", medianOf(2));
    row("median of one block only", 10, "Error: count <= len!", medianOf(10));
    row("median without input", -1, "Error: bad dataIn!", medianOf(3));
    row("median without output", -2, "Error: bad dataOut!", medianOf(3));
    row("line of one", 10, "Error: len =1", linearOf(1));
    row("line of nothing", 0, "Error: count = 0!", linearOf(2));
    row("line of one block only", 10, "Error: count <= len!", linearOf(10));
    row("steps of one", 10, "Error: len =1", stepOf(1));
    row("steps without output", -2, "Error: count = 0!", stepOf(2));
    row("steps of one block only", 10, "Error: count <= len!", stepOf(10));
}

void TestApproximation::refusals()
{
    QFETCH(Operation, operation);
    QFETCH(int, count);
    QFETCH(QString, line);
    const Series in(10, 1.0);
    Series out(10, guard);
    Approximation over(count == -1 ? nullptr : in.data(), count == -2 ? nullptr : out.data(),
                       count < 0 ? 10 : count);
    QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    QVERIFY(!operation(over));
    QCOMPARE(out, Series(10, guard));
}

// 999^(2 x 51) is 10^305.96, 999^(2 x 52) would be 10^311.95.
void TestApproximation::refusesTooLargeDegree()
{
    QCOMPARE(int(polynomial(noise(1000), 50).size()), 1000);
    QTest::ignoreMessage(QtDebugMsg, "Error: k is too large! k=52 count=1000");
    QVERIFY(polynomial(noise(1000), 52).empty());
}

void TestApproximation::approxMedianChecks()
{
    QTest::ignoreMessage(QtDebugMsg, "Error approxMedian(): count=2 len =3");
    QVERIFY(Tools::approxMedian({1, 2}, 3).empty());
    QTest::ignoreMessage(QtDebugMsg, "Error approxMedian(): count=6 len =2");
    QVERIFY(Tools::approxMedian({1, 2, 3, 4, 5, 6}, 2).empty());
    QTest::ignoreMessage(QtDebugMsg, "Error approxMedian(): count=5 len =3");
    QVERIFY(Tools::approxMedian({1, 2, 3, 4, 5}, 3).empty());
    QCOMPARE(Tools::approxMedian({3, 1, 2, 4, 6, 5}, 3), Series({1, 1, 1, 2, 4, 4}));
}

void TestApproximation::deductsAndRefuses()
{
    const Series a = {5, 7, 9};
    const Series b = {1, 2, 30};
    Series out(5, guard);
    QVERIFY(Tools::deduct(a.data(), b.data(), out.data() + 1, 3));
    QCOMPARE(out, Series({guard, 4, 5, -21, guard}));

    QTest::ignoreMessage(QtDebugMsg, "Error: bad countIn!");
    QVERIFY(!Tools::deduct(a.data(), b.data(), out.data(), 1));
    QTest::ignoreMessage(QtDebugMsg, "Error: bad dataIn1!");
    QVERIFY(!Tools::deduct(nullptr, b.data(), out.data(), 3));
    QTest::ignoreMessage(QtDebugMsg, "Error: bad dataIn2!");
    QVERIFY(!Tools::deduct(a.data(), nullptr, out.data(), 3));
    QTest::ignoreMessage(QtDebugMsg, "Error: bad dataOut0!");
    QVERIFY(!Tools::deduct(a.data(), b.data(), nullptr, 3));
}

void TestApproximation::sigmaAndNormalise()
{
    Series series = {guard, 1, 3, 5, 7, guard}; // deviations -3 -1 1 3: root of 20 / 3
    const double expected = std::sqrt(20.0 / 3);
    QCOMPARE(Tools::sigma(series.data() + 1, 4), expected);
    QVERIFY(Tools::normalise(series.data() + 1, 4));
    QCOMPARE(series,
             Series({guard, 1 / expected, 3 / expected, 5 / expected, 7 / expected, guard}));

    Series constant = {2, 2, 2};
    QCOMPARE(Tools::sigma(constant.data(), 1), 0.0);
    QVERIFY(Tools::normalise(constant.data(), 3));
    QVERIFY(Tools::normalise(constant.data(), 1));
    QCOMPARE(constant, Series(3, 2.0));
    QTest::ignoreMessage(QtDebugMsg, "Tools::normalise(): bad count=0");
    QVERIFY(!Tools::normalise(constant.data(), 0));
}

ZRT_UNIT_TEST_MAIN(TestApproximation)
#include "tst_approximation.moc"
