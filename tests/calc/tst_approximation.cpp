#include "calc/approximation.h"
#include "calc/samples.h"
#include "straightcalc.h"

#include <limits>
#include <numeric>

using namespace TestSupport;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr auto medianLine = &Approximation::medianLine;
constexpr auto linearLine = &Approximation::linearLine;
constexpr auto polynomial = &Approximation::polynomial;

// The line in an array of its own; empty when it has other values in place of the input.
template <typename Line, typename... Arguments>
Series applied(Series in, Line line, Arguments... arguments)
{
    const int count = int(in.size());
    const Series out = guarded(count, [&](double *to) {
        return (Approximation(in.data(), to, count).*line)(arguments...);
    });
    const bool done =
        !out.empty() && (Approximation(in.data(), in.data(), count).*line)(arguments...);
    return done && in == out ? out : Series();
}

double power(double x, int exponent)
{
    double result = 1;
    for (int k = 0; k < exponent; ++k)
        result *= x;
    return result;
}

// The line through block means, as a rule for each point.
Series straightLinearLine(const Series &in, int len)
{
    const int last = int(in.size()) / len - 1;
    const auto meanOf = [&](int block) {
        const auto begin = in.begin() + std::min(block, last) * len;
        return std::accumulate(begin, begin + len, 0.0) / len;
    };
    const int half = len / 2;
    Series out(in.size(), meanOf(last));
    std::fill_n(out.begin(), half, meanOf(0));
    for (int i = half, anchor = half, s = 0; i <= int(in.size()) - half; ++i) {
        out[std::size_t(i)] = meanOf(s) + (i - anchor) * (meanOf(s + 1) - meanOf(s)) / len;
        if (i > (s + 1) * len + half) {
            anchor = i;
            ++s;
        }
    }
    return out;
}

// Values whose quarter points are always the smallest that are left when each pass drops two
// of them and reverses the rest.
Series valuesAgainstPivots(int count)
{
    Series left(static_cast<std::size_t>(count));
    std::iota(left.begin(), left.end(), 0.0);
    Series values(left.size());
    for (double next = 0; !left.empty(); std::reverse(left.begin(), left.end()))
        for (const std::size_t at : {left.size() - 1 - left.size() / 4, left.size() / 4})
            if (at < left.size()) {
                values[std::size_t(left[at])] = next++;
                left.erase(left.begin() + qint64(at));
            }
    return values;
}

} // namespace

class TestApproximation : public QObject {
    Q_OBJECT

private slots:
    void linesByHand();
    void equalsStraightLines();
    void medianOfAwkwardValues();
    void cubicAndItsExtrema();
    void deductsAndNormalises();
    void clearsWhatRoundingLeaves();
    void refusals_data();
    void refusals() { checkRefusal(); }
};

void TestApproximation::linesByHand()
{
    // Medians 4 and 9 give 4 + t x 5 / 4 from the centre at 2 on.
    QCOMPARE(applied({8, 2, 6, 4, 12, 9, 8, 20}, medianLine, 4),
             Series({4, 4, 4, 5.25, 6.5, 7.75, 9, 9}));
    // Rank 0 of 3 values, itself at the centre of an odd block.
    QCOMPARE(applied({3, 1, 2, 4, 6, 5}, medianLine, 3), Series({1, 1, 1, 2, 4, 4}));
    // Means 1, 5, 3. The first line rises by 1 per point from 2 on; it is left behind point
    // 7 = 4 + 2 + 1, where it has reached 6, and the next one begins at that point with 5,
    // falling by 1/2; behind 12 - 2 the last mean holds.
    QCOMPARE(applied({1, 1, 1, 1, 5, 5, 5, 5, 3, 3, 3, 3}, linearLine, 4),
             Series({1, 1, 1, 2, 3, 4, 5, 6, 4.5, 4, 3.5, 3}));
    const Series in = {1, 2, 6, 2, 3, 4, 7, 8};
    const Series steps =
        guarded(8, [&in](double *out) { return Approximation(in.data(), out, 8).stepMean(3); });
    QCOMPARE(steps, Series({3, 3, 3, 3, 3, 3, guard, guard})); // the tail belongs to no step
}

void TestApproximation::equalsStraightLines()
{
    // Whole blocks, one point beyond one, odd ones with a tail, the smallest, many small ones, and
    // one point less than two.
    for (const auto &[count, len] :
         {std::pair(1024, 256), {257, 256}, {1000, 37}, {4, 3}, {5000, 4}, {255, 128}}) {
        const Series in = noise(count);
        Series expected = in;
        straightMedianLine(in, expected, len);
        QCOMPARE(applied(in, medianLine, len), expected);
        if (count / len >= 2)
            QCOMPARE(Tools::approxMedian(in, len), expected);
        for (const int block : {2, len})
            QCOMPARE(applied(in, linearLine, block), straightLinearLine(in, block));
        for (const int degree : {1, 2, 3, 5, 8}) {
            if (degree >= count)
                break;
            straightPolynomial(in, expected, degree, power);
            QCOMPARE(applied(in, polynomial, degree, false), expected);
        }
    }
}

// Orders of values that a careless selection falls over.
void TestApproximation::medianOfAwkwardValues()
{
    Series rising(2001);
    std::iota(rising.begin(), rising.end(), 0.0);
    Series expected = rising;
    for (const Series &in : {rising, valuesAgainstPivots(2001)}) {
        straightMedianLine(in, expected, 2000);
        QCOMPARE(applied(in, medianLine, 2000), expected);
    }
    // Not-a-numbers rank last.
    QCOMPARE(applied({notANumber, 2, notANumber, 1, 0}, medianLine, 4), Series(5, 2.0));
}

// x^3 / 3 - (p + q) x^2 / 2 + p q x turns at p and q.
void TestApproximation::cubicAndItsExtrema()
{
    const auto near = [](double value, double expected) {
        return std::abs(value - expected) < 1e-6 * std::max(1.0, std::abs(expected));
    };
    using Roots = std::array<double, 3>; // p, q and the one inside, if any
    for (const auto &[p, q, inside] : {Roots{20, 60, 20}, Roots{-20, 60, 60}, Roots{-20, 120, 0}}) {
        const auto cubic = [p = p, q = q](double x) {
            return x * x * x / 3 - (p + q) * x * x / 2 + p * q * x;
        };
        Series in(100);
        for (std::size_t i = 0; i < in.size(); ++i)
            in[i] = cubic(double(i));
        Series out(in.size());
        Approximation over(in.data(), out.data(), 100);
        QVERIFY(over.polynomial(3, true));
        QVERIFY(std::equal(in.begin(), in.end(), out.begin(), near));
        const Approximation::Extrema found = over.extrema();
        QVERIFY(near(found.firstPosition, p) && near(found.firstValue, cubic(p)));
        QVERIFY(near(found.secondPosition, q) && near(found.secondValue, cubic(q)));
        QVERIFY(near(found.position, inside) && near(found.value, cubic(inside)));
        QCOMPARE(found.inside, inside != 0);
    }
}

void TestApproximation::deductsAndNormalises()
{
    const Series a = {5, 7, 9};
    const Series b = {1, 2, 30};
    QCOMPARE(guarded(3, [&](double *out) { return Tools::deduct(a.data(), b.data(), out, 3); }),
             Series({4, 5, -21}));
    Series series = {guard, 1, 3, 5, 7, guard}; // deviations -3 -1 1 3: root of 20 / 3
    const double sigma = std::sqrt(20.0 / 3);
    QVERIFY(Tools::normalise(series.data() + 1, 4));
    QCOMPARE(series, Series({guard, 1 / sigma, 3 / sigma, 5 / sigma, 7 / sigma, guard}));
    Series constant = {2, 2, 2};
    QVERIFY(Tools::normalise(constant.data(), 3) && Tools::normalise(constant.data(), 1));
    QCOMPARE(constant, Series(3, 2.0));
}

void TestApproximation::clearsWhatRoundingLeaves()
{
    const Series level(16384, 32 * double(445400.3F));
    Series rest(level.size());
    QVERIFY(Approximation(level.data(), rest.data(), 16384).polynomial(5, false));
    QVERIFY(Tools::deduct(level.data(), rest.data(), rest.data(), 16384));
    QVERIFY2(rest != Series(level.size(), 0.0), "the polynomial rounds");
    Tools::clearResidue(level.data(), rest.data(), 16384);
    QCOMPARE(rest, Series(level.size(), 0.0));

    // One sample of one band that differs by the last bit of a float is none of it.
    Series almost = level;
    almost[100] += 0.03125;
    rest.assign(level.size(), 0.0);
    rest[100] = 0.03125;
    const Series before = rest;
    Tools::clearResidue(almost.data(), rest.data(), 16384);
    QCOMPARE(rest, before);
    rest[7] = notANumber;
    rest[100] = 0;
    Tools::clearResidue(almost.data(), rest.data(), 16384);
    QVERIFY(std::isnan(rest[7]));
}

void TestApproximation::refusals_data()
{
    QTest::addColumn<Operation>("operation");
    static const Series ones(1000, 1.0);
    const double *const in = ones.data();
    double *const out = untouched.data();
    const Approximation ten(in, out, 10);
    refusalRow("Error: k < 1!", polynomial, Approximation(in, out, 0), 0, false);
    refusalRow("Error: count = 0!", polynomial, Approximation(nullptr, out, 10), 5, false);
    refusalRow("Error: countIn <= k!", polynomial, Approximation(in, out, 5), 5, false);
    // 999^(2 x 51) is 10^305.96, 999^(2 x 52) would be 10^311.95.
    refusalRow("Error: k is too large! k=52 count=1000", polynomial, Approximation(in, out, 1000),
               52, false);
    refusalRow("Error: len =2", medianLine, ten, 2);
    refusalRow("Error: count <= len!", medianLine, ten, 10);
    refusalRow("Error: bad dataIn!", medianLine, Approximation(nullptr, out, 10), 3);
    refusalRow("Error: bad dataOut!", medianLine, Approximation(in, nullptr, 10), 3);
    refusalRow("Error: len =1", linearLine, ten, 1);
    refusalRow("Error: count <= len!", &Approximation::stepMean, ten, 10);
    const auto median = [](int count, int len) {
        return !Tools::approxMedian(noise(count), len).empty();
    };
    refusalRow("Error approxMedian(): count=2 len =3", median, 2, 3);
    refusalRow("Error approxMedian(): count=6 len =2", median, 6, 2);
    refusalRow("Error approxMedian(): count=5 len =3", median, 5, 3);
    refusalRow("Error: bad countIn!", Tools::deduct, in, in, out, 1);
    refusalRow("Error: bad dataIn1!", Tools::deduct, nullptr, in, out, 3);
    refusalRow("Error: bad dataIn2!", Tools::deduct, in, nullptr, out, 3);
    refusalRow("Error: bad dataOut0!", Tools::deduct, in, in, nullptr, 3);
    refusalRow("Tools::normalise(): bad count=0", Tools::normalise, out, 0);
}

ZRT_UNIT_TEST_MAIN(TestApproximation)
#include "tst_approximation.moc"
