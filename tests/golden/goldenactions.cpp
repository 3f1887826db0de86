#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/pulsarcommand.h"
#include "calc/pulsar/runanalysis.h"
#include "data/recordingfile.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QTextStream>
#include <algorithm>
#include <functional>

// Prints what every action of PulsarCalculate makes of one recording with many parameters: the
// texts, the debug lines, and of every series some values and a hash of all its bytes.

namespace {

constexpr int valuesShown = 12; // of a series

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

void printDebugLine(QtMsgType, const QMessageLogContext &, const QString &text)
{
    out() << "  debug: " << text << "\n";
}

template <typename Value>
void printSeries(const QString &name, const std::vector<Value> &values)
{
    out() << "  " << name << ": " << values.size() << " values";
    if (!values.empty()) {
        const std::size_t every = std::max<std::size_t>(1, values.size() / valuesShown);
        for (std::size_t i = 0; i < values.size(); i += every)
            out() << " " << QString::number(double(values[i]), 'g', 9);
        const auto *const bytes = reinterpret_cast<const char *>(values.data());
        const QByteArray view = QByteArray::fromRawData(bytes, int(values.size() * sizeof(Value)));
        // On a line of its own, for it differs where the last digit does.
        out() << "\n  bytes "
              << QCryptographicHash::hash(view, QCryptographicHash::Sha256).toHex().left(16);
    }
    out() << "\n";
}

void printLines(const QString &name, const QString &text)
{
    for (const QString &line : text.split('\n', Qt::SkipEmptyParts))
        out() << "  " << name << ": " << line << "\n";
}

void printSearch(const FfaResult &search)
{
    out() << "  tsamp " << QString::number(search.tsamp, 'g', 17) << "\n";
    printSeries("searched series", search.series);
    printSeries("periods", search.periodogram.periods);
    printSeries("snr", search.periodogram.snr);
}

void printResult(const PulsarResult &result)
{
    for (std::size_t i = 0; i < result.curves.size(); ++i)
        printSeries(QString("curve \"%1\"%2")
                        .arg(result.names.value(int(i)), result.visible[i] ? "" : " hidden"),
                    result.curves[i]);
    out() << "  axis " << int(result.axis.kind) << " from " << result.axis.first << " step "
          << QString::number(result.axis.step, 'g', 17) << " period " << result.axis.period
          << ", points " << result.points << " of " << result.stretch << "\n";
    printSeries("markers", result.markers);
    printLines("description", result.description);
    for (const QString &remark : result.remarks)
        printLines("remark", remark);
    for (const PulsarMultiResult &one : result.multi) {
        out() << "  multi \"" << one.name << "\" " << one.names.join("; ") << "\n";
        printLines("description", one.description);
        for (const std::vector<float> &curve : one.curves)
            printSeries("curve", curve);
    }
    if (result.ffa)
        printSearch(*result.ffa);
}

void runAction(const ObservationData &data, const PulsarParameters &parameters,
               const QString &action)
{
    PulsarCalculate calculate(data, parameters);
    int last = -1;
    bool rises = true;
    QObject::connect(&calculate, &PulsarCalculate::progress, [&](int percent) {
        rises = rises && percent >= last && percent <= 100;
        last = percent;
    });
    const bool done = calculate.run(action);
    out() << "  " << (done ? "done" : "refused") << (rises ? "" : ", progress falls")
          << (calculate.wasCancelled() ? ", cancelled" : "") << ", bands "
          << calculate.bandsSummed() << "\n";
    printLines("failure", calculate.failure());
    if (!calculate.failedParameter().isEmpty())
        out() << "  failed parameter: " << calculate.failedParameter() << "\n";
    printResult(calculate.result());
}

/// Parameters that differ from a starting set in what the name says.
struct Variant {
    const char *name;
    std::function<void(PulsarParameters &)> change;
};

// What more than one action reads, at the ends of its range and beyond.
const std::vector<Variant> variants = {
    {"as given", [](PulsarParameters &) {}},
    {"dispersion 0, median", [](auto &p) { p.dispersion = 0, p.noise = "median"; }},
    {"dispersion 300, normalised", [](auto &p) { p.dispersion = 300, p.normalise = true; }},
    {"dispersion 1e8", [](auto &p) { p.dispersion = 1e8; }},
    {"dispersion -1", [](auto &p) { p.dispersion = -1; }},
    {"dispersion nan", [](auto &p) { p.dispersion = qQNaN(); }},
    {"backSum, deducted", [](auto &p) { p.noise = "backSum", p.deductNoise = true; }},
    {"without baseline, normalised", [](auto &p) { p.noise = "without", p.normalise = true; }},
    {"steps deleted", [](auto &p) { p.deleteStep = true, p.deductNoise = true; }},
    {"steps deleted, first half", [](auto &p) { p.deleteStep = true, p.points = 8192; }},
    {"average 2 with null", [](auto &p) { p.averageCount = 2, p.withNull = true; }},
    {"average 8", [](auto &p) { p.averageCount = 8; }},
    {"average 9", [](auto &p) { p.averageCount = 9; }},
    {"harmonic 8191, sigma 1", [](auto &p) { p.harmonicNum = 8191, p.sigmaMultiple = 1; }},
    {"harmonic 16384", [](auto &p) { p.harmonicNum = 16384; }},
    {"harmonic -1", [](auto &p) { p.harmonicNum = -1; }},
    {"last point", [](auto &p) { p.firstPoint = 25615; }},
    {"beyond the last point", [](auto &p) { p.firstPoint = 58000; }},
    {"before the first point", [](auto &p) { p.firstPoint = -1; }},
    {"module 2", [](auto &p) { p.module = 2; }},
    {"ray 2", [](auto &p) { p.ray = 2; }},
    {"ray 9", [](auto &p) { p.ray = 9; }},
    {"channel 33", [](auto &p) { p.channel = 33; }},
    {"channel 0", [](auto &p) { p.channel = 0; }},
    {"period 2.03, 9000 points", [](auto &p) { p.period = 2.03, p.points = 9000; }},
    {"period 0", [](auto &p) { p.period = 0; }},
    {"100 points", [](auto &p) { p.points = 100; }},
    {"delta 700", [](auto &p) { p.startDelta = 700; }},
    {"delta -1", [](auto &p) { p.startDelta = -1; }},
    {"dispersions with 900",
     [](auto &p) {
         p.dispersions = {900, 0, 26.2, 1};
     }},
    {"dispersions with -2",
     [](auto &p) {
         p.dispersions = {1, -2, 3, 4};
     }},
    {"no dereddening", [](auto &p) { p.ffa.deredden = false, p.ffa.period_max = 1; }},
    {"search of long periods", [](auto &p) { p.ffa.period_min = 20, p.ffa.period_max = 300; }},
    {"search without bins", [](auto &p) { p.ffa.bins_min = 90, p.ffa.wtsp = 1; }},
};

// Enough for every action to succeed on a recording of 20000 points.
PulsarParameters given()
{
    PulsarParameters parameters = pulsarPresets();
    parameters.ray = 1;
    parameters.period = 0.7145;
    parameters.firstPoint = 1500;
    parameters.harmonicNum = 573;
    parameters.dispersions = {0, 13.1, 26.2, 52.4};
    parameters.ffa.period_min = 0.6;
    parameters.ffa.period_max = 1.5;
    return parameters;
}

void runActions(const ObservationData &data)
{
    for (const char *action :
         {"showNative", "sumPeriod", "sumChannelsDemoNoise", "sumChannelsAndAverage",
          "sumChannelsAndFourier", "sum4Dispersions", "sumAllDispersions", "sumMultiDispersions",
          "sumTimeDispersions", "createFFA", "unknown"}) {
        for (const Variant &variant : variants) {
            PulsarParameters parameters = given();
            variant.change(parameters);
            out() << action << ", " << variant.name << "\n";
            runAction(data, parameters, action);
            const QString command = QLatin1String(action) == "createFFA"
                                        ? ffaCommand(parameters, "a b.pnt")
                                        : pulsarCommand(action, parameters, "a b.pnt");
            out() << "  command: " << command << "\n";
        }
    }
}

// The public operations below the actions, on lengths other than the form's.
void runOperations(const ObservationData &data)
{
    for (const Variant &variant : variants) {
        PulsarParameters parameters = given();
        variant.change(parameters);
        PulsarCalculate calculate(data, parameters);
        out() << "operations, " << variant.name << "\n";
        out() << "  ffaPoints " << calculate.ffaPoints() << "\n";
        for (const FieldProblem &problem : findProblems("createFFA", data, parameters))
            out() << "  problem " << problem.field << ": " << problem.text << "\n";
        for (const int count : {1, 300, 4096}) {
            std::vector<double> sum(std::size_t(count), -7.0);
            for (const bool forward : {true, false}) {
                const bool done =
                    calculate.sumChannels(sum.data(), count, parameters.dispersion, forward);
                out() << "  sumChannels " << done << " bands " << calculate.bandsSummed() << "\n";
                printSeries("sum", sum);
            }
            out() << "  sumWithoutNoise "
                  << calculate.sumWithoutNoise(sum.data(), count, parameters.dispersion) << "\n";
            printSeries("sum", sum);
        }
        std::vector<double> spectrum(2048, -7.0);
        out() << "  getFourierOfSum "
              << calculate.getFourierOfSum(spectrum.data(), 4096, parameters.dispersion, 1, true)
              << "\n";
        printSeries("spectrum", spectrum);
    }
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    out().setCodec("UTF-8");
    if (argc != 2) {
        out() << "Usage: zrt-golden-actions RECORDING\n";
        return 64;
    }
    RecordingFile file;
    if (!file.open(QString::fromLocal8Bit(argv[1]))) {
        out() << file.reason() << "\n";
        return 65;
    }
    Stretch whole;
    whole.count = file.header().npoints;
    const StretchReading reading = file.read(whole);
    const ObservationData *data = reading.whole();
    if (!data) {
        out() << reading.reason() << "\n";
        return 65;
    }
    qInstallMessageHandler(printDebugLine);
    runActions(*data);
    runOperations(*data);
    return 0;
}
