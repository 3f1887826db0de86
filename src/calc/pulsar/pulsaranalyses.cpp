#include "calc/pulsar/pulsaranalyses.h"

#include "calc/pulsar/actions.h"
#include "calc/pulsar/checks.h"
#include "calc/pulsar/pulsarcommand.h"

namespace {

// What an analysis is called.
struct Names {
    const char *action;
    const char *label;
    const char *command;
    const char *chosenBy = "";
};

// The functions of an analysis.
struct Steps {
    decltype(PulsarAnalysis::check) check;
    decltype(PulsarAnalysis::points) points;
    decltype(PulsarAnalysis::bytes) bytes;
    decltype(PulsarAnalysis::compute) compute;
};

PulsarAnalysis analysis(const Names &names, const Steps &steps, const QStringList &options)
{
    PulsarAnalysis made;
    made.name = names.action;
    made.label = names.label;
    made.command = names.command;
    made.chosenBy = names.chosenBy;
    made.presets = pulsarPresets();
    for (const QString &option : options)
        made.fields.push_back(&pulsarField(option));
    made.check = steps.check;
    made.points = steps.points;
    made.bytes = steps.bytes;
    made.compute = steps.compute;
    return made;
}

PulsarAnalysis ofSum(const Names &names, const Steps &steps, const QStringList &options)
{
    return analysis(names, steps, options + QStringList{"--channels-off"});
}

PulsarAnalysis onChannel(const Names &names, const Steps &steps, const QStringList &options)
{
    PulsarAnalysis made =
        analysis(names, steps, QStringList{"--module", "--ray", "--channel"} + options);
    made.onChannel = true;
    return made;
}

PulsarAnalysis goingToEnd(PulsarAnalysis made)
{
    made.goesToEnd = true;
    return made;
}

const QStringList start = {"--utc", "--first-point"};
const QStringList levels = {"--noise", "--normalise", "--delete-step"};

QStringList scanOptions(const QStringList &chosenBy = {})
{
    return QStringList{"--module", "--ray", "--dm", "--period"} + start + levels +
           QStringList{"--average", "--with-null", "--harmonic"} + chosenBy;
}

const QStringList searchOptions = {"--module",      "--ray",        "--dm",         "--first-point",
                                   "--count",       "--noise",      "--normalise",  "--delete-step",
                                   "--cut",         "--period-min", "--period-max", "--bins-min",
                                   "--bins-max",    "--ducy-max",   "--wtsp",       "--fpmin",
                                   "--no-deredden", "--rmed-width", "--rmed-minpts"};

// What the form presets for the length of a recording is always given: other recordings of the
// call are to be searched for the same periods.
PulsarAnalysis search(PulsarAnalysis made)
{
    made.presets = {};
    made.goesToEnd = true;
    made.alwaysGiven =
        QStringList{"--module", "--ray", "--dm", "--period-min", "--period-max", "--rmed-width"};
    return made;
}

} // namespace

const std::vector<PulsarAnalysis> &pulsarAnalyses()
{
    using namespace Pulsar;
    const QStringList place = {"--module", "--ray"};
    const QStringList sum = place + QStringList{"--dm"} + start + QStringList{"--count"} + levels +
                            QStringList{"--deduct"};
    const QStringList spectrum = {"--average", "--with-null", "--harmonic"};
    static const std::vector<PulsarAnalysis> all = {
        onChannel({"showNative", "Show native", "native"},
                  {checkChannel, screenPoints, screenBytes, showNative},
                  start + QStringList{"--count", "--noise", "--delete-step"}),
        goingToEnd(onChannel({"sumPeriod", "Sum period", "fold"},
                             {checkFold, foldPoints, foldBytes, sumPeriod},
                             QStringList{"--period"} + start + QStringList{"--count"} + levels +
                                 QStringList{"--cut"})),
        goingToEnd(ofSum({"sumPeriodOfBands", "all bands", "fold", "--sum"},
                         {checkFoldSum, foldSumPoints, foldSumBytes, sumPeriodOfBands},
                         place + QStringList{"--sum", "--dm", "--period"} + start +
                             QStringList{"--count"} + levels + QStringList{"--cut"})),
        ofSum({"sumChannels", "", "sum"}, {checkSum, sumPoints, sumBytes, sumChannelsAction}, sum),
        ofSum({"sumChannelsDemoNoise", "Sum channels and  demo noise", "sum"},
              {checkSum, sumPoints, sumBytes, sumChannelsAction}, sum),
        ofSum({"sumChannelsAndAverage", "Sum channels and average", "sum", "--average"},
              {checkFixedSum, fixedSumPoints, spectrumBytes, sumChannelsAndAverage},
              place + QStringList{"--dm"} + start + levels + QStringList{"--average"}),
        ofSum({"sumChannelsAndFourier", "Fourier of sum channels with 1 disp", "fourier"},
              {checkFourier, fixedSumPoints, spectrumBytes, sumChannelsAndFourier},
              scanOptions({"--sigma", "--cut"})),
        ofSum({"sum4Dispersions", "Fourier of sum channels with 4 disp", "fourier", "--compare"},
              {checkFourDispersions, fixedSumPoints, spectrumBytes, sum4Dispersions},
              place + QStringList{"--compare"} + start + levels + spectrum + QStringList{"--cut"}),
        ofSum({"sumAllDispersions", "First harmonic/disp with 1 average", "dmscan"},
              {checkScan, fixedSumPoints, spectrumBytes, sumAllDispersions}, scanOptions()),
        ofSum({"sumMultiDispersions", "First harmonic/disp with multi average", "dmscan",
               "--each-average"},
              {checkScan, fixedSumPoints, spectrumBytes, sumMultiDispersions},
              scanOptions({"--each-average"})),
        ofSum({"sumTimeDispersions", "First harmonic/disp with multi first point", "dmscan",
               "--each-start"},
              {checkStarts, fixedSumPoints, spectrumBytes, sumTimeDispersions},
              scanOptions({"--each-start", "--delta"})),
        search(ofSum({"createFFA", "", "ffa"}, {checkFfa, ffaPoints, ffaBytes, createFfa},
                     searchOptions)),
    };
    return all;
}

const PulsarAnalysis *findAnalysis(const QString &action)
{
    for (const PulsarAnalysis &known : pulsarAnalyses()) {
        if (known.name == action)
            return &known;
    }
    return nullptr;
}

bool reads(const QString &action, const QString &option)
{
    const PulsarAnalysis *const analysis = findAnalysis(action);
    return analysis && analysis->reads(pulsarField(option));
}

bool takesPoints(const QString &action)
{
    const PulsarAnalysis *const analysis = findAnalysis(action);
    return analysis && (analysis->onChannel || analysis->goesToEnd);
}

bool isScan(const QString &action)
{
    const PulsarAnalysis *const analysis = findAnalysis(action);
    return analysis && analysis->command == "dmscan";
}
