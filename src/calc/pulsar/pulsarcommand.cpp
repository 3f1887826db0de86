#include "calc/pulsar/pulsarcommand.h"

#include "base/shellword.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "results/reporttext.h"

#include <QMap>
#include <QStringList>

using ReportText::exact;

namespace {

// Which parameters an action heeds.
struct ActionOptions {
    const char *command;
    bool channel = false;
    bool dispersion = true;
    bool period = false;
    bool spectrum = false;
    bool normalise = true;
};

const QMap<QString, ActionOptions> &actionOptions()
{
    static const QMap<QString, ActionOptions> options = {
        {"showNative", {"native", true, false, false, false, false}},
        {"sumPeriod", {"fold", true, false, true, false, true}},
        {"sumChannels", {"sum"}},
        {"sumChannelsDemoNoise", {"sum"}},
        {"sumChannelsAndAverage", {"sum"}},
        {"sumChannelsAndFourier", {"fourier", false, true, true, true, true}},
        {"sum4Dispersions", {"fourier", false, false, false, true, true}},
        {"sumAllDispersions", {"dmscan", false, true, true, true, true}},
        {"sumMultiDispersions", {"dmscan", false, true, true, true, true}},
        {"sumTimeDispersions", {"dmscan", false, true, true, true, true}},
    };
    return options;
}

} // namespace

PulsarParameters pulsarPresets()
{
    PulsarParameters presets;
    presets.module = 1;
    presets.ray = 7;
    presets.channel = 1;
    presets.dispersion = 26.2;
    presets.period = 3.032;
    presets.firstPoint = 58000;
    presets.harmonicNum = 1;
    presets.sigmaMultiple = 6;
    presets.dispersions = {0, 13.1, 26.2, 52.4};
    return presets;
}

QString pulsarCommand(const QString &action, const PulsarParameters &given,
                      const QString &recording)
{
    if (!actionOptions().contains(action))
        return {};
    const ActionOptions heeded = actionOptions()[action];
    const PulsarParameters presets = pulsarPresets();
    QStringList words = {"zrt-batch", heeded.command};
    const auto addIf = [&words](bool isGiven, const QString &option, const QString &value = {}) {
        if (isGiven)
            words << option;
        if (isGiven && !value.isEmpty())
            words << value;
    };
    const auto addNumber = [&addIf](const QString &option, auto value, auto preset) {
        addIf(value != preset, option, exact(double(value)));
    };

    addNumber("--module", given.module, presets.module);
    addNumber("--ray", given.ray, presets.ray);
    if (heeded.channel)
        addNumber("--channel", given.channel, presets.channel);
    if (heeded.dispersion)
        addNumber("--dm", given.dispersion, presets.dispersion);
    if (action == "sum4Dispersions") {
        words << "--compare";
        for (const double dispersion : given.dispersions)
            words << exact(dispersion);
    }
    if (heeded.period)
        addNumber("--period", given.period, presets.period);
    if (!given.startTime.isEmpty())
        words << "--utc" << shellWord(given.startTime);
    else
        addNumber("--first-point", given.firstPoint, presets.firstPoint);
    if (heeded.channel)
        addNumber("--count", given.points, presets.points);
    addIf(given.noise != presets.noise, "--noise", shellWord(given.noise));
    addIf(heeded.normalise && given.normalise, "--normalise");
    addIf(given.deleteStep, "--delete-step");
    addIf(action.startsWith("sumChannels") && heeded.command == QString("sum") &&
              given.deductNoise && action != "sumChannelsAndAverage",
          "--deduct");
    if (action == "sumChannelsAndAverage")
        words << "--average" << exact(given.averageCount);
    if (heeded.spectrum) {
        addNumber("--average", given.averageCount, presets.averageCount);
        addIf(given.withNull, "--with-null");
        addNumber("--harmonic", given.harmonicNum, presets.harmonicNum);
    }
    if (action == "sumChannelsAndFourier")
        addNumber("--sigma", given.sigmaMultiple, presets.sigmaMultiple);
    addIf(action == "sumMultiDispersions", "--each-average");
    addIf(action == "sumTimeDispersions", "--each-start");
    if (action == "sumTimeDispersions")
        addNumber("--delta", given.startDelta, presets.startDelta);
    words << shellWord(recording);
    return words.join(' ');
}

// What the form presets for the length of a recording is always given: other recordings of the
// call are to be searched for the same periods.
QString ffaCommand(const PulsarParameters &given, const QString &recording)
{
    const FfaParameters &ffa = given.ffa;
    const FfaParameters presets;
    QStringList words = {"zrt-batch", "ffa",
                         "--module",  QString::number(given.module),
                         "--ray",     QString::number(given.ray),
                         "--dm",      exact(given.dispersion)};
    const auto addNumber = [&words](const QString &option, double value, double preset) {
        if (value != preset)
            words << option << exact(value);
    };
    addNumber("--first-point", given.firstPoint, 0);
    addNumber("--count", given.points, 0);
    if (given.noise != PulsarParameters().noise)
        words << "--noise" << shellWord(given.noise);
    if (given.normalise)
        words << "--normalise";
    if (given.deleteStep)
        words << "--delete-step";
    words << "--period-min" << exact(ffa.period_min) << "--period-max" << exact(ffa.period_max);
    addNumber("--bins-min", ffa.bins_min, presets.bins_min);
    addNumber("--bins-max", ffa.bins_max, presets.bins_max);
    addNumber("--ducy-max", ffa.ducy_max, presets.ducy_max);
    addNumber("--wtsp", ffa.wtsp, presets.wtsp);
    addNumber("--fpmin", ffa.fpmin, presets.fpmin);
    if (!ffa.deredden)
        words << "--no-deredden";
    else
        words << "--rmed-width" << exact(ffa.rmed_width);
    addNumber("--rmed-minpts", ffa.rmed_minpts, presets.rmed_minpts);
    words << shellWord(recording);
    return words.join(' ');
}
