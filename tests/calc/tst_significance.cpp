#include "calc/significance.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <random>

using namespace Tools;

class TestSignificance : public QObject {
    Q_OBJECT

private slots:
    void closedForms();
    void farTails();
    void trials();
    void weightedSums();
};

// Sums of whole numbers of exponentials have finite series, the normal tail has known values.
void TestSignificance::closedForms()
{
    for (const double x : {0.01, 1.0, 7.3, 300.0, 5000.0}) {
        const auto isClose = [](double one, double other) {
            return std::abs(one - other) <= 1e-12 * std::abs(other);
        };
        QVERIFY(isClose(logGammaTail(1, x), -x));
        QVERIFY(isClose(logGammaTail(2, x), -x + std::log1p(x)));
        QVERIFY(isClose(logGammaTail(3, x), -x + std::log1p(x + x * x / 2)));
    }
    QCOMPARE(logGammaTail(5, 0), 0.0);
    QVERIFY(std::isinf(logGammaTail(5, 1.0 / 0.0)));
    QVERIFY(std::isnan(logGammaTail(0, 1)));
    QVERIFY(std::abs(sigmaOfTail(std::log(0.15865525393145707)) - 1) < 1e-12);
    QVERIFY(std::abs(sigmaOfTail(std::log(0.9986501019683699)) + 3) < 1e-10);
    QVERIFY(std::abs(sigmaOfTail(std::log(2.8665157187919391e-07)) - 5) < 1e-12);
    QVERIFY(std::isinf(sigmaOfTail(-1.0 / 0.0)) && std::isinf(sigmaOfTail(0)));
}

// There and back, over the seam between doubles and logarithms.
void TestSignificance::farTails()
{
    for (const double sigma : {-8.0, -1.0, 0.0, 3.0, 29.999, 30.001, 37.0, 38.5, 100.0, 1e4}) {
        const double tail = logNormalTail(sigma);
        QVERIFY(std::abs(sigmaOfTail(tail) - sigma) < 1e-9 * (1 + std::abs(sigma)));
        for (const double shape : {1.0, 30.0, 365.0 * 16}) {
            const double power = powerAtSigma(shape, sigma, 1000);
            QVERIFY(sigma < -1 || std::abs(sigmaOfPower(shape, power, 1000) - sigma) <
                                      1e-8 * (1 + sigma * sigma));
        }
        // The asymptotic series to 1 / x^6.
        const double x = sigma * sigma;
        if (sigma >= 30)
            QVERIFY(std::abs(tail - (-x / 2 - std::log(sigma * std::sqrt(2 * M_PI)) +
                                     std::log1p(-1 / x + 3 / (x * x) - 15 / (x * x * x)))) < 1e-9);
    }
}

void TestSignificance::trials()
{
    const double p = 1e-3;
    QVERIFY(std::abs(std::exp(logTailOfTrials(std::log(p), 1000)) - (1 - std::pow(1 - p, 1000))) <
            1e-12);
    QVERIFY(std::abs(logTailOfTrials(-35.99, 1e6) - logTailOfTrials(-36.01, 1e6) - 0.02) < 1e-9);
    QCOMPARE(logTailOfTrials(-1e5, 8192), -1e5 + std::log(8192.0));
    QCOMPARE(logTailOfTrials(-40, 1e30), 0.0);
    QCOMPARE(logTailOfTrials(-1, 1), -1.0);
}

// Against simulated sums, down to a tail of 1e-3 (400 of 400000: 5 % of chance), and against
// the Gamma distribution where the weights are equal.
void TestSignificance::weightedSums()
{
    std::vector<double> rising;
    for (int day = 1; day <= 30; ++day)
        rising.push_back(day / 15.0);
    const struct {
        std::vector<double> weights;
        double each, tolerance; // of the probability
    } rows[] = {{{2}, 1, 0.17},
                {std::vector<double>(30, 1.0), 1, 0.01},
                {{10, 1, 1, 1, 1}, 1, 0.17}, // one day rules
                {rising, 2, 0.03}};          // a month, two harmonics
    for (const auto &[weights, each, tolerance] : rows) {
        const int count = 400000;
        std::mt19937_64 random(1234);
        std::gamma_distribution<double> powers(each, 1);
        std::vector<double> sums(count, 0.0);
        for (double &sum : sums) {
            for (const double weight : weights)
                sum += weight * powers(random);
        }
        std::sort(sums.begin(), sums.end());
        for (const double tail : {0.9, 0.5, 0.1, 0.01, 1e-3}) {
            const double x = sums[std::size_t((1 - tail) * count)];
            const double chance = 3 / std::sqrt(tail * count);
            const double told = std::exp(logWeightedTail(weights, each, x));
            QVERIFY2(std::abs(told / tail - 1) < tolerance + chance,
                     qPrintable(QString("%1 at %2").arg(told).arg(tail)));
        }
        if (weights.front() != weights.back())
            continue;
        for (const double sigma : {0.0, 3.0, 8.0, 50.0}) {
            const double power = powerAtSigma(double(weights.size()) * each, sigma);
            const double told = logWeightedTail(weights, each, power * weights[0]);
            QVERIFY(std::abs(told - logNormalTail(sigma)) < tolerance + 1e-6);
        }
    }
}

ZRT_UNIT_TEST_MAIN(TestSignificance)
#include "tst_significance.moc"
