#include "calc/pulsar/pulsaranalyses.h"

#include "calc/pulsar/pulsarcommand.h"

namespace {

PulsarAnalysis analysis(const char *name, const char *label, const char *command,
                        const char *chosenBy, const QStringList &options)
{
    PulsarAnalysis made;
    made.name = name;
    made.label = label;
    made.command = command;
    made.chosenBy = chosenBy;
    made.presets = pulsarPresets();
    for (const QString &option : options)
        made.fields.push_back(&pulsarField(option));
    return made;
}

PulsarAnalysis onChannel(PulsarAnalysis made)
{
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

// What the form presets for the length of a recording is always given: other recordings of the
// call are to be searched for the same periods.
PulsarAnalysis search()
{
    PulsarAnalysis made = analysis(
        "createFFA", "", "ffa", "",
        {"--module", "--ray", "--dm", "--first-point", "--count", "--noise", "--normalise",
         "--delete-step", "--period-min", "--period-max", "--bins-min", "--bins-max", "--ducy-max",
         "--wtsp", "--fpmin", "--no-deredden", "--rmed-width", "--rmed-minpts"});
    made.presets = {};
    made.alwaysGiven =
        QStringList{"--module", "--ray", "--dm", "--period-min", "--period-max", "--rmed-width"};
    return made;
}

} // namespace

const std::vector<PulsarAnalysis> &pulsarAnalyses()
{
    const QStringList sum =
        QStringList{"--module", "--ray", "--dm"} + start + QStringList{"--count"} + levels;
    static const std::vector<PulsarAnalysis> all = {
        onChannel(analysis("showNative", "Show native", "native", "",
                           QStringList{"--module", "--ray", "--channel"} + start +
                               QStringList{"--count", "--noise", "--delete-step"})),
        onChannel(analysis("sumPeriod", "Sum period", "fold", "",
                           QStringList{"--module", "--ray", "--channel", "--period"} + start +
                               QStringList{"--count"} + levels)),
        analysis("sumChannels", "", "sum", "", sum + QStringList{"--deduct"}),
        analysis("sumChannelsDemoNoise", "Sum channels and  demo noise", "sum", "",
                 sum + QStringList{"--deduct"}),
        analysis("sumChannelsAndAverage", "Sum channels and average", "sum", "--average",
                 QStringList{"--module", "--ray", "--dm"} + start + levels +
                     QStringList{"--average"}),
        analysis("sumChannelsAndFourier", "Fourier of sum channels with 1 disp", "fourier", "",
                 scanOptions({"--sigma"})),
        analysis("sum4Dispersions", "Fourier of sum channels with 4 disp", "fourier", "--compare",
                 QStringList{"--module", "--ray", "--compare"} + start + levels +
                     QStringList{"--average", "--with-null", "--harmonic"}),
        analysis("sumAllDispersions", "First harmonic/disp with 1 average", "dmscan", "",
                 scanOptions()),
        analysis("sumMultiDispersions", "First harmonic/disp with multi average", "dmscan",
                 "--each-average", scanOptions({"--each-average"})),
        analysis("sumTimeDispersions", "First harmonic/disp with multi first point", "dmscan",
                 "--each-start", scanOptions({"--each-start", "--delta"})),
        search(),
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
