#include "calc/actions.h"
#include "calc/pulsar/needs.h"
#include "calc/pulsar/runanalysis.h"
#include "calc/pulsar/searchffa.h"
#include "calc/samples.h"
#include "support/peakmemory.h"

using namespace TestSupport;

// The memory that analyses promise to stay within, which the batch program's gate and the forms
// rely on, against what they take.

namespace {

constexpr int npoints = 130000;

ObservationData recording()
{
    const Series values = noise(npoints, 3, 5);
    return makeRecording({npoints, 1, 34, 1}, [&values](int p, int, int c, int) {
        // What is no number makes the analysis copy the samples.
        return p == 100 * c ? NAN : float(100 + values[std::size_t((p + 1000 * c) % npoints)]);
    });
}

PulsarParameters given(void (*change)(PulsarParameters &) = nullptr)
{
    PulsarParameters parameters = parametersFor(30, 40);
    parameters.firstPoint = 0;
    if (change)
        change(parameters);
    return parameters;
}

} // namespace

using P = PulsarParameters;

class TestAnalysisBytes : public QObject {
    Q_OBJECT

private slots:
    void staysWithinItsPromise();
};

void TestAnalysisBytes::staysWithinItsPromise()
{
    if (!PeakMemory().isKnown())
        QSKIP("The system does not tell the peak of the memory.");
    const ObservationData data = recording();
    const struct {
        const char *action;
        PulsarParameters parameters;
    } rows[] = {
        {"showNative", given([](P &p) {
             p.points = npoints;
             p.noise = "median";
         })},
        {"sumPeriod", given()},
        {"sumPeriod", given([](P &p) {
             p.deleteStep = true;
             p.normalise = true;
             p.noise = "backSum";
         })},
        {"sumPeriodOfBands", given([](P &p) { p.noise = "backSum"; })},
        {"sumPeriodOfBands", given([](P &p) { p.cut = "hum,33"; })},
        {"sumChannels", given([](P &p) {
             p.points = npoints / 2;
             p.noise = "backSum";
         })},
        {"sumChannels", given([](P &p) {
             p.points = npoints / 2;
             p.deleteStep = true;
         })},
        {"sumChannelsAndFourier", given([](P &p) {
             p.withNull = true;
             p.noise = "backSum";
             p.cut = "hum,33";
         })},
        {"sumMultiDispersions", given([](P &p) { p.averageCount = 7; })},
        {"createFFA", given([](P &p) {
             p.ffa.period_min = 1;
             p.ffa.period_max = 1.02;
             p.cut = "33";
         })},
        {"createFFA", given([](P &p) {
             p.ffa.period_min = 20;
             p.ffa.period_max = 20.5;
             p.ffa.deredden = false;
         })},
        {"createFFA", given([](P &p) {
             p.ffa.period_min = 10;
             p.ffa.period_max = 10.2;
             p.ffa.bins_min = 800;
             p.ffa.bins_max = 999;
             p.deleteStep = true;
         })},
    };
    for (const auto &[action, parameters] : rows) {
        const Problems problems = findProblems(action, data, parameters);
        QVERIFY2(problems.empty(), problems.empty() ? "" : qPrintable(problems[0].text));
        const qint64 promised = findBytes(action, data, parameters);
        const PeakMemory peak;
        if (QByteArray(action) == "createFFA")
            QVERIFY(searchFfa({data, parameters, {}, 20}, {}).result.ffa);
        else
            QVERIFY(runAnalysis(action, data, parameters, {}).isWhole());
        const qint64 taken = peak.bytes();
        const QByteArray text = QString("%1 took %2 of %3 KiB")
                                    .arg(action)
                                    .arg(taken / 1024)
                                    .arg(promised / 1024)
                                    .toLatin1();
        QVERIFY2(taken <= promised, text);
        QVERIFY2(promised < 2.5 * double(taken) + (8 << 20), text);
    }
}

ZRT_UNIT_TEST_MAIN(TestAnalysisBytes)
#include "tst_analysisbytes.moc"
