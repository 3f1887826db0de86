#include "calc/actions.h"

#include <random>

using namespace TestSupport;

class TestPulsarReports : public QObject {
    Q_OBJECT

private slots:
    void foldTellsItsNoise();
};

// What noise reaches is told from folds beside, drift included; coarse samples have a noise.
void TestPulsarReports::foldTellsItsNoise()
{
    PulsarParameters parameters = parametersFor(0, 1);
    parameters.period = 0.71452;
    parameters.noise = "without";
    // White noise of sigma 1, and noise of sigma `drift` that forgets itself over 50 samples.
    const auto fold = [&](double drift, double step) {
        std::mt19937 random(4);
        std::normal_distribution<double> normal;
        double level = 0;
        return resultOf("sumPeriod",
                        TestSupport::makeRecording(
                            {40000},
                            [&](int, int, int c, int) {
                                if (c > 0)
                                    return 0.0F; // the first channel is folded
                                level = 0.98 * level + 0.2 * drift * normal(random);
                                return float(step *
                                             std::round((100 + level + normal(random)) / step));
                            }),
                        parameters);
    };
    const auto reached = [](const PulsarResult &result) {
        return numberAfter(result.remarks[0], "unsteady pulses add reaches");
    };
    // The mean of eight folds of 57 bins, each 2.6 +- 0.5.
    const PulsarResult white = fold(0, 1e-4);
    QVERIFY2(std::abs(reached(white) - 2.6) < 0.6, qPrintable(white.remarks[0]));
    QVERIFY(numberAfter(white.description, "S/N =") < 4.5);
    QVERIFY2(reached(fold(2, 1e-4)) > 5, "drift raises what noise reaches");
    const PulsarResult coarse = fold(0, 2.5); // sigma 0.4 of a step
    QVERIFY2(numberAfter(coarse.description, "S/N =") < 4.5, qPrintable(coarse.description));
    QVERIFY2(std::abs(reached(coarse) - 2.6) < 0.6, qPrintable(coarse.remarks[0]));
    QVERIFY2(white.description.contains("\nPeriod = 0.71452\n"), "all digits that were typed");
}

ZRT_UNIT_TEST_MAIN(TestPulsarReports)
#include "tst_pulsarreports.moc"
