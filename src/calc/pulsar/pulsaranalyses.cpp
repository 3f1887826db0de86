#include "calc/pulsar/pulsaranalyses.h"

#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/pulsarcommand.h"

namespace {

// What an analysis is called.
struct Names {
    const char *action;
    const char *label;
    const char *command;
    const char *chosenBy = "";
};

using Step = bool (PulsarCalculate::*)();

PulsarAnalysis analysis(const Names &names, Step accept, Step compute, const QStringList &options)
{
    PulsarAnalysis made;
    made.name = names.action;
    made.label = names.label;
    made.command = names.command;
    made.chosenBy = names.chosenBy;
    made.presets = pulsarPresets();
    for (const QString &option : options)
        made.fields.push_back(&pulsarField(option));
    made.accept = accept;
    made.compute = compute;
    return made;
}

PulsarAnalysis ofSum(const Names &names, Step accept, Step compute, const QStringList &options)
{
    return analysis(names, accept, compute, options + QStringList{"--channels-off"});
}

PulsarAnalysis onChannel(const Names &names, Step accept, Step compute, const QStringList &options)
{
    PulsarAnalysis made =
        analysis(names, accept, compute, QStringList{"--module", "--ray", "--channel"} + options);
    made.onChannel = true;
    return made;
}

const QStringList start = {"--utc", "--first-point"};
const QStringList levels = {"--noise", "--normalise", "--delete-step"};

QStringList scanOptions(const QStringList &chosenBy = {})
{
    return QStringList{"--module", "--ray", "--dm", "--period"} + start + levels +
           QStringList{"--average", "--with-null", "--harmonic"} + chosenBy;
}

const QStringList searchOptions = {"--module",     "--ray",        "--dm",        "--first-point",
                                   "--count",      "--noise",      "--normalise", "--delete-step",
                                   "--period-min", "--period-max", "--bins-min",  "--bins-max",
                                   "--ducy-max",   "--wtsp",       "--fpmin",     "--no-deredden",
                                   "--rmed-width", "--rmed-minpts"};

// What the form presets for the length of a recording is always given: other recordings of the
// call are to be searched for the same periods.
PulsarAnalysis search(PulsarAnalysis made)
{
    made.presets = {};
    made.alwaysGiven =
        QStringList{"--module", "--ray", "--dm", "--period-min", "--period-max", "--rmed-width"};
    return made;
}

} // namespace

const std::vector<PulsarAnalysis> &PulsarCalculate::analyses()
{
    using C = PulsarCalculate;
    const QStringList place = {"--module", "--ray"};
    const QStringList sum = place + QStringList{"--dm"} + start + QStringList{"--count"} + levels +
                            QStringList{"--deduct"};
    const QStringList spectrum = {"--average", "--with-null", "--harmonic"};
    static const std::vector<PulsarAnalysis> all = {
        onChannel({"showNative", "Show native", "native"}, &C::acceptChannelSelection,
                  &C::showNative, start + QStringList{"--count", "--noise", "--delete-step"}),
        onChannel({"sumPeriod", "Sum period", "fold"}, &C::acceptFold, &C::sumPeriod,
                  QStringList{"--period"} + start + QStringList{"--count"} + levels),
        ofSum({"sumChannels", "", "sum"}, &C::acceptSum, &C::sumChannelsAction, sum),
        ofSum({"sumChannelsDemoNoise", "Sum channels and  demo noise", "sum"}, &C::acceptSum,
              &C::sumChannelsAction, sum),
        ofSum({"sumChannelsAndAverage", "Sum channels and average", "sum", "--average"},
              &C::acceptFixedSum, &C::sumChannelsAndAverage,
              place + QStringList{"--dm"} + start + levels + QStringList{"--average"}),
        ofSum({"sumChannelsAndFourier", "Fourier of sum channels with 1 disp", "fourier"},
              &C::acceptFourier, &C::sumChannelsAndFourier, scanOptions({"--sigma"})),
        ofSum({"sum4Dispersions", "Fourier of sum channels with 4 disp", "fourier", "--compare"},
              &C::acceptFourDispersions, &C::sum4Dispersions,
              place + QStringList{"--compare"} + start + levels + spectrum),
        ofSum({"sumAllDispersions", "First harmonic/disp with 1 average", "dmscan"}, &C::acceptScan,
              &C::sumAllDispersions, scanOptions()),
        ofSum({"sumMultiDispersions", "First harmonic/disp with multi average", "dmscan",
               "--each-average"},
              &C::acceptScan, &C::sumMultiDispersions, scanOptions({"--each-average"})),
        ofSum({"sumTimeDispersions", "First harmonic/disp with multi first point", "dmscan",
               "--each-start"},
              &C::acceptStarts, &C::sumTimeDispersions, scanOptions({"--each-start", "--delta"})),
        search(ofSum({"createFFA", "", "ffa"}, &C::acceptFfa, &C::createFFA, searchOptions)),
    };
    return all;
}

const std::vector<PulsarAnalysis> &pulsarAnalyses()
{
    return PulsarCalculate::analyses();
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

bool isScan(const QString &action)
{
    const PulsarAnalysis *const analysis = findAnalysis(action);
    return analysis && analysis->command == "dmscan";
}
